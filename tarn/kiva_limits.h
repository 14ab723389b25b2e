#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tarn/kiva_container.h"

namespace tarn {

// The file holds each count and index of a table, and of a list in a row, in
// 16 bits with 0xFFFF for "none", a texture's width and height in 16 bits and
// a string's length in 32.
inline constexpr size_t kKivaMaxRows = 65535;
inline constexpr uint32_t kKivaMaxTextureSide = 65535;
inline constexpr uint64_t kKivaMaxStringBytes = 0xFFFFFFFF;

// A limit of the file format that a container or one of its records passes,
// in words for one error line, e.g. "too many bones in one skeleton (at most
// 65535)". Empty when everything fits. A container that passes a limit
// cannot be written: its maker reports the limit as an error, of the input
// that made the record when it is known, else of the output.
struct KivaLimit {
    std::string passed;
    explicit operator bool() const { return !passed.empty(); }
};

// The limits that one record passes on its own, whatever else the container
// holds: a texture's sides, a mesh's material groups, a material's parameters
// of each kind, a model's mesh bindings and each binding's bone map, a
// skeleton's bones, an animation's bones. A converter checks what it made
// with these so that it can name its input; the writer checks every row it
// writes with them too.
KivaLimit kivaLimitOf(const TextureRecord& texture);
KivaLimit kivaLimitOf(const MeshRecord& mesh);
KivaLimit kivaLimitOf(const MaterialRecord& material);
KivaLimit kivaLimitOf(const ModelRecord& model);
KivaLimit kivaLimitOf(const AnimSkeleton& skeleton);
KivaLimit kivaLimitOf(const Animation& animation);

// "too many <what> (at most 65535)"
KivaLimit tooMany(const std::string& what);

}  // namespace tarn
