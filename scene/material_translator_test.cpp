#include "scene/material_translator.h"

#include <gtest/gtest.h>

#include <sstream>

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"
#include "convert/settings_store.h"
#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_layered_texture.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_surface_phong.h"
#include "image/test_images_testing.h"
#include "qe/scratch_dir_testing.h"
#include "tarn/kiva_builder.h"
#include "tarn/material_cache.h"

namespace {

class MaterialTranslatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir.write("default.settings", "resource-root: /art\n");
        dir.makeDir("tex");
        for (const char* name : {"diffuse", "normal_map", "gloss", "specular"})
            ASSERT_TRUE(writePng(dir.file(std::string("tex/") + name + ".png"), 4, 4, 3, patternPixels(4, 4, 3)));
        manager = FbxManager::Create();
    }
    void TearDown() override { manager->Destroy(); }

    // A translator for a scene in "scenes/", whose textures lie in "tex/".
    MaterialTranslator Translator(TextureMode mode = TextureMode::Include, bool materials = true) {
        return MaterialTranslator(builder, dir.file("scenes"), materials ? &cache : nullptr, settings, mode, deps,
                                  errors);
    }
    FbxFileTexture* File(const char* name) {
        FbxFileTexture* texture = FbxFileTexture::Create(manager, name);
        texture->SetRelativeFileName((std::string("../tex/./") + name).c_str());
        return texture;
    }
    // A Phong material with a grey diffuse colour and file textures on the
    // named channels.
    FbxSurfacePhong* Material(std::initializer_list<std::pair<const char*, FbxObject*>> channels) {
        FbxSurfacePhong* material = FbxSurfacePhong::Create(manager, "m");
        material->Diffuse().Set(FbxDouble3(0.5, 0.25, 0.125));
        for (const auto& [property, texture] : channels) material->FindProperty(property).ConnectSrcObject(texture);
        return material;
    }
    std::string TextureName(const qe::Ref<tarn::MaterialData>& material, const char* parameter) {
        const auto& textures = material->parameters().textures;
        auto found = textures.find(parameter);
        if (found == textures.end()) return "(none)";
        const tarn::TextureRecord* record = builder.textureRecordOf(found->second);
        return record ? record->name : "(empty)";
    }

    ScratchDir dir;
    std::ostringstream err;
    ErrorReporter errors{err};
    DependencySet deps;
    SettingsStore settings{deps, errors};
    tarn::MaterialCache cache;
    tarn::KivaContainer container;
    tarn::KivaBuilder builder{&container};
    FbxManager* manager = nullptr;
};

TEST_F(MaterialTranslatorTest, ShadersFollowTheFileTexturesOnTheChannels) {
    FbxFileTexture* diffuse = File("diffuse.png");
    FbxFileTexture* normal = File("normal_map.png");
    FbxFileTexture* gloss = File("gloss.png");
    FbxFileTexture* specular = File("specular.png");
    MaterialTranslator translator = Translator();

    struct Case {
        FbxSurfaceMaterial* material;
        bool skinned;
        const char* shader;
        std::vector<std::pair<const char*, const char*>> textures;  // parameter, image
    };
    const Case cases[] = {
        {Material({{"DiffuseColor", diffuse}}), false, "textured", {{"DiffuseTexture", "diffuse"}}},
        {Material({{"DiffuseColor", diffuse}, {"NormalMap", normal}}),
         false,
         "textured_normal",
         {{"NormalTexture", "normal_map"}, {"DiffuseTexture", "diffuse"}}},
        {Material({{"DiffuseColor", diffuse}, {"NormalMap", normal}}),
         true,
         "textured",
         {{"DiffuseTexture", "diffuse"}}},
        {Material({{"DiffuseColor", diffuse}, {"NormalMap", normal}, {"SpecularColor", specular}}),
         false,
         "textured_normal_material",
         {{"NormalTexture", "normal_map"}, {"DiffuseTexture", "diffuse"}, {"MaterialTexture", "specular"}}},
        {Material({{"DiffuseColor", diffuse},
                   {"NormalMap", normal},
                   {"SpecularColor", specular},
                   {"SpecularFactor", gloss}}),
         false,
         "asteroid",
         {{"NormalTexture", "normal_map"}, {"SpecularTexture", "gloss"}, {"DiffuseTexture", "diffuse"}}},
        // Specular maps need a normal map.
        {Material({{"DiffuseColor", diffuse}, {"SpecularFactor", gloss}}),
         false,
         "textured",
         {{"DiffuseTexture", "diffuse"}}},
    };
    for (const Case& c : cases) {
        const qe::Ref<tarn::MaterialData> made = translator.materialFor(c.material, c.skinned);
        ASSERT_TRUE(made);
        EXPECT_EQ(made->shaderName(), c.shader);
        EXPECT_TRUE(made->canonical());
        EXPECT_TRUE(made->parameters().vectors.empty()) << c.shader;
        EXPECT_EQ(made->parameters().textures.size(), c.textures.size()) << c.shader;
        for (const auto& [parameter, image] : c.textures)
            EXPECT_EQ(TextureName(made, parameter), std::string("/art/tex/") + image + ".png") << c.shader;
        EXPECT_EQ(translator.materialFor(c.material, c.skinned).get(), made.get());
    }
    // Each file texture was converted once, from the scene's folder.
    EXPECT_EQ(container.textures().size(), 4u);
    EXPECT_TRUE(deps.contains(dir.file("tex/normal_map.png")));
    EXPECT_EQ(errors.errorCount(), 0u) << err.str();

    // Without a file texture on "DiffuseColor" the colour counts.
    const auto colorOf = [&](const FbxSurfaceMaterial* material) {
        const qe::Ref<tarn::MaterialData> made = translator.materialFor(material, false);
        EXPECT_EQ(made->shaderName(), "solid");
        EXPECT_TRUE(made->parameters().textures.empty());
        return made->parameters().vectors.at("DiffuseColor");
    };
    EXPECT_EQ(colorOf(nullptr), (tarn::Vector4{1, 1, 1, 1}));
    EXPECT_EQ(colorOf(Material({{"NormalMap", normal}})), (tarn::Vector4{0.5f, 0.25f, 0.125f, 0}));
    EXPECT_EQ(colorOf(FbxSurfaceMaterial::Create(manager, "no colour")), (tarn::Vector4{0, 0, 0, 0}));
    FbxLayeredTexture* layered = FbxLayeredTexture::Create(manager, "layers");
    layered->ConnectSrcObject(File("diffuse.png"));
    EXPECT_EQ(colorOf(Material({{"DiffuseColor", layered}})), (tarn::Vector4{0.5f, 0.25f, 0.125f, 0}));

    // Materials of equal value are one object; one file behind two texture
    // objects is two textures.
    EXPECT_EQ(translator.materialFor(Material({{"DiffuseColor", diffuse}}), false).get(),
              translator.materialFor(cases[0].material, false).get());
    const qe::Ref<tarn::MaterialData> second =
        translator.materialFor(Material({{"DiffuseColor", File("diffuse.png")}}), false);
    EXPECT_NE(second.get(), translator.materialFor(cases[0].material, false).get());
    EXPECT_EQ(container.textures().size(), 5u);
}

