#include "fbx/io/fbx_text_field_reader.h"

#include "fbx/io/fbx_field_list.h"
#include "fbx/io/fbx_text_values.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

// The product word of the oldest text files, whose short header form gives
// the version from a table.
constexpr unsigned char kOldProductWord[7] = {0x46, 0x69, 0x6C, 0x6D, 0x62, 0x6F, 0x78};
constexpr size_t kHeaderProbeSize = 64;

// Reads start small, so that entering a small block costs a small read, and
// double until they reach the largest size.
constexpr size_t kFirstChunk = 10240;
constexpr size_t kLargestChunk = 262144;
// Open blocks whose start positions a walk keeps for the index; deeper ones
// are only counted.
constexpr size_t kMaxOpenStarts = 65536;

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// The first `c` in [p, end), or end.
const char* Find(const char* p, const char* end, char c) {
    const void* found = std::memchr(p, c, static_cast<size_t>(end - p));
    return found ? static_cast<const char*>(found) : end;
}

// The first quote or brace in [p, end), or end. Most lines hold none or few,
// so three fast searches beat one pass that looks at every byte.
const char* FindQuoteOrBrace(const char* p, const char* end) {
    const char* first = Find(p, end, '"');
    first = Find(p, first, '{');
    return Find(p, first, '}');
}

// Bytes that end an unquoted token: ",", ":", blanks, line ends, 0 and the
// bytes above 127.
struct TokenEnds {
    bool table[256] = {};
    constexpr TokenEnds() {
        for (char c : {',', ':', ' ', '\t', '\r', '\n', '\0'}) table[static_cast<unsigned char>(c)] = true;
        for (int c = 128; c < 256; ++c) table[c] = true;
    }
};
constexpr TokenEnds kTokenEnds;

bool EqualNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x + 32);
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y + 32);
        if (x != y) return false;
    }
    return true;
}

// Digits only, at most nine of them.
bool ParseNumber(std::string_view text, uint32_t& value) {
    if (text.empty() || text.size() > 9) return false;
    value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + static_cast<uint32_t>(c - '0');
    }
    return true;
}

// The lines of a file from a position on. Lines are handed out with their
// line feed, as views into a chunk of the file when they lie inside one, and
// copied together when they cross chunks, so that a line may be of any
// length. Positions are counted here rather than asked of the file.
class LineSource {
public:
    explicit LineSource(FbxFile& file) : file_(file) {}

    bool Start(uint64_t position) {
        held_ = cursor_ = 0;
        chunkStart_ = position;
        failed_ = !file_.Seek(static_cast<int64_t>(position));
        return !failed_;
    }

    // The next line and the file position of its first byte; false at the
    // end of the file.
    bool Next(std::string_view& line, uint64_t& start) {
        if (cursor_ == held_ && !Refill()) return false;
        start = chunkStart_ + cursor_;
        const char* begin = chunk_.get() + cursor_;
        size_t available = held_ - cursor_;
        if (const void* feed = std::memchr(begin, '\n', available)) {
            size_t length = static_cast<size_t>(static_cast<const char*>(feed) - begin) + 1;
            cursor_ += length;
            line = std::string_view(begin, length);
            return true;
        }
        long_.assign(begin, available);
        cursor_ = held_;
        while (Refill()) {
            const void* feed = std::memchr(chunk_.get(), '\n', held_);
            size_t length = feed ? static_cast<size_t>(static_cast<const char*>(feed) - chunk_.get()) + 1 : held_;
            long_.append(chunk_.get(), length);
            cursor_ = length;
            if (feed) break;
        }
        line = long_;
        return true;
    }

