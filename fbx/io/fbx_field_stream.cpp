#include "fbx/io/fbx_field_stream.h"

#include "fbx/io/fbx_array_decode.h"
#include "fbx/io/fbx_byte_order.h"
#include "fbx/io/fbx_cached_file.h"
#include "fbx/io/fbx_text_field_reader.h"
#include "fbx/io/fbx_text_values.h"

#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

// The two forms of the 20-byte binary magic.
constexpr unsigned char kBinaryMagicOld[20] = {0x4B, 0x61, 0x79, 0x64, 0x61, 0x72, 0x61, 0x20, 0x46, 0x42,
                                               0x58, 0x20, 0x42, 0x69, 0x6E, 0x61, 0x72, 0x79, 0x20, 0x20};
constexpr unsigned char kBinaryMagicNew[20] = {0x41, 0x75, 0x74, 0x6F, 0x64, 0x65, 0x73, 0x6B, 0x20, 0x46,
                                               0x42, 0x58, 0x20, 0x42, 0x69, 0x6E, 0x61, 0x72, 0x79, 0x20};
// Ends every section's trailer.
constexpr unsigned char kTrailerMarker[16] = {0xF8, 0x5A, 0x8C, 0x6A, 0xDE, 0xF5, 0xD9, 0x7E,
                                              0xEC, 0xE9, 0x0C, 0xE3, 0x75, 0x8F, 0x29, 0x0B};
// Magic, NUL, one ignored byte, the byte-order flag, the u32 version.
constexpr uint32_t kBinaryHeaderSize = 27;
constexpr uint32_t kTrailerSize = 128;

bool IsDirectory(const char* path) {
    struct stat info;
    return stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

bool IsRegularFile(const char* path) {
    struct stat info;
    return stat(path, &info) == 0 && !S_ISDIR(info.st_mode);
}

// Tiny values read as 0: a float with a binary exponent below -125 and a
// double with one below -1021, which is a biased exponent field below 2.
float FlushTiny(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return ((bits >> 23) & 0xFF) < 2 ? 0.0f : value;
}

double FlushTiny(double value) {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return ((bits >> 52) & 0x7FF) < 2 ? 0.0 : value;
}

// Loads `width` bytes of a value, never more than lie in the value list;
// missing bytes read as 0.
uint64_t LoadWidth(const uint8_t* value, size_t available, size_t width, bool swap) {
    uint8_t bytes[8] = {};
    std::memcpy(bytes, value, available < width ? available : width);
    switch (width) {
    case 1:
        return bytes[0];
    case 2:
        return FbxLoadU16(bytes, swap);
    case 4:
        return FbxLoadU32(bytes, swap);
    default:
        return FbxLoadU64(bytes, swap);
    }
}

int64_t SecondsToTicks(double seconds) {
    double ticks = seconds * static_cast<double>(FbxFieldStream::kTicksPerSecond);
    if (std::isnan(ticks)) return 0;
    if (ticks >= 9.2e18) return INT64_MAX;
    if (ticks <= -9.2e18) return INT64_MIN;
    return std::llround(ticks);
}

}  // namespace

FbxFieldStream::FbxFieldStream(FbxStatus* status) : status_(status ? status : &ownStatus_) {}

FbxFieldStream::~FbxFieldStream() { Close(); }

void FbxFieldStream::Reset() {
    Close();
    fileVersion_ = 7400;
    binary_ = false;
    swap_ = false;
    encrypted_ = false;
    version2000_ = false;
    headerEnd_ = 0;
    path_.clear();
    directory_.clear();
    baseName_.clear();
    messageName_.clear();
}

void FbxFieldStream::Close() {
    CloseSection();
    section0Root_.reset();
    sectionRoot_.reset();
    textIndex_.reset();
    root_ = nullptr;
    current_ = nullptr;
    sectionOffsets_.clear();
    sectionVersions_.clear();
    if (defaultFile_) defaultFile_->Close();
    file_ = nullptr;
}

void FbxFieldStream::ReportCorrupted(FbxStatus::EStatusCode code) {
    status_->SetCode(code, "File is corrupted %s", messageName_.c_str());
}

