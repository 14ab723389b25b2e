#include "fbx/io/fbx_path_utils.h"

#include <sys/stat.h>
#include <unistd.h>

#include <vector>

FbxString FbxMakeAbsolutePath(const char* path) {
    if (!path || !*path) return FbxString();
    if (path[0] == '/') return path;
    std::vector<char> buffer(4096);
    if (!getcwd(buffer.data(), buffer.size())) return path;
    return FbxJoinPath(buffer.data(), path);
}

FbxString FbxPathDirectory(const char* path) {
    if (!path) return FbxString();
    FbxString p(path);
    size_t slash = p.rfind('/');
    if (slash == FbxString::npos) return FbxString();
    if (slash == 0) return "/";
    return p.substr(0, slash);
}

FbxString FbxJoinPath(const char* directory, const char* relative) {
    FbxString rel(relative ? relative : "");
    if (!directory || !*directory || (!rel.empty() && rel[0] == '/')) return rel;
    FbxString joined(directory);
    if (joined.back() != '/') joined += '/';
    return joined + rel;
}

bool FbxPathExists(const char* path) {
    struct stat info;
    return path && *path && stat(path, &info) == 0;
}