    // Makes the next line start at `position`, which lies ahead.
    void JumpTo(uint64_t position) {
        if (position >= chunkStart_ && position <= chunkStart_ + held_) {
            cursor_ = static_cast<size_t>(position - chunkStart_);
            return;
        }
        Start(position);
    }

private:
    bool Refill() {
        chunkStart_ += held_;
        held_ = cursor_ = 0;
        if (failed_) return false;
        if (capacity_ < kLargestChunk) {
            capacity_ = capacity_ ? capacity_ * 2 : kFirstChunk;
            chunk_.reset(new char[capacity_]);  // left uninitialised: reads fill it
        }
        held_ = file_.Read(chunk_.get(), capacity_);
        return held_ > 0;
    }

    FbxFile& file_;
    std::unique_ptr<char[]> chunk_;
    size_t capacity_ = 0;
    size_t held_ = 0;
    size_t cursor_ = 0;
    uint64_t chunkStart_ = 0;
    bool failed_ = false;
    std::string long_;
};

// Splits the text of one level into keys and values and hands them to a
// sink, which offers Key(name), Value(text) and Block(position).
//
// A token ends at ",", ":", a blank, a line end, or a byte that is 0 or
// above 127. A blank ends it unless a ":" follows before the next line end,
// quote or ","; then everything up to that ":" is one key, blanks inside
// included (so "Some Key : 1" has the key "Some Key"). A token followed by ":" is a
// key and starts a new instance of that field; any other token is a value
// of the current instance. A quoted value runs to the next quote, may be
// empty, and whatever stands between its closing quote and the next
// delimiter is dropped; an unquoted empty value is no value. Values and
// blocks before the first key belong to no field and are dropped.
//
// Blocks reach the tokeniser as positions from the line walk, never as text,
// so no byte of the file can forge one.
template <typename Sink>
class Tokenizer {
public:
    explicit Tokenizer(Sink& sink) : sink_(sink) {}

    // Tokenises one piece of text of this level; its end ends a token.
    void Text(const char* p, const char* end) {
        const char* lookStop = nullptr;  // where the last search for a key's ":" stopped
        bool lookColon = false;
        while (p < end) {
            char c = *p;
            if (IsBlank(c) || c == '\r' || c == '\n') {
                ++p;
                continue;
            }
            if (c == '"') {
                const char* begin = p + 1;
                const char* close = static_cast<const char*>(std::memchr(begin, '"', static_cast<size_t>(end - begin)));
                const char* valueEnd = close ? close : end;
                p = close ? close + 1 : end;
                char delimiter = ' ';
                while (p < end) {
                    unsigned char u = static_cast<unsigned char>(*p++);
                    if (u == ',' || u == ':') {
                        delimiter = static_cast<char>(u);
                        break;
                    }
                    if (IsBlank(static_cast<char>(u)) || u == '\r' || u == '\n' || u == 0 || u > 127) break;
                }
                Emit(std::string_view(begin, static_cast<size_t>(valueEnd - begin)), true, delimiter);
                continue;
            }
            const char* start = p;
            const char* tokenEnd = end;
            char delimiter = ' ';
            while (p < end) {
                unsigned char u = static_cast<unsigned char>(*p);
                if (!kTokenEnds.table[u]) {
                    ++p;
                    continue;
                }
                if (u == ',' || u == ':') {
                    tokenEnd = p++;
                    delimiter = static_cast<char>(u);
                    break;
                }
                if (u == '\r' || u == '\n' || u == 0 || u > 127) {
                    tokenEnd = p++;
                    break;
                }
                if (IsBlank(static_cast<char>(u))) {
                    if (p >= lookStop) {
                        // One search serves every blank before where it
                        // stopped, so that a line of blank-separated values
                        // is not searched once per value.
                        lookStop = p;
                        while (lookStop < end) {
                            char s = *lookStop;
                            if (s == ':' || s == ',' || s == '"' || s == '\r' || s == '\n' || s == 0) break;
                            ++lookStop;
                        }
                        lookColon = lookStop < end && *lookStop == ':';
                    }
                    if (lookColon) {
                        tokenEnd = lookStop;
                        while (tokenEnd > start && IsBlank(tokenEnd[-1])) --tokenEnd;
                        delimiter = ':';
                        p = lookStop + 1;
                    } else {
                        tokenEnd = p++;
                    }
                    break;
                }
            }
            Emit(std::string_view(start, static_cast<size_t>(tokenEnd - start)), false, delimiter);
        }
    }

