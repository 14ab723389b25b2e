#include "fbx/io/fbx7_document_reader.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <set>
#include <unordered_set>

#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_events.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_path_utils.h"
#include "fbx/io/fbx_progress.h"
#include "fbx/io/fbx_reader_fbx7.h"
#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_document_info.h"
#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skeleton.h"
#include "fbx/model/fbx_status.h"

namespace {

// Enters the current field's block; false when it has none.
bool enterBlock(FbxFieldStream& stream) {
    if (!stream.HasBlock()) return false;
    stream.EnterBlock();
    return true;
}

constexpr char kCycleMessage[] = "File is corrupted (or invalid): its connections form a cycle";

bool hasSkeleton(const FbxNode* node) {
    return node && FbxCast<FbxSkeleton>(const_cast<FbxNode*>(node)->GetNodeAttribute()) != nullptr;
}

}  // namespace

Fbx7DocumentReader::Fbx7DocumentReader(FbxReaderFbx7& reader, FbxProgress* progress)
    : reader_(reader),
      manager_(reader.GetManager()),
      status_(reader.GetStatus()),
      settings_(reader.GetIOSettings()),
      progress_(progress) {}

Fbx7DocumentReader::~Fbx7DocumentReader() = default;

FbxObject* Fbx7DocumentReader::FindObject(int64_t id) const {
    auto it = idToObject_.find(id);
    return it == idToObject_.end() ? nullptr : it->second;
}

int64_t Fbx7DocumentReader::FindId(const FbxObject* object) const {
    auto it = objectToId_.find(object);
    return it == objectToId_.end() ? -1 : it->second;
}

bool Fbx7DocumentReader::Read(FbxDocument* document) {
    if (!document) {
        status_.SetCode(FbxStatus::eFailure, "Invalid document handle");
        return false;
    }
    document_ = document;
    scene_ = FbxCast<FbxScene>(document);
    FbxIOEvents::Emit(&manager_, "FbxEventPreImport", document);
    reader_.GetTemplateMap().Clear();
    idToObject_.clear();
    objectToId_.clear();
    parentLinks_.Clear();
    cycleRefused_ = false;
    stream_ = reader_.GetFieldStream();
    if (!stream_ || !stream_->IsOpen()) {
        status_.SetCode(FbxStatus::eFailure, "File not opened");
        return false;
    }
    if (!reader_.OpenSectionZero()) return false;

    // A file with a node id was written with a password, which must match.
    if (const char* nodeId = stream_->NodeId()) {
        FbxString password = settings_ ? settings_->GetStringProp(FbxIOPath::kPassword, "") : FbxString();
        if (password != nodeId) {
            status_.SetCode(FbxStatus::ePasswordError, "Wrong password");
            return false;
        }
    }

    bool ok = true;
    if (scene_) {
        scene_->Clear();
        nodes_.clear();
        if (FbxDocumentInfo* info = reader_.TakeSceneInfo()) {
            // The scene keeps one document info: the file's replaces any other.
            while (FbxDocumentInfo* old = FbxGetDocumentInfo(document_)) old->Destroy();
            document_->ConnectSrcObject(info);
        }
        ReadGlobalSettings();
    }
    ok = ReadDocuments() && ReadReferences();
    if (ok) {
        reader_.GetObjectTypes().clear();
        ok = reader_.ReadDefinitions();
    }
    if (ok) {
        progressOff_ = false;
        stream_->RewindFields();
        ok = ReadObjects();
        progressOff_ = true;
    }
    if (ok) {
        // Textures, cameras and lights need no pass of their own here: the
        // objects this system reads are complete once connected.
        ReadConnections();
        ReadTakes();
        FinishAnimation();
        ReadEmbedding();
        if (scene_) PostProcessScene();
        StoreMediaFolder();
        StripDocumentPrefixes();
        // The file read to its end, but its structure is broken.
        if (cycleRefused_) {
            status_.SetCode(FbxStatus::eFailure, kCycleMessage);
            ok = false;
        }
    }

    stream_->RewindFields();
    if (ok) FbxIOEvents::Emit(&manager_, "FbxEventPostImport", document);
    reader_.GetTemplateMap().Clear();
    idToObject_.clear();
    objectToId_.clear();
    references_.clear();
    nodes_.clear();
    parentLinks_.Clear();
    return ok;
}

void Fbx7DocumentReader::ReadGlobalSettings() {
    FbxFieldStream& s = *stream_;
    if (!s.BeginField("GlobalSettings")) return;
    if (enterBlock(s)) {
        s.NextInt("Version", 1000);
        StepProgress("GlobalSettings");
        if (FbxGlobalSettings* settings = scene_->GetGlobalSettings()) reader_.ReadProperties70(settings);
        s.LeaveBlock();
    }
    s.EndField();
}

