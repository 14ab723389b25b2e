#include "tarn/kivadump/kiva_json_printer.h"

#include "tarn/kivadump/json_writer.h"

namespace tarn::kivaread {

namespace {

class JsonPrinter {
public:
    JsonPrinter(const KivaFile& file, std::ostream& out) : file_(file), json_(out) {}

    void print() {
        json_.beginObject();
        printHeader();
        table(Table::Strings, file_.strings, [&](const KivaString& string) { json_.string(string.text); });
        table(Table::Textures, file_.textures, [&](const KivaTexture& texture) { printTexture(texture); });
        table(Table::VertexBuffers, file_.vertexBuffers, [&](const KivaBuffer& buffer) { printBuffer(buffer, true); });
        table(Table::IndexBuffers, file_.indexBuffers, [&](const KivaBuffer& buffer) { printBuffer(buffer, false); });
        table(Table::Materials, file_.materials, [&](const KivaMaterial& material) { printMaterial(material); });
        table(Table::Meshes, file_.meshes, [&](const KivaMesh& mesh) { printMesh(mesh); });
        table(Table::Skeletons, file_.skeletons, [&](const KivaSkeleton& skeleton) { printSkeleton(skeleton); });
        table(Table::Models, file_.models, [&](const KivaModel& model) { printModel(model); });
        table(Table::Animations, file_.animations, [&](const KivaAnimation& animation) { printAnimation(animation); });
        json_.endObject();
    }

private:
    template <typename Rows, typename PrintRow>
    void table(Table which, const Rows& rows, PrintRow printRow) {
        json_.key(kTables[int(which)].jsonKey);
        json_.beginArray();
        for (const auto& row : rows) printRow(row);
        json_.endArray();
    }
    void name(std::string_view key, std::uint16_t index) { json_.member(key, file_.string(index)); }
    void offset(std::string_view key, std::uint64_t value) {
        json_.key(key);
        if (value == kNoOffset)
            json_.null();
        else
            json_.number(value);
    }
    template <std::size_t N>
    void floats(std::string_view key, const std::array<float, N>& values) {
        json_.floatsMember(key, values.data(), N);
    }

    void printHeader() {
        json_.key("header");
        json_.beginObject();
        json_.member("magic", std::uint64_t(file_.header.magic));
        json_.member("version", std::uint64_t(file_.header.version));
        json_.member("fileSize", std::uint64_t(file_.bytes.size()));
        json_.key("tables");
        json_.beginObject();
        for (int t = 0; t < kTableCount; ++t) {
            json_.key(kTables[t].jsonKey);
            json_.beginObject();
            json_.member("count", std::uint64_t(file_.header.counts[t]));
            offset("offset", file_.header.offsets[t]);
            json_.endObject();
        }
        json_.endObject();
        json_.endObject();
    }

    void printTexture(const KivaTexture& texture) {
        json_.beginObject();
        name("name", texture.name);
        json_.member("format", kTextureFormats[texture.format].name);
        json_.member("width", std::uint64_t(texture.width));
        json_.member("height", std::uint64_t(texture.height));
        json_.member("mipCount", std::uint64_t(texture.mipCount));
        json_.key("srgb");
        json_.boolean(texture.srgb);
        json_.member("dataSize", texture.dataSize);
        offset("dataOffset", texture.dataOffset);
        json_.endObject();
    }

    void printBuffer(const KivaBuffer& buffer, bool vertices) {
        json_.beginObject();
        if (vertices) {
            json_.member("format", kVertexFormats[buffer.format].name);
            json_.member("stride", std::uint64_t(kVertexFormats[buffer.format].stride));
        } else {
            json_.member("format", kIndexFormats[buffer.format].name);
        }
        json_.member("count", std::uint64_t(buffer.count));
        json_.member("dataSize", buffer.dataSize);
        offset("dataOffset", buffer.dataOffset);
        json_.endObject();
    }

    void printMaterial(const KivaMaterial& material) {
        json_.beginObject();
        name("shader", material.shader);
        json_.key("vectors");
        json_.beginArray();
        for (const KivaVectorParameter& parameter : material.vectors) {
            json_.beginObject();
            name("name", parameter.name);
            floats("value", parameter.value);
            json_.endObject();
        }
        json_.endArray();
        json_.key("textures");
        json_.beginArray();
        for (const KivaTextureParameter& parameter : material.textures) {
            json_.beginObject();
            name("name", parameter.name);
            json_.indexMember("texture", parameter.texture);
            json_.endObject();
        }
        json_.endArray();
        json_.key("matrices");
        json_.beginArray();
        for (const KivaMatrixParameter& parameter : material.matrices) {
            json_.beginObject();
            name("name", parameter.name);
            floats("value", parameter.value);
            json_.endObject();
        }
        json_.endArray();
        json_.endObject();
    }

    void printMesh(const KivaMesh& mesh) {
        json_.beginObject();
        json_.indexMember("vertexBuffer", mesh.vertexBuffer);
        json_.indexMember("indexBuffer", mesh.indexBuffer);
        json_.key("groups");
        json_.beginArray();
        for (const KivaMaterialGroup& group : mesh.groups) {
            json_.beginObject();
            name("name", group.name);
            json_.indexMember("material", group.material);
            json_.member("firstIndex", std::uint64_t(group.firstIndex));
            json_.member("primitiveCount", std::uint64_t(group.primitiveCount));
            json_.member("primitive", kTriangleListName);
            json_.endObject();
        }
        json_.endArray();
        json_.endObject();
    }

    void printSkeleton(const KivaSkeleton& skeleton) {
        json_.beginObject();
        json_.key("bones");
        json_.beginArray();
        for (const KivaBone& bone : skeleton.bones) {
            json_.beginObject();
            name("name", bone.name);
            json_.indexMember("parent", bone.parent);
            floats("translation", bone.translation);
            floats("rotation", bone.rotation);
            floats("scaleShear", bone.scaleShear);
            floats("inverseBind", bone.inverseBind);
            json_.endObject();
        }
        json_.endArray();
        json_.endObject();
    }

    void printModel(const KivaModel& model) {
        json_.beginObject();
        name("name", model.name);
        json_.indexMember("skeleton", model.skeleton);
        floats("matrix", model.matrix);
        json_.key("bindings");
        json_.beginArray();
        for (const KivaMeshBinding& binding : model.bindings) {
            json_.beginObject();
            name("name", binding.name);
            json_.indexMember("mesh", binding.mesh);
            floats("matrix", binding.matrix);
            json_.key("boneMap");
            json_.beginArray(true);
            for (std::uint16_t bone : binding.boneMap) json_.number(std::uint64_t(bone));
            json_.endArray();
            json_.endObject();
        }
        json_.endArray();
        json_.endObject();
    }

    void printAnimation(const KivaAnimation& animation) {
        json_.beginObject();
        name("name", animation.name);
        json_.member("framesPerSecondNumerator", std::uint64_t(animation.framesPerSecondNumerator));
        json_.member("framesPerSecondDenominator", std::uint64_t(animation.framesPerSecondDenominator));
        json_.member("frameCount", std::uint64_t(animation.frameCount));
        json_.key("boneNames");
        json_.beginArray(true);
        for (std::uint16_t bone : animation.boneNames) json_.string(file_.string(bone));
        json_.endArray();
        json_.endObject();
    }

    const KivaFile& file_;
    JsonWriter json_;
};

}  // namespace

void printKivaJson(const KivaFile& file, std::ostream& out) { JsonPrinter(file, out).print(); }

}  // namespace tarn::kivaread