    void Block(uint32_t position) {
        if (haveKey_) sink_.Block(position);
    }

private:
    void Emit(std::string_view token, bool quoted, char delimiter) {
        if (delimiter == ':') {
            sink_.Key(token);
            haveKey_ = true;
            return;
        }
        if ((token.empty() && !quoted) || !haveKey_) return;
        if (token.find('&') == std::string_view::npos) {
            sink_.Value(token);
        } else {
            FbxTextUnescape(token, unescaped_);
            sink_.Value(unescaped_);
        }
    }

    Sink& sink_;
    bool haveKey_ = false;
    std::string unescaped_;
};

enum class WalkResult { eEnded, eClosed, eStopped, eFailed };

// Reads the lines of one level from `offset` and hands the level's own text
// to the tokeniser. Nested blocks are walked through by counting braces
// (a brace between the two quotes of a pair is no brace) and become one
// Block call with the position behind their "{"; known blocks are stepped
// over through the index, and blocks walked through are added to it. Ends
// at the "}" that closes the level (eClosed), at the end of the file
// (eEnded), when the sink asks to stop (eStopped), or at a position beyond
// 32 bits (eFailed).
template <typename Sink>
WalkResult WalkLevel(FbxFile& file, uint64_t offset, FbxTextBlockIndex* index, Sink& sink) {
    LineSource source(file);
    if (!source.Start(offset)) return WalkResult::eFailed;
    Tokenizer<Sink> tokens(sink);
    // A level inside a block starts in the middle of the line of its "{",
    // which is no line start: it is not taken for a comment.
    bool continuation = offset != 0;
    uint64_t depth = 0;
    std::vector<uint32_t> openStarts;
    std::string_view line;
    uint64_t lineStart;
    while (!sink.Stopped() && source.Next(line, lineStart)) {
        if (lineStart + line.size() > UINT32_MAX) return WalkResult::eFailed;
        const char* begin = line.data();
        const char* end = begin + line.size();
        const char* p = begin;
        if (!continuation) {
            while (p < end && IsBlank(*p)) ++p;
            if (p == end || *p == ';' || *p == '\n' || (*p == '\r' && (p + 1 == end || p[1] == '\n'))) continue;
        }
        continuation = false;

        const char* piece = p;  // start of this level's text not yet handed on
        bool quoted = false;
        bool jumped = false;
        for (const char* q = p; (q = quoted ? Find(q, end, '"') : FindQuoteOrBrace(q, end)) < end; ++q) {
            char c = *q;
            if (c == '"') {
                quoted = !quoted;
                continue;
            }
            uint32_t behind = static_cast<uint32_t>(lineStart + static_cast<uint64_t>(q + 1 - begin));
            if (c == '{') {
                if (depth == 0) {
                    tokens.Text(piece, q);
                    tokens.Block(behind);
                }
                uint32_t blockEnd;
                if (index && index->Find(behind, blockEnd)) {
                    source.JumpTo(blockEnd);
                    jumped = true;
                    break;
                }
                ++depth;
                if (depth <= kMaxOpenStarts) openStarts.push_back(behind);
            } else {
                if (depth == 0) {
                    tokens.Text(piece, q);
                    return WalkResult::eClosed;
                }
                if (depth <= kMaxOpenStarts) {
                    if (index) index->Add(openStarts.back(), behind);
                    openStarts.pop_back();
                }
                if (--depth == 0) piece = q + 1;
            }
        }
        if (jumped) {
            continuation = true;
            continue;
        }
        if (depth == 0) tokens.Text(piece, end);
    }
    return sink.Stopped() ? WalkResult::eStopped : WalkResult::eEnded;
}