bool Fbx7DocumentReader::ReadDocuments() {
    FbxFieldStream& s = *stream_;
    if (!s.BeginField("Documents")) return true;
    if (!enterBlock(s)) {
        s.EndField();
        return true;
    }
    bool ok = true;
    if (s.NextInt("Count", 0) < 1) {
        status_.SetCode(FbxStatus::eFailure, "File is corrupted (or invalid)");
        ok = false;
    }
    bool first = true;
    while (ok && s.BeginField("Document")) {
        int64_t id = s.NextLong();
        FbxString name = s.NextString();
        FbxString word = s.NextString();
        bool block = enterBlock(s);
        int64_t rootNode = block ? s.NextLong("RootNode", -1) : -1;
        FbxDocument* document = nullptr;
        if (first) {
            document = document_;
            document->SetInitialName(name.c_str());
        } else {
            FbxClassId classId = rootNode != -1 ? FbxScene::ClassId : manager_.FindFileClass(word.c_str(), "");
            if (!classId.IsValid() || !classId.Is(FbxDocument::ClassId)) classId = FbxDocument::ClassId;
            document = FbxCast<FbxDocument>(manager_.CreateObject(classId, name.c_str(), document_));
        }
        if (!document) {
            ok = false;
        } else {
            AddToMaps(id, document);
            if (rootNode != -1)
                if (FbxScene* scene = FbxCast<FbxScene>(document)) AddToMaps(rootNode, scene->GetRootNode());
            if (block) {
                StepProgress(name.c_str());
                reader_.ReadProperties70(document);
                FbxDocumentInfo* info = FbxGetDocumentInfo(document);
                if (info && s.BeginField("SceneInfo")) {
                    if (enterBlock(s)) {
                        reader_.ReadProperties70(info);
                        s.LeaveBlock();
                    }
                    s.EndField();
                }
            }
        }
        if (block) s.LeaveBlock();
        s.EndField();
        first = false;
    }
    s.LeaveBlock();
    s.EndField();
    return ok;
}

bool Fbx7DocumentReader::ReadReferences() {
    FbxFieldStream& s = *stream_;
    references_.clear();
    if (!s.BeginField("References")) return true;
    if (!enterBlock(s)) {
        s.EndField();
        return true;
    }
    while (s.BeginField("Reference")) {
        Reference entry;
        entry.name = s.NextString();
        entry.kind = s.NextString();
        entry.external = entry.kind == "External";
        if (enterBlock(s)) {
            if (s.BeginField("Object")) {
                if (!entry.external) entry.id = s.NextLong();
                entry.objectName = s.NextString();
                s.EndField();
            }
            s.LeaveBlock();
        }
        references_.push_back(std::move(entry));
        s.EndField();
    }
    // The paths of the referenced documents, in the order of the external
    // entries; the last one serves the rest.
    std::vector<FbxString> paths;
    while (s.BeginField("FilePathUrl")) {
        paths.emplace_back(s.NextString());
        s.EndField();
    }
    size_t pathIndex = 0;
    bool unresolved = false;
    for (Reference& entry : references_) {
        if (!entry.external) continue;
        if (!paths.empty()) entry.documentPath = paths[std::min(pathIndex++, paths.size() - 1)];
        // Another document of the manager read from that path may hold it.
        for (int i = 0; i < manager_.GetDocumentCount() && !entry.object; ++i) {
            FbxDocument* other = manager_.GetDocument(i);
            if (!other || other == document_ || entry.documentPath.empty()) continue;
            FbxDocumentInfo* info = FbxGetDocumentInfo(other);
            if (!info) continue;
            FbxProperty url = info->FindProperty("SrcDocumentUrl", true);
            if (!url.IsValid() || url.Get<FbxString>() != entry.documentPath) continue;
            entry.object = other->FindSrcObject(FbxCriteria(), entry.objectName.c_str());
        }
        if (!entry.object) unresolved = true;
    }
    if (unresolved) status_.SetCode(FbxStatus::eFailure, "Unresolved external references");
    s.LeaveBlock();
    s.EndField();
    return true;
}

