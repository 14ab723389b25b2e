#pragma once

#include <string_view>

#include "scene/skeleton_node_map.h"

class ErrorReporter;
class FbxGeometryConverter;
class FbxNode;
class MaterialTranslator;
namespace tarn {
class KivaBuilder;
}

// What model extraction works with for one scene.
struct ModelExtraction {
    tarn::KivaBuilder& builder;
    const SkeletonNodeMap& skeletonNodes;
    MaterialTranslator& translator;
    FbxGeometryConverter& converter;
    std::string_view input;  // the scene file, for reports
    ErrorReporter& errors;
};

// Turns every mesh below `rootNode` into meshes of the builder, placed in
// models. A model is born at the first node on each path from the root that
// carries a mesh, with that node's static world matrix; every mesh at or
// below that node belongs to it, placed relative to it. The model's top
// mesh is triangulated; meshes below it are fanned. Models come in depth
// first order, children in child order.
void extractModels(FbxNode& rootNode, const ModelExtraction& context);
