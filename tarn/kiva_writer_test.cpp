#include "tarn/kiva_writer.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tarn/kiva_builder.h"

// Field by field, every table is checked by the round trip through the
// independent reader (tarn/kivadump); here the exact bytes, what reaches the
// file, and the limits.

namespace tarn {
namespace {

// A little-endian field of a written file; 0 past its end.
uint64_t field(const std::vector<uint8_t>& file, uint64_t at, int bytes) {
    uint64_t v = 0;
    for (int i = bytes - 1; i >= 0; --i) v = v << 8 | (at + i < file.size() ? file[at + i] : 0);
    return v;
}
// Bytes from pairs of hexadecimal digits; spaces are skipped.
std::vector<uint8_t> hexBytes(const std::string& hex) {
    std::string digits;
    for (char c : hex)
        if (c != ' ') digits += c;
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(uint8_t(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}
// Header slots: strings 0, textures 1, ..., animations 8.
uint64_t count(const std::vector<uint8_t>& file, int table) { return field(file, 8 + 2 * table, 2); }
uint64_t table(const std::vector<uint8_t>& file, int table) { return field(file, 32 + 8 * table, 8); }

Matrix16 identity() {
    Matrix16 m{};
    m[0] = m[5] = m[10] = m[15] = 1.0f;
    return m;
}

TEST(KivaWriter, EmptyContainerAndUnreachedRecordsGiveTheBareHeader) {
    KivaContainer container;
    const std::vector<uint8_t> file = serializeKiva(container).bytes;
    ASSERT_EQ(file.size(), 104u);
    EXPECT_EQ(std::string(file.begin(), file.begin() + 8), std::string("aviK\0\0\3\0", 8));
    for (int t = 0; t < 9; ++t) {
        EXPECT_EQ(count(file, t), 0u) << t;
        EXPECT_EQ(table(file, t), 0xFFFFFFFFFFFFFFFFull) << t;
    }
    // An unnamed texture and a skeleton that nothing refers to stay out.
    KivaBuilder builder(&container);
    auto texture = builder.createTexture(TextureFormat::DXT1, 64, 64, 7, 7, 0);
    container.addSkeleton(qe::Ref<AnimSkeleton>(new AnimSkeleton));
    EXPECT_EQ(serializeKiva(container).bytes, file);
}

TEST(KivaWriter, TwoByTwoTextureWithTwoLevelsByteForByte) {
    KivaContainer container;
    KivaBuilder builder(&container);
    auto texture = builder.createTexture(TextureFormat::A8R8G8B8, 2, 2, 2, 7, 0);
    uint8_t level0[16], level1[4] = {0xF0, 0xF1, 0xF2, 0xF3};
    for (int i = 0; i < 16; ++i) level0[i] = static_cast<uint8_t>(0xE0 + i);
    texture->writeLevel(0, level0, 0, 0);
    texture->writeLevel(1, level1, 0, 0);
    builder.textureRecordOf(texture)->name = "crate";

    const std::vector<uint8_t> expected = hexBytes(
        // header: magic, version, counts (1 string, 1 texture), reserved
        "61 76 69 4B 00 00 03 00 01 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
        // string table at 152, texture table at 104, the other seven tables absent
        "98 00 00 00 00 00 00 00 68 00 00 00 00 00 00 00" +
        std::string(7 * 16, 'F') +
        // 104: texture row: name 0, format 1, 2 levels, 2 x 2, 20 bytes at 128
        "00 00 01 02 02 00 02 00 14 00 00 00 00 00 00 00 80 00 00 00 00 00 00 00"
        // 128: texels of both levels, padded to 152
        "E0 E1 E2 E3 E4 E5 E6 E7 E8 E9 EA EB EC ED EE EF F0 F1 F2 F3 00 00 00 00"
        // 152: string row: length 5, characters at 168
        "05 00 00 00 00 00 00 00 A8 00 00 00 00 00 00 00"
        // 168: "crate", terminator, padding
        "63 72 61 74 65 00 00 00");
    EXPECT_EQ(serializeKiva(container).bytes, expected);

    auto srgb = builder.createTexture(TextureFormat::A8R8G8B8, 2, 2, 2, 7, 2);
    container.textures().front()->name.clear();
    builder.textureRecordOf(srgb)->name = "crate";
    const std::vector<uint8_t> file = serializeKiva(container).bytes;
    EXPECT_EQ(count(file, 1), 1u);
    EXPECT_EQ(field(file, table(file, 1) + 3, 1), 0x82u) << "any non-zero sRGB byte sets the high bit";
}

TEST(KivaWriter, EqualTextsShareOneStringRowAndEachStoresItsTerminator) {
    KivaContainer container;
    for (const char* name : {"a", "abcdefg", "abcdefgh"}) container.addTexture(name, 0, 0, 0, 0, false, 0);
    auto skeleton = qe::Ref<AnimSkeleton>(new AnimSkeleton);
    skeleton->bones.push_back(AnimBone("a", -1, {}, {0, 0, 0, 1}, {}, {}));
    container.addModel("abcdefg", identity(), container.addSkeleton(skeleton));
    container.addAnimation(qe::Ref<Animation>(new Animation("", {"a"}, 1, 60, 1)));
    const std::vector<uint8_t> file = serializeKiva(container).bytes;
    ASSERT_EQ(count(file, 0), 3u);
    // Characters plus terminator, each padded to 8: 1 -> 8, 7 -> 8, 8 -> 16.
    const uint64_t strings = table(file, 0);
    EXPECT_EQ(field(file, strings + 8, 8), strings + 48);
    EXPECT_EQ(field(file, strings + 16 + 8, 8), strings + 56);
    EXPECT_EQ(field(file, strings + 32 + 8, 8), strings + 64);
    EXPECT_EQ(file.size(), strings + 80) << "the file ends with the last string";
    EXPECT_EQ(std::string(file.begin() + 64 + long(strings), file.end()), std::string("abcdefgh\0\0\0\0\0\0\0\0", 16));
}

// Each limit of the format at its edge: n = 65535 is written, n = 65536
// gives no bytes and one message.
TEST(KivaWriter, EachLimitOfTheFormatFailsWithItsMessage) {
    struct Case {
        const char* passed;
        std::function<void(KivaContainer&, size_t)> fill;
    };
    auto skeleton = [](size_t bones) {
        auto s = qe::Ref<AnimSkeleton>(new AnimSkeleton);
        s->bones.resize(bones);
        return s;
    };
    // A model whose one binding places a mesh with `groups` groups.
    auto meshIn = [](KivaContainer& c, size_t groups) {
        MeshRecord* mesh = c.addMesh(nullptr, nullptr, groups);
        c.addModel("", identity(), nullptr)->meshBindings.push_back({"", mesh, identity(), {}});
        return mesh;
    };
    const Case cases[] = {
        {"too many distinct names in one container (at most 65535)",
         [](KivaContainer& c, size_t n) {
             std::vector<std::string> names;
             for (size_t i = 1; i < n; ++i) names.push_back("b" + std::to_string(i));
             c.addAnimation(qe::Ref<Animation>(new Animation("walk", names, 0, 60, 1)));
         }},
        {"too many models in one container (at most 65535)",
         [](KivaContainer& c, size_t n) {
             for (size_t i = 0; i < n; ++i) c.addModel("", identity(), nullptr);
         }},
        {"too many textures in one container (at most 65535)",
         [](KivaContainer& c, size_t n) {
             for (size_t i = 0; i < n; ++i) c.addTexture("t", 0, 0, 0, 0, false, 0);
         }},
        {"too many bones in one skeleton (at most 65535)",
         [&](KivaContainer& c, size_t n) { c.addModel("", identity(), c.addSkeleton(skeleton(n))); }},
        {"too many mesh bindings in model \"m\" (at most 65535)",
         [](KivaContainer& c, size_t n) { c.addModel("m", identity(), nullptr)->meshBindings.resize(n); }},
        {"too many bone map entries in mesh binding \"b\" of one model (at most 65535)",
         [](KivaContainer& c, size_t n) {
             c.addModel("", identity(), nullptr)->meshBindings.push_back({"b", nullptr, identity(), {}});
             c.models()[0]->meshBindings[0].boneMap.resize(n);
         }},
        {"too many material groups in one mesh (at most 65535)", [&](KivaContainer& c, size_t n) { meshIn(c, n); }},
        {"too many vector parameters in material of shader \"lit\" (at most 65535)",
         [&](KivaContainer& c, size_t n) {
             MaterialRecord* material = c.addMaterial("lit");
             material->vectorParameters.resize(n);
             meshIn(c, 1)->materialGroups[0].material = material;
         }},
        {"too many bones in animation \"walk\" (at most 65535)",
         [](KivaContainer& c, size_t n) {
             c.addAnimation(qe::Ref<Animation>(new Animation("walk", std::vector<std::string>(n), 0, 60, 1)));
         }},
        {"texture \"wide\" of 65536 by 1 texels is too large (at most 65535 on a side)",
         [](KivaContainer& c, size_t n) { c.addTexture("wide", 0, uint32_t(n), 1, 0, false, 0); }},
    };
    for (const Case& c : cases) {
        KivaContainer fits, over;
        c.fill(fits, 65535);
        c.fill(over, 65536);
        const SerializedKiva written = serializeKiva(fits);
        EXPECT_FALSE(written.limit) << written.limit.passed;
        EXPECT_FALSE(written.bytes.empty()) << c.passed;
        const SerializedKiva refused = serializeKiva(over);
        EXPECT_EQ(refused.limit.passed, c.passed);
        EXPECT_TRUE(refused.bytes.empty()) << c.passed;
    }
}

}  // namespace
}  // namespace tarn
