#include "fbx/io/fbx_importer.h"

#include "fbx/io/fbx_io_class_binding.h"
#include "fbx/io/fbx_io_plugin_registry.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_numeric_locale.h"
#include "fbx/io/fbx_path_utils.h"
#include "fbx/io/fbx_reader.h"
#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_document_info.h"
#include "fbx/model/fbx_manager.h"

FbxClassId FbxImporter::ClassId;

FbxImporter* FbxImporter::Create(FbxManager* manager, const char* name) {
    if (!manager) return nullptr;
    ClassId = FbxBindIOClass("FbxImporter", &Allocate);
    return static_cast<FbxImporter*>(CreateOfClass(manager, ClassId, name));
}

FbxImporter* FbxImporter::Create(FbxObject* container, const char* name) {
    if (!container || !container->GetFbxManager()) return nullptr;
    ClassId = FbxBindIOClass("FbxImporter", &Allocate);
    return static_cast<FbxImporter*>(CreateInContainer(container, ClassId, name));
}

FbxObject* FbxImporter::Allocate(FbxManager& manager, const char* name, const FbxObject*) {
    return new FbxImporter(manager, name);
}

FbxImporter::FbxImporter(FbxManager& manager, const char* name)
    : ParentClass(manager, name), headerInfo_(std::make_unique<FbxHeaderInfo>()) {}

FbxImporter::~FbxImporter() = default;

void FbxImporter::Destruct(bool recursive) {
    DestroyOwned();
    ParentClass::Destruct(recursive);
}

void FbxImporter::DestroyOwned() {
    reader_.reset();
    // While the manager destroys everything, it destroys these objects too.
    bool managerTakesThem = GetFbxManager() && GetFbxManager()->IsDestroyingAll();
    if (documentInfo_ && !managerTakesThem) documentInfo_->Destroy();
    documentInfo_ = nullptr;
    if (ownSettings_ && settings_ && !managerTakesThem) settings_->Destroy();
    settings_ = nullptr;
    ownSettings_ = false;
}

void FbxImporter::SetIOSettings(FbxIOSettings* settings) {
    if (settings == settings_ && settings) return;
    if (ownSettings_ && settings_) settings_->Destroy();
    ownSettings_ = false;
    settings_ = settings;
    if (!settings_) {
        settings_ = FbxIOSettings::Create(GetFbxManager(), "IOSRoot");
        ownSettings_ = settings_ != nullptr;
    }
    if (reader_) reader_->SetIOSettings(settings_);
}

void FbxImporter::Reset() {
    reader_.reset();
    takeInfos_.clear();
    currentTakeName_.clear();
    if (documentInfo_) documentInfo_->Destroy();
    documentInfo_ = nullptr;
    major_ = minor_ = revision_ = 0;
    fileName_.clear();
    status_.Clear();
    *headerInfo_ = FbxHeaderInfo();
    headerOpen_ = false;
    statistics_.Reset();
    axisInfo_ = FbxAxisInfo();
    hasAxisInfo_ = false;
    frameRateMode_ = 0;
    fileFormat_ = -1;
}

bool FbxImporter::Initialize(const char* fileName, int fileFormat, FbxIOSettings* settings) {
    Reset();
    SetIOSettings(settings);
    FbxIOPluginRegistry& registry = FbxIOPluginRegistry::Of(GetFbxManager());
    fileFormat_ = fileFormat < 0 ? registry.FindReaderFormat(fileName) : fileFormat;
    fileName_ = fileName ? fileName : "";
    status_.Clear();
    if (fileName_.empty()) {
        status_.SetCode(FbxStatus::eFailure, "Uninitialized filename");
        return false;
    }
    return OpenReader();
}

bool FbxImporter::IsFBX() const { return FbxIOPluginRegistry::Of(GetFbxManager()).IsFbxReaderFormat(fileFormat_); }