TEST_F(MaterialTranslatorTest, AFailingTextureIsReportedOnceAndCountsAsAbsent) {
    FbxFileTexture* missing = File("missing.png");
    FbxFileTexture* diffuse = File("diffuse.png");
    MaterialTranslator translator = Translator();
    EXPECT_EQ(translator.materialFor(Material({{"DiffuseColor", missing}}), false)->shaderName(), "solid");
    EXPECT_EQ(translator.materialFor(Material({{"DiffuseColor", missing}}), true)->shaderName(), "solid");
    // A failed normal map leaves a textured material.
    FbxSurfacePhong* material = Material({{"DiffuseColor", diffuse}, {"NormalMap", missing}});
    EXPECT_EQ(translator.materialFor(material, false)->shaderName(), "textured");
    EXPECT_EQ(errors.errorCount(), 1u) << err.str();
    EXPECT_EQ(err.str().find(dir.file("tex/missing.png") + ": could not load"), 0u) << err.str();
    EXPECT_TRUE(deps.contains(dir.file("tex/missing.png")));
}

TEST_F(MaterialTranslatorTest, TextureModesAndSwitchedOffMaterials) {
    FbxSurfacePhong* material =
        Material({{"DiffuseColor", File("diffuse.png")}, {"NormalMap", File("normal_map.png")}});
    size_t dependencies = 0;
    {
        // Referenced textures are records without pixels; the shaders stay.
        MaterialTranslator translator = Translator(TextureMode::Reference);
        const qe::Ref<tarn::MaterialData> made = translator.materialFor(material, false);
        EXPECT_EQ(made->shaderName(), "textured_normal");
        EXPECT_EQ(TextureName(made, "DiffuseTexture"), "/art/tex/diffuse.kiva");
        EXPECT_TRUE(deps.contains(dir.file("tex/normal_map.png")));
        dependencies = deps.size();
    }
    {
        // Stripped textures make every material a coloured "solid".
        MaterialTranslator translator = Translator(TextureMode::Strip);
        const qe::Ref<tarn::MaterialData> made = translator.materialFor(material, false);
        EXPECT_EQ(made->shaderName(), "solid");
        EXPECT_EQ(made->parameters().vectors.at("DiffuseColor"), (tarn::Vector4{0.5f, 0.25f, 0.125f, 0}));
        EXPECT_EQ(deps.size(), dependencies);
    }
    {
        MaterialTranslator translator = Translator(TextureMode::Include, false);
        EXPECT_FALSE(translator.materialFor(material, false));
        EXPECT_FALSE(translator.materialFor(nullptr, true));
        EXPECT_EQ(deps.size(), dependencies);
    }
    EXPECT_EQ(container.textures().size(), 2u);
    EXPECT_EQ(errors.errorCount(), 0u) << err.str();
}

}  // namespace
