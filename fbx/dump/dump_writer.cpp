#include "fbx/dump/dump_writer.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace {

// Length of the valid UTF-8 sequence at `i` (2 to 4 bytes), 0 when there
// is none.
size_t utf8Length(const std::string& text, size_t i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    size_t length = c >= 0xF0 && c <= 0xF4 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 && c < 0xE0 ? 2 : 0;
    if (length == 0 || i + length > text.size()) return 0;
    for (size_t k = 1; k < length; ++k)
        if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) return 0;
    return length;
}

void writeQuoted(const std::string& text, std::ostream& out) {
    static const char* hex = "0123456789abcdef";
    out << '"';
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        switch (c) {
        case '"':
            out << "\\\"";
            break;
        case '\\':
            out << "\\\\";
            break;
        case '\n':
            out << "\\n";
            break;
        case '\r':
            out << "\\r";
            break;
        case '\t':
            out << "\\t";
            break;
        default:
            if (c >= 0x20 && c < 0x7F) {
                out << static_cast<char>(c);
            } else if (size_t length = c >= 0x80 ? utf8Length(text, i) : 0) {
                out.write(text.data() + i, static_cast<std::streamsize>(length));
                i += length - 1;
            } else {
                // Control bytes and bytes that are no UTF-8 are escaped,
                // so that the output is valid UTF-8 whatever the file held.
                out << "\\u00" << hex[c >> 4] << hex[c & 15];
            }
        }
    }
    out << '"';
}

bool allScalars(const DumpValue& value) {
    for (const DumpValue& item : value.items())
        if (!item.isScalar()) return false;
    return true;
}

// The layout of an array given whole.
DumpWriter::Items itemsOf(const DumpValue& array) {
    if (allScalars(array)) return DumpWriter::Items::eScalars;
    for (const DumpValue& item : array.items())
        if (!item.isScalar() && !(item.kind() == DumpValue::Kind::eArray && allScalars(item)))
            return DumpWriter::Items::eAny;
    return DumpWriter::Items::eRows;
}

}  // namespace

DumpWriter::DumpWriter(std::ostream& out, Form form) : out_(out), form_(form) {}

std::string DumpWriter::indent(int level) const {
    if (level <= kMaxIndentLevels) return std::string(static_cast<size_t>(2 * level), ' ');
    if (form_ == Form::eJson) return std::string(2 * kMaxIndentLevels, ' ');
    std::string marker = "<" + std::to_string(level) + ">";
    return marker + std::string(std::max<size_t>(1, 2 * kMaxIndentLevels - marker.size()), ' ');
}

void DumpWriter::placeText(bool oneLine, std::string& first, int& level) {
    first.clear();
    level = 0;
    if (frames_.empty()) return;
    Frame& parent = frames_.back();
    if (parent.oneLine) {
        if (parent.started) out_ << ", ";
        parent.started = true;
        if (parent.kind == Kind::eObject) out_ << key_ << ": ";
        return;
    }
    if (parent.header && !parent.started) out_ << '\n';
    std::string prefix = parent.started ? indent(parent.level) : parent.first;
    parent.started = true;
    if (parent.kind == Kind::eObject) {
        out_ << prefix << key_ << ':';
        if (oneLine) out_ << ' ';
        first = indent(parent.level + 1);
        level = parent.level + 1;
    } else {
        prefix += "- ";
        if (oneLine) out_ << prefix;
        first = prefix;
        level = parent.level + 1;
    }
}

void DumpWriter::placeJson() {
    if (frames_.empty()) return;
    Frame& parent = frames_.back();
    if (parent.kind == Kind::eArray && parent.oneLine) {
        if (parent.started) out_ << ", ";
    } else {
        out_ << (parent.started ? ",\n" : "\n") << indent(parent.level + 1);
    }
    parent.started = true;
    if (parent.kind == Kind::eObject) {
        writeQuoted(key_, out_);
        out_ << ": ";
    }
}

