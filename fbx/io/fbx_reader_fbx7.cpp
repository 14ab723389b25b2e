#include "fbx/io/fbx_reader_fbx7.h"

#include <cstring>

#include "fbx/io/fbx7_document_reader.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_events.h"
#include "fbx/io/fbx_io_plugin_registry.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_path_utils.h"
#include "fbx/io/fbx_property_records.h"
#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_document_info.h"
#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_manager.h"

namespace {

// Enters the current field's block; false when it has none. A block that
// fails to load is read as far as it goes and must be left all the same.
bool enterBlock(FbxFieldStream& stream) {
    if (!stream.HasBlock()) return false;
    stream.EnterBlock();
    return true;
}

const char* kExtensions[] = {"fbx", nullptr};
const char* kDescriptions[] = {"FBX (*.fbx)", nullptr};
bool kIsFbx = true;

// Whether a name holds "~fbxexport~" behind its last ":".
bool marksTemplateFile(const char* name) {
    const char* colon = std::strrchr(name, ':');
    return std::strstr(colon ? colon + 1 : name, "~fbxexport~") != nullptr;
}

}  // namespace

void* FbxReaderFbx7::PluginInfo(int request, int formatIndex) {
    switch (request) {
    case FbxIOPluginRegistry::kExtensionsRequest:
        return kExtensions;
    case FbxIOPluginRegistry::kDescriptionsRequest:
        return kDescriptions;
    case FbxIOPluginRegistry::kFbxFlagRequest:
        return formatIndex == 0 ? &kIsFbx : nullptr;
    default:
        return nullptr;
    }
}

FbxReader* FbxReaderFbx7::CreateForImporter(FbxManager& manager, FbxImporter& importer, int, int pluginId) {
    // Files of a major version below 7 would need an older reader, which this
    // system does not have; a file of major 8 or more is refused by the
    // stream's version rule. Only a file that opens as major 7 gets a reader.
    auto reader = std::make_unique<FbxReaderFbx7>(manager, pluginId, importer.GetStatus());
    reader->SetIOSettings(importer.GetIOSettings());
    if (!reader->OpenFile(importer.GetFileName())) return nullptr;
    int major = 0, minor = 0, revision = 0;
    reader->GetVersion(major, minor, revision);
    reader->Close();
    if (major != 7) return nullptr;
    return reader.release();
}

FbxReaderFbx7::FbxReaderFbx7(FbxManager& manager, int pluginId, FbxStatus& status)
    : FbxReader(manager, pluginId, status) {}

FbxReaderFbx7::~FbxReaderFbx7() {
    Close();
    templates_.Clear();
    DestroySceneInfo();
    DestroyGlobalSettings();
}

void FbxReaderFbx7::DestroySceneInfo() {
    // While the manager destroys everything, it destroys this object too.
    if (sceneInfo_ && !manager_.IsDestroyingAll()) sceneInfo_->Destroy();
    sceneInfo_ = nullptr;
}

void FbxReaderFbx7::DestroyGlobalSettings() {
    // Kept out of the manager's list: always ours to destroy.
    if (globalSettings_) globalSettings_->Destroy();
    globalSettings_ = nullptr;
}

FbxDocumentInfo* FbxReaderFbx7::TakeSceneInfo() {
    FbxDocumentInfo* info = sceneInfo_;
    sceneInfo_ = nullptr;
    return info;
}

bool FbxReaderFbx7::GetVersion(int& major, int& minor, int& revision) {
    if (!stream_) {
        major = minor = revision = 0;
        return false;
    }
    uint32_t version = stream_->FileVersion();
    major = static_cast<int>(version / 1000);
    minor = static_cast<int>(version % 1000 / 100);
    revision = static_cast<int>(version % 100);
    return true;
}

bool FbxReaderFbx7::IsOpen() const { return stream_ && stream_->IsOpen(); }

bool FbxReaderFbx7::Close() {
    if (stream_) stream_->Close();
    optionsRead_ = false;
    return true;
}

bool FbxReaderFbx7::OpenFile(const char* fileName) {
    if (!stream_) stream_ = std::make_unique<FbxFieldStream>(&status_);
    stream_->Close();
    int cacheSize = settings_ ? settings_->GetIntProp(FbxIOPath::kCacheSize, 8) : 8;
    stream_->SetCacheSize(cacheSize < 0 ? 0 : static_cast<uint32_t>(cacheSize));
    stream_->SetFbx7Mode(true);

    fileName_ = FbxMakeAbsolutePath(fileName);
    headerInfo_ = FbxHeaderInfo();
    DestroySceneInfo();
    DestroyGlobalSettings();
    statistics_.Reset();
    takeInfos_.clear();
    optionsRead_ = false;
    if (!stream_->OpenFile(fileName_.c_str(), this, false, false, &headerInfo_)) return false;
    headerInfo_.fileVersion = stream_->FileVersion();

    if (headerInfo_.cameraResolutionW == 0 || headerInfo_.cameraResolutionH == 0 ||
        headerInfo_.currentCameraName.empty()) {
        headerInfo_.cameraResolutionW = headerInfo_.cameraResolutionH = 0;
        headerInfo_.currentCameraName.clear();
    }
    if (openFlags_ & (eParseForGlobalSettings | eParseForStatistics)) {
        // A section that does not open is reported by Read; here it only
        // leaves the defaults.
        FbxStatus before = status_;
        if (OpenSectionZero()) {
            if (openFlags_ & eParseForGlobalSettings) ReadGlobalSettingsEarly();
            if (openFlags_ & eParseForStatistics) ReadDefinitionCounts();
            stream_->RewindFields();
        } else {
            status_ = before;
        }
    }
    return true;
}

