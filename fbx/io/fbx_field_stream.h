#pragma once

#include "fbx/io/fbx_field_list.h"
#include "fbx/io/fbx_file.h"
#include "fbx/io/fbx_header_info.h"
#include "fbx/io/fbx_text_field_reader.h"
#include "fbx/model/fbx_status.h"
#include "fbx/model/fbx_string.h"

#include <cstdint>
#include <memory>
#include <vector>

class FbxFieldStream;

// The owner of a stream reads the rest of "FBXHeaderExtension" (such as its
// "SceneInfo") while the stream opens a file: it is called with the stream's
// current list inside that block, after the stream read its own fields.
class FbxHeaderExtensionReader {
public:
    virtual ~FbxHeaderExtensionReader() = default;
    virtual void ReadHeaderExtension(FbxFieldStream& stream) = 0;
};

// One open FBX file served as a tree of named fields, whatever its syntax:
// binary, or text (see fbx_text_field_reader.h), told apart by the header.
// Text values have no codes: NextValueType gives 'a' for an array and 'S'
// for all else, and each read converts the text as it asks.
//
// Open a file, open a section (the first one by default), then walk: a field
// is taken by name with BeginField, its values are read in order with the
// Next* reads, its nested block is entered with EnterBlock and left with
// LeaveBlock, and EndField moves on to the next instance of that name. Only
// the levels on the current path are in memory; values stay raw bytes until
// read, and arrays are decoded at the moment of reading into the instance's
// scratch result, valid until the next array, string or blob read on the same
// instance or until its level is left.
//
// Nothing here throws: a failed operation returns false, 0 or an empty value
// and, where the file is at fault, leaves a message in the status.
class FbxFieldStream {
public:
    static constexpr int64_t kTicksPerSecond = 46186158000LL;

    // With a status given, the stream reports into it; otherwise into its own.
    explicit FbxFieldStream(FbxStatus* status = nullptr);
    ~FbxFieldStream();
    FbxFieldStream(const FbxFieldStream&) = delete;
    FbxFieldStream& operator=(const FbxFieldStream&) = delete;

    FbxStatus& GetStatus() { return *status_; }
    const FbxStatus& GetStatus() const { return *status_; }

    // --- Opening ----------------------------------------------------------

    // Opens a file: reads its header and header extension, applies the
    // version rule and lists its sections. `owner`, when given, reads the rest
    // of the header extension; `headerInfo`, when given, receives its fields.
    // `checkCrc` applies to encrypted files only, which this reader refuses.
    bool OpenFile(const char* path, FbxHeaderExtensionReader* owner = nullptr, bool openFirstSection = true,
                  bool checkCrc = false, FbxHeaderInfo* headerInfo = nullptr);
    // The same over a caller's open file object, read from its start. The
    // stream does not own it; it must outlive the stream or its Close.
    bool OpenStream(FbxFile* stream, FbxHeaderExtensionReader* owner = nullptr, bool openFirstSection = true,
                    bool checkCrc = false, FbxHeaderInfo* headerInfo = nullptr);
    // Closes the section and the file; the version stays readable.
    void Close();

    // Read buffer of the file opened by OpenFile, in KiB; 0 reads through the
    // platform's buffered file alone. 8 by default.
    void SetCacheSize(uint32_t kib) { cacheSizeKiB_ = kib; }
    uint32_t GetCacheSize() const { return cacheSizeKiB_; }
    // Files of major version 7 are accepted only in this mode.
    void SetFbx7Mode(bool on) { fbx7Mode_ = on; }
    bool IsFbx7Mode() const { return fbx7Mode_; }

    uint32_t FileVersion() const { return fileVersion_; }
    bool IsBinary() const { return binary_; }
    bool IsBigEndian() const { return swap_; }
    bool IsEncrypted() const { return encrypted_; }
    bool IsOpen() const { return file_ != nullptr; }

    const FbxString& FilePath() const { return path_; }
    const FbxString& FileDirectory() const { return directory_; }
    const FbxString& FileBaseName() const { return baseName_; }

    // --- Sections ---------------------------------------------------------

    int SectionCount() const { return static_cast<int>(sectionOffsets_.size()); }
    // Version of section i, 0 when out of range.
    uint32_t SectionVersion(int index) const;
    uint32_t SectionOffset(int index) const;
    // Index of the open section, -1 when none is open.
    int CurrentSection() const { return currentSection_; }
    bool OpenSection(int index);
    void CloseSection();

    // Of the open section: its "NodeId" (or "Param2a"), null when absent.
    const char* NodeId() const { return hasNodeId_ ? nodeId_.c_str() : nullptr; }
    // Of the open section's "CreationTime": year, month, day, hour, minute,
    // second, millisecond; zeros when absent.
    const int* CreationTime() const { return creationTime_; }

    // --- Field navigation (on the current list) ------------------------------

    int FieldCount() const;
    // Name of the i-th field in sorted order, null when out of range.
    const char* FieldName(int index) const;
    int FieldInstanceCount(const char* name) const;
    bool BeginField(const char* name);
    bool BeginField(const char* name, int instance);
    bool BeginFieldAt(int index, int instance);
    void EndField();
    bool HasBlock() const;
    bool EnterBlock();
    bool LeaveBlock();
    void RewindFields();
    // Nesting depth of the current list: 0 at a section's top level.
    int Depth() const;

    int ValueCount() const;
    int ValuesLeft() const;
    // Code of the next value; 'S' when there is no current instance or value.
    char NextValueType() const;

    // --- Value reads: each takes the next value and moves on. -----------------
    // Reads past the last value give 0 or the empty string.

