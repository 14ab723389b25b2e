#pragma once

#include <cstdint>
#include <vector>

#include "fbx/io/fbx_axis_info.h"
#include "fbx/io/fbx_header_info.h"
#include "fbx/io/fbx_statistics.h"
#include "fbx/model/fbx_status.h"
#include "fbx/model/fbx_string.h"
#include "fbx/model/fbx_take_info.h"

class FbxDocument;
class FbxDocumentInfo;
class FbxFile;
class FbxIOSettings;
class FbxManager;
class FbxObject;
class FbxProgress;

// Base of all readers: one instance per open file, made by a plug-in's
// create function for the importer. A reader writes its failures into the
// status it was made with, which is the importer's.
class FbxReader {
public:
    // Bits of Open's flags.
    enum EOpenFlag : int {
        eParseForGlobalSettings = 1,  // read the header's global settings at once
        eParseForStatistics = 2,      // count the object types of "Definitions"
    };

    FbxReader(FbxManager& manager, int pluginId, FbxStatus& status);
    virtual ~FbxReader();
    FbxReader(const FbxReader&) = delete;
    FbxReader& operator=(const FbxReader&) = delete;

    // The version of the open file; false when none is known.
    virtual bool GetVersion(int& major, int& minor, int& revision);
    // Readers over a caller's stream; none in this system.
    virtual bool OpenStream(FbxFile* stream);
    // Stores the flag bits, then opens the file.
    virtual bool Open(const char* fileName, int flags);
    virtual bool OpenStreamData(FbxFile* stream, void* data);
    virtual bool OpenFile(const char* fileName) = 0;
    virtual bool Close() = 0;
    virtual bool IsOpen() const = 0;
    // Reads what the importer needs before the document: take infos and
    // the file's statistics into the settings.
    virtual bool ReadOptions(bool parseSection);
    // Fills the document.
    virtual bool Read(FbxDocument* document) = 0;
    // Reads the properties of one object; not used by the FBX 7 reader.
    virtual bool ReadObjectProperties(FbxObject* object);
    virtual bool GetAxisInfo(FbxAxisInfo& axis);
    virtual bool GetStatistics(FbxStatistics& statistics);
    virtual bool GetFrameRate(int& mode);
    // The document info of the file's header, owned by the reader; null
    // when the file has none.
    virtual FbxDocumentInfo* GetSceneInfo();
    // The take infos read by ReadOptions, owned by the reader.
    virtual const std::vector<FbxTakeInfo>* GetTakeInfos();
    virtual void GetHeaderInfo(FbxHeaderInfo& info);
    virtual FbxIOSettings* GetIOSettings() const { return settings_; }
    virtual void SetIOSettings(FbxIOSettings* settings) { settings_ = settings; }
    virtual void SetProgress(FbxProgress* progress) { progress_ = progress; }
    virtual void SetEmbeddingFolder(const char* path) { embeddingFolder_ = path ? path : ""; }

    FbxManager& GetManager() const { return manager_; }
    FbxStatus& GetStatus() const { return status_; }
    int GetPluginId() const { return pluginId_; }
    int GetOpenFlags() const { return openFlags_; }
    const FbxString& GetEmbeddingFolder() const { return embeddingFolder_; }

protected:
    FbxManager& manager_;
    FbxStatus& status_;
    FbxIOSettings* settings_ = nullptr;
    FbxProgress* progress_ = nullptr;
    FbxString embeddingFolder_;
    int pluginId_;
    int openFlags_ = 0;
};
