#pragma once

#include <cstdint>

#include "fbx/model/fbx_object.h"

// The media behind a file texture: its file names, and what a file said
// about content embedded in it.
class FbxVideo : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxVideo, FbxObject)

public:
    // False for a null or empty name, which leaves the name as it was.
    bool SetFileName(const char* name);
    bool SetRelativeFileName(const char* name);
    // Never null.
    const char* GetFileName() const { return fileName_.c_str(); }
    const char* GetRelativeFileName() const { return relativeFileName_.c_str(); }
    // The name the file gave before an embedded copy replaced it.
    const char* GetOriginalFileName() const { return originalFileName_.c_str(); }
    void SetOriginalFileName(const char* name) { originalFileName_ = name ? name : ""; }

    // The byte size of the content embedded in the file, 0 for none; the
    // content itself goes to the media folder when it is extracted.
    int64_t GetEmbeddedContentSize() const { return embeddedSize_; }
    void SetEmbeddedContentSize(int64_t size) { embeddedSize_ = size < 0 ? 0 : size; }

    void SetUseMipMap(bool use) { useMipMap_ = use; }
    bool GetUseMipMap() const { return useMipMap_; }

    // "Path" (string, ""): the file name as the file's properties give it.
    FbxPropertyT<FbxString> Path() const { return GetPropertyById(sPath); }

    bool CopyFrom(const FbxObject& other) override;

protected:
    void Construct(const FbxObject* from) override;
    void ConstructProperties(bool forceSet) override;

private:
    void CopyVideoValues(const FbxVideo& other);

    static int sPath;

    FbxString fileName_;
    FbxString relativeFileName_;
    FbxString originalFileName_;
    int64_t embeddedSize_ = 0;
    bool useMipMap_ = false;
};
