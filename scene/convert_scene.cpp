#include "scene/convert_scene.h"

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_geometry_converter.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_z_up_metres.h"
#include "scene/animation_baking.h"
#include "scene/material_translator.h"
#include "scene/model_extraction.h"
#include "scene/skeleton_extraction.h"
#include "scene/skeleton_node_map.h"
#include "tarn/kiva_builder.h"
#include "tarn/kiva_limits.h"

namespace {

// Destroys the manager, and every document object with it, on every path.
struct ManagerScope {
    FbxManager* manager = FbxManager::Create();
    ManagerScope() = default;
    ManagerScope(const ManagerScope&) = delete;
    ManagerScope& operator=(const ManagerScope&) = delete;
    ~ManagerScope() { manager->Destroy(); }
};

// Reports each record this scene added that the file format cannot hold, as
// an error of the scene: the run then writes nothing.
class LimitCheck {
public:
    explicit LimitCheck(const tarn::KivaContainer& container)
        : container_(container),
          meshes_(container.meshes().size()),
          skeletons_(container.skeletons().size()),
          models_(container.models().size()),
          animations_(container.animations().size()) {}

    void report(const std::string& path, ErrorReporter& errors) const {
        auto check = [&](const tarn::KivaLimit& limit) {
            if (limit) errors.error(path) << limit.passed << '\n';
        };
        for (size_t i = meshes_; i < container_.meshes().size(); ++i) check(tarn::kivaLimitOf(*container_.meshes()[i]));
        for (size_t i = skeletons_; i < container_.skeletons().size(); ++i)
            check(tarn::kivaLimitOf(*container_.skeletons()[i]->skeleton));
        for (size_t i = models_; i < container_.models().size(); ++i) check(tarn::kivaLimitOf(*container_.models()[i]));
        for (size_t i = animations_; i < container_.animations().size(); ++i)
            check(tarn::kivaLimitOf(*container_.animations()[i]->animation));
    }

private:
    const tarn::KivaContainer& container_;
    size_t meshes_, skeletons_, models_, animations_;
};

}  // namespace

std::string folderOf(const std::string& path) {
    size_t cut = path.rfind('/');
    if (cut == std::string::npos) cut = path.rfind('\\');
    return cut == std::string::npos ? path : path.substr(0, cut);
}

bool convertScene(const std::string& path, const SceneOptions& options, tarn::KivaBuilder& builder,
                  tarn::MaterialCache& materialCache, SettingsStore& settings, DependencySet& dependencies,
                  ErrorReporter& errors) {
    // Listed before it is opened, so that a build reruns once a missing
    // file appears.
    dependencies.add(path);

    ManagerScope scope;
    FbxManager* manager = scope.manager;
    FbxIOSettings* ioSettings = FbxIOSettings::Create(manager, "IOSRoot");
    manager->SetIOSettings(ioSettings);
    FbxImporter* importer = FbxImporter::Create(manager, "");
    if (!importer->Initialize(path.c_str(), -1, ioSettings)) {
        errors.error(path) << "Call to FbxImporter::Initialize() failed: " << importer->GetStatus().GetErrorString()
                           << '\n';
        importer->Destroy();
        return false;
    }
    FbxGeometryConverter converter(manager);
    FbxScene* scene = FbxScene::Create(manager, "myScene");
    // A failed import leaves what was read; the rest runs on that.
    importer->Import(scene, false);
    importer->Destroy();

    // Only the root's children, their curves and the recorded global
    // matrices change, so extraction can read global transforms as they are.
    ConvertToZUpMetres(scene);

    MaterialTranslator translator(builder, folderOf(path), options.noMaterials ? nullptr : &materialCache, settings,
                                  options.textureMode, dependencies, errors);
    FbxNode* rootNode = scene->GetRootNode();
    if (options.noMeshes || !rootNode) return true;

    const LimitCheck limits(*builder.container());
    SkeletonNodeMap skeletonNodes;
    extractSkeletons(*rootNode, *builder.container(), skeletonNodes);
    extractModels(*rootNode, ModelExtraction{builder, skeletonNodes, translator, converter, path, errors});

    // Meshes and bind poses were read at infinite time, where no curve
    // counts; only now does the first stack come into play.
    manager->GetAnimationEvaluator()->SetContext(scene->GetSrcObject<FbxAnimStack>(0));
    bakeAnimation(*rootNode, builder, skeletonNodes, path, errors);
    limits.report(path, errors);
    return true;
}
