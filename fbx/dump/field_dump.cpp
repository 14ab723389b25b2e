#include "fbx/dump/field_dump.h"

#include <string>
#include <vector>

#include "fbx/dump/dump_writer.h"
#include "fbx/io/fbx_field_stream.h"

namespace {

const char* arrayType(char code) {
    switch (code) {
    case 'b':
        return "bool";
    case 'c':
        return "byte";
    case 'h':
        return "short";
    case 'i':
        return "int";
    case 'f':
        return "float";
    case 'l':
        return "long";
    case 'd':
        return "double";
    case 'a':
        // A text array has no element type: its count is what it shows.
        return "array";
    default:
        return nullptr;
    }
}

// The next value of the current instance as a pair of its code and its
// value; false for an array that does not decode.
bool fieldValue(FbxFieldStream& stream, DumpValue& pair) {
    char code = stream.NextValueType();
    pair = DumpValue::array();
    pair.push(std::string(1, code));
    if (const char* type = arrayType(code)) {
        int count = 0;
        bool decodes = stream.NextArrayCheck(count);
        pair.push(std::string(type) + "[" + std::to_string(count) + "]");
        return decodes;
    }
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
    default:
        // An unknown code: step over the value.
        stream.NextByte();
        pair.push(DumpValue());
        break;
    }
    return true;
}

// Where the walk stands on one level: the field and the instance to write
// next.
struct Level {
    int field = 0;
    int instance = 0;
};

}  // namespace

bool dumpFields(FbxFieldStream& stream, DumpWriter& writer, std::string& fault) {
    // Levels are entered and left with a stack of their own: a file can
    // nest blocks to any depth.
    std::vector<Level> path(1);
    writer.beginArray(DumpWriter::Items::eAny);
    while (!path.empty()) {
        Level& at = path.back();
        const char* fieldName = stream.FieldName(at.field);
        if (!fieldName) {
            // The level is done: back to the instance that holds it.
            stream.RewindFields();
            path.pop_back();
            writer.end();
            if (!path.empty()) {
                stream.LeaveBlock();
                stream.EndField();
                writer.end();
            }
            continue;
        }
        std::string name = fieldName;
        if (at.instance >= stream.FieldInstanceCount(name.c_str())) {
            ++at.field;
            at.instance = 0;
            continue;
        }
        if (!stream.BeginFieldAt(at.field, at.instance++)) continue;
        writer.beginObject();
        writer.key("name");
        writer.write(name);
        writer.key("values");
        writer.beginArray(DumpWriter::Items::eRows);
        DumpValue pair;
        // In a text file an array's elements are its block.
        bool textArray = false;
        while (stream.ValuesLeft() > 0) {
            textArray = textArray || stream.NextValueType() == 'a';
            bool decodes = fieldValue(stream, pair);
            writer.write(pair);
            if (!decodes) {
                fault = "File is corrupted: an array of \"" + name + "\" does not decode";
                return false;
            }
        }
        writer.end();
        if (!stream.HasBlock() || textArray) {
            stream.EndField();
            writer.end();
            continue;
        }
        writer.key("fields");
        writer.beginArray(DumpWriter::Items::eAny);
        if (!stream.EnterBlock()) {
            fault = "File is corrupted: the block of \"" + name + "\" does not load";
            return false;
        }
        path.emplace_back();
    }
    return true;
}