void DumpWriter::open(Kind kind, bool oneLine) {
    Frame frame{kind, oneLine, false, false, 0, {}};
    if (form_ == Form::eJson) {
        placeJson();
        frame.level = frames_.empty() ? 0 : frames_.back().level + 1;
        out_ << (kind == Kind::eObject ? '{' : '[');
    } else {
        // Inside a one-line container everything stays on the line.
        bool inLine = !frames_.empty() && frames_.back().oneLine;
        frame.oneLine = oneLine || inLine;
        bool member = !frames_.empty() && !inLine && frames_.back().kind == Kind::eObject;
        placeText(frame.oneLine, frame.first, frame.level);
        if (frame.oneLine) {
            out_ << (kind == Kind::eObject ? '{' : '[');
        } else {
            frame.header = member;
        }
    }
    frames_.push_back(std::move(frame));
}

void DumpWriter::beginObject() { open(Kind::eObject, false); }

void DumpWriter::beginArray(Items items) {
    bool oneLine = form_ == Form::eJson ? items == Items::eScalars : items != Items::eAny;
    open(Kind::eArray, oneLine);
}

void DumpWriter::key(std::string_view name) { key_.assign(name); }

void DumpWriter::end() {
    if (frames_.empty()) return;
    Frame frame = std::move(frames_.back());
    frames_.pop_back();
    char close = frame.kind == Kind::eObject ? '}' : ']';
    if (form_ == Form::eJson) {
        if (frame.started && !frame.oneLine) out_ << '\n' << indent(frame.level);
        out_ << close;
        return;
    }
    if (frame.oneLine) {
        out_ << close;
        if (frames_.empty() || !frames_.back().oneLine) out_ << '\n';
    } else if (!frame.started) {
        if (frame.header)
            out_ << ' ';
        else
            out_ << frame.first;
        out_ << (frame.kind == Kind::eObject ? "{}" : "[]") << '\n';
    }
}

void DumpWriter::scalar(const DumpValue& value) {
    if (form_ == Form::eJson) {
        placeJson();
    } else {
        std::string first;
        int level = 0;
        placeText(true, first, level);
    }
    switch (value.kind()) {
    case DumpValue::Kind::eNull:
        out_ << "null";
        break;
    case DumpValue::Kind::eBool:
        out_ << (value.intValue() ? "true" : "false");
        break;
    case DumpValue::Kind::eInt:
        out_ << value.intValue();
        break;
    case DumpValue::Kind::eDouble: {
        // JSON has no words for these: they go as strings there.
        std::string text = formatDouble(value.doubleValue());
        if (form_ == Form::eJson && !std::isfinite(value.doubleValue()))
            writeQuoted(text, out_);
        else
            out_ << text;
        break;
    }
    case DumpValue::Kind::eString:
        writeQuoted(value.stringValue(), out_);
        break;
    default:
        break;
    }
    if (form_ == Form::eText && (frames_.empty() || !frames_.back().oneLine)) out_ << '\n';
}

void DumpWriter::write(const DumpValue& value) {
    // A container given whole is opened and walked with a stack of its own,
    // member by member, as a caller would stream it.
    struct Step {
        const DumpValue* container;
        size_t next;
    };
    std::vector<Step> steps;
    auto put = [&](const DumpValue& v) {
        if (v.kind() == DumpValue::Kind::eObject) {
            beginObject();
            steps.push_back({&v, 0});
        } else if (v.kind() == DumpValue::Kind::eArray) {
            beginArray(itemsOf(v));
            steps.push_back({&v, 0});
        } else {
            scalar(v);
        }
    };
    put(value);
    while (!steps.empty()) {
        Step& step = steps.back();
        const DumpValue& container = *step.container;
        if (container.kind() == DumpValue::Kind::eObject && step.next < container.members().size()) {
            const auto& member = container.members()[step.next++];
            this->key(member.first);
            put(member.second);
        } else if (container.kind() == DumpValue::Kind::eArray && step.next < container.items().size()) {
            put(container.items()[step.next++]);
        } else {
            steps.pop_back();
            end();
        }
    }
}

void DumpWriter::finish() {
    while (!frames_.empty()) end();
    if (form_ == Form::eJson) out_ << '\n';
}