bool FbxFieldStream::OpenFile(const char* path, FbxHeaderExtensionReader* owner, bool openFirstSection, bool checkCrc,
                              FbxHeaderInfo* headerInfo) {
    (void)checkCrc;  // a CRC is kept only by encrypted files, which are refused
    Reset();
    if (!path) path = "";
    path_ = path;
    // A project folder is read through its project file.
    if (IsDirectory(path)) {
        for (const char* name : {"/Project.txt", "/Project.bin"}) {
            FbxString candidate = FbxString(path) + name;
            if (IsRegularFile(candidate.c_str())) {
                path_ = candidate;
                break;
            }
        }
    }
    size_t slash = path_.find_last_of('/');
    directory_ = slash == FbxString::npos ? FbxString() : path_.substr(0, slash + 1);
    baseName_ = slash == FbxString::npos ? path_ : path_.substr(slash + 1);
    messageName_ = path_;

    if (cacheSizeKiB_ != 0) {
        defaultFile_ = std::make_unique<FbxCachedFile>(FbxCachedFile::BufferSizeForKiB(cacheSizeKiB_));
    } else {
        defaultFile_ = std::make_unique<FbxFile>();
    }
    if (!defaultFile_->Open(path_.c_str(), "rb")) {
        status_->SetCode(FbxStatus::eFailure, "Unable to open file %s", messageName_.c_str());
        return false;
    }
    file_ = defaultFile_.get();
    return OpenOn(owner, openFirstSection, headerInfo);
}

bool FbxFieldStream::OpenStream(FbxFile* stream, FbxHeaderExtensionReader* owner, bool openFirstSection, bool checkCrc,
                                FbxHeaderInfo* headerInfo) {
    (void)checkCrc;
    Reset();
    messageName_ = "(stream)";
    if (!stream || !stream->IsOpen() || !stream->Seek(0)) {
        status_->SetCode(FbxStatus::eFailure, "Unable to open file %s", messageName_.c_str());
        return false;
    }
    file_ = stream;
    return OpenOn(owner, openFirstSection, headerInfo);
}

bool FbxFieldStream::OpenOn(FbxHeaderExtensionReader* owner, bool openFirstSection, FbxHeaderInfo* headerInfo) {
    if (!ReadBinaryHeader() && !ReadTextHeader()) {
        ReportCorrupted(FbxStatus::eFailure);
        Close();
        return false;
    }
    version2000_ = fileVersion_ >= 2000;

    int64_t position = file_->Tell();
    bool extensionRead = ReadHeaderExtension(owner, headerInfo);
    file_->Seek(position);
    if (!extensionRead || !ApplyVersionRule()) {
        Close();
        return false;
    }
    if (encrypted_) {
        status_->SetCode(FbxStatus::eFailure, "File is encrypted and cannot be read %s", messageName_.c_str());
        Close();
        return false;
    }
    BuildSectionList();
    if (openFirstSection && !OpenSection(0)) {
        Close();
        return false;
    }
    return true;
}

bool FbxFieldStream::ReadBinaryHeader() {
    unsigned char header[kBinaryHeaderSize];
    if (!file_->Seek(0)) return false;
    size_t got = file_->Read(header, sizeof header);
    bool magic = got >= 21 && header[20] == 0 &&
                 (std::memcmp(header, kBinaryMagicOld, 20) == 0 || std::memcmp(header, kBinaryMagicNew, 20) == 0);
    if (!magic || got != sizeof header) {
        file_->Seek(0);
        return false;
    }
    binary_ = true;
    swap_ = header[22] != 0;
    fileVersion_ = FbxLoadU32(header + 23, swap_);
    headerEnd_ = kBinaryHeaderSize;
    return true;
}

bool FbxFieldStream::ReadTextHeader() {
    uint32_t version = 0;
    if (!FbxReadTextHeader(*file_, version)) return false;
    // A text file has one section, from the top of the file: the header
    // comment is part of its text.
    binary_ = false;
    swap_ = false;
    fileVersion_ = version;
    headerEnd_ = 0;
    textIndex_ = std::make_unique<FbxTextBlockIndex>();
    return true;
}

bool FbxFieldStream::ReadHeaderExtension(FbxHeaderExtensionReader* owner, FbxHeaderInfo* headerInfo) {
    // Only the first field of the file is looked at.
    FbxString name;
    uint32_t blockOffset = 0;
    bool found = binary_ ? FbxFieldList::PeekFirstRecord(file_, headerEnd_, swap_, name, blockOffset)
                         : FbxPeekFirstTextField(*file_, headerEnd_, name, blockOffset);
    if (!found) return true;
    if (FbxFieldList::CompareNoCase(name, "FBXHeaderExtension") != 0 || blockOffset == 0) return true;

    FbxFieldList list(file_, blockOffset, binary_, swap_);
    list.SetTextIndex(textIndex_.get());
    if (!list.Load()) {
        ReportCorrupted(FbxStatus::eInvalidFile);
        return false;
    }
    root_ = &list;
    current_ = &list;
    int headerVersion = NextInt("FBXHeaderVersion", 0);
    fileVersion_ = NextUInt("FBXVersion", 0);
    bool ok = true;
    if (binary_) {
        int encryption = NextInt("EncryptionType", 0);
        if (encryption == 1) {
            encrypted_ = true;
        } else if (encryption != 0) {
            status_->SetCode(FbxStatus::eFailure, "Encryption type is not supported");
            ok = false;
        }
    }
    if (ok && headerInfo) {
        headerInfo->fileVersion = fileVersion_;
        headerInfo->headerVersion = headerVersion;
        ReadHeaderInfo(*headerInfo);
    }
    if (ok && owner) {
        list.Rewind();
        owner->ReadHeaderExtension(*this);
    }
    root_ = nullptr;
    current_ = nullptr;
    return ok;
}

