#pragma once

#include <string>

// A fresh directory under the system's temporary directory, removed with
// everything in it when the object dies.
class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    const std::string& path() const { return path_; }
    // path() + "/" + relative
    std::string file(const std::string& relative) const;
    // Creates parent directories as needed. Returns the full path.
    std::string write(const std::string& relative, const std::string& contents) const;
    std::string makeDir(const std::string& relative) const;

private:
    std::string path_;
};

std::string readFile(const std::string& path);
bool fileExists(const std::string& path);
