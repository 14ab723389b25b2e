#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace tarn {

// Lays out a file front to back in zero-filled chunks. An allocation's
// result is its offset in the file; offsets stay gapless because a block
// that does not fit the current chunk starts a new one, and the rest of the
// old chunk is never copied out. Chunk storage never moves, so a pointer
// from at() stays good across later allocations.
class KivaArena {
public:
    // Reserves size bytes rounded up to a multiple of 8.
    uint64_t allocate(uint64_t size);
    // The storage behind a file offset given out by allocate.
    uint8_t* at(uint64_t offset);
    uint64_t total() const { return total_; }
    // The file's bytes, chunk by chunk in order of allocation.
    std::vector<uint8_t> bytes() const;

private:
    struct FreeStorage {
        void operator()(uint8_t* p) const;
    };
    struct Chunk {
        uint64_t base;
        uint64_t capacity;
        uint64_t used;
        // From calloc: large chunks come as fresh zero pages, so that the
        // part of a chunk that is never used costs no writes.
        std::unique_ptr<uint8_t, FreeStorage> storage;
    };

    std::vector<Chunk> chunks_;
    uint64_t total_ = 0;
};

}  // namespace tarn