// Fills a field list.
class ListSink {
public:
    explicit ListSink(FbxFieldList& list) : list_(list) {}
    bool Stopped() const { return false; }
    void Key(std::string_view name) { instance_ = &list_.FindOrAddField(name).AddInstance(); }
    void Value(std::string_view text) { list_.AddTextValue(*instance_, text); }
    void Block(uint32_t position) { instance_->SetBlockOffset(position); }

private:
    FbxFieldList& list_;
    FbxFieldInstance* instance_ = nullptr;
};

// Takes the first key and its block, and stops.
class PeekSink {
public:
    bool Stopped() const { return stopped_; }
    void Key(std::string_view name) {
        if (found_) {
            stopped_ = true;
            return;
        }
        name_ = name;
        found_ = true;
    }
    void Value(std::string_view) {}
    void Block(uint32_t position) {
        blockOffset_ = position;
        stopped_ = true;
    }

    bool found_ = false;
    bool stopped_ = false;
    FbxString name_;
    uint32_t blockOffset_ = 0;
};

// Converts the values of one field into elements as they come.
class ArraySink {
public:
    ArraySink(uint32_t count, FbxTextElement type, FbxByteBuffer& out) : count_(count), type_(type), out_(out) {
        switch (type) {
        case FbxTextElement::eBool:
        case FbxTextElement::eInt8:
            size_ = 1;
            break;
        case FbxTextElement::eInt16:
            size_ = 2;
            break;
        case FbxTextElement::eInt32:
        case FbxTextElement::eUInt32:
        case FbxTextElement::eFloat:
            size_ = 4;
            break;
        default:
            size_ = 8;
        }
        out_.Clear();
    }

    bool Stopped() const { return failed_; }
    void Key(std::string_view) {
        if (++keys_ > 1) failed_ = true;
    }
    void Value(std::string_view text) {
        if (failed_) return;
        if (held_ == count_ || !Grow()) {
            failed_ = true;
            return;
        }
        uint8_t* place = out_.Data() + static_cast<size_t>(held_) * size_;
        switch (type_) {
        case FbxTextElement::eBool:
            *place = FbxTextToULong(text) != 0;
            break;
        case FbxTextElement::eInt8:
            Store(place, static_cast<int8_t>(FbxTextToInt(text)));
            break;
        case FbxTextElement::eInt16:
            Store(place, static_cast<int16_t>(FbxTextToInt(text)));
            break;
        case FbxTextElement::eInt32:
            Store(place, FbxTextToInt(text));
            break;
        case FbxTextElement::eUInt32:
            Store(place, static_cast<uint32_t>(FbxTextToULong(text)));
            break;
        case FbxTextElement::eInt64:
            Store(place, FbxTextToLong(text));
            break;
        case FbxTextElement::eUInt64:
            Store(place, FbxTextToULong(text));
            break;
        case FbxTextElement::eFloat:
            Store(place, static_cast<float>(FbxTextToDouble(text)));
            break;
        case FbxTextElement::eDouble:
            Store(place, FbxTextToDouble(text));
            break;
        }
        ++held_;
    }
    void Block(uint32_t) {}

    uint32_t Result() const { return failed_ || held_ != count_ || keys_ != 1 ? 0 : held_; }

private:
    template <typename T>
    static void Store(uint8_t* place, T value) {
        std::memcpy(place, &value, sizeof value);
    }

    // Room for one more element, doubling but never past the count.
    bool Grow() {
        if (held_ < capacity_) return true;
        uint64_t wanted = std::min<uint64_t>(count_, std::max<uint64_t>(1024, uint64_t{capacity_} * 2));
        if (!out_.Reserve(static_cast<size_t>(wanted) * size_, static_cast<size_t>(held_) * size_)) return false;
        capacity_ = static_cast<uint32_t>(wanted);
        return true;
    }

