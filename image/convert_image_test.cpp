#include "image/convert_image.h"

#include <gtest/gtest.h>

#include <sstream>

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"
#include "convert/settings_store.h"
#include "image/test_images_testing.h"
#include "qe/scratch_dir_testing.h"
#include "tarn/kiva_builder.h"

namespace {

using tarn::TextureFormat;

struct ConvertImage : ::testing::Test {
    ScratchDir dir;
    std::ostringstream err;
    ErrorReporter errors{err};
    DependencySet deps;
    SettingsStore settings{deps, errors};
    tarn::KivaContainer container;
    tarn::KivaBuilder builder{&container};

    ConvertImage() { dir.write("default.settings", "resource-root: /art\n"); }

    std::string png(const std::string& name, int w, int h, int channels, uint32_t seed = 1) {
        const std::string path = dir.file(name);
        dir.write(name, "");
        EXPECT_TRUE(writePng(path, w, h, channels, patternPixels(w, h, channels, seed)));
        return path;
    }
    tarn::TextureRecord* convert(const std::string& path, TextureMode mode = TextureMode::Include) {
        qe::Ref<tarn::Texture> t = convertImage(path.c_str(), mode, builder, settings, deps, errors);
        return t ? builder.textureRecordOf(t) : nullptr;
    }
};

TEST_F(ConvertImage, DefaultsPickTheFormatByTheChannelsInTheFile) {
    struct Case {
        int channels;
        TextureFormat format;
    };
    for (Case c : {Case{1, TextureFormat::DXT1}, Case{2, TextureFormat::DXT5}, Case{3, TextureFormat::DXT1},
                   Case{4, TextureFormat::DXT5}}) {
        const std::string path = png("props/c" + std::to_string(c.channels) + ".png", 64, 32, c.channels);
        tarn::TextureRecord* r = convert(path);
        ASSERT_NE(r, nullptr) << err.str();
        EXPECT_EQ(r->format, uint32_t(c.format)) << c.channels;
        EXPECT_EQ(r->name, "/art/props/c" + std::to_string(c.channels) + ".png");
        EXPECT_EQ(r->width * 100 + r->height, 6432u);
        EXPECT_EQ(r->mipCount, 6u);
        EXPECT_FALSE(r->srgb);
        EXPECT_TRUE(deps.contains(path));
    }
    EXPECT_EQ(errors.errorCount(), 0u) << err.str();
    // A TGA with alpha counts the same.
    const std::string tga = dir.file("t.tga");
    ASSERT_TRUE(writeTga(tga, 4, 4, 4, patternPixels(4, 4, 4)));
    EXPECT_EQ(convert(tga)->format, uint32_t(TextureFormat::DXT5));
}

TEST_F(ConvertImage, RawFormatsStoreTheDecodedBytes) {
    dir.write("raw/default.settings",
              "texture-format-alpha: rgb\ntexture-format-noalpha: R8\n"
              "texture-generate-mipmaps: no\n");
    const std::string a = png("raw/a.png", 5, 3, 4, 3);
    tarn::TextureRecord* r = convert(a);
    ASSERT_NE(r, nullptr) << err.str();
    EXPECT_EQ(r->format, uint32_t(TextureFormat::X8R8G8B8));
    EXPECT_EQ(r->mipCount, 1u);
    EXPECT_EQ(r->data, patternPixels(5, 3, 4, 3));  // alpha bytes kept, nothing swapped
    const std::string b = png("raw/b.png", 3, 3, 3, 4);
    r = convert(b);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->format, uint32_t(TextureFormat::R8));
    ASSERT_EQ(r->data.size(), 9u);
    const std::vector<uint8_t> src = patternPixels(3, 3, 3, 4);
    for (size_t i = 0; i < 9; ++i) EXPECT_EQ(r->data[i], src[i * 3]);
}

TEST_F(ConvertImage, MissingResourceRootUndecodableFilesAndBadFormatWordsLeaveNothing) {
    ScratchDir other;
    other.write("x.png", "");
    ASSERT_TRUE(writePng(other.file("x.png"), 2, 2, 3, patternPixels(2, 2, 3)));
    EXPECT_EQ(convert(other.file("x.png")), nullptr);
    EXPECT_TRUE(deps.contains(other.file("x.png")));

    EXPECT_EQ(convert(dir.file("missing.png")), nullptr);
    dir.write("text.png", "this is no image");
    EXPECT_EQ(convert(dir.file("text.png")), nullptr);

    dir.write("bad/default.settings", "\ntexture-format-noalpha: dxt 1\n");
    EXPECT_EQ(convert(png("bad/y.png", 4, 4, 3)), nullptr);

    EXPECT_EQ(container.textures().size(), 0u);
    EXPECT_EQ(errors.errorCount(), 4u);
    EXPECT_EQ(err.str(), other.file("x.png") + ": could not find resource-root setting\n" + dir.file("missing.png") +
                             ": could not load: cannot read the file (No such file or directory)\n" +
                             dir.file("text.png") + ": could not load: unknown image format\n" +
                             dir.file("bad/default.settings") + ": line 2: invalid texture format\n");
}

