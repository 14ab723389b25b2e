#include "tarn/kivadump/kiva_text_printer.h"

#include <cstdio>
#include <string>

#include "tarn/kivadump/dump_format.h"

namespace tarn::kivaread {

namespace {

class TextPrinter {
public:
    TextPrinter(const KivaFile& file, std::ostream& out) : file_(file), out_(out) {}

    void print() {
        printHeader();
        printStrings();
        printTextures();
        printBuffers(Table::VertexBuffers);
        printBuffers(Table::IndexBuffers);
        printMaterials();
        printMeshes();
        printSkeletons();
        printModels();
        printAnimations();
    }

private:
    // A name by string index: quoted text, or (none).
    std::string name(std::uint16_t index) const {
        return index == kNoIndex ? "(none)" : quoteText(file_.string(index));
    }
    // A reference to a row of another table: "material 3 \"Lambert\"" or "none".
    std::string reference(Table table, std::uint16_t index, std::uint16_t nameIndex = kNoIndex) const {
        if (index == kNoIndex) return std::string(kTables[int(table)].name) + " none";
        std::string text = std::string(kTables[int(table)].name) + " " + std::to_string(index);
        if (nameIndex != kNoIndex) text += " " + quoteText(file_.string(nameIndex));
        return text;
    }
    static std::string at(std::uint64_t size, std::uint64_t offset) {
        return std::to_string(size) + " bytes" + (size ? " at " + formatHex(offset) : "");
    }
    template <std::size_t N>
    static std::string floats(const std::array<float, N>& values, std::size_t rowLength = N) {
        std::string text = "(";
        for (std::size_t i = 0; i < N; ++i) {
            if (i > 0) text += i % rowLength == 0 ? " | " : ", ";
            text += formatFloat(values[i]);
        }
        return text + ")";
    }
    void heading(Table table, std::size_t count) { out_ << kTables[int(table)].title << ": " << count << '\n'; }

    void printHeader() {
        const KivaHeader& header = file_.header;
        char magic[16], version[16];
        std::snprintf(magic, sizeof magic, "0x%08X", unsigned(header.magic));
        std::snprintf(version, sizeof version, "0x%08X", unsigned(header.version));
        out_ << "header: magic " << magic << " \"aviK\", version " << version << ", " << file_.bytes.size()
             << " bytes\n";
        for (int t = 0; t < kTableCount; ++t) {
            std::string title = kTables[t].title;
            title.resize(16, ' ');
            out_ << "  " << title << header.counts[t];
            if (header.counts[t]) out_ << " at " << formatHex(header.offsets[t]);
            out_ << '\n';
        }
    }

    void printStrings() {
        heading(Table::Strings, file_.strings.size());
        for (std::size_t i = 0; i < file_.strings.size(); ++i)
            out_ << "  [" << i << "] " << quoteText(file_.strings[i].text) << '\n';
    }

    void printTextures() {
        heading(Table::Textures, file_.textures.size());
        for (std::size_t i = 0; i < file_.textures.size(); ++i) {
            const KivaTexture& texture = file_.textures[i];
            out_ << "  [" << i << "] " << name(texture.name) << ": " << kTextureFormats[texture.format].name << ' '
                 << texture.width << 'x' << texture.height << ", " << unsigned(texture.mipCount) << " mip level"
                 << (texture.mipCount == 1 ? "" : "s") << (texture.srgb ? ", sRGB" : "") << ", "
                 << at(texture.dataSize, texture.dataOffset);
            if (texture.format == kFormatInvalid && file_.string(texture.name).ends_with(".kiva"))
                out_ << ", reference to another container";
            out_ << '\n';
        }
    }

    void printBuffers(Table table) {
        const bool vertices = table == Table::VertexBuffers;
        const std::vector<KivaBuffer>& buffers = vertices ? file_.vertexBuffers : file_.indexBuffers;
        heading(table, buffers.size());
        for (std::size_t i = 0; i < buffers.size(); ++i) {
            const KivaBuffer& buffer = buffers[i];
            out_ << "  [" << i << "] ";
            if (vertices)
                out_ << kVertexFormats[buffer.format].name << ": " << buffer.count << " vertices, stride "
                     << kVertexFormats[buffer.format].stride;
            else
                out_ << kIndexFormats[buffer.format].name << ": " << buffer.count << " indices";
            out_ << ", " << at(buffer.dataSize, buffer.dataOffset) << '\n';
        }
    }

