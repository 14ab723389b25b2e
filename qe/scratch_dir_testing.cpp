#include "qe/scratch_dir_testing.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "qe/fatal_error.h"

namespace fs = std::filesystem;

ScratchDir::ScratchDir() {
    std::string pattern = (fs::temp_directory_path() / "kivatran-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) qe::fatalError("cannot make a scratch directory");
    path_ = pattern;
}

ScratchDir::~ScratchDir() {
    std::error_code ec;
    fs::remove_all(path_, ec);
}

std::string ScratchDir::file(const std::string& relative) const { return path_ + "/" + relative; }

std::string ScratchDir::write(const std::string& relative, const std::string& contents) const {
    const std::string full = file(relative);
    fs::create_directories(fs::path(full).parent_path());
    std::ofstream(full, std::ios::binary) << contents;
    return full;
}

std::string ScratchDir::makeDir(const std::string& relative) const {
    const std::string full = file(relative);
    fs::create_directories(full);
    return full;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

bool fileExists(const std::string& path) { return fs::exists(path); }
