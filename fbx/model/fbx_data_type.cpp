#include "fbx/model/fbx_data_type.h"

#include <cstring>
#include <deque>
#include <memory>

namespace {

// Registered rows first, in registration order, then the named variants
// that carry a meaning for a tool.
constexpr FbxDataTypeRecord kRows[] = {
    {"Byte", eFbxChar},                    // 0
    {"UByte", eFbxUChar},                  // 1
    {"Short", eFbxShort},                  // 2
    {"UShort", eFbxUShort},                // 3
    {"UInteger", eFbxUInt},                // 4
    {"LongLong", eFbxLongLong},            // 5
    {"ULongLong", eFbxULongLong},          // 6
    {"HalfFloat", eFbxHalfFloat},          // 7
    {"Bool", eFbxBool},                    // 8
    {"Integer", eFbxInt},                  // 9
    {"Float", eFbxFloat},                  // 10
    {"Number", eFbxDouble},                // 11
    {"Vector2", eFbxDouble2},              // 12
    {"Vector", eFbxDouble3},               // 13
    {"Vector4", eFbxDouble4},              // 14
    {"Matrix", eFbxDouble4x4},             // 15
    {"Enum", eFbxEnum},                    // 16
    {"stringlist", eFbxEnum},              // 17
    {"Time", eFbxTime},                    // 18
    {"TimeCode", eFbxDouble3},             // 19
    {"Reference", eFbxReference},          // 20
    {"KString", eFbxString},               // 21
    {"charptr", eFbxString},               // 22
    {"Action", eFbxBool},                  // 23
    {"event", eFbxUndefined},              // 24
    {"Compound", eFbxUndefined},           // 25
    {"Blob", eFbxBlob},                    // 26
    {"Distance", eFbxDistance},            // 27
    {"DateTime", eFbxDateTime},            // 28
    {"Color", eFbxDouble3},                // 29
    {"ColorAndAlpha", eFbxDouble4},        // 30
    {"object", eFbxReference},             // 31
    {"ReferenceProperty", eFbxReference},  // 32
    {"Real", eFbxDouble},                  // 33
    // Named variants.
    {"Translation", eFbxDouble3},
    {"Rotation", eFbxDouble3},
    {"Scaling", eFbxDouble3},
    {"Quaternion", eFbxDouble4},
    {"Lcl Translation", eFbxDouble3},
    {"Lcl Rotation", eFbxDouble3},
    {"Lcl Scaling", eFbxDouble3},
    {"Lcl Quaternion", eFbxDouble4},
    {"Matrix Transformation", eFbxDouble4x4},
    {"Matrix Translation", eFbxDouble4x4},
    {"Matrix Rotation", eFbxDouble4x4},
    {"Matrix Scaling", eFbxDouble4x4},
    {"Emissive", eFbxDouble3},
    {"Ambient", eFbxDouble3},
    {"Diffuse", eFbxDouble3},
    {"NormalMap", eFbxDouble3},
    {"Transparent", eFbxDouble3},
    {"Specular", eFbxDouble3},
    {"Reflection", eFbxDouble3},
    {"Displacement", eFbxDouble3},
    {"VectorDisplacement", eFbxDouble3},
    {"EmissiveFactor", eFbxDouble},
    {"AmbientFactor", eFbxDouble},
    {"DiffuseFactor", eFbxDouble},
    {"Bump", eFbxDouble},
    {"TransparencyFactor", eFbxDouble},
    {"SpecularFactor", eFbxDouble},
    {"Shininess", eFbxDouble},
    {"ReflectionFactor", eFbxDouble},
    {"Unknown Factor", eFbxDouble},
    {"Unknown texture", eFbxDouble3},
    {"Url", eFbxString},
    {"XRefUrl", eFbxString},
    {"LayerElementUndefined", eFbxUndefined},
    {"LayerElementNormal", eFbxDouble4},
    {"LayerElementBinormal", eFbxDouble4},
    {"LayerElementTangent", eFbxDouble4},
    {"LayerElementVertexColor", eFbxDouble4},
    {"LayerElementMaterial", eFbxReference},
    {"LayerElementTexture", eFbxReference},
    {"LayerElementUserData", eFbxReference},
    {"LayerElementPolygonGroup", eFbxInt},
    {"LayerElementSmoothing", eFbxInt},
    {"LayerElementUV", eFbxDouble2},
    {"LayerElementCrease", eFbxDouble},
    {"LayerElementHole", eFbxBool},
    {"LayerElementVisibility", eFbxBool},
    {"Intensity", eFbxDouble},
    {"Cone angle", eFbxDouble},
    {"Fog", eFbxDouble},
    {"Shape", eFbxDouble},
    {"FieldOfView", eFbxDouble},
    {"FieldOfViewX", eFbxDouble},
    {"FieldOfViewY", eFbxDouble},
    {"OpticalCenterX", eFbxDouble},
    {"OpticalCenterY", eFbxDouble},
    {"Roll", eFbxDouble},
    {"TimeWarp", eFbxDouble},
    {"Visibility", eFbxDouble},
    {"Occlusion", eFbxDouble},
    {"Weight", eFbxDouble},
    {"IK Reach Translation", eFbxDouble},
    {"IK Reach Rotation", eFbxDouble},
    {"Camera Index", eFbxInt},
    {"Visibility Inheritance", eFbxBool},
    {"Translation UV", eFbxDouble3},
    {"Scaling UV", eFbxDouble3},
    {"TextureRotation", eFbxDouble3},
    {"HSB", eFbxDouble3},
    {"Orientation", eFbxDouble3},
    {"Look at", eFbxDouble3},
    {"Presets", eFbxEnum},
    {"Alias", eFbxEnum},
    {"Statistics", eFbxString},
    {"Units", eFbxString},
    {"Warning", eFbxString},
    {"Web", eFbxString},
    {"TextLine", eFbxString},
};
constexpr int kRowCount = static_cast<int>(sizeof(kRows) / sizeof(kRows[0]));

// File spellings and the registered row that each stands for.
struct Spelling {
    const char* spelling;
    int row;
};
constexpr Spelling kSpellings[] = {
    {"bool", 8},       {"int", 9},    {"ColorRGB", 29},  {"ColorRGBA", 30}, {"KTime", 18},
    {"KTimeCode", 19}, {"enum", 16},  {"double", 11},    {"Vector2D", 12},  {"Vector3D", 13},
    {"Vector4D", 14},  {"float", 10}, {"matrix4x4", 15},
};

// Rows made at run time. A deque keeps their addresses stable.
struct CreatedRow {
    FbxString name;
    FbxDataTypeRecord record;
};
std::deque<std::unique_ptr<CreatedRow>>& createdRows() {
    static std::deque<std::unique_ptr<CreatedRow>> rows;
    return rows;
}

}  // namespace

