#include "fbx/dump/field_dump.h"

#include <string>

#include "fbx/io/fbx_field_stream.h"

namespace {

// Nesting deeper than this is shown as cut off: a damaged file cannot make
// the dump recurse without end.
constexpr int kMaxDepth = 64;

DumpValue arraySummary(const char* type, int count) {
    return DumpValue(std::string(type) + "[" + std::to_string(count) + "]");
}

DumpValue dumpList(FbxFieldStream& stream, int depth) {
    DumpValue fields = DumpValue::array();
    int count = stream.FieldCount();
    for (int i = 0; i < count; ++i) {
        const char* fieldName = stream.FieldName(i);
        std::string name = fieldName ? fieldName : "";
        int instances = stream.FieldInstanceCount(name.c_str());
        for (int k = 0; k < instances; ++k) {
            if (!stream.BeginFieldAt(i, k)) continue;
            DumpValue field = DumpValue::object();
            field.add("name", name);
            DumpValue& values = field.add("values", DumpValue::array());
            // In a text file an array's elements are its block.
            bool textArray = false;
            while (stream.ValuesLeft() > 0) {
                textArray = textArray || stream.NextValueType() == 'a';
                values.push(dumpFieldValue(stream));
            }
            if (stream.HasBlock() && !textArray) {
                if (depth >= kMaxDepth) {
                    field.add("fields", "...");
                } else {
                    // A block that fails to load shows what it read, and
                    // is left all the same.
                    stream.EnterBlock();
                    field.add("fields", dumpList(stream, depth + 1));
                    stream.LeaveBlock();
                }
            }
            stream.EndField();
            fields.push(std::move(field));
        }
    }
    stream.RewindFields();
    return fields;
}

}  // namespace

DumpValue dumpFieldValue(FbxFieldStream& stream) {
    char code = stream.NextValueType();
    DumpValue pair = DumpValue::array();
    pair.push(std::string(1, code));
    int count = 0;
    switch (code) {
    case 'C':
        pair.push(static_cast<int>(static_cast<unsigned char>(stream.NextChar())));
        break;
    case 'Z':
        pair.push(static_cast<int>(stream.NextByte()));
        break;
    case 'Y':
        pair.push(static_cast<int>(stream.NextShort()));
        break;
    case 'I':
        pair.push(stream.NextInt());
        break;
    case 'L':
        pair.push(stream.NextLong());
        break;
    case 'F':
        pair.push(static_cast<double>(stream.NextFloat()));
        break;
    case 'D':
        pair.push(stream.NextDouble());
        break;
    case 'S':
        pair.push(stream.NextString());
        break;
    case 'R': {
        int size = 0;
        stream.NextBlob(size);
        pair.push(std::to_string(size) + " bytes");
        break;
    }
    case 'b':
        stream.NextBoolArray(count);
        pair.push(arraySummary("bool", count));
        break;
    case 'c':
        stream.NextByteArray(count);
        pair.push(arraySummary("byte", count));
        break;
    case 'h':
        stream.NextShortArray(count);
        pair.push(arraySummary("short", count));
        break;
    case 'i':
        stream.NextIntArray(count);
        pair.push(arraySummary("int", count));
        break;
    case 'f':
        stream.NextFloatArray(count);
        pair.push(arraySummary("float", count));
        break;
    case 'l':
        stream.NextLongArray(count);
        pair.push(arraySummary("long", count));
        break;
    case 'd':
        stream.NextDoubleArray(count);
        pair.push(arraySummary("double", count));
        break;
    case 'a':
        // A text array has no element type: its count is what it shows.
        stream.NextDoubleArray(count);
        pair.push(arraySummary("array", count));
        break;
    default:
        // An unknown code: step over the value.
        stream.NextByte();
        pair.push(DumpValue());
        break;
    }
    return pair;
}

DumpValue dumpFields(FbxFieldStream& stream) { return dumpList(stream, 0); }