void FbxFieldStream::ReadHeaderInfo(FbxHeaderInfo& info) {
    // Enters the current field's block and runs `read`; leaves a partly
    // loaded block too.
    auto inBlock = [this](auto read) {
        int depth = Depth();
        if (EnterBlock()) read();
        if (Depth() > depth) LeaveBlock();
    };
    if (info.headerVersion >= 1001 && BeginField("CurrentCameraResolution")) {
        inBlock([&] {
            info.currentCameraName = NextString("CameraName", "");
            info.cameraResolutionMode = NextString("CameraResolutionMode", "");
            info.cameraResolutionW = NextInt("CameraResolutionW", 0);
            info.cameraResolutionH = NextInt("CameraResolutionH", 0);
        });
        EndField();
    }
    if (info.headerVersion >= 1002) {
        if (BeginField("CreationTimeStamp")) {
            inBlock([&] {
                if (NextInt("Version", 0) >= 1000) {
                    info.hasTimeStamp = true;
                    info.year = NextInt("Year", 0);
                    info.month = NextInt("Month", 0);
                    info.day = NextInt("Day", 0);
                    info.hour = NextInt("Hour", 0);
                    info.minute = NextInt("Minute", 0);
                    info.second = NextInt("Second", 0);
                    info.millisecond = NextInt("Millisecond", 0);
                }
            });
            EndField();
        }
        info.creator = NextString("Creator", "");
    }
    if (info.headerVersion >= 1003 && BeginField("OtherFlags")) {
        inBlock([&] {
            info.flagPLE = NextInt("FlagPLE", 0) == 1;
            info.flagIOPlugin = NextInt("FlagIOPlugin", 0) == 1;
        });
        EndField();
    }
}

bool FbxFieldStream::ApplyVersionRule() {
    uint32_t major = fileVersion_ / 1000;
    if (major < 8 && (major != 7 || fbx7Mode_)) return true;
    status_->SetCode(FbxStatus::eInvalidFileVersion, "FBX file version %u.%u.%u is not supported in this product",
                     major, (fileVersion_ % 1000) / 100, fileVersion_ % 100);
    return false;
}

void FbxFieldStream::BuildSectionList() {
    sectionOffsets_.assign(1, headerEnd_);
    sectionVersions_.assign(1, fileVersion_);
    if (!binary_) return;
    if (!file_->Seek(0, FbxFile::eEnd)) return;
    int64_t end = file_->Tell();
    // Each section ends in a trailer that gives the distance back to the
    // section's start; walk them from the end of the file.
    while (end >= static_cast<int64_t>(kTrailerSize + sizeof kTrailerMarker)) {
        int64_t trailerStart = (end & ~int64_t{15}) - static_cast<int64_t>(kTrailerSize + sizeof kTrailerMarker);
        if (trailerStart < 0 || !file_->Seek(trailerStart)) break;
        unsigned char trailer[kTrailerSize];
        unsigned char marker[sizeof kTrailerMarker];
        if (file_->Read(trailer, sizeof trailer) != sizeof trailer) break;
        if (file_->Read(marker, sizeof marker) != sizeof marker) break;
        if (std::memcmp(marker, kTrailerMarker, sizeof marker) != 0) break;
        uint32_t distance = FbxLoadU32(trailer, swap_);
        uint32_t version = FbxLoadU32(trailer + 4, swap_);
        if (distance > trailerStart) break;
        int64_t start = distance == 0 ? 0 : trailerStart - distance;
        if (start >= end) break;
        if (start == 0) {
            if (version != 0) sectionVersions_[0] = version;
            break;
        }
        // A later section cannot start inside the header.
        if (start < headerEnd_) break;
        sectionOffsets_.insert(sectionOffsets_.begin() + 1, static_cast<uint32_t>(start));
        sectionVersions_.insert(sectionVersions_.begin() + 1, version != 0 ? version : 4000);
        end = start;
    }
    file_->Seek(sectionOffsets_[0]);
}

