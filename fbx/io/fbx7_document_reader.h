#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <vector>

#include "fbx/io/fbx7_parent_links.h"
#include "fbx/model/fbx_class_id.h"
#include "fbx/model/fbx_string.h"

class FbxCluster;
class FbxDocument;
class FbxFieldStream;
class FbxFileTexture;
class FbxIOSettings;
class FbxLayeredTexture;
class FbxManager;
class FbxMesh;
class FbxNode;
class FbxObject;
class FbxPose;
class FbxProgress;
class FbxReaderFbx7;
class FbxScene;
class FbxSkin;
class FbxStatus;
class FbxVideo;

// The document passes of the FBX 7 reader: one instance per Read. It reads
// every object of the file first, keeping a map from the file's 64-bit ids
// to the objects made, and only then the connections, so that no object
// needs to exist before another one refers to it.
//
//     Fbx7DocumentReader passes(reader, progress);
//     bool ok = passes.Read(document);
//
// The sections run in this order: global settings, "Documents",
// "References", "Definitions", "Objects" (by type word, in a fixed order
// of the words), "Connections", "Embedding", then the post-processing of a
// scene. A failed section ends the read with its status; what was made
// stays in the document. Bad records are skipped and bad connections
// dropped without a message, except a connection that would close a cycle
// of nodes or documents: the read then goes on to the end and fails.
class Fbx7DocumentReader {
public:
    Fbx7DocumentReader(FbxReaderFbx7& reader, FbxProgress* progress);
    ~Fbx7DocumentReader();
    Fbx7DocumentReader(const Fbx7DocumentReader&) = delete;
    Fbx7DocumentReader& operator=(const Fbx7DocumentReader&) = delete;

    bool Read(FbxDocument* document);

    // While a read runs: the object that a file id names, null when none;
    // the id of an object, -1 when it has none.
    FbxObject* FindObject(int64_t id) const;
    int64_t FindId(const FbxObject* object) const;

private:
    // One entry of "References".
    struct Reference {
        FbxString name;
        FbxString kind;
        FbxString objectName;
        FbxString documentPath;
        int64_t id = -1;
        FbxObject* object = nullptr;
        bool external = false;
    };

    // --- Sections (fbx7_document_reader.cpp) ---
    void ReadGlobalSettings();
    bool ReadDocuments();
    bool ReadReferences();
    bool ReadObjects();
    void ReadEmbedding();
    // Writes the current "Content" field: one blob, or a total size and
    // chunks. False when bytes are missing or the write fails.
    bool WriteContent(std::ostream& out);
    void PostProcessScene();
    void StripDocumentPrefixes();
    void StripPrefixOfMembers(FbxDocument* document);
    void StoreMediaFolder();
    FbxString MediaFolder() const;

    // --- Object records (fbx7_object_records.cpp) ---
    void ReorderObjectTypes(std::vector<FbxString>& types) const;
    void ReadObject(const FbxString& word, int64_t id, const FbxString& name, const FbxString& subclass,
                    FbxObject* referenced, FbxDocument* target, bool inBlock);
    FbxObject* MakeObject(FbxClassId classId, const char* name, FbxObject* referenced);
    FbxClassId GenericClass(const char* word, const char* subclass);
    FbxObject* ReadGeneric(const char* word, const char* subclass, const char* name, FbxObject* referenced);
    FbxObject* ReadModel(const char* name, FbxObject* referenced);
    FbxObject* ReadNodeAttribute(const char* subclass, const char* name, FbxObject* referenced);
    FbxObject* ReadMaterial(const char* subclass, const char* name, FbxObject* referenced);
    // --- Animation records (fbx7_animation_records.cpp) ---
    // A stack, layer, curve node or curve: "Properties70", and a curve's keys.
    FbxObject* ReadAnimationObject(const FbxString& word, const char* name, FbxObject* referenced);
    // The "Takes" step: stacks named like a selected take get its spans;
    // then each curve node learns the kind of transform it drives.
    void ReadTakes();
    // Once everything is connected: quaternion modes reach the rotation
    // curve nodes, and the scene's first stack is the evaluator's context
    // unless another stack of a document is.
    void FinishAnimation();
    // "Version" then "Properties70", with the progress step between.
    void ReadVersionAndProperties(FbxObject* object);
    void StepProgress(const char* text);
    void AddToMaps(int64_t id, FbxObject* object);
    void AddToMapsAndConnect(int64_t id, FbxObject* object, FbxDocument* document);
    bool Option(const char* path, bool defaultValue) const;

    // --- Geometry records (fbx7_geometry_records.cpp) ---
    FbxObject* ReadGeometry(const char* subclass, const char* name, FbxObject* referenced);
    void ReadMesh(FbxMesh& mesh);

    // --- Deformer and pose records (fbx7_deformer_records.cpp) ---
    FbxObject* ReadDeformer(const char* subclass, const char* name, FbxObject* referenced);
    void ReadSkin(FbxSkin& skin);
    void ReadCluster(FbxCluster& cluster);
    void ReadPose(FbxPose& pose);

    // --- Material, texture and media records (fbx7_material_records.cpp) ---
    void ReadMaterialFields(FbxObject& material, int version);
    void ReadTexture(FbxFileTexture& texture);
    void ReadVideo(FbxVideo& video, bool isReference);
    void ReadLayeredTexture(FbxLayeredTexture& texture);
    // The file's own copy of a name that may not exist where the writing
    // tool stored it: the relative name made absolute against the file's
    // folder, when a file is there. Empty otherwise.
    FbxString LocalFileFor(const FbxString& fileName, const FbxString& relativeName) const;
    // Writes the current "Content" field into the media folder under the
    // base name of `fileName`; the path written (or written before for that
    // name), empty on failure.
    FbxString ExtractContent(const FbxString& fileName);

    // --- Connections (fbx7_connections.cpp) ---
    void ReadConnections();
    FbxObject* ResolveId(int64_t id) const;
    // An object to object connection, unless it would give a node or a
    // document a second parent or close a cycle.
    void ConnectObjects(FbxObject* source, FbxObject* destination);

    FbxReaderFbx7& reader_;
    FbxManager& manager_;
    FbxStatus& status_;
    FbxIOSettings* settings_;
    FbxProgress* progress_;
    FbxFieldStream* stream_ = nullptr;
    FbxDocument* document_ = nullptr;
    FbxScene* scene_ = nullptr;

    // Lookup only, never iterated for output.
    std::map<int64_t, FbxObject*> idToObject_;
    std::map<const FbxObject*, int64_t> objectToId_;
    std::vector<Reference> references_;
    std::vector<FbxNode*> nodes_;
    Fbx7ParentLinks parentLinks_;
    bool cycleRefused_ = false;  // a connection that would close a cycle was dropped
    // Media file names already extracted by this read, to their paths.
    std::map<FbxString, FbxString> extracted_;
    bool inBlock_ = false;  // the record being read has a block
    bool progressOff_ = true;
    bool cancelled_ = false;
};
