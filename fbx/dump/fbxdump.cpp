#include "fbx/dump/fbxdump.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>

#include "fbx/dump/animation_dump.h"
#include "fbx/dump/dump_value.h"
#include "fbx/dump/dump_writer.h"
#include "fbx/dump/fbx_text_writer.h"
#include "fbx/dump/field_dump.h"
#include "fbx/dump/scene_dump.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_path_utils.h"
#include "fbx/model/fbx_geometry_converter.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_node_selection.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_z_up_metres.h"

namespace {

const char kUsage[] =
    "usage: fbxdump [--fields] [--json] [--convert] [--triangulate] [--time SECONDS[,SECONDS...]]... [--write-text "
    "OUT.fbx] FILE.fbx\n";

// Destroys the manager, and with it every object, on every way out.
struct ManagerScope {
    FbxManager* manager = FbxManager::Create();
    ~ManagerScope() { manager->Destroy(); }
};

// The status text for a line that starts with the file's name already:
// without the name that some texts end with.
std::string statusText(const std::string& path, const FbxStatus& status) {
    std::string text = status.GetErrorString();
    for (const std::string& name : {path, std::string(FbxMakeAbsolutePath(path.c_str()))}) {
        std::string suffix = " " + name;
        if (!name.empty() && text.size() > suffix.size() && text.ends_with(suffix)) {
            text.erase(text.size() - suffix.size());
            break;
        }
    }
    return text;
}

// The header's lines as the members of the open object.
void writeMembers(const DumpValue& object, DumpWriter& writer) {
    for (const auto& [key, value] : object.members()) {
        writer.key(key);
        writer.write(value);
    }
}

// Writes the file's field tree as a text FBX file to `target`; nothing goes
// to the output stream. A file that cannot be written whole is removed.
int writeTextFile(const std::string& path, const std::string& target, std::ostream& err) {
    std::error_code ignored;
    if (std::filesystem::equivalent(path, target, ignored)) {
        err << "fbxdump: " << target << ": the text file would overwrite its source\n";
        return 1;
    }
    FbxFieldStream stream;
    stream.SetFbx7Mode(true);
    if (!stream.OpenFile(path.c_str())) {
        err << path << ": " << stream.GetStatus().GetErrorString() << '\n';
        return 1;
    }
    std::ofstream out(target, std::ios::binary | std::ios::trunc);
    if (!out) {
        err << "fbxdump: " << target << ": cannot be written\n";
        return 1;
    }
    std::string error;
    bool written = writeFbxText(stream, out, error);
    out.close();
    if (written && out && !stream.GetStatus().Error()) return 0;
    if (written && !out) error = target + ": cannot be written";
    if (written && stream.GetStatus().Error()) error = stream.GetStatus().GetErrorString();
    err << path << ": " << error << '\n';
    std::filesystem::remove(target, ignored);
    return 1;
}

// Adds the comma-separated seconds of a --time argument; false for anything
// that is not a finite number.
bool parseTimes(const std::string& text, std::vector<double>& times) {
    size_t start = 0;
    while (true) {
        size_t comma = text.find(',', start);
        std::string part = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        char* end = nullptr;
        double value = std::strtod(part.c_str(), &end);
        if (part.empty() || *end != '\0' || !std::isfinite(value)) return false;
        times.push_back(value);
        if (comma == std::string::npos) return true;
        start = comma + 1;
    }
}

// Triangulates the mesh of every node of the tree, and lists each node that
// has a mesh with the triangle count it ends with.
DumpValue triangulateMeshes(FbxScene& scene) {
    FbxGeometryConverter converter(scene.GetFbxManager());
    DumpValue list = DumpValue::array();
    for (FbxNode* node : SelectNodesBelow(scene.GetRootNode())) {
        if (!FbxCast<FbxMesh>(node->GetNodeAttribute())) continue;
        const bool done = converter.TriangulateInPlace(node);
        DumpValue entry = DumpValue::object();
        entry.add("node", node->GetName());
        const FbxMesh* mesh = FbxCast<FbxMesh>(node->GetNodeAttribute());
        entry.add("triangles", done && mesh ? mesh->GetPolygonCount() : 0);
        list.push(std::move(entry));
    }
    return list;
}

}  // namespace