uint32_t FbxFieldStream::SectionVersion(int index) const {
    if (index < 0 || index >= SectionCount()) return 0;
    return sectionVersions_[static_cast<size_t>(index)];
}

uint32_t FbxFieldStream::SectionOffset(int index) const {
    if (index < 0 || index >= SectionCount()) return 0;
    return sectionOffsets_[static_cast<size_t>(index)];
}

bool FbxFieldStream::OpenSection(int index) {
    if (currentSection_ >= 0 || !file_) return false;
    if (index < 0 || index >= SectionCount()) {
        status_->SetCode(FbxStatus::eFailure);
        return false;
    }
    if (index == 0 && section0Root_) {
        root_ = section0Root_.get();
        root_->Rewind();
    } else {
        sectionRoot_ =
            std::make_unique<FbxFieldList>(file_, sectionOffsets_[static_cast<size_t>(index)], binary_, swap_);
        root_ = sectionRoot_.get();
        root_->SetTextIndex(textIndex_.get());
        if (!root_->Load()) {
            sectionRoot_.reset();
            root_ = nullptr;
            ReportCorrupted(FbxStatus::eInvalidFile);
            return false;
        }
    }
    current_ = root_;
    currentSection_ = index;
    if (binary_ && !CheckSectionCode()) {
        CloseSection();
        ReportCorrupted(FbxStatus::eInvalidFile);
        return false;
    }
    if (index == 0 && !section0Root_) section0Root_ = std::move(sectionRoot_);

    hasNodeId_ = false;
    nodeId_.clear();
    if (binary_) {
        for (const char* name : {"NodeId", "Param2a"}) {
            if (BeginField(name)) {
                nodeId_ = NextString();
                hasNodeId_ = true;
                EndField();
                break;
            }
        }
    }
    root_->Rewind();
    return true;
}

void FbxFieldStream::CloseSection() {
    if (section0Root_ && root_ == section0Root_.get()) section0Root_->Rewind();
    sectionRoot_.reset();
    root_ = nullptr;
    current_ = nullptr;
    currentSection_ = -1;
}

bool FbxFieldStream::CheckSectionCode() {
    bool hasId = false;
    if (BeginField("FileId")) {
        hasId = true;
        EndField();
    } else if (BeginField("Source")) {
        hasId = true;
        EndField();
    }
    bool hasTime = false;
    std::memset(creationTime_, 0, sizeof creationTime_);
    if (BeginField("CreationTime")) {
        hasTime = true;
        const char* text = NextString();
        int* t = creationTime_;
        if (std::sscanf(text, "%d-%d-%d %d:%d:%d:%d", &t[0], &t[1], &t[2], &t[3], &t[4], &t[5], &t[6]) < 0) {
            std::memset(creationTime_, 0, sizeof creationTime_);
        }
        EndField();
    }
    root_->Rewind();

    // The section code follows the section's null record. Its value is
    // checked against a key that this reader does not hold: the check stops
    // at its presence.
    unsigned char code[16];
    size_t got = 0;
    if (file_->Seek(root_->LoadEnd())) got = file_->Read(code, sizeof code);
    if (hasId && hasTime) return got == sizeof code;
    if (hasId || hasTime) return false;
    if (currentSection_ == SectionCount() - 1) return got == 0;
    return true;
}

// --- Navigation -------------------------------------------------------------

int FbxFieldStream::FieldCount() const { return current_ ? current_->FieldCount() : 0; }

const char* FbxFieldStream::FieldName(int index) const {
    if (!current_ || index < 0 || index >= current_->FieldCount()) return nullptr;
    return current_->FieldAt(index).Name().c_str();
}

int FbxFieldStream::FieldInstanceCount(const char* name) const {
    if (!current_ || !name) return 0;
    int index = current_->FindField(name);
    return index < 0 ? 0 : current_->FieldAt(index).InstanceCount();
}

bool FbxFieldStream::BeginFieldAt(int index, int instance) {
    if (!current_ || index < 0 || index >= current_->FieldCount()) return false;
    FbxField& field = current_->FieldAt(index);
    if (instance < 0 || instance >= field.InstanceCount()) return false;
    field.SetReadCursor(instance);
    current_->SetCurrentFieldIndex(index);
    field.Instance(instance).SetCursor(0);
    return true;
}

bool FbxFieldStream::BeginField(const char* name) {
    if (!current_ || !name) return false;
    int index = current_->FindField(name);
    if (index < 0) return false;
    return BeginFieldAt(index, current_->FieldAt(index).ReadCursor());
}