    char NextByte();
    unsigned char NextUByte();
    char NextChar();
    bool NextBool();
    short NextShort();
    unsigned short NextUShort();
    int NextInt();
    unsigned int NextUInt();
    int64_t NextLong();
    uint64_t NextULong();
    float NextFloat();
    double NextDouble();
    // The string, up to its first NUL, or "Class::Name" for a two-part
    // object name ("Name", NUL, 0x01, "Class"). Valid until the next string,
    // array or blob read on this instance.
    const char* NextString();
    // A time in ticks: an "L" value as it stands, other values as seconds.
    int64_t NextTime();
    void NextTimeSpan(int64_t& start, int64_t& stop);
    // The bytes of an "R" or "S" value and their length; null and 0 when the
    // length is 0 or the value has no length.
    const void* NextBlob(int& size);
    void NextFloats(float* values, int count);
    void NextDoubles(double* values, int count);
    void NextFloat3(float values[3]) { NextFloats(values, 3); }
    void NextFloat4(float values[4]) { NextFloats(values, 4); }
    void NextDouble3(double values[3]) { NextDoubles(values, 3); }
    void NextDouble4(double values[4]) { NextDoubles(values, 4); }

    // Arrays: a pointer to the decoded elements in the instance's scratch
    // result and their count; count 0 and null for another code than the
    // expected one (which a caller may name) or a failed decode.
    const bool* NextBoolArray(int& count, char code = 'b');
    const char* NextByteArray(int& count, char code = 'c');
    const unsigned char* NextUByteArray(int& count, char code = 'c');
    const short* NextShortArray(int& count, char code = 'h');
    const unsigned short* NextUShortArray(int& count, char code = 'h');
    const int* NextIntArray(int& count, char code = 'i');
    const unsigned int* NextUIntArray(int& count, char code = 'i');
    const float* NextFloatArray(int& count, char code = 'f');
    const double* NextDoubleArray(int& count, char code = 'd');
    const int64_t* NextLongArray(int& count, char code = 'l');
    const uint64_t* NextULongArray(int& count, char code = 'l');
    // Decodes the next array, of code 'b', 'c', 'i', 'f', 'd' or 'l', into
    // `out` instead of the scratch result, so that the caller can keep the
    // block (FbxByteBuffer::Detach) without copying it. The element count; 0
    // (and `out` empty) as for the reads above.
    int NextArrayInto(FbxByteBuffer& out, char code);

    // Takes the next value and tells, without keeping the elements, whether
    // it is an array that decodes; `count` receives its element count (0 for
    // any other value). For a caller that only summarises arrays.
    bool NextArrayCheck(int& count);

    // Reads of a whole field: BeginField(name), the read, EndField(); the
    // default when the field is absent.
    bool NextBool(const char* field, bool defaultValue);
    int NextInt(const char* field, int defaultValue);
    unsigned int NextUInt(const char* field, unsigned int defaultValue);
    int64_t NextLong(const char* field, int64_t defaultValue);
    float NextFloat(const char* field, float defaultValue);
    double NextDouble(const char* field, double defaultValue);
    const char* NextString(const char* field, const char* defaultValue);
    int64_t NextTime(const char* field, int64_t defaultValue);
    const void* NextBlob(const char* field, int& size);
    const int* NextIntArray(const char* field, int& count);
    const double* NextDoubleArray(const char* field, int& count);
    const float* NextFloatArray(const char* field, int& count);

private:
    void Reset();
    bool OpenOn(FbxHeaderExtensionReader* owner, bool openFirstSection, FbxHeaderInfo* headerInfo);
    bool ReadBinaryHeader();
    bool ReadTextHeader();
    bool ReadHeaderExtension(FbxHeaderExtensionReader* owner, FbxHeaderInfo* headerInfo);
    void ReadHeaderInfo(FbxHeaderInfo& info);
    bool ApplyVersionRule();
    void BuildSectionList();
    bool CheckSectionCode();
    void ReportCorrupted(FbxStatus::EStatusCode code);

    // Place of the next value and the bytes from there to the end of the
    // value list; moves the cursor. Null past the last value.
    const uint8_t* TakeValue(char& code, size_t& available);
    FbxFieldInstance* CurrentInstance() const;
    // Text: the next value's text (NUL-terminated); false past the last
    // value. Moves the cursor.
    bool TakeText(std::string_view& text);
    const void* NextArray(char expected, FbxTextElement type, size_t elementSize, int& count);
    double ReadDoubleOf(char code, const uint8_t* value, size_t available) const;

    FbxStatus ownStatus_;
    FbxStatus* status_;
    std::unique_ptr<FbxFile> defaultFile_;
    FbxFile* file_ = nullptr;

    std::vector<uint32_t> sectionOffsets_;
    std::vector<uint32_t> sectionVersions_;
    int currentSection_ = -1;

    std::unique_ptr<FbxFieldList> sectionRoot_;     // root of an open section other than 0
    std::unique_ptr<FbxFieldList> section0Root_;    // kept once loaded
    std::unique_ptr<FbxTextBlockIndex> textIndex_;  // of a text file
    FbxFieldList* root_ = nullptr;
    FbxFieldList* current_ = nullptr;

    bool binary_ = false;
    bool swap_ = false;
    bool encrypted_ = false;
    bool fbx7Mode_ = false;
    bool version2000_ = false;
    uint32_t fileVersion_ = 7400;
    uint32_t headerEnd_ = 0;
    uint32_t cacheSizeKiB_ = 8;

    FbxString path_;
    FbxString directory_;
    FbxString baseName_;
    FbxString messageName_;

    int creationTime_[7] = {};
    FbxString nodeId_;
    bool hasNodeId_ = false;
};
