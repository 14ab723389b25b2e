#include "tarn/kiva_arena.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace tarn {

namespace {

constexpr uint64_t roundUp(uint64_t value, uint64_t unit) { return (value + unit - 1) / unit * unit; }

}  // namespace

uint64_t KivaArena::allocate(uint64_t size) {
    const uint64_t rounded = roundUp(size, 8);
    if (chunks_.empty() || chunks_.back().capacity - chunks_.back().used < rounded) {
        // Chunks grow with the file, so that their number stays logarithmic.
        const uint64_t capacity = std::max<uint64_t>(roundUp(std::max(total_, rounded), 1024), 1024);
        auto* storage = static_cast<uint8_t*>(std::calloc(capacity, 1));
        if (!storage) throw std::bad_alloc();
        chunks_.push_back({total_, capacity, 0, std::unique_ptr<uint8_t, FreeStorage>(storage)});
    }
    const uint64_t offset = total_;
    total_ += rounded;
    chunks_.back().used += rounded;
    return offset;
}

uint8_t* KivaArena::at(uint64_t offset) {
    for (auto it = chunks_.rbegin(); it != chunks_.rend(); ++it)
        if (it->base <= offset) return it->storage.get() + (offset - it->base);
    return nullptr;
}

std::vector<uint8_t> KivaArena::bytes() const {
    // Chunks follow each other without gaps, so appending their used parts
    // lays every block at its offset.
    std::vector<uint8_t> out;
    out.reserve(total_);
    for (const Chunk& c : chunks_) out.insert(out.end(), c.storage.get(), c.storage.get() + c.used);
    return out;
}

void KivaArena::FreeStorage::operator()(uint8_t* p) const { std::free(p); }

}  // namespace tarn
