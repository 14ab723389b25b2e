#pragma once

#include <string>
#include <string_view>

namespace qe {

// How a path's text is read: Posix knows only '/', Windows also '\\' and a
// drive prefix ending in ':'.
enum class PathStyle { Posix = 0, Windows = 1 };

// The directory part of a path, computed on its text alone. A root ("/",
// "C:", "C:/") keeps its separator; a path without any gives "".
std::string parentPath(std::string_view path, PathStyle style);

// Cuts the last path component at its last '.', ignoring dots at the start
// of the component, so that ".hidden" keeps its text.
std::string stripExtension(std::string_view path, PathStyle style);

// Replaces the first occurrence of what; an empty what occurs at the start.
void replaceFirst(std::string& text, std::string_view what, std::string_view with);

// Replaces every occurrence from left to right, going on behind each
// replacement. An empty what changes nothing.
void replaceAll(std::string& text, std::string_view what, std::string_view with);

}  // namespace qe