bool Fbx7DocumentReader::ReadObjects() {
    FbxFieldStream& s = *stream_;
    if (!s.BeginField("Objects")) return true;
    if (!enterBlock(s)) {
        s.EndField();
        return true;
    }
    std::vector<FbxString> types = reader_.GetObjectTypes();
    ReorderObjectTypes(types);
    for (const FbxString& word : types) {
        if (cancelled_) break;
        while (!cancelled_ && s.BeginField(word.c_str())) {
            int64_t id = s.NextLong();
            FbxString name = FbxObject::StripPrefix(s.NextString());
            FbxString subclass = s.NextString();
            FbxObject* referenced = nullptr;
            FbxDocument* target = document_;
            while (s.ValuesLeft() > 0) {
                FbxString extra = s.NextString();
                if (extra == "ReferenceTo") {
                    FbxString referenceName = s.NextString();
                    for (const Reference& entry : references_) {
                        if (entry.name != referenceName) continue;
                        referenced = entry.object;
                        if (!referenced && entry.id == 0 && scene_) referenced = scene_->GetRootNode();
                        if (!referenced && entry.id > 0) referenced = FindObject(entry.id);
                        break;
                    }
                } else if (extra == "Doc") {
                    if (FbxDocument* other = FbxCast<FbxDocument>(FindObject(s.NextLong()))) target = other;
                } else {
                    break;
                }
            }
            bool block = enterBlock(s);
            ReadObject(word, id, name, subclass, referenced, target, block);
            if (block) s.LeaveBlock();
            s.EndField();
        }
    }
    s.LeaveBlock();
    s.EndField();
    return !cancelled_;
}

void Fbx7DocumentReader::StepProgress(const char* text) {
    if (progressOff_ || !progress_) return;
    if (!progress_->Update(1.0f, text)) cancelled_ = true;
}

void Fbx7DocumentReader::AddToMaps(int64_t id, FbxObject* object) {
    if (!object) return;
    // With a duplicate id the first object keeps it.
    if (idToObject_.emplace(id, object).second) objectToId_.emplace(object, id);
}

void Fbx7DocumentReader::AddToMapsAndConnect(int64_t id, FbxObject* object, FbxDocument* document) {
    if (!object) return;
    AddToMaps(id, object);
    if (document && object != document) document->ConnectSrcObject(object);
}

FbxString Fbx7DocumentReader::MediaFolder() const {
    FbxString file = stream_->FilePath();
    if (file.empty()) return FbxString();
    FbxString directory = FbxPathDirectory(file.c_str());
    FbxString base = directory.empty() ? file : file.substr(directory.size() + (directory == "/" ? 0 : 1));
    size_t dot = base.rfind('.');
    base = (dot == FbxString::npos ? base : base.substr(0, dot)) + ".fbm";
    FbxString override = settings_ ? settings_->GetStringProp(FbxIOPath::kEmbeddedMediaFolder, "") : FbxString();
    return FbxJoinPath(override.empty() ? directory.c_str() : override.c_str(), base.c_str());
}

void Fbx7DocumentReader::ReadEmbedding() {
    FbxFieldStream& s = *stream_;
    if (!Option(FbxIOPath::kExtractEmbeddedData, true)) return;
    if (!s.BeginField("Embedding")) return;
    if (!enterBlock(s)) {
        s.EndField();
        return;
    }
    FbxString folder = MediaFolder();
    while (s.BeginField("File")) {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (folder.empty() || !std::filesystem::is_directory(folder, error)) {
            status_.SetCode(FbxStatus::eFailure, "Unable to create .fbm folder to extract embedded files");
            s.EndField();
            break;
        }
        if (enterBlock(s)) {
            FbxString fileName = s.NextString("Filename", "");
            FbxString base =
                fileName.substr(fileName.find_last_of("/\\") == FbxString::npos ? 0 : fileName.find_last_of("/\\") + 1);
            FbxString target = FbxJoinPath(folder.c_str(), base.c_str());
            bool written = false;
            if (!base.empty() && s.BeginField("Content")) {
                std::ofstream out(target, std::ios::binary | std::ios::trunc);
                written = out && WriteContent(out);
                out.close();
                if (!written || !out) {
                    written = false;
                    std::filesystem::remove(target, error);
                }
                s.EndField();
            }
            if (written && s.BeginField("Consumers")) {
                if (enterBlock(s)) {
                    while (s.BeginField("Consumer")) {
                        int64_t id = s.NextLong();
                        FbxString propertyName = s.NextString();
                        int index = s.NextInt();
                        FbxObject* object = id == 0 && scene_ ? scene_->GetRootNode() : FindObject(id);
                        FbxProperty p = object ? object->FindProperty(propertyName.c_str(), true) : FbxProperty();
                        if (index == 0 && p.IsValid() && p.Get<FbxString>() == fileName) p.Set(target.c_str());
                        s.EndField();
                    }
                    s.LeaveBlock();
                }
                s.EndField();
            }
            s.LeaveBlock();
        }
        s.EndField();
    }
    s.LeaveBlock();
    s.EndField();
}

