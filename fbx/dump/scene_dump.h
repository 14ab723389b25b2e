#pragma once

#include "fbx/dump/dump_value.h"

class DumpWriter;
class FbxDocument;
class FbxImporter;
class FbxScene;

// The header of the importer's file: "version" (as "major.minor.revision"),
// "fileVersion" (the number in the file), "creator" and "syntax" ("binary"
// or "text").
DumpValue dumpHeader(const FbxImporter& importer);

// Writes the node tree from the scene's root: each node with its "name",
// "attributes" (class names, in attribute order), "translation",
// "rotation" and "scaling" (local values), "materials" when it has any,
// and "children". Each node is written once, whatever the depth; a node
// met again is written by its name, marked "seenBefore".
void dumpNodeTree(const FbxScene& scene, DumpWriter& writer);

// Writes every object of the document, the document first and then its
// members grouped by class name (in member order within a class):
// "class", "name", "sources" and "destinations" (objects, as "Class
// Name"), "propertyConnections" and "properties" (those whose values
// differ from the class default, by hierarchical name), and for geometry,
// deformers, poses, materials, textures and videos what addGeometryDetails
// gives.
void dumpObjects(const FbxDocument& document, DumpWriter& writer);
