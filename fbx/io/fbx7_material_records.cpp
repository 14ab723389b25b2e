// The material, texture and media records of the FBX 7 document reader:
// the fields of surface materials beside their properties, file textures
// with their file names, videos with embedded content, and layered textures.

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "fbx/io/fbx7_document_reader.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_path_utils.h"
#include "fbx/io/fbx_reader_fbx7.h"
#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_layered_texture.h"
#include "fbx/model/fbx_status.h"
#include "fbx/model/fbx_surface_phong.h"
#include "fbx/model/fbx_video.h"

namespace {

// The part behind the last separator of either kind.
FbxString baseName(const FbxString& path) {
    size_t slash = path.find_last_of("/\\");
    return slash == FbxString::npos ? path : path.substr(slash + 1);
}

// Moves the value of an old property name to its new name, where the old
// one exists, and sets the new one's factor to 1.
void moveOldProperty(FbxObject& material, const char* oldName, const char* newName, const char* factor) {
    FbxProperty from = material.FindProperty(oldName, true);
    FbxProperty to = material.FindProperty(newName, true);
    if (!from.IsValid() || !to.IsValid()) return;
    if (to.GetPropertyDataType().GetType() == eFbxDouble3)
        to.Set(from.Get<FbxDouble3>());
    else
        to.Set(from.Get<FbxDouble>());
    if (factor) material.FindProperty(factor, true).Set(FbxDouble(1.0));
}

}  // namespace

void Fbx7DocumentReader::ReadMaterialFields(FbxObject& material, int version) {
    FbxFieldStream& s = *stream_;
    if (s.NextInt("MultiLayer", 0) != 0) material.FindProperty(FbxSurfaceMaterial::sMultiLayer, true).Set(true);
    StepProgress(material.GetName());
    reader_.ReadProperties70(&material);
    if (version >= 102 || !material.Is<FbxSurfaceLambert>()) return;
    // Older files name the colours without "Color" and keep an opacity.
    moveOldProperty(material, "Emissive", FbxSurfaceMaterial::sEmissive, FbxSurfaceMaterial::sEmissiveFactor);
    moveOldProperty(material, "Ambient", FbxSurfaceMaterial::sAmbient, FbxSurfaceMaterial::sAmbientFactor);
    moveOldProperty(material, "Diffuse", FbxSurfaceMaterial::sDiffuse, FbxSurfaceMaterial::sDiffuseFactor);
    FbxProperty opacity = material.FindProperty("Opacity", true);
    if (opacity.IsValid())
        material.FindProperty(FbxSurfaceMaterial::sTransparencyFactor, true).Set(1.0 - opacity.Get<FbxDouble>());
    if (!material.Is<FbxSurfacePhong>()) return;
    moveOldProperty(material, "Specular", FbxSurfaceMaterial::sSpecular, FbxSurfaceMaterial::sSpecularFactor);
    moveOldProperty(material, "Shininess", FbxSurfaceMaterial::sShininess, nullptr);
    moveOldProperty(material, "Reflectivity", FbxSurfaceMaterial::sReflectionFactor, nullptr);
}

FbxString Fbx7DocumentReader::LocalFileFor(const FbxString& fileName, const FbxString& relativeName) const {
    if (relativeName.empty() || (!fileName.empty() && FbxPathExists(fileName.c_str()))) return FbxString();
    FbxString relative = relativeName;
    std::replace(relative.begin(), relative.end(), '\\', '/');
    FbxString directory = FbxPathDirectory(stream_->FilePath().c_str());
    FbxString path =
        std::filesystem::path(FbxJoinPath(directory.c_str(), relative.c_str())).lexically_normal().string();
    return FbxPathExists(path.c_str()) ? path : FbxString();
}

FbxString Fbx7DocumentReader::ExtractContent(const FbxString& fileName) {
    FbxString base = baseName(fileName);
    if (base.empty()) return FbxString();
    // A second object that names the same file gets the first one's copy.
    auto known = extracted_.find(base);
    if (known != extracted_.end()) return known->second;
    FbxString folder = MediaFolder();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (folder.empty() || !std::filesystem::is_directory(folder, error)) {
        status_.SetCode(FbxStatus::eFailure, "Unable to create directory %s", folder.c_str());
        return FbxString();
    }
    FbxString target = FbxJoinPath(folder.c_str(), base.c_str());
    if (!FbxPathExists(target.c_str())) {
        FbxFieldStream& s = *stream_;
        if (!s.BeginField("Content", 0)) return FbxString();
        bool written;
        {
            std::ofstream out(target, std::ios::binary | std::ios::trunc);
            written = out && WriteContent(out);
            out.close();
            written = written && !out.fail();
        }
        s.EndField();
        if (!written) {
            std::filesystem::remove(target, error);
            return FbxString();
        }
    }
    extracted_.emplace(base, target);
    return target;
}

