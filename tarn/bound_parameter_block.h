#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "qe/counted.h"
#include "tarn/material_data.h"

namespace tarn {

// Numbers parameter names for a renderer; safe for several threads.
class ParameterNameTable {
public:
    // The name's id; a new name gets the table's present size.
    uint32_t idOf(const std::string& name);

private:
    std::mutex lock_;
    std::unordered_map<std::string, uint32_t> ids_;
};

// A parameter set with names replaced by the ids of a name table, as a
// renderer would bind it.
class BoundParameterBlock : public qe::Counted {
public:
    struct VectorEntry {
        uint32_t nameId;
        Vector4 value;
    };
    struct MatrixEntry {
        uint32_t nameId;
        MatrixValue value;
    };
    struct TextureEntry {
        uint32_t nameId;
        qe::Ref<Texture> texture;
    };

    // Without a table the block stays empty.
    BoundParameterBlock(const MaterialParameters& parameters, ParameterNameTable* names);

    const std::vector<VectorEntry>& vectors() const { return vectors_; }
    const std::vector<MatrixEntry>& matrices() const { return matrices_; }
    const std::vector<TextureEntry>& textures() const { return textures_; }

private:
    std::vector<VectorEntry> vectors_;
    std::vector<MatrixEntry> matrices_;
    std::vector<TextureEntry> textures_;
};

// The process's one empty block, made at start-up and released at exit.
const BoundParameterBlock& globalParameterBlock();

}  // namespace tarn