    void printMaterials() {
        heading(Table::Materials, file_.materials.size());
        for (std::size_t i = 0; i < file_.materials.size(); ++i) {
            const KivaMaterial& material = file_.materials[i];
            out_ << "  [" << i << "] shader " << name(material.shader) << ": " << material.vectors.size() << " vector, "
                 << material.textures.size() << " texture, " << material.matrices.size() << " matrix parameters\n";
            for (const KivaVectorParameter& parameter : material.vectors)
                out_ << "      vector " << name(parameter.name) << " = " << floats(parameter.value) << '\n';
            for (const KivaTextureParameter& parameter : material.textures) {
                const std::uint16_t textureName =
                    parameter.texture == kNoIndex ? kNoIndex : file_.textures[parameter.texture].name;
                out_ << "      texture " << name(parameter.name) << " = "
                     << reference(Table::Textures, parameter.texture, textureName) << '\n';
            }
            for (const KivaMatrixParameter& parameter : material.matrices)
                out_ << "      matrix " << name(parameter.name) << " = " << floats(parameter.value, 4) << '\n';
        }
    }

    void printMeshes() {
        heading(Table::Meshes, file_.meshes.size());
        for (std::size_t i = 0; i < file_.meshes.size(); ++i) {
            const KivaMesh& mesh = file_.meshes[i];
            out_ << "  [" << i << "] " << reference(Table::VertexBuffers, mesh.vertexBuffer) << ", "
                 << reference(Table::IndexBuffers, mesh.indexBuffer) << ", " << mesh.groups.size() << " group"
                 << (mesh.groups.size() == 1 ? "" : "s") << '\n';
            for (std::size_t g = 0; g < mesh.groups.size(); ++g) {
                const KivaMaterialGroup& group = mesh.groups[g];
                const std::uint16_t shader =
                    group.material == kNoIndex ? kNoIndex : file_.materials[group.material].shader;
                out_ << "      group " << g << ' ' << name(group.name) << ": "
                     << reference(Table::Materials, group.material, shader) << ", " << kTriangleListName
                     << ", first index " << group.firstIndex << ", " << group.primitiveCount << " triangle"
                     << (group.primitiveCount == 1 ? "" : "s") << '\n';
            }
        }
    }

    void printSkeletons() {
        heading(Table::Skeletons, file_.skeletons.size());
        for (std::size_t i = 0; i < file_.skeletons.size(); ++i) {
            const KivaSkeleton& skeleton = file_.skeletons[i];
            out_ << "  [" << i << "] " << skeleton.bones.size() << " bone" << (skeleton.bones.size() == 1 ? "" : "s")
                 << '\n';
            for (std::size_t b = 0; b < skeleton.bones.size(); ++b) {
                const KivaBone& bone = skeleton.bones[b];
                out_ << "      bone " << b << ' ' << name(bone.name) << ": parent ";
                if (bone.parent == kNoIndex)
                    out_ << "none";
                else
                    out_ << bone.parent << ' ' << name(skeleton.bones[bone.parent].name);
                out_ << "\n          translation " << floats(bone.translation) << "\n          rotation "
                     << floats(bone.rotation) << "\n          scale/shear " << floats(bone.scaleShear, 3)
                     << "\n          inverse bind " << floats(bone.inverseBind, 4) << '\n';
            }
        }
    }

    void printModels() {
        heading(Table::Models, file_.models.size());
        for (std::size_t i = 0; i < file_.models.size(); ++i) {
            const KivaModel& model = file_.models[i];
            out_ << "  [" << i << "] " << name(model.name) << ": " << reference(Table::Skeletons, model.skeleton)
                 << ", " << model.bindings.size() << " mesh binding" << (model.bindings.size() == 1 ? "" : "s")
                 << "\n      matrix " << floats(model.matrix, 4) << '\n';
            for (std::size_t b = 0; b < model.bindings.size(); ++b) {
                const KivaMeshBinding& binding = model.bindings[b];
                out_ << "      binding " << b << ' ' << name(binding.name) << ": "
                     << reference(Table::Meshes, binding.mesh) << "\n          matrix " << floats(binding.matrix, 4)
                     << "\n          bone map [";
                for (std::size_t m = 0; m < binding.boneMap.size(); ++m) out_ << (m ? ", " : "") << binding.boneMap[m];
                out_ << "]\n";
            }
        }
    }

    void printAnimations() {
        heading(Table::Animations, file_.animations.size());
        for (std::size_t i = 0; i < file_.animations.size(); ++i) {
            const KivaAnimation& animation = file_.animations[i];
            out_ << "  [" << i << "] " << name(animation.name) << ": " << animation.framesPerSecondNumerator << '/'
                 << animation.framesPerSecondDenominator << " frames per second, " << animation.frameCount << " frame"
                 << (animation.frameCount == 1 ? "" : "s") << ", " << animation.boneNames.size() << " bone"
                 << (animation.boneNames.size() == 1 ? "" : "s") << '\n';
            if (!animation.boneNames.empty()) {
                out_ << "      bones";
                for (std::uint16_t bone : animation.boneNames) out_ << ' ' << name(bone);
                out_ << '\n';
            }
        }
    }

    const KivaFile& file_;
    std::ostream& out_;
};

}  // namespace

void printKivaText(const KivaFile& file, std::ostream& out) { TextPrinter(file, out).print(); }

}  // namespace tarn::kivaread