bool Fbx7DocumentReader::WriteContent(std::ostream& out) {
    FbxFieldStream& s = *stream_;
    int size = 0;
    if (s.NextValueType() == 'R') {
        const void* data = s.NextBlob(size);
        return size == 0 || static_cast<bool>(out.write(static_cast<const char*>(data), size));
    }
    // The chunked form: the total size, then "BinaryData" fields of chunks
    // until the size is reached. Missing bytes fail the file.
    int64_t missing = s.NextInt();
    if (missing < 0) return false;
    if (missing > 0 && !s.HasBlock()) return false;
    if (missing == 0) return true;
    s.EnterBlock();
    while (missing > 0 && s.BeginField("BinaryData")) {
        while (missing > 0 && s.ValuesLeft() > 0) {
            const void* data = s.NextBlob(size);
            if (!data || size <= 0) {
                missing = -1;
                break;
            }
            std::streamsize take = static_cast<std::streamsize>(std::min<int64_t>(size, missing));
            if (!out.write(static_cast<const char*>(data), take)) missing = -1;
            if (missing > 0) missing -= take;
        }
        s.EndField();
        if (missing < 0) break;
    }
    s.LeaveBlock();
    return missing == 0;
}

void Fbx7DocumentReader::PostProcessScene() {
    // Skeleton nodes of old model records inherited scaling differently
    // when their parent was no bone. Only nodes of the tree count; the
    // fix needs nothing but the node and its parent, so the nodes are
    // taken from the list of old records rather than by a walk of the
    // whole tree.
    FbxNode* root = scene_->GetRootNode();
    if (!root) return;
    // Whether a node hangs under the root through first parents, remembered
    // for every node on the way so that each is looked at once. A cycle of
    // first parents is not in the tree.
    std::map<const FbxNode*, bool> inTree{{root, true}};
    auto underRoot = [&](FbxNode* node) {
        std::vector<const FbxNode*> path;
        std::set<const FbxNode*> onPath;
        bool result = false;
        for (const FbxNode* at = node; at; at = at->GetParent()) {
            auto known = inTree.find(at);
            if (known != inTree.end()) {
                result = known->second;
                break;
            }
            if (!onPath.insert(at).second) break;
            path.push_back(at);
        }
        for (const FbxNode* at : path) inTree[at] = result;
        return result;
    };
    for (FbxNode* node : nodes_) {
        if (!node->IsOldVersion() || !hasSkeleton(node)) continue;
        FbxNode* parent = node->GetParent();
        if (!parent || hasSkeleton(parent) || node->InheritType().Get() != FbxNode::eInheritRrs) continue;
        if (underRoot(parent)) node->InheritType().Set(FbxNode::eInheritRSrs);
    }
}

void Fbx7DocumentReader::StoreMediaFolder() {
    FbxString folder = MediaFolder();
    std::error_code error;
    if (folder.empty() || !std::filesystem::is_directory(folder, error)) return;
    if (std::filesystem::is_empty(folder, error)) return;
    FbxDocumentInfo* info = FbxGetDocumentInfo(document_);
    if (!info) info = FbxDocumentInfo::Create(document_, "");
    if (!info) return;
    FbxProperty url = info->FindProperty("DocumentEmbeddedUrl", true);
    if (!url.IsValid()) url = FbxProperty::Create(info, FbxStringDT, "DocumentEmbeddedUrl");
    url.Set(folder.c_str());
}

void Fbx7DocumentReader::StripDocumentPrefixes() {
    // Sub-documents before the documents they stand in, each document
    // once: a walk with its own stack and a visited set, whatever the
    // connections between documents look like.
    struct Step {
        FbxDocument* document;
        int next;  // the source to look at next
    };
    std::vector<Step> stack{{document_, 0}};
    std::unordered_set<const FbxDocument*> seen{document_};
    while (!stack.empty()) {
        Step& step = stack.back();
        FbxDocument* document = step.document;
        if (step.next < document->GetSrcObjectCount<FbxDocument>()) {
            FbxDocument* sub = document->GetSrcObject<FbxDocument>(step.next++);
            if (sub && seen.insert(sub).second) stack.push_back({sub, 0});
            continue;
        }
        stack.pop_back();
        StripPrefixOfMembers(document);
    }
}

void Fbx7DocumentReader::StripPrefixOfMembers(FbxDocument* document) {
    if (!document->GetOwnerDocument()) return;
    FbxString prefix = FbxString(document->GetName()) + "::";
    int members = document->GetMemberCount();
    for (int i = 0; i < members; ++i) {
        FbxObject* member = document->GetMember(i);
        if (!member || std::strncmp(member->GetName(), prefix.c_str(), prefix.size()) != 0) continue;
        FbxString stripped = member->GetName() + prefix.size();
        member->SetInitialName(stripped.c_str());
    }
}
