// Any bytes: read and check them as a .kiva file, and print what reads without
// fault as text and as JSON into a stream that discards everything.

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <span>
#include <streambuf>

#include "tarn/kivadump/kiva_json_printer.h"
#include "tarn/kivadump/kiva_reader.h"
#include "tarn/kivadump/kiva_text_printer.h"
#include "tarn/kivadump/texture_extractor.h"

namespace {

class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarn::kivaread;
    KivaReader reader(std::span<const std::uint8_t>(data, size));
    KivaFile file;
    if (!reader.read(file)) return 0;
    NullBuffer buffer;
    std::ostream out(&buffer);
    printKivaText(file, out);
    printKivaJson(file, out);
    // Decode the texels too, bounded so that a huge declared texture cannot
    // make one input slow.
    std::vector<std::uint8_t> rgba;
    for (const KivaTexture& texture : file.textures)
        if (std::uint64_t(texture.width) * texture.height <= 4096)
            for (std::uint32_t level = 0; level < texture.mipCount && level < 4; ++level)
                decodeTextureLevel(file, texture, level, rgba);
    return 0;
}
