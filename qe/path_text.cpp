#include "qe/path_text.h"

#include "qe/fatal_error.h"

namespace qe {

namespace {

void checkStyle(PathStyle style) {
    if (style != PathStyle::Posix && style != PathStyle::Windows) fatalError("strange value for style");
}

}  // namespace

std::string parentPath(std::string_view path, PathStyle style) {
    checkStyle(style);
    const bool windows = style == PathStyle::Windows;
    for (size_t i = path.size(); i-- > 0;) {
        const char c = path[i];
        if (windows && c == ':') return std::string(path.substr(0, i + 1));
        if (c == '/' || (windows && c == '\\')) {
            const bool keep = i == 0 || (windows && path[i - 1] == ':');
            return std::string(path.substr(0, keep ? i + 1 : i));
        }
    }
    return std::string();
}

std::string stripExtension(std::string_view path, PathStyle style) {
    checkStyle(style);
    const bool windows = style == PathStyle::Windows;
    size_t start = 0;
    for (size_t i = path.size(); i-- > 0;) {
        const char c = path[i];
        if (c == '/' || (windows && (c == '\\' || c == ':'))) {
            start = i + 1;
            break;
        }
    }
    while (start < path.size() && path[start] == '.') ++start;
    const size_t dot = path.rfind('.');
    if (dot == std::string_view::npos || dot < start) return std::string(path);
    return std::string(path.substr(0, dot));
}

void replaceFirst(std::string& text, std::string_view what, std::string_view with) {
    const size_t at = text.find(what);
    if (at != std::string::npos) text.replace(at, what.size(), with);
}

void replaceAll(std::string& text, std::string_view what, std::string_view with) {
    if (what.empty()) return;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

}  // namespace qe