bool FbxReaderFbx7::OpenSectionZero() {
    if (!stream_ || !stream_->IsOpen()) {
        status_.SetCode(FbxStatus::eFailure, "File not opened");
        return false;
    }
    if (stream_->CurrentSection() >= 0) {
        while (stream_->Depth() > 0) stream_->LeaveBlock();
        stream_->RewindFields();
        return true;
    }
    if (!stream_->OpenSection(0)) {
        status_.SetCode(FbxStatus::eFailure, "File is corrupted (or invalid)");
        return false;
    }
    stream_->RewindFields();
    return true;
}

void FbxReaderFbx7::ReadHeaderExtension(FbxFieldStream& stream) {
    DestroySceneInfo();
    if (!stream.BeginField("SceneInfo")) return;
    if (enterBlock(stream)) {
        FbxString type = stream.NextString("Type", "");
        if (type == "UserData") {
            sceneInfo_ = FbxDocumentInfo::Create(&manager_, "");
            stream.NextInt("Version", 0);
            if (sceneInfo_) FbxReadProperties70(stream, *sceneInfo_, status_);
        }
        stream.LeaveBlock();
    }
    stream.EndField();
}

void FbxReaderFbx7::ReadGlobalSettingsEarly() {
    FbxFieldStream& s = *stream_;
    // Files of 7.0 keep their global settings among the objects.
    bool insideObjects = s.FileVersion() / 100 == 70;
    bool inObjects = false;
    if (insideObjects) {
        if (!s.BeginField("Objects")) return;
        if (!enterBlock(s)) {
            s.EndField();
            return;
        }
        inObjects = true;
    }
    if (s.BeginField("GlobalSettings")) {
        if (enterBlock(s)) {
            globalSettings_ = FbxGlobalSettings::Create(&manager_, "");
            if (globalSettings_) {
                manager_.UnregisterObject(globalSettings_);
                s.NextInt("Version", 1000);
                FbxReadProperties70(s, *globalSettings_, status_);
            }
            s.LeaveBlock();
        }
        s.EndField();
    }
    if (inObjects) {
        s.LeaveBlock();
        s.EndField();
    }
    s.RewindFields();
}

void FbxReaderFbx7::ReadDefinitionCounts() {
    FbxFieldStream& s = *stream_;
    if (!s.BeginField("Definitions")) return;
    if (enterBlock(s)) {
        while (s.BeginField("ObjectType")) {
            FbxString word = s.NextString();
            int count = 0;
            if (enterBlock(s)) {
                count = s.NextInt("Count", 0);
                s.LeaveBlock();
            }
            statistics_.AddItem(word, count);
            s.EndField();
        }
        s.LeaveBlock();
    }
    s.EndField();
    s.RewindFields();
}

bool FbxReaderFbx7::GetAxisInfo(FbxAxisInfo& axis) {
    if (!globalSettings_) return false;
    auto readInt = [this](const char* name, int& value) {
        FbxProperty p = globalSettings_->FindProperty(name, true);
        FbxInt v;
        if (p.IsValid() && p.Get(v)) value = v;
    };
    readInt("UpAxis", axis.upAxis);
    readInt("UpAxisSign", axis.upAxisSign);
    readInt("FrontAxis", axis.frontAxis);
    readInt("FrontAxisSign", axis.frontAxisSign);
    readInt("CoordAxis", axis.coordAxis);
    readInt("CoordAxisSign", axis.coordAxisSign);
    FbxProperty scale = globalSettings_->FindProperty("UnitScaleFactor", true);
    FbxDouble factor;
    if (scale.IsValid() && scale.Get(factor)) axis.unitScaleFactor = factor;
    return true;
}

bool FbxReaderFbx7::GetFrameRate(int& mode) {
    if (!globalSettings_) return false;
    FbxProperty p = globalSettings_->FindProperty("TimeMode", true);
    FbxInt value;
    if (!p.IsValid() || !p.Get(value)) return false;
    mode = value;
    return true;
}

bool FbxReaderFbx7::GetStatistics(FbxStatistics& statistics) {
    statistics = statistics_;
    return statistics_.GetNbItems() > 0;
}

