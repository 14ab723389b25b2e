#include "scene/texture_paths.h"

#include <vector>

namespace {

bool isSeparator(char c) { return c == '/' || c == '\\'; }

bool beginsWithShare(std::string_view path) { return path.starts_with("\\\\") || path.starts_with("//"); }

}  // namespace

std::string bindPath(std::string_view folder, std::string_view name) {
    if (name.find(':') != std::string_view::npos || beginsWithShare(name)) return std::string(name);
    if (folder.empty()) return std::string(name);
    std::string path(folder);
    if (!isSeparator(path.back())) path += '/';
    path += name;
    return path;
}

std::string cleanPath(std::string_view path) {
    std::vector<std::string_view> components;
    for (size_t begin = 0; begin < path.size();) {
        size_t end = begin;
        while (end < path.size() && !isSeparator(path[end])) ++end;
        const std::string_view component = path.substr(begin, end - begin);
        if (!component.empty() && component != ".") components.push_back(component);
        begin = end + 1;
    }

    std::string prefix;
    size_t first = 0;
    if (path.find(':') != std::string_view::npos) {
        if (!components.empty()) prefix = components[first++];
        prefix += '\\';
    } else if (beginsWithShare(path)) {
        prefix = "\\\\";
    } else if (!path.empty() && isSeparator(path.front())) {
        prefix = "\\";
    }
    const bool absolute = !prefix.empty();

    size_t climbs = 0;  // ".." components above the start
    std::vector<std::string_view> kept;
    for (size_t i = first; i < components.size(); ++i) {
        if (components[i] != "..") {
            kept.push_back(components[i]);
        } else if (!kept.empty()) {
            kept.pop_back();
        } else {
            ++climbs;
        }
    }
    if (absolute && climbs > 0) return {};

    std::string result = prefix;
    bool separate = false;
    auto append = [&](std::string_view component) {
        if (separate) result += '\\';
        result += component;
        separate = true;
    };
    for (size_t i = 0; i < climbs; ++i) append("..");
    for (std::string_view component : kept) append(component);
    return result;
}

std::string hostPath(std::string_view cleanedPath) {
    std::string path(cleanedPath);
    for (char& c : path)
        if (c == '\\') c = '/';
    return path;
}
