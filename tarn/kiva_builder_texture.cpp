#include "tarn/kiva_builder_texture.h"

#include <algorithm>

#include "qe/fatal_error.h"
#include "tarn/copy_texture_data.h"
#include "tarn/kiva_builder.h"
#include "tarn/texture_format.h"

namespace tarn {

TextureFactory* KivaBuilderTexture::factory() const { return factory_; }

void KivaBuilderTexture::writeLevel(int32_t level, const void* source, size_t sourcePitch, uint32_t face) {
    if (face != 0) return;
    if (!record_) qe::fatalError("texture written after its builder is gone");
    if (level < 0 || static_cast<size_t>(level) >= levels_.size()) qe::fatalError("texture level out of range");
    const Level& l = levels_[static_cast<size_t>(level)];
    const uint32_t w = static_cast<uint32_t>(std::max<int32_t>(1, static_cast<int32_t>(record_->width) >> level));
    const uint32_t h = static_cast<uint32_t>(std::max<int32_t>(1, static_cast<int32_t>(record_->height) >> level));
    copyTextureData(record_->data.data() + l.offset, l.pitch, static_cast<const uint8_t*>(source), sourcePitch, w, h,
                    textureFormatInfo(static_cast<TextureFormat>(record_->format)));
}

}  // namespace tarn
