// Runs the built program as a data build would and checks what it prints,
// what it writes and how it exits.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "image/test_images_testing.h"
#include "qe/scratch_dir_testing.h"

namespace {

const std::string kProgram = KIVA_BIN_DIR "/kivatran";

std::string usage(const std::string& program) {
    return "usage: " + program +
           " [options] files\n"
           "  options:\n"
           "    -o/--output FILENAME     output filename (required)\n"
           "    --no-materials           exclude all materials\n"
           "    --texture-mode           'include' (default), 'strip', 'reference'\n"
           "    --no-baked-anim          do not bake animations\n"
           "    --dependencies FILENAME  log dependencies to FILENAME\n";
}

std::string quote(const std::string& s) {
    std::string q = "'";
    for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

struct Result {
    int code;
    std::string out, err;
};

struct Kivatran : ::testing::Test {
    ScratchDir dir;

    Kivatran() { dir.write("default.settings", "resource-root: /art/\n"); }

    // Runs the program in the scratch directory. prefix goes before it in the
    // shell command (limits, traps), tail behind the arguments as it stands.
    Result run(const std::vector<std::string>& args, const std::string& prefix = "", const std::string& tail = "") {
        std::string cmd = "cd " + quote(dir.path()) + " && " + prefix + quote(kProgram);
        for (const std::string& a : args) cmd += " " + quote(a);
        cmd += " " + tail;
        cmd += " >" + quote(dir.file(".stdout")) + " 2>" + quote(dir.file(".stderr"));
        const int status = std::system(("/bin/sh -c " + quote(cmd)).c_str());
        Result r{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(dir.file(".stdout")),
                 readFile(dir.file(".stderr"))};
        std::filesystem::remove(dir.file(".stdout"));
        std::filesystem::remove(dir.file(".stderr"));
        return r;
    }

    void image(const std::string& name, int w, int h, int channels, uint32_t seed = 1) {
        dir.write(name, "");
        ASSERT_TRUE(writePng(dir.file(name), w, h, channels, patternPixels(w, h, channels, seed)));
    }
};

TEST_F(Kivatran, UsageErrorsPrintTheirMessageAndTheUsageTextAndExitOne) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "No input files supplied.\n"},
        {{"-o", "a.kiva"}, "No input files supplied.\n"},
        {{"in.png"}, "No output file supplied.\n"},
        {{"--texture-mode", "include", "--texture-mode", "strip", "a.png"},
         "-texture-mode can only be supplied once.\n"},
        {{"a.png", "--texture-mode"}, "-texture-mode must be followed by a mode name.\n"},
        {{"--texture-mode", "Include", "a.png"}, "unknown texture mode Include\n"},
        {{"-o", "a.kiva", "--output", "b.kiva", "a.png"}, "-o/--output can only be supplied once.\n"},
        {{"a.png", "--output"}, "-o/--output must be followed by a filename.\n"},
        {{"--dependencies", "d", "--dependencies", "e", "a.png"}, "--dependencies can only be supplied once.\n"},
        {{"a.png", "-o", "x", "--dependencies"}, "--dependencies must be followed by a filename.\n"},
        {{"--no-baked-anim", "-o", "a.kiva", "b.fbx"}, "Invalid option: --no-baked-anim\n"},
        {{"-o", "a.kiva", "b.png", "-"}, "Invalid option: -\n"},
    };
    for (const auto& [args, message] : cases) {
        Result r = run(args);
        EXPECT_EQ(r.code, 1) << message;
        EXPECT_EQ(r.err, message + usage(kProgram));
        EXPECT_EQ(r.out, "") << message;
    }
    EXPECT_FALSE(fileExists(dir.file("a.kiva")));
}

