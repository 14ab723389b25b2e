#include "fbx/io/fbx_array_decode.h"

#include "fbx/io/fbx_byte_order.h"

#include <zlib.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

// First output capacity for a compressed array: the claimed size, but no more
// than a generous multiple of the compressed bytes. Typical arrays inflate
// less than 16 times; larger claims are grown into as the data proves them.
size_t FirstCapacity(size_t compressed, size_t expected) {
    size_t guess = std::max<size_t>(65536, compressed * 16);
    return std::min(expected, guess);
}

void SwapElements(uint8_t* data, size_t count, size_t elementSize) {
    switch (elementSize) {
    case 2:
        for (size_t i = 0; i < count; ++i) {
            uint16_t v = FbxLoadU16(data + i * 2, true);
            std::memcpy(data + i * 2, &v, 2);
        }
        break;
    case 4:
        for (size_t i = 0; i < count; ++i) {
            uint32_t v = FbxLoadU32(data + i * 4, true);
            std::memcpy(data + i * 4, &v, 4);
        }
        break;
    case 8:
        for (size_t i = 0; i < count; ++i) {
            uint64_t v = FbxLoadU64(data + i * 8, true);
            std::memcpy(data + i * 8, &v, 8);
        }
        break;
    default:
        break;
    }
}

}  // namespace

bool FbxInflateExact(const uint8_t* data, size_t size, size_t expected, FbxByteBuffer& out) {
    out.Clear();
    if (size > UINT_MAX) return false;
    if (!out.Reserve(FirstCapacity(size, expected))) return false;

    z_stream zs{};
    if (inflateInit(&zs) != Z_OK) return false;
    zs.next_in = const_cast<Bytef*>(data);
    zs.avail_in = static_cast<uInt>(size);

    // Output beyond the expected size is inflated into this and dropped, so
    // that the stream can still be checked for its proper end.
    unsigned char discard[4096];
    size_t produced = 0;
    int result = Z_OK;
    for (;;) {
        bool discarding = produced >= expected;
        if (!discarding && produced >= out.Capacity()) {
            size_t grown = std::min(expected, out.Capacity() * 2);
            if (!out.Reserve(grown, produced)) {
                result = Z_MEM_ERROR;
                break;
            }
        }
        // A reused buffer may be larger than this array: write no further.
        size_t limit = std::min(expected, out.Capacity());
        size_t room = discarding ? sizeof discard : limit - produced;
        room = std::min<size_t>(room, UINT_MAX);
        zs.next_out = discarding ? discard : out.Data() + produced;
        zs.avail_out = static_cast<uInt>(room);
        result = inflate(&zs, Z_NO_FLUSH);
        if (!discarding) produced += room - zs.avail_out;
        if (result != Z_OK) break;
    }
    bool consumedAll = zs.avail_in == 0;
    inflateEnd(&zs);
    if (result != Z_STREAM_END || !consumedAll || produced != expected) {
        out.Clear();
        return false;
    }
    out.SetSize(expected);
    return true;
}

uint32_t FbxDecodeArray(const uint8_t* value, size_t available, size_t elementSize, bool swap, bool boolean,
                        FbxByteBuffer& out) {
    out.Clear();
    if (available < 12) return 0;
    uint32_t count = FbxLoadU32(value, swap);
    uint32_t encoding = FbxLoadU32(value + 4, swap) & 0xFF;
    uint32_t length = FbxLoadU32(value + 8, swap);
    if (count == 0 || encoding > 1) return 0;
    if (length > available - 12) return 0;
    const uint8_t* data = value + 12;
    size_t bytes = static_cast<size_t>(count) * elementSize;

    if (encoding == 0) {
        if (length != bytes) return 0;
        if (!out.Reserve(bytes)) return 0;
        std::memcpy(out.Data(), data, bytes);
        out.SetSize(bytes);
    } else if (!FbxInflateExact(data, length, bytes, out)) {
        return 0;
    }
    if (swap && elementSize > 1) SwapElements(out.Data(), count, elementSize);
    if (boolean) {
        uint8_t* p = out.Data();
        for (size_t i = 0; i < bytes; ++i) p[i] = p[i] != 0;
    }
    return count;
}

bool FbxCheckArray(const uint8_t* value, size_t available, size_t elementSize, bool swap, uint32_t& count) {
    count = 0;
    if (available < 12) return false;
    uint32_t claimed = FbxLoadU32(value, swap);
    uint32_t encoding = FbxLoadU32(value + 4, swap) & 0xFF;
    uint32_t length = FbxLoadU32(value + 8, swap);
    if (encoding > 1 || length > available - 12) return false;
    if (claimed == 0) return true;
    size_t expected = static_cast<size_t>(claimed) * elementSize;
    if (encoding == 0) {
        if (length != expected) return false;
        count = claimed;
        return true;
    }
    z_stream zs{};
    if (inflateInit(&zs) != Z_OK) return false;
    zs.next_in = const_cast<Bytef*>(value + 12);
    zs.avail_in = length;
    unsigned char sink[16384];
    size_t produced = 0;
    int result = Z_OK;
    while (result == Z_OK && produced <= expected) {
        zs.next_out = sink;
        zs.avail_out = sizeof sink;
        result = inflate(&zs, Z_NO_FLUSH);
        produced += sizeof sink - zs.avail_out;
    }
    bool consumedAll = zs.avail_in == 0;
    inflateEnd(&zs);
    if (result != Z_STREAM_END || !consumedAll || produced != expected) return false;
    count = claimed;
    return true;
}
