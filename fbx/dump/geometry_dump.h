#pragma once

#include "fbx/dump/dump_value.h"

class FbxObject;

// Adds to an object's dump what its class holds beside properties:
//
// - a mesh: "mesh" with the counts of "controlPoints", "polygons",
//   "polygonVertices" and "edges", its "layers", each a list of elements
//   ("kind" as the file word, "name", "mapping", "reference", "direct" and
//   "index" counts), and "unlayeredElements", the elements no layer holds;
// - a skin: "clusters", each with its "name", "link" node, number of
//   "indices" and "weightSum";
// - a pose: "pose" with its "type" and the "entries" (node, "local");
// - a surface material: "material" with its "shadingModel", "colors" (every
//   colour property of its class) and "textures" (the relative file name
//   of each file texture on a property, by property);
// - a file texture: "fileName" and "relativeFileName";
// - a video: "fileName", "relativeFileName" and "embeddedSize".
void addGeometryDetails(const FbxObject& object, DumpValue& value);
