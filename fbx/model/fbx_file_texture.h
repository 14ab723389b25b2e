#pragma once

#include "fbx/model/fbx_texture.h"

// A texture read from an image file, named as the writing tool stored it
// (the file name) and relative to the FBX file (the relative file name).
class FbxFileTexture : public FbxTexture {
    KIVA_FBX_OBJECT_DECLARE(FbxFileTexture, FbxTexture)

public:
    // False for a null or empty name, which leaves the name as it was.
    // Otherwise the name is kept and given to the texture's first source
    // of class FbxVideo too.
    bool SetFileName(const char* name);
    bool SetRelativeFileName(const char* name);
    // Never null; "" for a texture that was given no name.
    const char* GetFileName() const { return fileName_.c_str(); }
    const char* GetRelativeFileName() const { return relativeFileName_.c_str(); }
    const char* GetMediaName() const { return mediaName_.c_str(); }
    void SetMediaName(const char* name) { mediaName_ = name ? name : ""; }

    // "UseMaterial" (bool, false) and "UseMipMap" (bool, false).
    FbxPropertyT<FbxBool> UseMaterial() const { return GetPropertyById(sUseMaterial); }
    FbxPropertyT<FbxBool> UseMipMap() const { return GetPropertyById(sUseMipMap); }

    bool CopyFrom(const FbxObject& other) override;

protected:
    void Construct(const FbxObject* from) override;
    void ConstructProperties(bool forceSet) override;

private:
    static int sUseMaterial;
    static int sUseMipMap;

    FbxString fileName_;
    FbxString relativeFileName_;
    FbxString mediaName_;
};