    uint32_t count_;
    FbxTextElement type_;
    FbxByteBuffer& out_;
    size_t size_ = 1;
    uint32_t held_ = 0;
    uint32_t capacity_ = 0;
    int keys_ = 0;
    bool failed_ = false;
};

}  // namespace

bool FbxTextBlockIndex::Find(uint32_t start, uint32_t& end) const {
    auto it = ends_.find(start);
    if (it == ends_.end()) return false;
    end = it->second;
    return true;
}

void FbxTextBlockIndex::Add(uint32_t start, uint32_t end) {
    if (end - start < kMinSpan || ends_.size() >= kMaxEntries) return;
    ends_.emplace(start, end);
}

bool FbxParseTextHeader(std::string_view line, uint32_t& version) {
    if (line.empty() || line[0] != ';') return false;
    std::vector<std::string_view> fields;
    size_t i = 1;
    while (i < line.size()) {
        while (i < line.size() && (IsBlank(line[i]) || line[i] == '\r' || line[i] == '\n')) ++i;
        size_t start = i;
        while (i < line.size() && !IsBlank(line[i]) && line[i] != '\r' && line[i] != '\n') ++i;
        if (i > start) fields.push_back(line.substr(start, i - start));
    }
    // word, version, "project", "file"
    if (fields.size() < 4 || !EqualNoCase(fields[2], "project") || !EqualNoCase(fields[3], "file")) return false;
    std::string_view number = fields[1];
    uint32_t parts[3] = {0, 0, 0};
    int count = 0;
    while (count < 3) {
        size_t dot = number.find('.');
        if (!ParseNumber(number.substr(0, dot), parts[count++])) return false;
        if (dot == std::string_view::npos) break;
        number.remove_prefix(dot + 1);
        if (count == 3) return false;
    }
    if (count < 2 || parts[0] > 4000000) return false;
    if (count == 2 && fields[0] == std::string_view(reinterpret_cast<const char*>(kOldProductWord), 7)) {
        static const struct {
            uint32_t major, minor, version;
        } kOldVersions[] = {{1, 5, 1000}, {2, 7, 2001}, {3, 0, 3000}, {4, 0, 4000}, {4, 1, 4001}, {4, 5, 4050}};
        for (const auto& old : kOldVersions) {
            if (old.major == parts[0] && old.minor == parts[1]) {
                version = old.version;
                return true;
            }
        }
        return false;
    }
    version = parts[0] * 1000 + (parts[1] % 10) * 100 + parts[2] % 100;
    return true;
}

bool FbxReadTextHeader(FbxFile& file, uint32_t& version) {
    char text[kHeaderProbeSize];
    if (!file.Seek(0)) return false;
    size_t got = file.Read(text, sizeof text);
    file.Seek(0);
    std::string_view line(text, got);
    line = line.substr(0, line.find('\n'));
    return FbxParseTextHeader(line, version);
}

bool FbxLoadTextLevel(FbxFieldList& list, FbxTextBlockIndex* index) {
    ListSink sink(list);
    return WalkLevel(*list.File(), list.Offset(), index, sink) != WalkResult::eFailed;
}

bool FbxPeekFirstTextField(FbxFile& file, uint32_t offset, FbxString& name, uint32_t& blockOffset) {
    PeekSink sink;
    WalkLevel(file, offset, nullptr, sink);
    name = sink.name_;
    blockOffset = sink.blockOffset_;
    return sink.found_;
}

uint32_t FbxLoadTextArray(FbxFile& file, uint32_t blockOffset, uint32_t count, FbxTextElement type, FbxByteBuffer& out,
                          FbxTextBlockIndex* index) {
    ArraySink sink(count, type, out);
    if (count == 0 || blockOffset == 0) return 0;
    if (WalkLevel(file, blockOffset, index, sink) == WalkResult::eFailed) return 0;
    return sink.Result();
}
