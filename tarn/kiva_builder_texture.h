#pragma once

#include <cstdint>
#include <vector>

#include "qe/dlist_item.h"
#include "tarn/kiva_container.h"
#include "tarn/texture.h"

namespace tarn {

class KivaBuilder;

// A texture of a KivaBuilder: writes its levels straight into its record.
class KivaBuilderTexture final : public Texture, public qe::DListItem<KivaBuilderTexture> {
public:
    struct Level {
        uint64_t offset;  // inside record->data
        uint64_t pitch;   // bytes per row of blocks
    };

    KivaBuilderTexture(KivaBuilder* factory, TextureRecord* record, std::vector<Level> levels)
        : factory_(factory), record_(record), levels_(std::move(levels)) {}

    TextureFactory* factory() const override;
    // 0 once the builder is gone.
    uint32_t width() const override { return record_ ? record_->width : 0; }
    uint32_t height() const override { return record_ ? record_->height : 0; }
    void writeLevel(int32_t level, const void* source, size_t sourcePitch, uint32_t face) override;

    KivaBuilder* builder() const { return factory_; }
    TextureRecord* record() const { return record_; }
    const std::vector<Level>& levels() const { return levels_; }
    // Cuts the handle loose from a builder that goes away.
    void unlinkFromBuilder() {
        this->unlink();
        factory_ = nullptr;
        record_ = nullptr;
    }

private:
    KivaBuilder* factory_;
    TextureRecord* record_;
    std::vector<Level> levels_;
};

}  // namespace tarn
