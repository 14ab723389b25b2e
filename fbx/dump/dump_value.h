#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

// A small tree of values that a dump is built as before it is written, so
// that one walk serves both the text and the JSON form. Objects keep their
// keys in insertion order.
class DumpValue {
public:
    enum class Kind { eNull, eBool, eInt, eDouble, eString, eArray, eObject };

    DumpValue() = default;
    DumpValue(bool value) : kind_(Kind::eBool), int_(value ? 1 : 0) {}
    DumpValue(int value) : kind_(Kind::eInt), int_(value) {}
    DumpValue(int64_t value) : kind_(Kind::eInt), int_(value) {}
    DumpValue(uint64_t value) : kind_(Kind::eInt), int_(static_cast<int64_t>(value)) {}
    DumpValue(double value) : kind_(Kind::eDouble), double_(value) {}
    DumpValue(const char* value) : kind_(Kind::eString), string_(value ? value : "") {}
    DumpValue(std::string value) : kind_(Kind::eString), string_(std::move(value)) {}

    static DumpValue array() { return DumpValue(Kind::eArray); }
    static DumpValue object() { return DumpValue(Kind::eObject); }

    Kind kind() const { return kind_; }
    bool isScalar() const { return kind_ != Kind::eArray && kind_ != Kind::eObject; }
    int64_t intValue() const { return int_; }
    double doubleValue() const { return double_; }
    const std::string& stringValue() const { return string_; }

    // Appends to an array.
    DumpValue& push(DumpValue value);
    // Appends a key to an object; returns the value stored.
    DumpValue& add(std::string key, DumpValue value);

    const std::vector<DumpValue>& items() const { return items_; }
    const std::vector<std::pair<std::string, DumpValue>>& members() const { return members_; }
    // The member of that key, null when absent.
    const DumpValue* find(const std::string& key) const;

private:
    explicit DumpValue(Kind kind) : kind_(kind) {}

    Kind kind_ = Kind::eNull;
    int64_t int_ = 0;
    double double_ = 0.0;
    std::string string_;
    std::vector<DumpValue> items_;
    std::vector<std::pair<std::string, DumpValue>> members_;
};

// The shortest text that reads back as the same double; "nan", "inf" and
// "-inf" for the values JSON cannot hold (written as strings there).
std::string formatDouble(double value);

// One JSON document, two-space indented, with a final line end.
void writeJson(const DumpValue& value, std::ostream& out);
// An indented "key: value" outline: scalars and arrays of scalars stay on
// their key's line; array items that are objects start with "- ".
void writeText(const DumpValue& value, std::ostream& out);
