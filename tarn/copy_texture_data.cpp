#include "tarn/copy_texture_data.h"

#include <cstring>

#include "qe/fatal_error.h"

namespace tarn {

void copyTextureData(uint8_t* destination, size_t destinationPitch, const uint8_t* source, size_t sourcePitch,
                     uint32_t width, uint32_t height, const TextureFormatInfo& format) {
    const size_t rowBytes = size_t{(width + format.blockWidth - 1) / format.blockWidth} * format.bytesPerBlock;
    const size_t rows = (height + format.blockHeight - 1) / format.blockHeight;
    if (destinationPitch == 0) destinationPitch = rowBytes;
    if (sourcePitch == 0) sourcePitch = rowBytes;
    if (destinationPitch < rowBytes || sourcePitch < rowBytes) qe::fatalError("pitch too small for copyTextureData");
    if (rowBytes == 0 || rows == 0) return;
    if (destinationPitch == rowBytes && sourcePitch == rowBytes) {
        std::memcpy(destination, source, rows * rowBytes);
        return;
    }
    for (size_t row = 0; row < rows; ++row)
        std::memcpy(destination + row * destinationPitch, source + row * sourcePitch, rowBytes);
}

}  // namespace tarn