TEST_F(ConvertImage, ReferenceModeNamesAnotherContainerWithoutOpeningTheImage) {
    tarn::TextureRecord* r = convert(dir.file("x/a.b.png"), TextureMode::Reference);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->name, "/art/x/a.b.kiva");
    EXPECT_EQ(r->format, uint32_t(TextureFormat::Invalid));
    EXPECT_EQ(r->width, 0u);
    EXPECT_EQ(r->mipCount, 0u);
    EXPECT_TRUE(r->data.empty());
    EXPECT_TRUE(deps.contains(dir.file("x/a.b.png")));
    EXPECT_EQ(errors.errorCount(), 0u);
    ScratchDir other;
    EXPECT_EQ(convert(other.file("y.png"), TextureMode::Reference), nullptr);  // root still required
}

TEST_F(ConvertImage, SrgbExpressionSearchesTheWholeName) {
    dir.write("s/default.settings", "srgb-texname-expression: (_d|_diffuse)\\.png$\n");
    EXPECT_TRUE(convert(png("s/wall_d.png", 4, 4, 3))->srgb);
    EXPECT_FALSE(convert(png("s/wall_D.png", 4, 4, 3))->srgb);
    dir.write("t/default.settings", "srgb-texname-expression: ^/art/t/\n");
    EXPECT_TRUE(convert(png("t/any.png", 4, 4, 3))->srgb);
    EXPECT_EQ(errors.errorCount(), 0u);

    dir.write("u/default.settings", "srgb-texname-expression: ([a-\n");
    tarn::TextureRecord* r = convert(png("u/z.png", 4, 4, 3));
    ASSERT_NE(r, nullptr);  // goes on without sRGB
    EXPECT_FALSE(r->srgb);
    EXPECT_EQ(errors.errorCount(), 1u);
    const std::string head = dir.file("u/z.png") +
                             ": Bad regular expression (([a-) for srgb-texname-expression in "
                             ".settings file: ";
    EXPECT_EQ(err.str().substr(0, head.size()), head);
    EXPECT_EQ(err.str().find('\n'), err.str().size() - 1) << "one line";
}

TEST_F(ConvertImage, SizeLimitHalvesBothSidesUntilTheyFitOrOneIsOne) {
    dir.write("m/default.settings", "texture-max-size: 256\n");
    tarn::TextureRecord* r = convert(png("m/wide.png", 512, 64, 3));
    EXPECT_EQ(r->width, 256u);
    EXPECT_EQ(r->height, 32u);
    EXPECT_EQ(r->mipCount, 8u);
    dir.write("z/default.settings", "texture-max-size: 0\n");
    r = convert(png("z/wide.png", 16, 4, 3));
    EXPECT_EQ(r->width * 100 + r->height, 401u);
    EXPECT_EQ(r->mipCount, 2u);
    // Sides above 65535 are refused unless the limit brings them down.
    EXPECT_EQ(convert(png("m/huge.png", 65536, 2, 1))->width, 32768u);
    EXPECT_EQ(errors.errorCount(), 0u);
    EXPECT_EQ(convert(png("huge.png", 65536, 2, 1)), nullptr);
    EXPECT_EQ(errors.errorCount(), 1u);
}

TEST_F(ConvertImage, BadNumbersAndBooleansAreReportedAndDefaultsUsed) {
    dir.write("b/default.settings",
              "texture-max-size: big\ntexture-generate-mipmaps: sometimes\n"
              "texture-is-normalmap: 1\n");
    tarn::TextureRecord* r = convert(png("b/q.png", 32, 32, 3));
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->width, 32u);  // no limit
    EXPECT_EQ(r->mipCount, 5u);
    EXPECT_EQ(r->format, uint32_t(TextureFormat::DXT1));  // not a normal map
    EXPECT_EQ(errors.errorCount(), 3u) << err.str();      // the texts: settings_test
}

TEST_F(ConvertImage, NormalMapRules) {
    // "_normal" anywhere in the name forces DXT5 (with the swizzle: encoders_test).
    dir.write("n/default.settings", "texture-format-noalpha: rgba\ntexture-is-normalmap: false\n");
    EXPECT_EQ(convert(png("n/crate_normal_low.png", 4, 4, 3))->format, uint32_t(TextureFormat::DXT5));
    EXPECT_EQ(convert(png("x_normal/crate.png", 4, 4, 3))->format, uint32_t(TextureFormat::DXT5));
    EXPECT_EQ(convert(png("n/Crate_Normal.png", 4, 4, 3))->format, uint32_t(TextureFormat::A8R8G8B8));

    // From the setting, the chosen format stays; only DXT5 is swizzled.
    dir.write("s/default.settings", "texture-is-normalmap: true\ntexture-format-noalpha: rgba\n");
    EXPECT_EQ(convert(png("s/a.png", 4, 4, 3))->format, uint32_t(TextureFormat::A8R8G8B8));
    dir.write("d/default.settings", "texture-is-normalmap: yes\n");
    EXPECT_EQ(convert(png("d/a.png", 4, 4, 3))->format, uint32_t(TextureFormat::DXT1));
    EXPECT_EQ(convert(png("d/b.png", 4, 4, 4))->format, uint32_t(TextureFormat::DXT5));
    EXPECT_EQ(errors.errorCount(), 0u) << err.str();
}

}  // namespace