TEST_F(Kivatran, ConvertsSeveralImagesInOrderAndListsDependencies) {
    image("art/b.png", 8, 8, 3);
    image("art/a.png", 4, 2, 4);
    dir.write("art/a.png.settings", "texture-format-alpha: argb\n");
    Result r = run({"--no-materials", "--no-meshes", "--bake-anims", "-o", "out.kiva", "art/b.png", "art/a.png",
                    "--dependencies", "deps.txt"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(readFile(dir.file("deps.txt")),
              "art/a.png\nart/a.png.settings\nart/b.png\nart/b.png.settings\nart/default.settings\n"
              "default.settings\n");
    // Two texture rows in input order: b.png as DXT1 (4) with 3 levels, a.png
    // as A8R8G8B8 (1) with 2 levels of 32 + 8 bytes.
    const std::string kiva = readFile(dir.file("out.kiva"));
    ASSERT_GE(kiva.size(), 104u + 48u);
    EXPECT_EQ(kiva.substr(0, 12), std::string("aviK\0\0\3\0\2\0\2\0", 12));  // 2 strings, 2 textures
    EXPECT_EQ(kiva.substr(104, 4), std::string("\0\0\4\3", 4));
    EXPECT_EQ(kiva.substr(104 + 24, 16), std::string("\1\0\1\2\4\0\2\0\x28\0\0\0\0\0\0\0", 16));
    EXPECT_NE(kiva.find("/art/art/b.png"), std::string::npos);

    // The same inputs give the same bytes.
    EXPECT_EQ(run({"-o", "again.kiva", "art/b.png", "art/a.png"}).code, 0);
    EXPECT_EQ(readFile(dir.file("again.kiva")), kiva);
}

TEST_F(Kivatran, DependencyListOnStandardOutputAfterTheOutput) {
    image("a.png", 2, 2, 3);
    Result r = run({"-o", "o.kiva", "a.png", "--dependencies", "-"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "a.png\na.png.settings\ndefault.settings\n");
    EXPECT_TRUE(fileExists(dir.file("o.kiva")));
    // "-o -x" takes -x as the output path.
    EXPECT_EQ(run({"-o", "-x", "a.png"}).code, 0);
    EXPECT_TRUE(fileExists(dir.file("-x")));
}

TEST_F(Kivatran, ConvertsASceneWithItsTexturesFromTheScenesFolder) {
    const std::string example = std::string(KIVA_SOURCE_DIR) + "/examples/scene/";
    for (const char* name :
         {"demo.fbx", "crate_diffuse.png", "brick_diffuse.png", "brick_normal.png", "worm_diffuse.png"})
        dir.write(std::string("scene/") + name, readFile(example + name));
    Result r = run({"-o", "out.kiva", "scene/demo.fbx", "--dependencies", "-"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.err, "");
    std::string expected = "default.settings\n";
    for (const char* texture : {"brick_diffuse.png", "brick_normal.png", "crate_diffuse.png"})
        expected += std::string("scene/") + texture + "\nscene/" + texture + ".settings\n";
    expected += "scene/default.settings\nscene/demo.fbx\nscene/worm_diffuse.png\nscene/worm_diffuse.png.settings\n";
    EXPECT_EQ(r.out, expected);
    // The independent reader accepts what was written.
    EXPECT_EQ(std::system(("/bin/sh -c " +
                           quote(quote(KIVA_BIN_DIR "/kivadump") + " " + quote(dir.file("out.kiva")) + " >/dev/null"))
                              .c_str()),
              0);

    // A texture that is missing or cannot be decoded is an error: nothing is
    // written and the earlier output keeps its bytes.
    const std::string written = readFile(dir.file("out.kiva"));
    dir.write("scene/worm_diffuse.png", "not a picture");
    std::filesystem::remove(dir.file("scene/brick_normal.png"));
    r = run({"-o", "out.kiva", "scene/demo.fbx"});
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.err.find("scene/brick_normal.png: could not load: cannot read the file"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("scene/worm_diffuse.png: could not load: unknown image format"), std::string::npos) << r.err;
    EXPECT_TRUE(r.err.ends_with("2 errors\n")) << r.err;
    EXPECT_EQ(readFile(dir.file("out.kiva")), written);

    // A cut file yields what could be read of it.
    dir.write("scene/cut.fbx", readFile(example + "demo.fbx").substr(0, 30000));
    r = run({"-o", "cut.kiva", "scene/cut.fbx", "--texture-mode", "strip"});
    EXPECT_EQ(r.code, 0) << r.err;
}

TEST_F(Kivatran, ErrorsAreCountedAndNothingIsWritten) {
    image("IMAGE.PNG", 2, 2, 3);
    image("ok.png", 2, 2, 3);
    dir.write("out.kiva", "previous");
    Result r = run({"-o", "out.kiva", "--dependencies", "deps.txt", "IMAGE.PNG", "a.tiff", "png", "", "scene.FBX",
                    "ok.png", "missing.tga"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err,
              "a.tiff: unrecognized extension\n"
              "png: unrecognized extension\n"
              ": unrecognized extension\n"
              "scene.FBX: Call to FbxImporter::Initialize() failed: Unexpected file type\n"
              "missing.tga: could not load: cannot read the file (No such file or directory)\n"
              "5 errors\n");
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(readFile(dir.file("out.kiva")), "previous");
    EXPECT_FALSE(fileExists(dir.file("deps.txt")));
}

TEST_F(Kivatran, OtherTextureModesRefuseImageInputs) {
    image("a.png", 2, 2, 3);
    Result r = run({"--texture-mode", "strip", "-o", "o.kiva", "a.png", "b.fbx"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err,
              "a.png: --texture-mode incompatable with image input file\n"
              "b.fbx: Call to FbxImporter::Initialize() failed: Unexpected file type\n2 errors\n");
    r = run({"--texture-mode", "reference", "-o", "o.kiva", "a.png"});
    EXPECT_EQ(r.err, "a.png: --texture-mode incompatable with image input file\n1 error\n");
    EXPECT_FALSE(fileExists(dir.file("o.kiva")));
}

TEST_F(Kivatran, FailedWritesAreReportedAndKeepOldBytes) {
    image("a.png", 64, 64, 4);
    dir.makeDir("isdir");
    dir.write("old.kiva", "old");
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"-o", "isdir", "a.png"}, "isdir: could not open for writing\n"},
        {{"-o", "no/such/dir.kiva", "a.png", "--dependencies", "d.txt"},
         "no/such/dir.kiva: could not open for writing\n"},
        // The output is complete, the list cannot be written: neither is.
        {{"-o", "old.kiva", "a.png", "--dependencies", "isdir"}, "isdir: could not write\n"},
        {{"-o", "old.kiva", "a.png", "--dependencies", "no/such/d.txt"}, "no/such/d.txt: could not write\n"},
    };
    for (const auto& [args, message] : cases) {
        Result r = run(args);
        EXPECT_EQ(r.code, 1);
        EXPECT_EQ(r.err, message + "1 error\n");
    }
    EXPECT_FALSE(fileExists(dir.file("d.txt")));

    // A full disk: the file size limit stops the write half-way.
    Result r = run({"-o", "old.kiva", "a.png"}, "ulimit -f 1 && trap '' XFSZ && ");
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "old.kiva: failed trying to write\n1 error\n");
    EXPECT_EQ(readFile(dir.file("old.kiva")), "old");
    size_t files = 0;
    for (auto& e : std::filesystem::directory_iterator(dir.path())) files += e.path().filename() != "default.settings";
    EXPECT_EQ(files, 3u) << "a.png, isdir and old.kiva; no temporary file left behind";
}

// The largest inputs images can give: a side above 65535 texels, and more
// textures than a container holds.
TEST_F(Kivatran, ContainerLimitsAreOneErrorAndNothingIsWritten) {
    image("wide.png", 65536, 1, 1);
    image("a.png", 1, 1, 3);
    dir.write("a.png.settings", "texture-format-noalpha: rgb\n");  // no block compression: fast
    dir.write("out.kiva", "old");
    Result r = run({"-o", "out.kiva", "wide.png"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err,
              "wide.png: image of 65536 by 1 texels is too large for a texture (at most 65535 on a side); lower "
              "texture-max-size\n1 error\n");
    r = run({"-o", "out.kiva", "--dependencies", "deps.txt"}, "", "$(yes a.png | head -n 65536)");
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "out.kiva: too many textures in one container (at most 65535)\n1 error\n");
    EXPECT_EQ(readFile(dir.file("out.kiva")), "old");
    EXPECT_FALSE(fileExists(dir.file("deps.txt")));
}

// Files that end before the data their headers promise.
TEST_F(Kivatran, DamagedImagesAreErrors) {
    image("good.png", 4, 4, 3);
    const std::string png = readFile(dir.file("good.png"));
    dir.write("cut.png", png.substr(0, png.size() - 20));
    // 4x4 true-colour TGA headers: raw, and run-length encoded.
    const std::string raw("\0\0\2\0\0\0\0\0\0\0\0\0\4\0\4\0\x18\0", 18);
    std::string rle = raw;
    rle[2] = 10;
    dir.write("bare.tga", raw);
    dir.write("short.tga", raw + std::string(16 * 3 - 1, 'x'));
    dir.write("runs.tga", rle + std::string("\x8F\1\2", 3));  // a run of 16 with 2 of 3 bytes
    dir.write("out.kiva", "old");
    Result r = run({"-o", "out.kiva", "good.png", "cut.png", "bare.tga", "short.tga", "runs.tga"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err,
              "cut.png: could not load: truncated image data\n"
              "bare.tga: could not load: truncated image data\n"
              "short.tga: could not load: truncated image data\n"
              "runs.tga: could not load: truncated image data\n4 errors\n");
    EXPECT_EQ(readFile(dir.file("out.kiva")), "old");
    // Complete, they convert.
    dir.write("short.tga", raw + std::string(16 * 3, 'x'));
    dir.write("runs.tga", rle + std::string("\x8F\1\2\3", 4));
    EXPECT_EQ(run({"-o", "out.kiva", "short.tga", "runs.tga"}).err, "");
}

}  // namespace
