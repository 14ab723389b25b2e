#pragma once

#include <memory>
#include <vector>

#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_reader.h"
#include "fbx/io/fbx_template_map.h"

class FbxGlobalSettings;
class FbxImporter;

// The reader of FBX files of major version 7. It reads through a field
// stream in FBX 7 mode, so that it does not know the file's syntax.
//
// Open reads the header (with its "SceneInfo"), and with the open flags the
// global settings (axis, unit, frame rate) and the object counts of
// "Definitions". ReadOptions reads the take infos and the file's counts into
// the settings. The record readers ReadDefinitions, ApplyTemplate and
// ReadProperties70 work on the open section for the document passes of Read.
class FbxReaderFbx7 : public FbxReader, private FbxHeaderExtensionReader {
public:
    // The plug-in functions of the native FBX format (see
    // FbxIOPluginRegistry). The create function probes the importer's file
    // and gives a reader only for a file of major version 7.
    static FbxReader* CreateForImporter(FbxManager& manager, FbxImporter& importer, int subId, int pluginId);
    static void* PluginInfo(int request, int formatIndex);

    FbxReaderFbx7(FbxManager& manager, int pluginId, FbxStatus& status);
    ~FbxReaderFbx7() override;

    bool GetVersion(int& major, int& minor, int& revision) override;
    bool OpenFile(const char* fileName) override;
    bool Close() override;
    bool IsOpen() const override;
    bool ReadOptions(bool parseSection) override;
    // The document passes (see Fbx7DocumentReader).
    bool Read(FbxDocument* document) override;
    bool GetAxisInfo(FbxAxisInfo& axis) override;
    bool GetStatistics(FbxStatistics& statistics) override;
    bool GetFrameRate(int& mode) override;
    FbxDocumentInfo* GetSceneInfo() override { return sceneInfo_; }
    const std::vector<FbxTakeInfo>* GetTakeInfos() override { return &takeInfos_; }
    void GetHeaderInfo(FbxHeaderInfo& info) override { info = headerInfo_; }

    // --- Record readers, on the open section ---

    // Reads "Definitions" into the object type list and the template map.
    bool ReadDefinitions();
    // Applies the file's template of the object's exact class.
    void ApplyTemplate(FbxObject* object);
    // Reads the current field's "Properties70" onto the object. Always true.
    bool ReadProperties70(FbxObject* object);

    // Null until a file was opened.
    FbxFieldStream* GetFieldStream() const { return stream_.get(); }
    const FbxString& GetFileName() const { return fileName_; }
    const std::vector<FbxString>& GetObjectTypes() const { return objectTypes_; }
    std::vector<FbxString>& GetObjectTypes() { return objectTypes_; }
    FbxTemplateMap& GetTemplateMap() { return templates_; }
    // The global settings read at Open (flag eParseForGlobalSettings); null
    // when they were not read. Owned by the reader, outside the manager's
    // object list.
    FbxGlobalSettings* GetHeaderGlobalSettings() const { return globalSettings_; }
    // Takes the header's document info out of the reader (for a document).
    FbxDocumentInfo* TakeSceneInfo();
    // Opens section 0 when none is open, else rewinds the top level. On
    // failure "File is corrupted (or invalid)", code 1.
    bool OpenSectionZero();

private:
    void ReadHeaderExtension(FbxFieldStream& stream) override;
    void ReadGlobalSettingsEarly();
    void ReadDefinitionCounts();
    void ReadFileCounts();
    void ReadTakeInfos();
    void DestroySceneInfo();
    void DestroyGlobalSettings();

    std::unique_ptr<FbxFieldStream> stream_;
    FbxString fileName_;
    FbxHeaderInfo headerInfo_;
    FbxDocumentInfo* sceneInfo_ = nullptr;
    FbxGlobalSettings* globalSettings_ = nullptr;
    FbxStatistics statistics_;
    std::vector<FbxTakeInfo> takeInfos_;
    std::vector<FbxString> objectTypes_;
    FbxTemplateMap templates_;
    bool optionsRead_ = false;
};