bool FbxFieldStream::BeginField(const char* name, int instance) {
    if (!current_ || !name) return false;
    int index = current_->FindField(name);
    return index >= 0 && BeginFieldAt(index, instance);
}

void FbxFieldStream::EndField() {
    if (!current_) return;
    int index = current_->CurrentFieldIndex();
    if (index < 0 || index >= current_->FieldCount()) return;
    FbxField& field = current_->FieldAt(index);
    field.SetReadCursor(field.ReadCursor() + 1);
    current_->SetCurrentFieldIndex(-1);
}

FbxFieldInstance* FbxFieldStream::CurrentInstance() const { return current_ ? current_->CurrentInstance() : nullptr; }

bool FbxFieldStream::HasBlock() const {
    FbxFieldInstance* instance = CurrentInstance();
    return instance && instance->BlockOffset() != 0;
}

bool FbxFieldStream::EnterBlock() {
    FbxFieldInstance* instance = CurrentInstance();
    if (!instance || instance->BlockOffset() == 0) return false;
    FbxFieldList* child = current_->OpenChild(instance->BlockOffset());
    // A block that fails to load stays current with what it has, until
    // LeaveBlock.
    current_ = child;
    if (!child->Load()) {
        ReportCorrupted(FbxStatus::eInvalidFile);
        return false;
    }
    return true;
}

bool FbxFieldStream::LeaveBlock() {
    if (!current_ || current_ == root_ || !current_->Parent()) return false;
    FbxFieldList* parent = current_->Parent();
    parent->CloseChild();
    current_ = parent;
    return true;
}

void FbxFieldStream::RewindFields() {
    if (current_) current_->Rewind();
}

int FbxFieldStream::Depth() const {
    int depth = 0;
    for (FbxFieldList* list = current_; list && list != root_; list = list->Parent()) ++depth;
    return depth;
}

int FbxFieldStream::ValueCount() const {
    FbxFieldInstance* instance = CurrentInstance();
    return instance ? instance->ValueCount() : 0;
}

int FbxFieldStream::ValuesLeft() const {
    FbxFieldInstance* instance = CurrentInstance();
    if (!instance) return 0;
    int left = instance->ValueCount() - static_cast<int>(instance->Cursor());
    return left > 0 ? left : 0;
}

char FbxFieldStream::NextValueType() const {
    FbxFieldInstance* instance = CurrentInstance();
    if (!instance) return 'S';
    if (!binary_) {
        // Text has no codes: an array is told by its "*count", and
        // everything else is text.
        std::string_view text;
        bool array = current_->TextValueAt(*instance, static_cast<int>(instance->Cursor()), text) && !text.empty() &&
                     text[0] == '*';
        return array ? 'a' : 'S';
    }
    char code = current_->ValueCode(*instance, static_cast<int>(instance->Cursor()));
    return code ? code : 'S';
}

// --- Values -----------------------------------------------------------------
//
// A binary value is read by its bytes; a text value converts its text as the
// read asks: numbers in base 10, a blob from base64, an array from the
// values of its block.

bool FbxFieldStream::TakeText(std::string_view& text) {
    FbxFieldInstance* instance = CurrentInstance();
    if (!instance || !current_->TextValueAt(*instance, static_cast<int>(instance->Cursor()), text)) return false;
    instance->SetCursor(instance->Cursor() + 1);
    return true;
}

const uint8_t* FbxFieldStream::TakeValue(char& code, size_t& available) {
    code = 0;
    available = 0;
    FbxFieldInstance* instance = CurrentInstance();
    if (!instance) return nullptr;
    uint32_t cursor = instance->Cursor();
    if (cursor >= static_cast<uint32_t>(instance->ValueCount())) return nullptr;
    const uint8_t* value = current_->ValueAt(*instance, static_cast<int>(cursor), available);
    instance->SetCursor(cursor + 1);
    if (!value) return nullptr;
    code = static_cast<char>(value[-1]);
    return value;
}

char FbxFieldStream::NextByte() { return static_cast<char>(NextUByte()); }

unsigned char FbxFieldStream::NextUByte() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) ? static_cast<unsigned char>(FbxTextToInt(text)) : 0;
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    return value && available ? value[0] : 0;
}

char FbxFieldStream::NextChar() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) ? text.data()[0] : 0;
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    return value && code == 'C' && available ? static_cast<char>(value[0]) : 0;
}

bool FbxFieldStream::NextBool() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) && FbxTextToULong(text) != 0;
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    if (!value) return false;
    // A one-byte value is the boolean itself; wider ones are read as 32 bits.
    if (code == 'C' || code == 'Z') return available && value[0] != 0;
    return static_cast<uint32_t>(LoadWidth(value, available, 4, swap_)) != 0;
}