const FbxDataType FbxCharDT(&kRows[0]);
const FbxDataType FbxUCharDT(&kRows[1]);
const FbxDataType FbxShortDT(&kRows[2]);
const FbxDataType FbxUShortDT(&kRows[3]);
const FbxDataType FbxUIntDT(&kRows[4]);
const FbxDataType FbxLongLongDT(&kRows[5]);
const FbxDataType FbxULongLongDT(&kRows[6]);
const FbxDataType FbxHalfFloatDT(&kRows[7]);
const FbxDataType FbxBoolDT(&kRows[8]);
const FbxDataType FbxIntDT(&kRows[9]);
const FbxDataType FbxFloatDT(&kRows[10]);
const FbxDataType FbxDoubleDT(&kRows[11]);
const FbxDataType FbxDouble2DT(&kRows[12]);
const FbxDataType FbxDouble3DT(&kRows[13]);
const FbxDataType FbxDouble4DT(&kRows[14]);
const FbxDataType FbxDouble4x4DT(&kRows[15]);
const FbxDataType FbxEnumDT(&kRows[16]);
const FbxDataType FbxStringListDT(&kRows[17]);
const FbxDataType FbxTimeDT(&kRows[18]);
const FbxDataType FbxTimeCodeDT(&kRows[19]);
const FbxDataType FbxReferenceDT(&kRows[20]);
const FbxDataType FbxStringDT(&kRows[21]);
const FbxDataType FbxCharPtrDT(&kRows[22]);
const FbxDataType FbxActionDT(&kRows[23]);
const FbxDataType FbxEventDT(&kRows[24]);
const FbxDataType FbxCompoundDT(&kRows[25]);
const FbxDataType FbxUndefinedDT(&kRows[25]);
const FbxDataType FbxBlobDT(&kRows[26]);
const FbxDataType FbxDistanceDT(&kRows[27]);
const FbxDataType FbxDateTimeDT(&kRows[28]);
const FbxDataType FbxColor3DT(&kRows[29]);
const FbxDataType FbxColor4DT(&kRows[30]);
const FbxDataType FbxObjectDT(&kRows[31]);
const FbxDataType FbxReferencePropertyDT(&kRows[32]);
const FbxDataType FbxRealDT(&kRows[33]);

