#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace tarn::testing {

// Little-endian reads from a written file, for checking layouts field by
// field. Out-of-range reads fail the calling test through the returned 0
// and the flag below rather than reading past the end.
class KivaBytes {
public:
    explicit KivaBytes(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}

    size_t size() const { return bytes_.size(); }
    const std::vector<uint8_t>& bytes() const { return bytes_; }
    bool outOfRange() const { return outOfRange_; }

    uint8_t u8(uint64_t at) const { return read<uint8_t>(at); }
    uint16_t u16(uint64_t at) const { return read<uint16_t>(at); }
    uint32_t u32(uint64_t at) const { return read<uint32_t>(at); }
    uint64_t u64(uint64_t at) const { return read<uint64_t>(at); }
    float f32(uint64_t at) const { return read<float>(at); }

    // Header fields by table slot: strings, textures, vertex buffers, index
    // buffers, materials, meshes, skeletons, models, animations.
    enum Table { Strings, Textures, VertexBuffers, IndexBuffers, Materials, Meshes, Skeletons, Models, Animations };
    uint16_t count(Table t) const { return u16(8 + 2 * t); }
    uint64_t table(Table t) const { return u64(32 + 8 * t); }

    // The text of string table row `index`.
    std::string string(uint16_t index) const;
    // The text behind a string index field, "" for 0xFFFF.
    std::string stringAt(uint64_t fieldOffset) const;

private:
    template <class T>
    T read(uint64_t at) const {
        T v{};
        if (at > bytes_.size() || bytes_.size() - at < sizeof(T)) {
            outOfRange_ = true;
            return v;
        }
        std::memcpy(&v, bytes_.data() + at, sizeof(T));
        return v;
    }

    std::vector<uint8_t> bytes_;
    mutable bool outOfRange_ = false;
};

}  // namespace tarn::testing
