#include "tarn/kivadump/json_writer.h"

#include <cmath>

#include "tarn/kivadump/dump_format.h"
#include "tarn/kivadump/kiva_format.h"

namespace tarn::kivaread {

void JsonWriter::newline() {
    out_ << '\n';
    for (std::size_t i = 0; i < levels_.size(); ++i) out_ << "  ";
}

void JsonWriter::beforeValue() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (levels_.empty()) return;
    Level& level = levels_.back();
    if (level.count++ > 0) out_ << (level.inlined ? ", " : ",");
    if (!level.inlined) newline();
}

void JsonWriter::key(std::string_view name) {
    Level& level = levels_.back();
    if (level.count++ > 0) out_ << ',';
    newline();
    out_ << '"' << jsonEscape(name) << "\": ";
    afterKey_ = true;
}

void JsonWriter::beginObject() {
    beforeValue();
    out_ << '{';
    levels_.push_back({true, false, 0});
}

void JsonWriter::endObject() {
    const bool empty = levels_.back().count == 0;
    levels_.pop_back();
    if (!empty) newline();
    out_ << '}';
    if (levels_.empty()) out_ << '\n';
}

void JsonWriter::beginArray(bool inlined) {
    beforeValue();
    out_ << '[';
    levels_.push_back({false, inlined || (!levels_.empty() && levels_.back().inlined), 0});
}

void JsonWriter::endArray() {
    const Level level = levels_.back();
    levels_.pop_back();
    if (level.count > 0 && !level.inlined) newline();
    out_ << ']';
}

void JsonWriter::string(std::string_view text) {
    beforeValue();
    out_ << '"' << jsonEscape(text) << '"';
}

void JsonWriter::number(std::uint64_t value) {
    beforeValue();
    out_ << value;
}

void JsonWriter::number(float value) {
    beforeValue();
    if (std::isfinite(value))
        out_ << formatFloat(value);
    else
        out_ << '"' << formatFloat(value) << '"';
}

void JsonWriter::boolean(bool value) {
    beforeValue();
    out_ << (value ? "true" : "false");
}

void JsonWriter::null() {
    beforeValue();
    out_ << "null";
}

void JsonWriter::indexMember(std::string_view name, std::uint16_t index) {
    key(name);
    if (index == kNoIndex)
        null();
    else
        number(std::uint64_t(index));
}

void JsonWriter::floatsMember(std::string_view name, const float* values, std::size_t count) {
    key(name);
    beginArray(true);
    for (std::size_t i = 0; i < count; ++i) number(values[i]);
    endArray();
}

}  // namespace tarn::kivaread
