#include "fbx/dump/dump_value.h"

#include <charconv>
#include <cmath>
#include <ostream>

#include "fbx/dump/dump_writer.h"

DumpValue& DumpValue::push(DumpValue value) {
    items_.push_back(std::move(value));
    return items_.back();
}

DumpValue& DumpValue::add(std::string key, DumpValue value) {
    members_.emplace_back(std::move(key), std::move(value));
    return members_.back().second;
}

const DumpValue* DumpValue::find(const std::string& key) const {
    for (const auto& member : members_)
        if (member.first == key) return &member.second;
    return nullptr;
}

std::string formatDouble(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    if (value == 0.0) return "0";  // also for -0, so that outputs compare
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

void writeJson(const DumpValue& value, std::ostream& out) {
    DumpWriter writer(out, DumpWriter::Form::eJson);
    writer.write(value);
    writer.finish();
}

void writeText(const DumpValue& value, std::ostream& out) {
    DumpWriter writer(out, DumpWriter::Form::eText);
    writer.write(value);
    writer.finish();
}
