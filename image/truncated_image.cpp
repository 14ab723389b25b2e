#include "image/truncated_image.h"

#include <cstring>

namespace {

uint32_t be32(const uint8_t* p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }
uint32_t le16(const uint8_t* p) { return uint32_t(p[0]) | uint32_t(p[1]) << 8; }

// Deflate turns each byte into at most 1032 bytes of output.
constexpr uint64_t kMaxInflateRatio = 1032;

bool pngIsTruncated(std::span<const uint8_t> file) {
    uint64_t at = 8;  // behind the signature
    uint64_t imageBytes = 0;
    double pixelBytes = 0;  // at least what the pixels take unpacked, filter bytes aside
    for (bool first = true;; first = false) {
        if (file.size() - at < 8) return true;
        const uint64_t length = be32(&file[at]);
        const uint8_t* type = &file[at + 4];
        if (file.size() - at - 8 < length + 4) return true;  // data and CRC
        if (first) {
            // The decoder reports a bad header itself.
            if (std::memcmp(type, "IHDR", 4) != 0 || length != 13) return false;
            const uint8_t* header = &file[at + 8];
            static const uint8_t kChannels[7] = {1, 0, 3, 1, 2, 0, 4};  // by colour type
            const uint8_t channels = header[9] < 7 ? kChannels[header[9]] : 0;
            pixelBytes = double(be32(header)) * be32(header + 4) * header[8] * channels / 8;
        } else if (std::memcmp(type, "IDAT", 4) == 0) {
            imageBytes += length;
        } else if (std::memcmp(type, "IEND", 4) == 0) {
            return pixelBytes > double(imageBytes) * kMaxInflateRatio;
        }
        at += 8 + length + 4;
    }
}

// The header test of the decoder, so that exactly the files it takes for
// TGA are checked.
bool looksLikeTga(std::span<const uint8_t> file) {
    if (file.size() < 18) return false;
    const uint8_t mapType = file[1], imageType = file[2], bits = file[16];
    if (mapType > 1) return false;
    if (mapType == 1) {
        if (imageType != 1 && imageType != 9) return false;
        if (file[7] != 8 && file[7] != 15 && file[7] != 16 && file[7] != 24 && file[7] != 32) return false;
        if (bits != 8 && bits != 16) return false;
    } else if (imageType != 2 && imageType != 3 && imageType != 10 && imageType != 11) {
        return false;
    }
    return le16(&file[12]) > 0 && le16(&file[14]) > 0 &&
           (bits == 8 || bits == 15 || bits == 16 || bits == 24 || bits == 32);
}

bool tgaIsTruncated(std::span<const uint8_t> file) {
    const bool mapped = file[1] == 1, runLength = file[2] >= 8;
    const uint64_t pixels = uint64_t(le16(&file[12])) * le16(&file[14]);
    const uint64_t pixelBytes = (file[16] + 7u) / 8u;
    // The identification field, then the palette: the decoder skips as many
    // bytes as the index of the first entry before reading the entries.
    uint64_t at = 18 + uint64_t(file[0]);
    if (mapped) at += le16(&file[3]) + uint64_t(le16(&file[5])) * ((file[7] + 7u) / 8u);
    if (at > file.size()) return true;
    if (!runLength) return (file.size() - at) / pixelBytes < pixels;
    // Each packet: a count byte, then one value for a run or count values.
    for (uint64_t done = 0; done < pixels;) {
        if (at >= file.size()) return true;
        const uint64_t count = (file[at] & 127u) + 1;
        const uint64_t bytes = (file[at] & 128u ? 1 : count) * pixelBytes;
        ++at;
        if (file.size() - at < bytes) return true;
        at += bytes;
        done += count;
    }
    return false;
}

}  // namespace

bool imageIsTruncated(std::span<const uint8_t> file) {
    static const uint8_t kPngSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (file.size() >= 8 && std::memcmp(file.data(), kPngSignature, 8) == 0) return pngIsTruncated(file);
    if (looksLikeTga(file)) return tgaIsTruncated(file);
    return false;
}
