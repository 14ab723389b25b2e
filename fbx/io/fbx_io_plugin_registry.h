#pragma once

#include <vector>

#include "fbx/model/fbx_string.h"

class FbxImporter;
class FbxManager;
class FbxReader;

// Makes a reader of format `subId` of a plug-in for the importer's file;
// null when the file is not one the plug-in reads.
using FbxReaderCreateFunc = FbxReader* (*)(FbxManager& manager, FbxImporter& importer, int subId, int pluginId);
// What a plug-in says about its formats: request 0 gives a null-ended array
// of extensions (const char**), request 1 the parallel descriptions, request
// kFbxFlagRequest with format i a pointer to that format's FBX flag (bool*),
// or null.
using FbxIOInfoFunc = void* (*)(int request, int formatIndex);

// One format of a plug-in.
struct FbxIOPluginEntry {
    FbxString extension;
    FbxString description;
    FbxReaderCreateFunc create = nullptr;
    FbxIOInfoFunc info = nullptr;
    int subId = 0;  // index of the format within its plug-in
    bool isFbx = false;
    bool fromUserPlugin = false;
};

// The reader and writer formats known to a manager. This system's own FBX
// formats are registered first, so that the FBX entry is the native reader.
class FbxIOPluginRegistry {
public:
    static constexpr int kExtensionsRequest = 0;
    static constexpr int kDescriptionsRequest = 1;
    static constexpr int kFbxFlagRequest = 64507;

    // The registry of a manager, made with the native formats on first use.
    static FbxIOPluginRegistry& Of(const FbxManager* manager);

    // Registers each format of a reader plug-in: with `override`, a format
    // whose extension is already there (without regard to case) replaces
    // that entry; otherwise it is appended. Gives the index of the plug-in's
    // first format, -1 when it names none.
    int RegisterReader(FbxReaderCreateFunc create, FbxIOInfoFunc info, bool override = false, bool userPlugin = true);

    int GetReaderFormatCount() const { return static_cast<int>(readers_.size()); }
    int GetWriterFormatCount() const { return static_cast<int>(writers_.size()); }
    // Null for an index out of range.
    const FbxIOPluginEntry* GetReaderEntry(int index) const;
    // The reader format whose extension is the text behind the file name's
    // last ".", without regard to case; the native format when none is.
    int FindReaderFormat(const char* fileName) const;
    int GetNativeReaderFormat() const;
    bool IsFbxReaderFormat(int index) const;
    // Runs the format's create function; null for an index out of range or a
    // file the plug-in does not read.
    FbxReader* CreateReader(int index, FbxManager& manager, FbxImporter& importer) const;

private:
    std::vector<FbxIOPluginEntry> readers_;
    std::vector<FbxIOPluginEntry> writers_;  // this system writes no scenes
};
