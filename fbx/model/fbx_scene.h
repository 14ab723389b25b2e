#pragma once

#include "fbx/model/fbx_document.h"

class FbxGlobalSettings;
class FbxNode;
class FbxPose;

// The document of one scene: every node, geometry, material and animation
// of a file is a source of it. A scene is made with its root node
// ("RootNode", no attribute) and its settings ("GlobalSettings"), both
// sources of it; the root node stays the same object for the scene's life.
class FbxScene : public FbxDocument {
    KIVA_FBX_OBJECT_DECLARE(FbxScene, FbxDocument)

public:
    // Null only while Clear runs, or after the root node was destroyed by
    // hand.
    FbxNode* GetRootNode() const;
    // The first source of class FbxGlobalSettings.
    FbxGlobalSettings* GetGlobalSettings() const;
    // The scene's poses: its sources of class FbxPose. Null for a bad index.
    int GetPoseCount() const;
    FbxPose* GetPose(int index) const;

    // Destroys every source but the root node and makes new settings. The
    // root node is detached meanwhile and connected again.
    void Clear();

protected:
    void Construct(const FbxObject* from) override;

private:
    FbxNode* rootNode_ = nullptr;
};