int runFbxDump(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    bool fields = false, json = false, convert = false, triangulate = false;
    std::string path, textTarget;
    std::vector<double> times;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--write-text") {
            if (i + 1 == args.size() || !textTarget.empty()) {
                err << "fbxdump: --write-text needs one file name\n" << kUsage;
                return 1;
            }
            textTarget = args[++i];
        } else if (arg == "--time") {
            if (i + 1 == args.size() || !parseTimes(args[++i], times)) {
                err << "fbxdump: --time needs seconds, such as 0.5 or 0,0.5,1\n" << kUsage;
                return 1;
            }
        } else if (arg == "--fields") {
            fields = true;
        } else if (arg == "--json") {
            json = true;
        } else if (arg == "--convert") {
            convert = true;
        } else if (arg == "--triangulate") {
            triangulate = true;
        } else if (arg == "--help" || arg == "-h") {
            out << kUsage;
            return 0;
        } else if (!arg.empty() && arg[0] == '-') {
            err << "fbxdump: unknown option " << arg << '\n' << kUsage;
            return 1;
        } else if (path.empty()) {
            path = arg;
        } else {
            err << "fbxdump: one file at a time\n" << kUsage;
            return 1;
        }
    }
    if (path.empty()) {
        err << kUsage;
        return 1;
    }
    if (fields && !times.empty()) {
        err << "fbxdump: --time shows the scene, not the fields\n" << kUsage;
        return 1;
    }
    if ((fields || !textTarget.empty()) && (convert || triangulate)) {
        err << "fbxdump: --convert and --triangulate change the scene, not the fields\n" << kUsage;
        return 1;
    }

    ManagerScope scope;
    FbxManager* manager = scope.manager;
    FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
    manager->SetIOSettings(settings);
    // A dump leaves no media folder behind.
    settings->SetBoolProp(FbxIOPath::kExtractEmbeddedData, false);
    FbxImporter* importer = FbxImporter::Create(manager, "");
    if (!importer->Initialize(path.c_str(), -1, settings)) {
        err << path << ": " << statusText(path, importer->GetStatus()) << '\n';
        return 1;
    }

    if (!textTarget.empty()) return writeTextFile(path, textTarget, err);

    // Written as it is made: the dump of a large file is never whole in
    // memory.
    DumpWriter writer(out, json ? DumpWriter::Form::eJson : DumpWriter::Form::eText);
    if (fields) {
        FbxFieldStream stream;
        stream.SetFbx7Mode(true);
        if (!stream.OpenFile(path.c_str())) {
            err << path << ": " << statusText(path, stream.GetStatus()) << '\n';
            return 1;
        }
        writer.beginObject();
        writeMembers(dumpHeader(*importer), writer);
        writer.key("fields");
        std::string fault;
        bool complete = dumpFields(stream, writer, fault);
        writer.finish();
        if (!complete) {
            err << path << ": " << fault << '\n';
            return 1;
        }
        return 0;
    }

    FbxScene* scene = FbxScene::Create(manager, "myScene");
    bool ok = importer->Import(scene);
    if (convert) ConvertToZUpMetres(scene);
    writer.beginObject();
    writeMembers(dumpHeader(*importer), writer);
    if (triangulate) {
        writer.key("triangulation");
        writer.write(triangulateMeshes(*scene));
    }
    writer.key("nodes");
    dumpNodeTree(*scene, writer);
    writer.key("objects");
    dumpObjects(*scene, writer);
    writer.key("animation");
    writer.write(dumpAnimation(*scene));
    writer.key("transforms");
    writer.write(dumpTransforms(*scene, times));
    writer.finish();
    const FbxStatus& status = importer->GetStatus();
    if (!ok) {
        err << path << ": " << statusText(path, status) << '\n';
        return 1;
    }
    if (status.Error()) err << path << ": warning: " << statusText(path, status) << '\n';
    return 0;
}
