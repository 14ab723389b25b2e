#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "tarn/kivadump/dump_format.h"
#include "tarn/kivadump/kiva_file_builder_testing.h"
#include "tarn/kivadump/kiva_json_printer.h"
#include "tarn/kivadump/kiva_reader.h"
#include "tarn/kivadump/kiva_text_printer.h"

namespace tarn::kivaread {
namespace {

using namespace testing;

// A strict JSON syntax check (RFC 8259 grammar, UTF-8 not re-validated).
class JsonSyntax {
public:
    explicit JsonSyntax(std::string_view text) : text_(text) {}
    bool valid() {
        skip();
        if (!value()) return false;
        skip();
        return at_ == text_.size();
    }

private:
    void skip() {
        while (at_ < text_.size() && std::string_view(" \t\r\n").find(text_[at_]) != std::string_view::npos) ++at_;
    }
    bool eat(char c) {
        skip();
        if (at_ < text_.size() && text_[at_] == c) return ++at_, true;
        return false;
    }
    bool literal(std::string_view word) {
        if (text_.substr(at_, word.size()) != word) return false;
        at_ += word.size();
        return true;
    }
    bool string() {
        if (!eat('"')) return false;
        while (at_ < text_.size()) {
            const unsigned char c = static_cast<unsigned char>(text_[at_++]);
            if (c == '"') return true;
            if (c < 0x20) return false;
            if (c == '\\') {
                if (at_ >= text_.size()) return false;
                const char e = text_[at_++];
                if (e == 'u') {
                    for (int i = 0; i < 4; ++i)
                        if (at_ >= text_.size() || !std::isxdigit(static_cast<unsigned char>(text_[at_++])))
                            return false;
                } else if (std::string_view("\"\\/bfnrt").find(e) == std::string_view::npos) {
                    return false;
                }
            }
        }
        return false;
    }
    bool number() {
        const std::size_t start = at_;
        if (at_ < text_.size() && text_[at_] == '-') ++at_;
        if (at_ >= text_.size() || !std::isdigit(static_cast<unsigned char>(text_[at_]))) return false;
        if (text_[at_] == '0' && at_ + 1 < text_.size() && std::isdigit(static_cast<unsigned char>(text_[at_ + 1])))
            return false;
        while (at_ < text_.size() && std::string_view("0123456789.eE+-").find(text_[at_]) != std::string_view::npos)
            ++at_;
        return at_ > start;
    }
    bool value() {
        skip();
        if (at_ >= text_.size()) return false;
        const char c = text_[at_];
        if (c == '{') {
            ++at_;
            if (eat('}')) return true;
            do {
                if (!string() || !eat(':') || !value()) return false;
            } while (eat(','));
            return eat('}');
        }
        if (c == '[') {
            ++at_;
            if (eat(']')) return true;
            do {
                if (!value()) return false;
            } while (eat(','));
            return eat(']');
        }
        if (c == '"') return string();
        if (c == 't') return literal("true");
        if (c == 'f') return literal("false");
        if (c == 'n') return literal("null");
        return number();
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

struct Dumps {
    std::string text;
    std::string json;
};

Dumps dump(KivaFileBuilder builder) {
    const std::vector<std::uint8_t> bytes = builder.build();
    KivaReader reader(bytes);
    KivaFile file;
    EXPECT_TRUE(reader.read(file)) << reader.fault();
    std::ostringstream text, json;
    printKivaText(file, text);
    printKivaJson(file, json);
    return {text.str(), json.str()};
}

bool contains(const std::string& haystack, const std::string& needle) {
    return haystack.find(needle) != std::string::npos;
}

TEST(KivaPrinterTest, TextShowsEveryTableWithNamesAndFormats) {
    const std::string text = dump(sampleKiva()).text;
    for (const char* line : {
             "header: magic 0x4B697661 \"aviK\", version 0x00030000, ",
             "  [0] \"tex/wood.png\": A8R8G8B8 2x2, 2 mip levels, sRGB, 20 bytes at 0x",
             "  [1] \"tex/stone.png\": DXT1 5x3, 3 mip levels, 32 bytes at 0x",
             "  [2] \"other.kiva\": Invalid 0x0, 0 mip levels, 0 bytes, reference to another container\n",
             "vertex buffers: 1\n  [0] Position3Normal3: 4 vertices, stride 24, 96 bytes at 0x",
             "  [1] IF_UInt32: 3 indices, 12 bytes at 0x",
             "  [0] shader \"Lambert\": 2 vector, 2 texture, 1 matrix parameters\n"
             "      vector \"AmbientColor\" = (0.25, 0.5, 1, 1)\n",
             "      texture \"DiffuseTexture\" = texture 1 \"tex/stone.png\"\n"
             "      texture \"NormalTexture\" = texture none\n"
             "      matrix \"UvTransform\" = (1, 0, 0, 0 | 0, 1, 0, 0 | 0, 0, 1, 0 | 0, 0, 0, 1)\n",
             "  [0] vertex buffer 0, index buffer 0, 2 groups\n"
             "      group 0 (none): material 0 \"Lambert\", TriangleList, first index 0, 1 triangle\n"
             "      group 1 \"top\": material 1 \"Phong\", TriangleList, first index 3, 1 triangle\n",
             "      bone 2 \"knee\": parent 1 \"hip\"\n          translation (0, 0, 2)\n"
             "          rotation (0, 0, 0, 1)\n          scale/shear (1, 0, 0 | 0, 1, 0 | 0, 0, 1)\n",
             "  [0] \"Body\": skeleton 0, 2 mesh bindings\n"
             "      matrix (1, 0, 0, 0 | 0, 1, 0, 0 | 0, 0, 1, 0 | 2.5, 0, 0, 1)\n"
             "      binding 0 \"BodyShape\": mesh 0\n",
             "          bone map [0, 1, 2]\n",
             "  [1] \"Empty\": skeleton none, 0 mesh bindings\n",
             "animations: 1\n  [0] \"walk\": 60/1 frames per second, 3 frames, 2 bones\n"
             "      bones \"root\" \"knee\"\n",
         })
        EXPECT_TRUE(contains(text, line)) << line << "\n---\n" << text;
}

TEST(KivaPrinterTest, JsonIsOneValidDeterministicDocument) {
    const Dumps first = dump(sampleKiva());
    EXPECT_TRUE(JsonSyntax(first.json).valid()) << first.json;
    EXPECT_EQ(first.json, dump(sampleKiva()).json);
    for (const char* member : {
             "\"magic\": 1265202785,",
             "\"version\": 196608,",
             "\"strings\": [\n    \"tex/wood.png\",",
             "\"format\": \"DXT1\",",
             "\"srgb\": true,",
             "\"dataOffset\": null",
             "\"format\": \"Position3Normal3\",\n      \"stride\": 24,\n      \"count\": 4,",
             "\"name\": \"DiffuseColor\",\n          \"value\": [1, 0.5, 0.25, 1]",
             "\"name\": \"NormalTexture\",\n          \"texture\": null",
             "\"groups\": [\n        {\n          \"name\": \"\",\n          \"material\": 0,",
             "\"primitive\": \"TriangleList\"",
             "\"parent\": 1,\n          \"translation\": [0, 0, 2],",
             "\"skeleton\": null,",
             "\"boneMap\": [0, 1, 2]",
             "\"framesPerSecondNumerator\": 60,\n      \"framesPerSecondDenominator\": 1,\n"
             "      \"frameCount\": 3,\n      \"boneNames\": [\"root\", \"knee\"]",
         })
        EXPECT_TRUE(contains(first.json, member)) << member << "\n---\n" << first.json;
}

TEST(KivaPrinterTest, EmptyFilePrintsEmptyTables) {
    const Dumps empty = dump(KivaFileBuilder());
    EXPECT_TRUE(JsonSyntax(empty.json).valid()) << empty.json;
    EXPECT_TRUE(contains(empty.json, "\"textures\": [],")) << empty.json;
    EXPECT_TRUE(contains(empty.text, "animations: 0\n")) << empty.text;
}

TEST(KivaPrinterTest, AwkwardNamesAndNumbersStayReadableAndValid) {
    KivaFileBuilder builder;
    TestMaterial material;
    material.shader = "quote\" back\\ tab\t nl\n bell\x07 \xC3\xA9 bad\xFF end\xE2\x82";
    material.vectors = {{"v", {NAN, INFINITY, -INFINITY, 1e-30f}}};
    builder.materials.push_back(material);
    const Dumps dumps = dump(builder);
    EXPECT_TRUE(JsonSyntax(dumps.json).valid()) << dumps.json;
    EXPECT_TRUE(
        contains(dumps.json,
                 "\"shader\": \"quote\\\" back\\\\ tab\\t nl\\n bell\\u0007 \xC3\xA9 bad\\u00FF end\\u00E2\\u0082\""))
        << dumps.json;
    EXPECT_TRUE(contains(dumps.json, "\"value\": [\"nan\", \"inf\", \"-inf\", 1e-30]")) << dumps.json;
    EXPECT_TRUE(
        contains(dumps.text, "shader \"quote\\\" back\\\\ tab\\x09 nl\\x0A bell\\x07 \xC3\xA9 bad\xFF end\xE2\x82\""))
        << dumps.text;
    EXPECT_TRUE(contains(dumps.text, "vector \"v\" = (nan, inf, -inf, 1e-30)")) << dumps.text;
}

TEST(KivaPrinterTest, FloatsPrintShortestAndReadBackExactly) {
    EXPECT_EQ(formatFloat(0.1f), "0.1");
    EXPECT_EQ(formatFloat(-2.0f), "-2");
    EXPECT_EQ(formatFloat(0.0f), "0");
    EXPECT_EQ(formatFloat(-0.0f), "-0");
    for (float value : {1.0f / 3.0f, 123456.789f, 1e-38f, 3.4e38f, 1.17549435e-38f})
        EXPECT_EQ(std::strtof(formatFloat(value).c_str(), nullptr), value);
}

}  // namespace
}  // namespace tarn::kivaread
