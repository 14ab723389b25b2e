#pragma once

#include "convert/texture_mode.h"
#include "qe/counted.h"
#include "tarn/kiva_builder.h"
#include "tarn/texture.h"

class DependencySet;
class ErrorReporter;
class SettingsStore;

// Converts one image file into one texture of the builder's container, as
// the settings that apply to the file say:
//   resource-root             the name of the settings file's directory in
//                             the resource tree (required)
//   srgb-texname-expression   regular expression; a match in the name makes
//                             the texture sRGB
//   texture-max-size          halves the image until both sides fit
//   texture-generate-mipmaps  full mip chain unless false
//   texture-is-normalmap      a DXT5 texture gets the normal swizzle
//   texture-format-alpha / texture-format-noalpha
//                             format word for images with / without alpha
// A name containing "_normal" is a normal map and forces DXT5. In Reference
// mode the result is an empty texture named like the image with ".kiva" in
// place of its extension, and the image is not opened.
//
// The path always enters dependencies. Failures are reported through errors
// and give an empty result; nothing is then left in the container.
qe::Ref<tarn::Texture> convertImage(const char* path, TextureMode mode, tarn::KivaBuilder& builder,
                                    SettingsStore& settings, DependencySet& dependencies, ErrorReporter& errors);