short FbxFieldStream::NextShort() { return static_cast<short>(NextUShort()); }

unsigned short FbxFieldStream::NextUShort() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) ? static_cast<unsigned short>(FbxTextToInt(text)) : 0;
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    return value ? static_cast<unsigned short>(LoadWidth(value, available, 2, swap_)) : 0;
}

int FbxFieldStream::NextInt() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) ? FbxTextToInt(text) : 0;
    }
    return static_cast<int>(NextUInt());
}

unsigned int FbxFieldStream::NextUInt() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) ? static_cast<unsigned int>(FbxTextToULong(text)) : 0;
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    return value ? static_cast<unsigned int>(LoadWidth(value, available, 4, swap_)) : 0;
}

int64_t FbxFieldStream::NextLong() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) ? FbxTextToLong(text) : 0;
    }
    return static_cast<int64_t>(NextULong());
}

uint64_t FbxFieldStream::NextULong() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) ? FbxTextToULong(text) : 0;
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    return value ? LoadWidth(value, available, 8, swap_) : 0;
}

double FbxFieldStream::ReadDoubleOf(char code, const uint8_t* value, size_t available) const {
    if (code == 'D') {
        uint64_t bits = LoadWidth(value, available, 8, swap_);
        double d;
        std::memcpy(&d, &bits, sizeof d);
        return FlushTiny(d);
    }
    if (code == 'F') {
        uint32_t bits = static_cast<uint32_t>(LoadWidth(value, available, 4, swap_));
        float f;
        std::memcpy(&f, &bits, sizeof f);
        return static_cast<double>(FlushTiny(f));
    }
    return 0.0;
}

float FbxFieldStream::NextFloat() {
    if (!binary_) return static_cast<float>(NextDouble());
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    if (!value) return 0.0f;
    return FlushTiny(static_cast<float>(ReadDoubleOf(code, value, available)));
}

double FbxFieldStream::NextDouble() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) ? FbxTextToDouble(text) : 0.0;
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    return value ? ReadDoubleOf(code, value, available) : 0.0;
}

