#pragma once

#include <string>
#include <string_view>

// How a scene's texture names become paths. Scene files from Windows tools
// name textures with backslashes, drive letters and UNC shares; the rules
// below read '/' and '\\' alike. A path is absolute when it holds a ':'
// (its first component is then its drive), begins with two separators of
// one kind ("\\\\" or "//", a share), or begins with one separator (the
// root: of the file system here, of the current drive on Windows).

// The texture name joined to the folder of its scene: `name` itself when it
// names a drive (holds a ':') or a share, else `folder`, a '/' unless the
// folder already ends in a separator, and `name`. A name that begins with a
// single separator is joined like any other. An empty folder (the current
// directory) leaves `name` as it is.
std::string bindPath(std::string_view folder, std::string_view name);

// The path with "." components and empty ones dropped and each ".."
// applied to the component before it, written with backslashes: the drive
// and a backslash, or two backslashes for a share, or one for the root,
// then the components. A relative path keeps the ".." components that
// climb above its start; an absolute path that climbs above its root gives
// "". An absolute path without components keeps its prefix ("C:\\").
std::string cleanPath(std::string_view path);

// A cleaned path as this system opens it and lists it as a dependency:
// backslashes become '/', which Windows reads as well.
std::string hostPath(std::string_view cleanedPath);
