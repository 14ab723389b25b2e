#include "fbx/io/fbx_property_records.h"

#include <cstring>
#include <unordered_set>

#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_template_map.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_status.h"

namespace {

constexpr uint32_t kLockShift = 7;
constexpr uint32_t kMuteShift = 11;
constexpr uint32_t kLockBits = FbxPropertyFlags::eLockedAll;
constexpr uint32_t kMuteBits = FbxPropertyFlags::eMutedAll;

uint32_t memberField(char c) {
    if (c >= '1' && c <= '9') return static_cast<uint32_t>(c - '0');
    if (c >= 'a' && c <= 'e') return static_cast<uint32_t>(c - 'a' + 10);
    return 15;
}

// Enters the current field's block; false when it has none. A block that
// fails to load stays entered with what it holds, so it is read as far as
// it goes and must be left all the same.
bool enterBlock(FbxFieldStream& stream) {
    if (!stream.HasBlock()) return false;
    stream.EnterBlock();
    return true;
}

void reportBlobError(FbxStatus& status) { status.SetCode(FbxStatus::eFailure, "Error decoding binary data chunk"); }

// Reads a blob value: its total size, then the "BinaryData" chunks of the
// record's block until the size is reached. Chunks are cut to what is still
// missing. A chunk that does not decode reports and leaves the property as
// it was; a file that brings fewer bytes than it announced gives what came.
void readBlob(FbxFieldStream& stream, FbxProperty& property, FbxStatus& status) {
    int size = stream.NextInt();
    if (size < 0) {
        reportBlobError(status);
        return;
    }
    FbxBlob blob;
    size_t missing = static_cast<size_t>(size);
    bool failed = false;
    if (missing > 0 && enterBlock(stream)) {
        while (!failed && missing > 0 && stream.BeginField("BinaryData")) {
            while (missing > 0 && stream.ValuesLeft() > 0) {
                int chunkSize = 0;
                const void* chunk = stream.NextBlob(chunkSize);
                if (!chunk || chunkSize <= 0) {
                    failed = true;
                    break;
                }
                size_t take = static_cast<size_t>(chunkSize) < missing ? static_cast<size_t>(chunkSize) : missing;
                const uint8_t* bytes = static_cast<const uint8_t*>(chunk);
                blob.bytes.insert(blob.bytes.end(), bytes, bytes + take);
                missing -= take;
            }
            stream.EndField();
        }
        stream.LeaveBlock();
    }
    if (failed) {
        reportBlobError(status);
        return;
    }
    property.Set(blob, true);
}

template <class T>
void setValue(FbxProperty& property, const T& value) {
    property.Set(&value, FbxTypeOf<T>::value, true);
}

void readDoubles(FbxFieldStream& stream, FbxProperty& property, EFbxType type) {
    switch (type) {
    case eFbxDouble2: {
        FbxDouble2 v;
        stream.NextDoubles(v.data, 2);
        setValue(property, v);
        break;
    }
    case eFbxDouble3: {
        FbxDouble3 v;
        stream.NextDoubles(v.data, 3);
        setValue(property, v);
        break;
    }
    case eFbxDouble4: {
        FbxDouble4 v;
        stream.NextDoubles(v.data, 4);
        setValue(property, v);
        break;
    }
    default: {
        FbxDouble4x4 v;
        stream.NextDoubles(v.data, 16);
        setValue(property, v);
        break;
    }
    }
}

// Reads the value of a record by the property's base type and sets it.
void readValue(FbxFieldStream& stream, FbxProperty& property, EFbxType type, FbxStatus& status) {
    switch (type) {
    case eFbxChar:
        setValue(property, FbxChar(stream.NextByte()));
        break;
    case eFbxUChar:
        setValue(property, FbxUChar(stream.NextUByte()));
        break;
    case eFbxShort:
        setValue(property, FbxShort(stream.NextShort()));
        break;
    case eFbxUShort:
        setValue(property, FbxUShort(stream.NextUShort()));
        break;
    case eFbxUInt:
        setValue(property, FbxUInt(stream.NextUInt()));
        break;
    case eFbxLongLong:
        setValue(property, FbxLongLong(stream.NextLong()));
        break;
    case eFbxULongLong:
        setValue(property, FbxULongLong(stream.NextULong()));
        break;
    case eFbxHalfFloat:
        setValue(property, FbxHalfFloat(stream.NextFloat()));
        break;
    case eFbxBool:
        setValue(property, FbxBool(stream.NextBool()));
        break;
    case eFbxInt:
    case eFbxEnum:
        setValue(property, FbxInt(stream.NextInt()));
        break;
    case eFbxFloat:
        setValue(property, FbxFloat(stream.NextFloat()));
        break;
    case eFbxDouble:
        setValue(property, FbxDouble(stream.NextDouble()));
        break;
    case eFbxDouble2:
    case eFbxDouble3:
    case eFbxDouble4:
    case eFbxDouble4x4:
        readDoubles(stream, property, type);
        break;
    case eFbxString:
        setValue(property, FbxString(stream.NextString()));
        break;
    case eFbxTime:
        setValue(property, FbxTime(stream.NextTime()));
        break;
    case eFbxBlob:
        readBlob(stream, property, status);
        break;
    case eFbxDistance: {
        FbxDistance distance;
        distance.value = stream.NextFloat();
        distance.unit = stream.NextString();
        setValue(property, distance);
        break;
    }
    case eFbxDateTime: {
        const char* text = stream.NextString();
        FbxDateTime dateTime;
        if (*text && dateTime.FromString(text)) setValue(property, dateTime);
        break;
    }
    default:
        break;
    }
}

// Reads one limit like the value of a whole-number type.
double readWholeLimit(FbxFieldStream& stream, EFbxType type) {
    switch (type) {
    case eFbxChar:
        return stream.NextByte();
    case eFbxUChar:
        return stream.NextUByte();
    case eFbxShort:
        return stream.NextShort();
    case eFbxUShort:
        return stream.NextUShort();
    case eFbxUInt:
        return stream.NextUInt();
    case eFbxULongLong:
        return static_cast<double>(stream.NextULong());
    default:
        return stream.NextInt();
    }
}

// Limits and enum items that follow the value of a user property.
void readUserExtras(FbxFieldStream& stream, FbxProperty& property, EFbxType type) {
    switch (type) {
    case eFbxChar:
    case eFbxUChar:
    case eFbxShort:
    case eFbxUShort:
    case eFbxUInt:
    case eFbxULongLong:
    case eFbxInt: {
        double minimum = readWholeLimit(stream, type);
        double maximum = readWholeLimit(stream, type);
        property.SetMinLimit(minimum);
        property.SetMaxLimit(maximum);
        break;
    }
    case eFbxHalfFloat:
    case eFbxBool:
    case eFbxFloat:
    case eFbxDouble: {
        double minimum = stream.NextDouble();
        double maximum = stream.NextDouble();
        property.SetMinLimit(minimum);
        property.SetMaxLimit(maximum);
        break;
    }
    case eFbxEnum: {
        FbxInt value = 0;
        property.Get(&value, eFbxInt);
        FbxString items = stream.NextString();
        size_t start = 0;
        while (start < items.size()) {
            size_t end = items.find('~', start);
            if (end == FbxString::npos) end = items.size();
            property.AddEnumValue(items.substr(start, end - start).c_str());
            start = end + 1;
        }
        property.Set(&value, eFbxInt, true);
        break;
    }
    default:
        break;
    }
}

bool hasNoValue(const FbxDataType& type) { return type == FbxEventDT || type == FbxActionDT || type == FbxCompoundDT; }

// Brings the property's flags to those of the file.
void applyFlags(FbxProperty& property, uint32_t fileFlags) {
    static constexpr uint32_t kSingle[] = {FbxPropertyFlags::eAnimatable, FbxPropertyFlags::eUserDefined,
                                           FbxPropertyFlags::eAnimated, FbxPropertyFlags::eHidden};
    uint32_t flags = property.GetFlags();
    for (uint32_t bit : kSingle)
        if ((flags & bit) != (fileFlags & bit)) property.SetFlag(bit, (fileFlags & bit) != 0);
    for (uint32_t field : {kLockBits, kMuteBits}) {
        if ((flags & field) == (fileFlags & field)) continue;
        property.SetFlag(field, false);
        if (fileFlags & field) property.SetFlag(fileFlags & field, true);
    }
}

// The data type of a record's two type words: the second one when it names
// a type, else the first. A block names few pairs, each many times, so the
// pairs seen are kept for the block's length.
class TypeCache {
public:
    explicit TypeCache(FbxManager* manager) : manager_(manager) {}