FbxDataType FbxDataTypeTable::FromName(const char* name) {
    if (!name) return FbxDataType();
    for (const FbxDataTypeRecord& row : kRows)
        if (std::strcmp(row.name, name) == 0) return FbxDataType(&row);
    for (const auto& row : createdRows())
        if (row->name == name) return FbxDataType(&row->record);
    for (const Spelling& s : kSpellings)
        if (std::strcmp(s.spelling, name) == 0) return FbxDataType(&kRows[s.row]);
    return FbxDataType();
}

FbxDataType FbxDataTypeTable::Create(const char* name, EFbxType type) {
    if (!name || !*name || type < eFbxUndefined || type >= eFbxTypeCount) return FbxDataType();
    FbxDataType existing = FromName(name);
    if (existing.Valid() && existing.GetType() == type) return existing;
    auto row = std::make_unique<CreatedRow>();
    row->name = name;
    row->record.name = nullptr;
    row->record.type = type;
    CreatedRow* raw = row.get();
    createdRows().push_back(std::move(row));
    raw->record.name = raw->name.c_str();
    return FbxDataType(&raw->record);
}

FbxDataType FbxDataTypeTable::FromType(EFbxType type) {
    switch (type) {
    case eFbxUndefined:
        return FbxCompoundDT;
    case eFbxChar:
        return FbxCharDT;
    case eFbxUChar:
        return FbxUCharDT;
    case eFbxShort:
        return FbxShortDT;
    case eFbxUShort:
        return FbxUShortDT;
    case eFbxUInt:
        return FbxUIntDT;
    case eFbxLongLong:
        return FbxLongLongDT;
    case eFbxULongLong:
        return FbxULongLongDT;
    case eFbxHalfFloat:
        return FbxHalfFloatDT;
    case eFbxBool:
        return FbxBoolDT;
    case eFbxInt:
        return FbxIntDT;
    case eFbxFloat:
        return FbxFloatDT;
    case eFbxDouble:
        return FbxDoubleDT;
    case eFbxDouble2:
        return FbxDouble2DT;
    case eFbxDouble3:
        return FbxDouble3DT;
    case eFbxDouble4:
        return FbxDouble4DT;
    case eFbxDouble4x4:
        return FbxDouble4x4DT;
    case eFbxEnum:
        return FbxEnumDT;
    case eFbxString:
        return FbxStringDT;
    case eFbxTime:
        return FbxTimeDT;
    case eFbxReference:
        return FbxReferenceDT;
    case eFbxBlob:
        return FbxBlobDT;
    case eFbxDistance:
        return FbxDistanceDT;
    case eFbxDateTime:
        return FbxDateTimeDT;
    default:
        return FbxDataType();
    }
}

int FbxDataTypeTable::FixedCount() { return kRowCount; }

void FbxDataTypeTable::ReleaseCreated() { createdRows().clear(); }

const char* FbxTypeName(EFbxType type) {
    static const char* const kNames[] = {"none",   "byte",    "ubyte",     "short",   "ushort",    "uint",
                                         "int64",  "uint64",  "half",      "bool",    "int",       "float",
                                         "double", "double2", "double3",   "double4", "double4x4", "enum",
                                         "string", "time",    "reference", "blob",    "distance",  "datetime"};
    if (type < 0 || type >= eFbxTypeCount) return "unknown";
    return kNames[type];
}
