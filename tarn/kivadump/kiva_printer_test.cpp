#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "qe/scratch_dir_testing.h"
#include "tarn/kivadump/dump_format.h"
#include "tarn/kivadump/kiva_json_printer.h"
#include "tarn/kivadump/kiva_sample_testing.h"
#include "tarn/kivadump/kiva_text_printer.h"

namespace tarn::kivaread {
namespace {

using namespace testing;

struct Dumps {
    std::string text;
    std::string json;
};

Dumps dump(std::vector<std::uint8_t> bytes) {
    const ReadKiva read = readKiva(std::move(bytes));
    EXPECT_EQ(read.fault, "");
    std::ostringstream text, json;
    printKivaText(read.file, text);
    printKivaJson(read.file, json);
    return {text.str(), json.str()};
}

bool contains(const std::string& haystack, const std::string& needle) {
    return haystack.find(needle) != std::string::npos;
}

// Both dumps of the sample, whole, against testdata/kivadump/ (the JSON file
// was checked with a JSON parser). KIVA_WRITE_GOLDEN=1 writes them anew.
TEST(KivaPrinterTest, SampleDumpsAsTheGoldenFilesShow) {
    const Dumps dumps = dump(sampleKiva());
    const std::string golden = KIVA_SOURCE_DIR "/testdata/kivadump/sample";
    if (std::getenv("KIVA_WRITE_GOLDEN")) {
        std::ofstream(golden + ".txt") << dumps.text;
        std::ofstream(golden + ".json") << dumps.json;
    }
    EXPECT_EQ(dumps.text, readFile(golden + ".txt"));
    EXPECT_EQ(dumps.json, readFile(golden + ".json"));
    const Dumps empty = dump(writeKiva(KivaContainer()));
    EXPECT_TRUE(contains(empty.json, "\"textures\": [],")) << empty.json;
    EXPECT_TRUE(contains(empty.text, "animations: 0\n")) << empty.text;
}

TEST(KivaPrinterTest, AwkwardNamesAndNumbersStayReadableAndValid) {
    KivaContainer container;
    MaterialRecord* material = container.addMaterial("quote\" back\\ tab\t nl\n bell\x07 \xC3\xA9 bad\xFF end\xE2\x82");
    material->vectorParameters.push_back({"v", {NAN, INFINITY, -INFINITY, 1e-30f}});
    MeshRecord* mesh = container.addMesh(nullptr, nullptr, 1);
    mesh->materialGroups[0] = {"", material, 0, 0, 2};
    container.addModel("", {}, nullptr)->meshBindings.push_back({"", mesh, {}, {}});
    const Dumps dumps = dump(writeKiva(container));
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
