#pragma once

// Files for the reader's tests, made by the container's writer, and the
// means to damage single fields of them.

#include <cstdint>
#include <string>
#include <vector>

#include "tarn/kiva_container.h"
#include "tarn/kivadump/kiva_file.h"

namespace tarn::kivaread::testing {

// A file and what the reader made of it; the file's views point into bytes.
struct ReadKiva {
    std::vector<std::uint8_t> bytes;
    KivaFile file;
    std::string fault;  // empty when the file read without fault

    // Offset of row `index` of a table.
    std::uint64_t row(Table table, std::size_t index) const;
    // String index of a text, kNoIndex when absent.
    std::uint16_t stringIndex(std::string_view text) const;
};
ReadKiva readKiva(std::vector<std::uint8_t> bytes);

// The writer's bytes for a container, which must stay within the limits.
std::vector<std::uint8_t> writeKiva(const KivaContainer& container);

// A container with rows in every table, as the builder makes them: named
// textures "tex/wood.png" (A8R8G8B8 2x2, 2 sRGB levels of the bytes 1..20),
// "tex/stone.png" (DXT1 5x3, 3 levels) and the placeholder "other.kiva"; one
// Position3Normal3 buffer of 4 vertices shared by two meshes, with an
// IF_UInt16 buffer of 6 indices and an IF_UInt32 one of 3; a material
// "Lambert" (vectors "AmbientColor", "DiffuseColor", textures
// "DiffuseTexture" = stone and "NormalTexture" = none, matrix "UvTransform")
// built twice, and a bare "Phong"; mesh 0 with an unnamed Lambert group and a
// group "top" of Phong from index 3, mesh 1 with one Lambert group; a
// skeleton "root" <- "hip" <- "knee"; a model "Body" at x = 2.5 with that
// skeleton, a binding "BodyShape" of mesh 0 with the bone map 0, 1, 2 and an
// unnamed one of mesh 1; a model "Empty"; an animation "walk" over "root"
// and "knee" with 3 frames whose floats count up by record. An unbound mesh
// and an unused skeleton stay out of the file.
void fillSampleKiva(KivaContainer& container);
std::vector<std::uint8_t> sampleKiva();

// A container whose only row is one texture of this format holding data.
std::vector<std::uint8_t> oneTextureKiva(std::uint8_t format, std::uint16_t width, std::uint16_t height,
                                         std::uint8_t mipCount, const std::vector<std::uint8_t>& data);

void poke8(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint8_t value);
void poke16(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint16_t value);
void poke32(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint32_t value);
void poke64(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint64_t value);

}  // namespace tarn::kivaread::testing
