#include "tarn/bound_parameter_block.h"

namespace tarn {

uint32_t ParameterNameTable::idOf(const std::string& name) {
    std::lock_guard guard(lock_);
    return ids_.emplace(name, static_cast<uint32_t>(ids_.size())).first->second;
}

BoundParameterBlock::BoundParameterBlock(const MaterialParameters& parameters, ParameterNameTable* names) {
    if (!names) return;
    vectors_.reserve(parameters.vectors.size());
    matrices_.reserve(parameters.matrices.size());
    textures_.reserve(parameters.textures.size());
    for (const auto& [name, value] : parameters.vectors) vectors_.push_back({names->idOf(name), value});
    for (const auto& [name, value] : parameters.matrices) matrices_.push_back({names->idOf(name), value});
    for (const auto& [name, texture] : parameters.textures) textures_.push_back({names->idOf(name), texture});
}

namespace {

const MaterialParameters kNoParameters;
const qe::Ref<BoundParameterBlock> kGlobalBlock(new BoundParameterBlock(kNoParameters, nullptr));

}  // namespace

const BoundParameterBlock& globalParameterBlock() { return *kGlobalBlock; }

}  // namespace tarn
