#pragma once

#include "fbx/model/fbx_types.h"

// One row of the data type table: a name and the base type that stores it.
struct FbxDataTypeRecord {
    const char* name;
    EFbxType type;
};

// A handle to a row of the process-wide data type table. The null handle is
// the invalid data type. Two handles are equal when they name the same row:
// "Color" and "Vector" share a base type but are different data types.
class FbxDataType {
public:
    constexpr FbxDataType() = default;
    constexpr explicit FbxDataType(const FbxDataTypeRecord* record) : record_(record) {}

    bool Valid() const { return record_ != nullptr; }
    bool IsValid() const { return Valid(); }
    // The base type; eFbxUndefined for the invalid data type.
    EFbxType GetType() const { return record_ ? record_->type : eFbxUndefined; }
    // The name; "" for the invalid data type.
    const char* GetName() const { return record_ ? record_->name : ""; }
    const FbxDataTypeRecord* Record() const { return record_; }

    friend bool operator==(const FbxDataType&, const FbxDataType&) = default;

private:
    const FbxDataTypeRecord* record_ = nullptr;
};

// The registered rows that code names directly. They are valid from process
// start, before any manager exists.
extern const FbxDataType FbxUndefinedDT;  // "Compound"
extern const FbxDataType FbxCharDT;       // "Byte"
extern const FbxDataType FbxUCharDT;      // "UByte"
extern const FbxDataType FbxShortDT;
extern const FbxDataType FbxUShortDT;
extern const FbxDataType FbxUIntDT;
extern const FbxDataType FbxLongLongDT;
extern const FbxDataType FbxULongLongDT;
extern const FbxDataType FbxHalfFloatDT;
extern const FbxDataType FbxBoolDT;
extern const FbxDataType FbxIntDT;
extern const FbxDataType FbxFloatDT;
extern const FbxDataType FbxDoubleDT;     // "Number"
extern const FbxDataType FbxDouble2DT;    // "Vector2"
extern const FbxDataType FbxDouble3DT;    // "Vector"
extern const FbxDataType FbxDouble4DT;    // "Vector4"
extern const FbxDataType FbxDouble4x4DT;  // "Matrix"
extern const FbxDataType FbxEnumDT;
extern const FbxDataType FbxStringListDT;  // "stringlist"
extern const FbxDataType FbxTimeDT;
extern const FbxDataType FbxTimeCodeDT;
extern const FbxDataType FbxReferenceDT;
extern const FbxDataType FbxStringDT;  // "KString"
extern const FbxDataType FbxCharPtrDT;
extern const FbxDataType FbxActionDT;
extern const FbxDataType FbxEventDT;
extern const FbxDataType FbxCompoundDT;
extern const FbxDataType FbxBlobDT;
extern const FbxDataType FbxDistanceDT;
extern const FbxDataType FbxDateTimeDT;
extern const FbxDataType FbxColor3DT;  // "Color"
extern const FbxDataType FbxColor4DT;  // "ColorAndAlpha"
extern const FbxDataType FbxObjectDT;  // "object"
extern const FbxDataType FbxReferencePropertyDT;
extern const FbxDataType FbxRealDT;

// The process-wide data type table. The fixed rows live for the whole
// process; rows added by CreateDataType live until the last manager goes.
class FbxDataTypeTable {
public:
    // A registered name, then a created one, then a file spelling such as
    // "ColorRGB" or "double". The invalid data type for anything else.
    static FbxDataType FromName(const char* name);
    // Adds a row (or gives the existing row of that name and base type).
    // The invalid data type for a null or empty name.
    static FbxDataType Create(const char* name, EFbxType type);
    // The data type named after a base type, such as FbxDoubleDT for
    // eFbxDouble.
    static FbxDataType FromType(EFbxType type);
    // Number of fixed rows (the registered names and their named variants).
    static int FixedCount();
    // Drops the created rows; called by the last manager.
    static void ReleaseCreated();
};

// Name of a base type, for messages ("double3").
const char* FbxTypeName(EFbxType type);