const char* FbxFieldStream::NextString() {
    if (!binary_) {
        std::string_view text;
        return TakeText(text) ? text.data() : "";
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    if (!value || code != 'S' || available < 4) return "";
    uint32_t length = FbxLoadU32(value, swap_);
    if (length == 0) return "";
    if (length > available - 4) length = static_cast<uint32_t>(available - 4);
    std::string_view text(reinterpret_cast<const char*>(value + 4), length);

    // "Name", NUL, 0x01, "Class" reads as "Class::Name"; other strings end at
    // their first NUL.
    std::string_view name = text.substr(0, text.find('\0'));
    std::string_view klass;
    bool twoPart = false;
    size_t split = text.find(std::string_view("\0\x01", 2));
    if (split != std::string_view::npos) {
        twoPart = true;
        klass = text.substr(split + 2);
        klass = klass.substr(0, klass.find('\0'));
    }
    FbxByteBuffer& scratch = CurrentInstance()->Scratch();
    size_t size = twoPart ? klass.size() + 2 + name.size() : name.size();
    if (!scratch.Reserve(size + 1)) return "";
    char* out = reinterpret_cast<char*>(scratch.Data());
    if (twoPart) {
        std::memcpy(out, klass.data(), klass.size());
        std::memcpy(out + klass.size(), "::", 2);
        std::memcpy(out + klass.size() + 2, name.data(), name.size());
    } else {
        std::memcpy(out, name.data(), name.size());
    }
    out[size] = '\0';
    scratch.SetSize(size + 1);
    return out;
}

int64_t FbxFieldStream::NextTime() {
    // Text gives ticks from version 2001 on, and seconds before.
    if (!binary_ && SectionVersion(currentSection_ < 0 ? 0 : currentSection_) >= 2001) return NextLong();
    if (NextValueType() == 'L') return NextLong();
    return SecondsToTicks(NextDouble());
}

void FbxFieldStream::NextTimeSpan(int64_t& start, int64_t& stop) {
    start = NextTime();
    stop = NextTime();
}

const void* FbxFieldStream::NextBlob(int& size) {
    size = 0;
    if (!binary_) {
        std::string_view text;
        bool taken = TakeText(text);
        FbxByteBuffer& scratch = CurrentInstance()->Scratch();
        if (!taken || !FbxDecodeBase64(text, scratch) || scratch.Size() == 0 || scratch.Size() > INT32_MAX)
            return nullptr;
        size = static_cast<int>(scratch.Size());
        return scratch.Data();
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    if (!value || (code != 'R' && code != 'S') || available < 4) return nullptr;
    uint32_t length = FbxLoadU32(value, swap_);
    if (length > available - 4) length = static_cast<uint32_t>(available - 4);
    if (length == 0 || length > INT32_MAX) return nullptr;
    size = static_cast<int>(length);
    return value + 4;
}

void FbxFieldStream::NextFloats(float* values, int count) {
    for (int i = 0; i < count; ++i) values[i] = NextFloat();
}

void FbxFieldStream::NextDoubles(double* values, int count) {
    for (int i = 0; i < count; ++i) values[i] = NextDouble();
}

const void* FbxFieldStream::NextArray(char expected, FbxTextElement type, size_t elementSize, int& count) {
    count = 0;
    if (!binary_) {
        // "*count", with the values in the field's block as one field "a";
        // whatever the code asked for, since text has none.
        std::string_view text;
        if (!TakeText(text) || text.empty() || text[0] != '*') return nullptr;
        int64_t wanted = FbxTextToLong(text.substr(1));
        FbxFieldInstance* instance = CurrentInstance();
        if (wanted < 1 || wanted > INT32_MAX) return nullptr;
        uint32_t got = FbxLoadTextArray(*file_, instance->BlockOffset(), static_cast<uint32_t>(wanted), type,
                                        instance->Scratch(), textIndex_.get());
        count = static_cast<int>(got);
        return got ? instance->Scratch().Data() : nullptr;
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    if (!value || code != expected) return nullptr;
    FbxByteBuffer& scratch = CurrentInstance()->Scratch();
    uint32_t decoded = FbxDecodeArray(value, available, elementSize, swap_, type == FbxTextElement::eBool, scratch);
    if (decoded == 0 || decoded > INT32_MAX) return nullptr;
    count = static_cast<int>(decoded);
    return scratch.Data();
}

const bool* FbxFieldStream::NextBoolArray(int& count, char code) {
    return static_cast<const bool*>(NextArray(code, FbxTextElement::eBool, 1, count));
}
const char* FbxFieldStream::NextByteArray(int& count, char code) {
    return static_cast<const char*>(NextArray(code, FbxTextElement::eInt8, 1, count));
}
const unsigned char* FbxFieldStream::NextUByteArray(int& count, char code) {
    return static_cast<const unsigned char*>(NextArray(code, FbxTextElement::eInt8, 1, count));
}
const short* FbxFieldStream::NextShortArray(int& count, char code) {
    return static_cast<const short*>(NextArray(code, FbxTextElement::eInt16, 2, count));
}
const unsigned short* FbxFieldStream::NextUShortArray(int& count, char code) {
    return static_cast<const unsigned short*>(NextArray(code, FbxTextElement::eInt16, 2, count));
}
const int* FbxFieldStream::NextIntArray(int& count, char code) {
    return static_cast<const int*>(NextArray(code, FbxTextElement::eInt32, 4, count));
}
const unsigned int* FbxFieldStream::NextUIntArray(int& count, char code) {
    return static_cast<const unsigned int*>(NextArray(code, FbxTextElement::eUInt32, 4, count));
}
const float* FbxFieldStream::NextFloatArray(int& count, char code) {
    return static_cast<const float*>(NextArray(code, FbxTextElement::eFloat, 4, count));
}
const double* FbxFieldStream::NextDoubleArray(int& count, char code) {
    return static_cast<const double*>(NextArray(code, FbxTextElement::eDouble, 8, count));
}
const int64_t* FbxFieldStream::NextLongArray(int& count, char code) {
    return static_cast<const int64_t*>(NextArray(code, FbxTextElement::eInt64, 8, count));
}
const uint64_t* FbxFieldStream::NextULongArray(int& count, char code) {
    return static_cast<const uint64_t*>(NextArray(code, FbxTextElement::eUInt64, 8, count));
}

bool FbxFieldStream::NextArrayCheck(int& count) {
    count = 0;
    if (!binary_) {
        // "*count" with the values in the field's block: checked by reading
        // them, and the values are let go at once.
        std::string_view text;
        if (!TakeText(text) || text.empty() || text[0] != '*') return false;
        int64_t wanted = FbxTextToLong(text.substr(1));
        if (wanted == 0) return true;
        if (wanted < 0 || wanted > INT32_MAX) return false;
        FbxFieldInstance* instance = CurrentInstance();
        uint32_t got = FbxLoadTextArray(*file_, instance->BlockOffset(), static_cast<uint32_t>(wanted),
                                        FbxTextElement::eDouble, instance->Scratch(), textIndex_.get());
        instance->Scratch().Release();
        count = static_cast<int>(got);
        return got != 0;
    }
    char expected = NextValueType();
    size_t elementSize = 0;
    switch (expected) {
    case 'b':
    case 'c':
        elementSize = 1;
        break;
    case 'h':
        elementSize = 2;
        break;
    case 'i':
    case 'f':
        elementSize = 4;
        break;
    case 'l':
    case 'd':
        elementSize = 8;
        break;
    default:
        NextByte();  // steps over the value
        return false;
    }
    char code;
    size_t available;
    const uint8_t* value = TakeValue(code, available);
    uint32_t elements = 0;
    if (!value || !FbxCheckArray(value, available, elementSize, swap_, elements) || elements > INT32_MAX) return false;
    count = static_cast<int>(elements);
    return true;
}

int FbxFieldStream::NextArrayInto(FbxByteBuffer& out, char code) {
    out.Clear();
    FbxFieldInstance* instance = CurrentInstance();
    size_t elementSize;
    FbxTextElement textType;  // how a text file's values are converted
    switch (code) {
    case 'b':
        elementSize = 1;
        textType = FbxTextElement::eBool;
        break;
    case 'c':
        elementSize = 1;
        textType = FbxTextElement::eInt8;
        break;
    case 'i':
        elementSize = 4;
        textType = FbxTextElement::eInt32;
        break;
    case 'f':
        elementSize = 4;
        textType = FbxTextElement::eFloat;
        break;
    case 'd':
        elementSize = 8;
        textType = FbxTextElement::eDouble;
        break;
    case 'l':
        elementSize = 8;
        textType = FbxTextElement::eInt64;
        break;
    default:
        return 0;
    }
    if (!instance) return 0;
    // The decode goes to the instance's scratch result; lending `out` as
    // that result for the read puts the values straight into it.
    FbxByteBuffer& scratch = instance->Scratch();
    std::swap(scratch, out);
    int count = 0;
    NextArray(code, textType, elementSize, count);
    std::swap(scratch, out);
    if (count == 0) out.Clear();
    return count;
}

// --- Reads of a whole field -------------------------------------------------

bool FbxFieldStream::NextBool(const char* field, bool defaultValue) {
    if (!BeginField(field)) return defaultValue;
    bool value = NextBool();
    EndField();
    return value;
}

int FbxFieldStream::NextInt(const char* field, int defaultValue) {
    if (!BeginField(field)) return defaultValue;
    int value = NextInt();
    EndField();
    return value;
}

unsigned int FbxFieldStream::NextUInt(const char* field, unsigned int defaultValue) {
    if (!BeginField(field)) return defaultValue;
    unsigned int value = NextUInt();
    EndField();
    return value;
}

int64_t FbxFieldStream::NextLong(const char* field, int64_t defaultValue) {
    if (!BeginField(field)) return defaultValue;
    int64_t value = NextLong();
    EndField();
    return value;
}

float FbxFieldStream::NextFloat(const char* field, float defaultValue) {
    if (!BeginField(field)) return defaultValue;
    float value = NextFloat();
    EndField();
    return value;
}

double FbxFieldStream::NextDouble(const char* field, double defaultValue) {
    if (!BeginField(field)) return defaultValue;
    double value = NextDouble();
    EndField();
    return value;
}

const char* FbxFieldStream::NextString(const char* field, const char* defaultValue) {
    if (!BeginField(field)) return defaultValue;
    const char* value = NextString();
    EndField();
    return value;
}

int64_t FbxFieldStream::NextTime(const char* field, int64_t defaultValue) {
    if (!BeginField(field)) return defaultValue;
    int64_t value = NextTime();
    EndField();
    return value;
}

const void* FbxFieldStream::NextBlob(const char* field, int& size) {
    size = 0;
    if (!BeginField(field)) return nullptr;
    const void* value = NextBlob(size);
    EndField();
    return value;
}

const int* FbxFieldStream::NextIntArray(const char* field, int& count) {
    count = 0;
    if (!BeginField(field)) return nullptr;
    const int* value = NextIntArray(count);
    EndField();
    return value;
}

const double* FbxFieldStream::NextDoubleArray(const char* field, int& count) {
    count = 0;
    if (!BeginField(field)) return nullptr;
    const double* value = NextDoubleArray(count);
    EndField();
    return value;
}

const float* FbxFieldStream::NextFloatArray(const char* field, int& count) {
    count = 0;
    if (!BeginField(field)) return nullptr;
    const float* value = NextFloatArray(count);
    EndField();
    return value;
}
