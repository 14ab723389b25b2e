#pragma once

#include <memory>
#include <vector>

#include "fbx/io/fbx_axis_info.h"
#include "fbx/io/fbx_header_info.h"
#include "fbx/io/fbx_progress.h"
#include "fbx/io/fbx_statistics.h"
#include "fbx/model/fbx_io_base.h"
#include "fbx/model/fbx_take_info.h"

class FbxDocument;
class FbxDocumentInfo;
class FbxIOSettings;
class FbxReader;

// Reads a file into a document, hiding which reader and which file version
// are at work:
//
//     FbxImporter* importer = FbxImporter::Create(manager, "");
//     if (!importer->Initialize(path, -1, manager->GetIOSettings()))
//         ... importer->GetStatus().GetErrorString() ...
//     importer->Import(scene);
//     importer->Destroy();
//
// Initialize picks the reader by the file's extension and version and opens
// the file; Import fills the document with the numeric locale at "C". The
// status holds the first failure the caller sees.
class FbxImporter : public FbxIOBase {
    KIVA_FBX_OBJECT_DECLARE(FbxImporter, FbxIOBase)

public:
    // Resets the importer, then opens `fileName` with the reader of
    // `fileFormat` (-1: chosen by the file's extension, the native FBX
    // reader when no format matches). With null settings the importer makes
    // its own. True when the file opened.
    virtual bool Initialize(const char* fileName, int fileFormat = -1, FbxIOSettings* settings = nullptr);
    virtual const char* GetFileName() const { return fileName_.c_str(); }
    // Uses the caller's settings; null makes the importer's own.
    virtual void SetIOSettings(FbxIOSettings* settings);
    FbxIOSettings* GetIOSettings() const { return settings_; }

    // Fills the document from the open file; makes and opens a reader first
    // when Initialize left none. A non-blocking import is not offered: the
    // flag is ignored and the call runs to its end.
    bool Import(FbxDocument* document, bool nonBlocking = false);

    // The file's version; 5, 0, 0 for files of major 1 to 4; 0, 0, 0 until a
    // file was opened.
    void GetFileVersion(int& major, int& minor, int& revision) const;
    // The reader format in use, -1 until known.
    int GetFileFormat() const { return fileFormat_; }
    bool IsFBX() const;

    const char* GetEmbeddingFolder() const { return embeddingFolder_.c_str(); }
    void SetEmbeddingFolder(const char* folder) { embeddingFolder_ = folder ? folder : ""; }

    // Takes of the file, known after Import (its options step).
    int GetTakeCount() const { return static_cast<int>(takeInfos_.size()); }
    // Null for an index out of range.
    const FbxTakeInfo* GetTakeInfo(int index) const;
    const char* GetActiveTakeName() const { return currentTakeName_.c_str(); }

    // What Initialize learned from the reader.
    const FbxAxisInfo& GetAxisInfo() const { return axisInfo_; }
    bool HasAxisInfo() const { return hasAxisInfo_; }
    int GetFrameRateMode() const { return frameRateMode_; }
    const FbxStatistics& GetStatistics() const { return statistics_; }
    // Null when no file was opened.
    const FbxHeaderInfo* GetHeaderInfo() const { return headerOpen_ ? headerInfo_.get() : nullptr; }
    // The document info of the file's header, after Import; null when none.
    FbxDocumentInfo* GetDocumentInfo() const { return documentInfo_; }
    FbxProgress& GetProgress() { return progress_; }
    // The open reader, null when none.
    FbxReader* GetReader() const { return reader_.get(); }

    // Open flags for the reader: read the global settings at Initialize, and
    // count the object types of "Definitions". Both on by default.
    void ParseForGlobalSettings(bool on) { parseForGlobalSettings_ = on; }
    void ParseForStatistics(bool on) { parseForStatistics_ = on; }

protected:
    ~FbxImporter() override;
    void Destruct(bool recursive) override;

private:
    void Reset();
    bool OpenReader();
    void ReadOptions();
    void UpdateDocumentInfo(FbxDocument* document);
    void DestroyOwned();

    std::unique_ptr<FbxReader> reader_;
    int fileFormat_ = -1;
    FbxString embeddingFolder_;
    FbxAxisInfo axisInfo_;
    bool hasAxisInfo_ = false;
    int frameRateMode_ = 0;
    FbxStatistics statistics_;
    FbxProgress progress_;
    std::vector<FbxTakeInfo> takeInfos_;
    FbxString currentTakeName_;
    FbxDocumentInfo* documentInfo_ = nullptr;
    int major_ = 0;
    int minor_ = 0;
    int revision_ = 0;
    std::unique_ptr<FbxHeaderInfo> headerInfo_;
    bool headerOpen_ = false;
    FbxIOSettings* settings_ = nullptr;
    bool ownSettings_ = false;
    bool parseForGlobalSettings_ = true;
    bool parseForStatistics_ = true;
};

// The document info of a document (its first source of that class), or
// null.
FbxDocumentInfo* FbxGetDocumentInfo(const FbxDocument* document);