bool FbxImporter::OpenReader() {
    FbxManager* manager = GetFbxManager();
    FbxIOPluginRegistry& registry = FbxIOPluginRegistry::Of(manager);
    reader_.reset(registry.CreateReader(fileFormat_, *manager, *this));
    if (!reader_) {
        // Whatever a probe left behind gives way to this message.
        status_.SetCode(FbxStatus::eFailure, "Unexpected file type");
        return false;
    }
    reader_->SetIOSettings(settings_);
    int flags = (parseForGlobalSettings_ ? FbxReader::eParseForGlobalSettings : 0) |
                (parseForStatistics_ ? FbxReader::eParseForStatistics : 0);
    status_.Clear();
    if (!reader_->Open(fileName_.c_str(), flags)) {
        if (!status_.Error()) status_.SetCode(FbxStatus::eFailure);
        reader_.reset();
        return false;
    }

    hasAxisInfo_ = reader_->GetAxisInfo(axisInfo_);
    if (!reader_->GetFrameRate(frameRateMode_)) frameRateMode_ = 0;
    reader_->GetStatistics(statistics_);
    reader_->GetVersion(major_, minor_, revision_);

    if (registry.IsFbxReaderFormat(fileFormat_)) {
        if (!headerInfo_) {
            status_.SetCode(FbxStatus::eFailure);
            return false;
        }
        if (major_ >= 8) {
            status_.SetCode(FbxStatus::eInvalidFileVersion, "FBX File version %d is not supported in this product",
                            major_);
            reader_.reset();
            return false;
        }
        reader_->GetHeaderInfo(*headerInfo_);
        headerOpen_ = true;
    }
    progress_.SetTotal(static_cast<float>(statistics_.GetTotal()));
    return true;
}

void FbxImporter::GetFileVersion(int& major, int& minor, int& revision) const {
    if (major_ >= 1 && major_ <= 4) {
        major = 5;
        minor = revision = 0;
        return;
    }
    major = major_;
    minor = minor_;
    revision = revision_;
}

const FbxTakeInfo* FbxImporter::GetTakeInfo(int index) const {
    if (index < 0 || index >= GetTakeCount()) return nullptr;
    return &takeInfos_[index];
}

void FbxImporter::ReadOptions() {
    if (!reader_->ReadOptions(false)) return;
    const std::vector<FbxTakeInfo>* takes = reader_->GetTakeInfos();
    takeInfos_ = takes ? *takes : std::vector<FbxTakeInfo>();
    if (documentInfo_) documentInfo_->Destroy();
    documentInfo_ = nullptr;
    if (FbxDocumentInfo* sceneInfo = reader_->GetSceneInfo()) {
        documentInfo_ = FbxDocumentInfo::Create(GetFbxManager(), "");
        if (documentInfo_) documentInfo_->CopyFrom(*sceneInfo);
    }
    currentTakeName_ = settings_ ? settings_->GetStringProp(FbxIOPath::kCurrentTakeName, "") : FbxString();
}

FbxDocumentInfo* FbxGetDocumentInfo(const FbxDocument* document) {
    return document ? document->GetSrcObject<FbxDocumentInfo>() : nullptr;
}

namespace {

// The string property of that name on the object, made when missing.
FbxProperty stringProperty(FbxObject& object, const char* name) {
    FbxProperty p = object.FindProperty(name, true);
    if (!p.IsValid()) p = FbxProperty::Create(&object, FbxStringDT, name);
    return p;
}

}  // namespace

void FbxImporter::UpdateDocumentInfo(FbxDocument* document) {
    FbxDocumentInfo* info = FbxGetDocumentInfo(document);
    if (!info) info = FbxDocumentInfo::Create(document, "");
    if (!info) return;
    if (documentInfo_) {
        FbxProperty embedded = info->FindProperty("DocumentEmbeddedUrl", true);
        FbxString keep = embedded.IsValid() ? embedded.Get<FbxString>() : FbxString();
        info->CopyFrom(*documentInfo_);
        if (!keep.empty()) stringProperty(*info, "DocumentEmbeddedUrl").Set(keep.c_str());
    }
    stringProperty(*info, "SrcDocumentUrl").Set(FbxMakeAbsolutePath(fileName_.c_str()).c_str());
}

bool FbxImporter::Import(FbxDocument* document, bool) {
    if (!reader_) {
        status_.Clear();
        if (fileName_.empty()) {
            status_.SetCode(FbxStatus::eFailure, "Uninitialized filename");
            return false;
        }
        if (!OpenReader()) return false;
    }
    reader_->SetProgress(&progress_);
    if (!embeddingFolder_.empty()) reader_->SetEmbeddingFolder(embeddingFolder_.c_str());
    progress_.Reset();
    if (IsFBX()) ReadOptions();

    bool ok;
    {
        FbxNumericLocaleScope numericLocale;
        ok = reader_->Read(document);
    }
    if (ok) {
        UpdateDocumentInfo(document);
    } else if (!status_.Error()) {
        status_.SetCode(FbxStatus::eFailure);
    }
    progress_.Complete();
    return ok;
}