    FbxDataType Find(const FbxString& word1, const FbxString& word2) {
        for (const Item& item : items_)
            if (item.word1 == word1 && item.word2 == word2) return item.type;
        FbxDataType type = word2.empty() ? Lookup(word1) : Lookup(word2);
        if (!type.Valid() && !word2.empty()) type = Lookup(word1);
        if (items_.size() < kCapacity) items_.push_back({word1, word2, type});
        return type;
    }

private:
    static constexpr size_t kCapacity = 32;
    struct Item {
        FbxString word1;
        FbxString word2;
        FbxDataType type;
    };
    FbxDataType Lookup(const FbxString& word) const {
        return manager_ ? manager_->DataTypeFromName(word.c_str()) : FbxDataTypeTable::FromName(word.c_str());
    }

    FbxManager* manager_;
    std::vector<Item> items_;
};

// One "P" record of the current field.
void readRecord(FbxFieldStream& stream, FbxObject& object, TypeCache& types, FbxStatus& status) {
    FbxString name = stream.NextString();
    FbxString word1 = stream.NextString();
    FbxString word2 = stream.NextString();
    uint32_t fileFlags = FbxParsePropertyFlags(stream.NextString());
    FbxDataType type = types.Find(word1, word2);
    if (!type.Valid() || name.empty()) return;

    FbxProperty property = object.FindProperty(name.c_str(), true);
    if (!property.IsValid()) {
        size_t bar = name.rfind('|');
        if (bar != FbxString::npos) {
            if (bar == 0 || bar + 1 == name.size()) return;
            FbxProperty parent = object.FindProperty(name.substr(0, bar).c_str(), true);
            if (!parent.IsValid()) return;
            property = FbxProperty::Create(parent, type, name.c_str() + bar + 1, "", false);
        } else {
            property = FbxProperty::Create(&object, type, name.c_str(), "", false);
        }
        if (!property.IsValid()) return;
        property.SetFlag(FbxPropertyFlags::eImported, true);
    }
    applyFlags(property, fileFlags);
    if (hasNoValue(type)) return;

    EFbxType baseType = property.GetPropertyDataType().GetType();
    readValue(stream, property, baseType, status);
    if (fileFlags & FbxPropertyFlags::eUserDefined) readUserExtras(stream, property, baseType);
}

}  // namespace

