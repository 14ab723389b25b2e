#include "image/convert_image.h"

#include <regex>
#include <string>

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"
#include "convert/settings.h"
#include "image/decoded_image.h"
#include "image/encoder.h"
#include "image/format_words.h"
#include "image/halve.h"
#include "image/mip_chain.h"
#include "qe/path_text.h"
#include "tarn/kiva_limits.h"

namespace {

// Every texture this tool makes is a plain, static texture.
constexpr uint32_t kTextureUsage = 7;
constexpr int32_t kMaxTextureSide = int32_t(tarn::kKivaMaxTextureSide);

// The name in the resource tree: the directory of the settings file that
// holds "resource-root" is replaced by the setting's value, and backslashes
// become forward slashes.
std::string resourceName(const std::string& path, const SettingValue& root) {
    std::string name = path;
    qe::replaceFirst(name, qe::parentPath(root.source, qe::PathStyle::Windows), root.value);
    qe::replaceAll(name, "\\", "/");
    return name;
}

bool nameIsSrgb(const char* path, const std::string& name, const SettingsChain& chain, ErrorReporter& errors) {
    std::string expression;
    if (!chain.getString("srgb-texname-expression", expression)) return false;
    try {
        const std::regex re(expression, std::regex::ECMAScript);
        return std::regex_search(name, re);
    } catch (const std::regex_error& e) {
        errors.error(path) << "Bad regular expression (" << expression
                           << ") for srgb-texname-expression in .settings file: " << e.what() << "\n";
        return false;
    }
}

}  // namespace

qe::Ref<tarn::Texture> convertImage(const char* path, TextureMode mode, tarn::KivaBuilder& builder,
                                    SettingsStore& settings, DependencySet& dependencies, ErrorReporter& errors) {
    dependencies.add(path);
    const SettingsChain& chain = settings.settingsFor(path);

    SettingValue root;
    if (!chain.findSetting("resource-root", root)) {
        errors.error(path) << "could not find resource-root setting\n";
        return {};
    }
    const std::string name = resourceName(path, root);

    if (mode == TextureMode::Reference) {
        qe::Ref<tarn::Texture> texture = builder.createTexture(tarn::TextureFormat::Invalid, 0, 0, 0, kTextureUsage, 0);
        builder.textureRecordOf(texture)->name = qe::stripExtension(name, qe::PathStyle::Windows) + ".kiva";
        return texture;
    }

    const bool srgb = nameIsSrgb(path, name, chain, errors);

    DecodedImage image;
    if (!image.load(path)) {
        errors.error(path) << "could not load: " << image.reason() << "\n";
        return {};
    }
    uint8_t* pixels = image.pixels();
    int32_t width = image.width();
    int32_t height = image.height();

    int32_t maxSize = 0;
    if (chain.getInt("texture-max-size", maxSize)) {
        while ((width > maxSize || height > maxSize) && width >= 2 && height >= 2) {
            halveWidth(pixels, width, height);
            halveHeight(pixels, width, height);
        }
    }
    if (width > kMaxTextureSide || height > kMaxTextureSide) {
        errors.error(path) << "image of " << width << " by " << height << " texels is too large for a texture (at most "
                           << kMaxTextureSide << " on a side); lower texture-max-size\n";
        return {};
    }

    int32_t mipCount = 1;
    bool generateMips = true;
    if (!chain.getBool("texture-generate-mipmaps", generateMips) || generateMips)
        mipCount = fullMipCount(width, height);

    bool isNormalMap = false;
    chain.getBool("texture-is-normalmap", isNormalMap);

    // Alpha is a property of the file's layout; the pixels are not looked at.
    const bool hasAlpha = image.channels() % 2 == 0;
    tarn::TextureFormat format = hasAlpha ? tarn::TextureFormat::DXT5 : tarn::TextureFormat::DXT1;
    SettingValue formatSetting;
    if (chain.findSetting(hasAlpha ? "texture-format-alpha" : "texture-format-noalpha", formatSetting) &&
        !textureFormatFromWord(formatSetting.value, format)) {
        errors.errorAtLine(formatSetting.source, formatSetting.line) << "invalid texture format\n";
        return {};
    }

    if (!isNormalMap && name.find("_normal") != std::string::npos) {
        isNormalMap = true;
        format = tarn::TextureFormat::DXT5;
    }

    const Encoder encoder = selectEncoder(format, isNormalMap);
    qe::Ref<tarn::Texture> texture =
        builder.createTexture(format, width, height, mipCount, kTextureUsage, srgb ? 1 : 0);
    writeLevels(pixels, width, height, mipCount, format, encoder, *texture);
    image.release();
    builder.textureRecordOf(texture)->name = name;
    return texture;
}
