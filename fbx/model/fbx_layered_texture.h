#pragma once

#include <vector>

#include "fbx/model/fbx_texture.h"

// A texture made of blended texture layers: its source textures, in
// connection order, each with an entry of blend mode and alpha.
class FbxLayeredTexture : public FbxTexture {
    KIVA_FBX_OBJECT_DECLARE(FbxLayeredTexture, FbxTexture)

public:
    struct Entry {
        int blendMode = 0;
        double alpha = 1.0;
    };

    std::vector<Entry>& GetEntries() { return entries_; }
    const std::vector<Entry>& GetEntries() const { return entries_; }

protected:
    void Construct(const FbxObject* from) override;

private:
    std::vector<Entry> entries_;
};