uint32_t FbxParsePropertyFlags(const char* letters) {
    uint32_t flags = 0;
    if (!letters) return flags;
    for (const char* c = letters; *c; ++c) {
        switch (*c) {
        case 'A':
            flags |= FbxPropertyFlags::eAnimatable;
            break;
        case 'U':
            flags |= FbxPropertyFlags::eUserDefined;
            break;
        case '+':
            flags |= FbxPropertyFlags::eAnimated;
            break;
        case 'H':
            flags |= FbxPropertyFlags::eHidden;
            break;
        case 'L':
        case 'M': {
            uint32_t n = memberField(c[1]);
            flags &= ~(*c == 'L' ? kLockBits : kMuteBits);
            flags |= n << (*c == 'L' ? kLockShift : kMuteShift);
            if (c[1]) ++c;
            break;
        }
        default:
            break;
        }
    }
    return flags;
}

bool FbxReadProperties70(FbxFieldStream& stream, FbxObject& object, FbxStatus& status) {
    if (!stream.BeginField("Properties70")) return true;
    if (!enterBlock(stream)) {
        stream.EndField();
        return true;
    }
    TypeCache types(object.GetFbxManager());
    int count = stream.FieldInstanceCount("P");
    object.BeginCreateOrFind();
    for (int i = 0; i < count; ++i) {
        if (!stream.BeginField("P", i)) break;
        readRecord(stream, object, types, status);
        stream.EndField();
    }
    object.EndCreateOrFind();
    stream.LeaveBlock();
    stream.EndField();
    return true;
}

bool FbxReadDefinitions(FbxFieldStream& stream, FbxManager& manager, std::vector<FbxString>& objectTypes,
                        FbxTemplateMap& templates, FbxStatus& status) {
    if (!stream.BeginField("Definitions")) return true;
    if (!enterBlock(stream)) {
        stream.EndField();
        return true;
    }
    stream.NextInt("Version", 0);
    // A file may list any number of type words: they are looked up, not
    // searched.
    std::unordered_set<FbxString> known(objectTypes.begin(), objectTypes.end());
    while (stream.BeginField("ObjectType")) {
        FbxString word = stream.NextString();
        if (word == "Character") word = "Constraint";
        if (known.insert(word).second) {
            objectTypes.push_back(word);
            if (enterBlock(stream)) {
                while (stream.BeginField("PropertyTemplate")) {
                    FbxString className = stream.NextString();
                    FbxClassId classId = manager.FindClass(className.c_str());
                    FbxObject* object = nullptr;
                    if (classId.IsValid())
                        object = manager.CreateObject(classId, (className + "_TemplateObject").c_str());
                    if (object) {
                        manager.UnregisterObject(object);
                        if (enterBlock(stream)) {
                            FbxReadProperties70(stream, *object, status);
                            stream.LeaveBlock();
                        }
                        templates.Add(object);
                    }
                    stream.EndField();
                }
                stream.LeaveBlock();
            }
        }
        stream.EndField();
    }
    stream.LeaveBlock();
    stream.EndField();
    return true;
}
