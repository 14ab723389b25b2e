#include <stdexcept>

#include "image/block_encoders.h"
#include "image/encoder.h"
#include "image/raw_encoders.h"

Encoder selectEncoder(tarn::TextureFormat format, bool isNormalMap) {
    using tarn::TextureFormat;
    switch (format) {
    case TextureFormat::A8R8G8B8:
    case TextureFormat::X8R8G8B8:
        return encodeRawCopy;
    case TextureFormat::DXT1:
        return encodeDxt1;
    case TextureFormat::DXT3:
        return encodeDxt3;
    case TextureFormat::DXT5:
        return isNormalMap ? encodeNormalDxt5 : encodeDxt5;
    case TextureFormat::R8:
        return encodeRedChannel;
    default:
        throw std::runtime_error("no encoder for texture format");
    }
}