void FbxReaderFbx7::ReadFileCounts() {
    FbxFieldStream& s = *stream_;
    int models = 0, devices = 0;
    bool templateFile = false;
    // Count at the top level and among the objects, where FBX 7 keeps them.
    auto countHere = [&]() {
        models += s.FieldInstanceCount("Model");
        devices += s.FieldInstanceCount("Device");
        while (s.BeginField("Model")) {
            // The object id comes first: a 64-bit value in binary, the first
            // of the three values (id, name, type) in text.
            if (s.NextValueType() == 'L' || (!s.IsBinary() && s.ValueCount() >= 3)) s.NextLong();
            if (marksTemplateFile(s.NextString())) templateFile = true;
            s.EndField();
        }
    };
    countHere();
    if (s.BeginField("Objects")) {
        if (enterBlock(s)) {
            countHere();
            s.LeaveBlock();
        }
        s.EndField();
    }
    s.RewindFields();
    if (!settings_) return;
    settings_->SetIntProp(FbxIOPath::kModelCount, models);
    settings_->SetIntProp(FbxIOPath::kDeviceCount, devices);
    if (templateFile) settings_->SetBoolProp(FbxIOPath::kTemplate, true);
}

bool FbxReaderFbx7::ReadOptions(bool) {
    if (optionsRead_) return true;
    if (!OpenSectionZero()) return false;
    if (settings_ && stream_->NodeId()) settings_->SetBoolProp(FbxIOPath::kPasswordEnable, true);
    ReadFileCounts();
    ReadTakeInfos();
    stream_->RewindFields();
    optionsRead_ = true;
    return true;
}

void FbxReaderFbx7::ReadTakeInfos() {
    FbxFieldStream& s = *stream_;
    takeInfos_.clear();
    FbxString current;
    if (s.BeginField("Takes")) {
        if (enterBlock(s)) {
            current = s.NextString("Current", "");
            while (s.BeginField("Take")) {
                FbxTakeInfo take;
                take.name = s.NextString();
                take.importedName = take.name;
                if (enterBlock(s)) {
                    bool read = false;
                    if (s.BeginField("FileName")) {
                        FbxString path = FbxJoinPath(FbxPathDirectory(fileName_.c_str()).c_str(), s.NextString());
                        s.EndField();
                        FbxStatus ignored;
                        FbxFieldStream takeFile(&ignored);
                        takeFile.SetFbx7Mode(true);
                        if (takeFile.OpenFile(path.c_str())) {
                            take.description = takeFile.NextString("Comments", "");
                            if (takeFile.BeginField("LocalTime")) {
                                int64_t a, b;
                                takeFile.NextTimeSpan(a, b);
                                take.localTimeSpan = {FbxTime(a), FbxTime(b)};
                                takeFile.EndField();
                            }
                            if (takeFile.BeginField("ReferenceTime")) {
                                int64_t a, b;
                                takeFile.NextTimeSpan(a, b);
                                take.referenceTimeSpan = {FbxTime(a), FbxTime(b)};
                                takeFile.EndField();
                            }
                            read = true;
                        } else if (s.FileVersion() < 2000) {
                            read = true;  // nothing to read for such old files
                        }
                    }
                    if (!read) {
                        take.description = s.NextString("Comments", "");
                        if (s.BeginField("LocalTime")) {
                            int64_t a, b;
                            s.NextTimeSpan(a, b);
                            take.localTimeSpan = {FbxTime(a), FbxTime(b)};
                            s.EndField();
                        }
                        if (s.BeginField("ReferenceTime")) {
                            int64_t a, b;
                            s.NextTimeSpan(a, b);
                            take.referenceTimeSpan = {FbxTime(a), FbxTime(b)};
                            s.EndField();
                        }
                    }
                    s.LeaveBlock();
                }
                takeInfos_.push_back(std::move(take));
                s.EndField();
            }
            s.LeaveBlock();
        }
        s.EndField();
    }
    bool found = false;
    for (const FbxTakeInfo& take : takeInfos_) found = found || take.name == current;
    if (!found) current = takeInfos_.empty() ? FbxString() : takeInfos_.front().name;
    if (settings_) settings_->SetStringProp(FbxIOPath::kCurrentTakeName, current.c_str());
}

bool FbxReaderFbx7::Read(FbxDocument* document) { return Fbx7DocumentReader(*this, progress_).Read(document); }

bool FbxReaderFbx7::ReadDefinitions() {
    if (!stream_) return true;
    return FbxReadDefinitions(*stream_, manager_, objectTypes_, templates_, status_);
}

void FbxReaderFbx7::ApplyTemplate(FbxObject* object) {
    if (object) templates_.Apply(*object);
}

bool FbxReaderFbx7::ReadProperties70(FbxObject* object) {
    if (stream_ && object) FbxReadProperties70(*stream_, *object, status_);
    return true;
}
