#pragma once

// Reads a .kiva file and checks it while reading: magic and version, 8-byte
// alignment, every offset and size inside the file, no two blocks sharing
// bytes, every 16-bit index inside
// its table, strings NUL-terminated and unique, texel data sizes against
// format, size and mip count, buffer sizes against format and count, index
// values below the vertex count, material parameters in name order, bone
// parents before their children, reserved bytes zero.
//
// Whatever the bytes, it never reads outside them. The first fault stops the
// read and is described in one line: "<table> <row>[, <sub-row>]: <field>:
// <problem>", e.g. "mesh 2, group 0: material: index 7 is not below the
// material count 3".

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tarn/kivadump/index_range_max.h"
#include "tarn/kivadump/kiva_file.h"

namespace tarn::kivaread {

class KivaReader {
public:
    explicit KivaReader(std::span<const std::uint8_t> bytes);
    ~KivaReader();

    // Fills `file` (whose byte views point into the reader's bytes) and gives
    // true for a valid file; gives false at the first fault.
    bool read(KivaFile& file);
    // The description of the fault after read() gave false.
    const std::string& fault() const { return fault_; }

private:
    bool readHeader();
    bool readTable(Table table);
    bool readStrings();
    bool readTextures();
    bool readBuffers(Table table);
    bool readMaterials();
    bool readMeshes();
    bool readSkeletons();
    bool readModels();
    bool readAnimations();
    bool checkMeshIndices(std::size_t meshRow, std::size_t groupRow, const KivaMesh& mesh,
                          const KivaMaterialGroup& group);
    bool checkSizeAlignment();

    // Checks an offset/count pair of a list of `count` elements of
    // `elementSize` bytes: empty lists hold kNoOffset, others start at a
    // multiple of 8 behind the header and end inside the file.
    bool checkBlock(const std::string& where, const char* field, std::uint64_t offset, std::uint64_t count,
                    std::uint64_t elementSize);
    // Enters a block that checkBlock found inside the file; a block that shares
    // bytes with one entered before is a fault. Keeps payloads from being read
    // twice, so that the work and memory of a read stay in proportion to the
    // file.
    bool claim(const std::string& where, const char* field, std::uint64_t offset, std::uint64_t size);
    bool checkStringIndex(const std::string& where, const char* field, std::uint16_t index);
    bool checkObjectIndex(const std::string& where, const char* field, std::uint16_t index, Table table);
    bool checkReserved(const std::string& where, std::uint64_t offset, std::uint64_t size);
    bool fail(const std::string& where, const char* field, const std::string& problem);

    std::uint8_t u8(std::uint64_t at) const { return bytes_[at]; }
    std::uint16_t u16(std::uint64_t at) const;
    std::uint32_t u32(std::uint64_t at) const;
    std::uint64_t u64(std::uint64_t at) const;
    float f32(std::uint64_t at) const;
    template <std::size_t N>
    void floats(std::uint64_t at, std::array<float, N>& out) const {
        for (std::size_t i = 0; i < N; ++i) out[i] = f32(at + 4 * i);
    }

    std::span<const std::uint8_t> bytes_;
    KivaFile* file_ = nullptr;
    std::string fault_;
    struct Block {
        std::uint64_t offset;
        std::uint64_t size;
        std::string owner;  // "material 2, matrix parameters"
    };
    std::vector<Block> blocks_;
    std::vector<std::uint64_t> usedUnits_;  // one bit per 8 bytes of the file
    // Built on the first group that uses each index buffer.
    std::vector<std::unique_ptr<IndexRangeMax>> indexValues_;
};

}  // namespace tarn::kivaread