void Fbx7DocumentReader::ReadTexture(FbxFileTexture& texture) {
    FbxFieldStream& s = *stream_;
    if (s.BeginField("TextureName")) {
        texture.SetName(FbxObject::StripPrefix(s.NextString()).c_str());
        s.EndField();
    }
    FbxString fileName = s.NextString("FileName", "");
    FbxString relative = s.NextString("RelativeFilename", "");
    texture.SetFileName(fileName.c_str());
    texture.SetRelativeFileName(relative.c_str());
    if (Option(FbxIOPath::kExtractEmbeddedData, true)) {
        FbxString local = LocalFileFor(fileName, relative);
        if (!local.empty()) texture.SetFileName(local.c_str());
    }
    if (s.BeginField("Media")) {
        texture.SetMediaName(FbxObject::StripPrefix(s.NextString()).c_str());
        s.EndField();
    }
    StepProgress(texture.GetName());
    reader_.ReadProperties70(&texture);
    if (s.BeginField("ModelUVTranslation")) {
        double u = s.NextDouble();
        texture.SetTranslation(u, s.NextDouble());
        s.EndField();
    }
    if (s.BeginField("ModelUVScaling")) {
        double u = s.NextDouble();
        texture.SetScale(u, s.NextDouble());
        s.EndField();
    }
    FbxString alpha = s.NextString("Texture_Alpha_Source", "");
    texture.SetAlphaSource(alpha == "RGB_Intensity" ? FbxTexture::eRGBIntensity
                           : alpha == "Alpha_Black" ? FbxTexture::eBlack
                                                    : FbxTexture::eNone);
    if (s.BeginField("Cropping")) {
        int crop[4];
        for (int& c : crop) c = s.NextInt();
        texture.SetCropping(crop[0], crop[1], crop[2], crop[3]);
        s.EndField();
    }
}

void Fbx7DocumentReader::ReadVideo(FbxVideo& video, bool isReference) {
    FbxFieldStream& s = *stream_;
    StepProgress(video.GetName());
    reader_.ReadProperties70(&video);
    if (isReference) return;
    video.SetUseMipMap(s.NextBool("UseMipMap", false));
    FbxString fileName = s.NextString("Filename", "");
    // The properties' "Path" is the name that counts when it is set.
    FbxString path = video.Path().Get();
    if (!path.empty()) fileName = path;
    FbxString relative = s.NextString("RelativeFilename", "");
    video.SetOriginalFileName(fileName.c_str());

    bool extract = Option(FbxIOPath::kExtractEmbeddedData, true);
    if (s.BeginField("Content")) {
        // One blob, or a total size ahead of chunks.
        int size = 0;
        if (s.NextValueType() == 'R')
            s.NextBlob(size);
        else
            size = s.NextInt();
        s.EndField();
        video.SetEmbeddedContentSize(size);
        if (extract && size > 0) {
            FbxString written = ExtractContent(fileName);
            if (!written.empty()) fileName = written;
        }
    }
    video.SetFileName(fileName.c_str());
    video.SetRelativeFileName(relative.c_str());
    if (extract) {
        FbxString local = LocalFileFor(fileName, relative);
        if (!local.empty()) video.SetFileName(local.c_str());
    }
}

void Fbx7DocumentReader::ReadLayeredTexture(FbxLayeredTexture& texture) {
    FbxFieldStream& s = *stream_;
    s.NextInt("Version", 100);
    std::vector<FbxLayeredTexture::Entry>& entries = texture.GetEntries();
    entries.clear();
    if (s.BeginField("BlendModes")) {
        while (s.ValuesLeft() > 0) {
            int mode = s.NextInt();
            entries.push_back(FbxLayeredTexture::Entry{mode > 30 ? 5 : mode, 1.0});
        }
        s.EndField();
    }
    if (s.BeginField("Alphas")) {
        for (FbxLayeredTexture::Entry& entry : entries) {
            if (s.ValuesLeft() <= 0) break;
            entry.alpha = std::clamp(s.NextDouble(), 0.0, 1.0);
        }
        s.EndField();
    }
    StepProgress(texture.GetName());
    reader_.ReadProperties70(&texture);
}
