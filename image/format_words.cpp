#include "image/format_words.h"

namespace {

struct FormatWord {
    std::string_view word;
    tarn::TextureFormat format;
};

constexpr FormatWord kWords[] = {
    {"argb", tarn::TextureFormat::A8R8G8B8}, {"rgba", tarn::TextureFormat::A8R8G8B8},
    {"rgb", tarn::TextureFormat::X8R8G8B8},  {"dxt1", tarn::TextureFormat::DXT1},
    {"dxt3", tarn::TextureFormat::DXT3},     {"dxt5", tarn::TextureFormat::DXT5},
    {"r8", tarn::TextureFormat::R8},
};

char lower(char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; }

}  // namespace

bool textureFormatFromWord(std::string_view word, tarn::TextureFormat& format) {
    for (const FormatWord& w : kWords) {
        if (w.word.size() != word.size()) continue;
        bool same = true;
        for (size_t i = 0; i < word.size() && same; ++i) same = lower(word[i]) == w.word[i];
        if (same) {
            format = w.format;
            return true;
        }
    }
    return false;
}
