#pragma once

class FbxManager;
class FbxMesh;
class FbxNode;

// Turns meshes with polygons of more than three corners into triangle
// meshes. Each polygon is tessellated in the plane of its dominant axis,
// which copes with concave polygons; one that the tessellator cannot handle
// becomes a zig-zag strip of its corners. Control points stay as they are
// and every layer element is rebuilt to follow the new polygons.
class FbxGeometryConverter {
public:
    explicit FbxGeometryConverter(FbxManager* manager) : mManager(manager) {}

    // Makes the node's default attribute a triangle mesh: a mesh that has
    // polygons of more than three corners is replaced, on every node that
    // uses it, by its triangulated copy (which becomes each node's default
    // attribute), and destroyed. True when the default attribute now is a
    // triangle mesh; false for a null node or an attribute that is no mesh.
    bool TriangulateInPlace(FbxNode* node);

    // A new mesh, in the same scene as `mesh`, holding the triangles of its
    // polygons; null for a null mesh. A polygon of fewer than three corners,
    // or one degenerate in the plane of its dominant axis, leaves nothing
    // behind. The mesh itself is left as it is but for a direct material
    // element, which becomes an indexed one.
    FbxMesh* TriangulateMesh(FbxMesh* mesh);

    FbxManager* GetFbxManager() const { return mManager; }

private:
    FbxManager* mManager;
};
