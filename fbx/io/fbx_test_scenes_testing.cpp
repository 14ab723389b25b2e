#include "fbx/io/fbx_test_scenes_testing.h"

#include <string>

void writeDefinitions(FbxBinaryBuilder& b, std::initializer_list<const char*> words) {
    b.Begin("Definitions");
    b.Begin("Version").Int(100).End();
    for (const char* word : words) {
        b.Begin("ObjectType").String(word);
        b.Begin("Count").Int(1).End();
        b.End();
    }
    b.End();
}

FbxBinaryBuilder& beginObject(FbxBinaryBuilder& b, const char* word, int64_t id, const char* name,
                              const char* subclass) {
    return b.Begin(word).Long(id).ObjectName(name, word).String(subclass);
}

void writeObject(FbxBinaryBuilder& b, const char* word, int64_t id, const char* name, const char* subclass) {
    beginObject(b, word, id, name, subclass).End();
}

void writeProperty3(FbxBinaryBuilder& b, const char* name, const char* type, double x, double y, double z) {
    b.Begin("P").String(name).String(type).String("").String("A").Double(x).Double(y).Double(z).End();
}

void writeConnection(FbxBinaryBuilder& b, const char* kind, int64_t source, int64_t destination) {
    b.Begin("C").String(kind).Long(source).Long(destination).End();
}

namespace {

void writeDocuments(FbxBinaryBuilder& b, int count) {
    b.Begin("Documents");
    b.Begin("Count").Int(count).End();
    for (int i = 0; i < count; ++i) {
        std::string name = i == 0 ? "FileScene" : "Document" + std::to_string(i);
        b.Begin("Document").Long(1000 + i).String(name).String(i == 0 ? "Scene" : "Document");
        b.Begin("RootNode").Long(i == 0 ? 0 : -1).End();
        b.End();
    }
    b.End();
}

std::vector<uint8_t> scene(int documents, std::initializer_list<const char*> words, const FbxSectionWriter& objects,
                           const FbxSectionWriter& connections) {
    FbxBinaryBuilder b(7400);
    b.Begin("Creator").String("kiva test").End();
    writeDocuments(b, documents);
    writeDefinitions(b, words);
    b.Begin("Objects");
    if (objects) objects(b);
    b.EmptyBlock();
    b.End();
    b.Begin("Connections");
    if (connections) connections(b);
    b.EmptyBlock();
    b.End();
    return b.Finish();
}

void writeNodes(FbxBinaryBuilder& b, int count) {
    for (int i = 0; i < count; ++i)
        writeObject(b, "Model", kFirstNodeId + i, ("Node" + std::to_string(i)).c_str(), "Null");
}

}  // namespace

std::vector<uint8_t> sceneFile(std::initializer_list<const char*> words, const FbxSectionWriter& objects,
                               const FbxSectionWriter& connections) {
    return scene(1, words, objects, connections);
}

std::vector<uint8_t> nodeChainFile(int depth) {
    return sceneFile(
        {"Model"}, [depth](FbxBinaryBuilder& b) { writeNodes(b, depth); },
        [depth](FbxBinaryBuilder& b) {
            for (int i = 0; i < depth; ++i)
                writeConnection(b, "OO", kFirstNodeId + i, i == 0 ? 0 : kFirstNodeId + i - 1);
        });
}

std::vector<uint8_t> nodeDiamondsFile(int layers) {
    return sceneFile(
        {"Model"}, [layers](FbxBinaryBuilder& b) { writeNodes(b, 2 * layers); },
        [layers](FbxBinaryBuilder& b) {
            for (int layer = 0; layer < layers; ++layer)
                for (int k = 0; k < 2; ++k) {
                    int64_t node = kFirstNodeId + 2 * layer + k;
                    if (layer == 0) writeConnection(b, "OO", node, 0);
                    for (int above = 0; layer > 0 && above < 2; ++above)
                        writeConnection(b, "OO", node, kFirstNodeId + 2 * (layer - 1) + above);
                }
        });
}

std::vector<uint8_t> cyclesFile() {
    return scene(
        2, {"Model"}, [](FbxBinaryBuilder& b) { writeNodes(b, 3); },
        [](FbxBinaryBuilder& b) {
            const int64_t a = kFirstNodeId, b1 = a + 1, c = a + 2;
            writeConnection(b, "OO", b1, a);
            writeConnection(b, "OO", c, b1);
            writeConnection(b, "OO", a, c);  // a node under its grandchild
            writeConnection(b, "OO", c, c);  // a node under itself
            writeConnection(b, "OO", a, 0);
            writeConnection(b, "OO", 0, b1);  // the root under a node
            writeConnection(b, "OO", 1000, 1001);
            writeConnection(b, "OO", 1001, 1000);
        });
}

std::vector<uint8_t> sharedMaterialFile(int count) {
    return sceneFile(
        {"Model", "Material"},
        [count](FbxBinaryBuilder& b) {
            writeNodes(b, count);
            writeObject(b, "Material", 10, "Shared", "");
        },
        [count](FbxBinaryBuilder& b) {
            for (int i = 0; i < count; ++i) {
                writeConnection(b, "OO", kFirstNodeId + i, 0);
                writeConnection(b, "OO", 10, kFirstNodeId + i);
            }
        });
}

std::vector<uint8_t> manyPropertiesFile(int count) {
    return sceneFile(
        {"Model"},
        [count](FbxBinaryBuilder& b) {
            beginObject(b, "Model", 10, "Crowded", "Null");
            b.Begin("Properties70");
            // Names in no particular order, as a hash of the index gives them.
            for (int i = 0; i < count; ++i) {
                uint32_t key = static_cast<uint32_t>(i) * 2654435761u;
                b.Begin("P").String("p" + std::to_string(key) + "_" + std::to_string(i));
                b.String("double").String("Number").String("U").Double(i).Double(0).Double(1).End();
            }
            b.End();
            b.End();
        },
        [](FbxBinaryBuilder& b) { writeConnection(b, "OO", 10, 0); });
}

std::vector<uint8_t> manyTypeWordsFile(int count) {
    FbxBinaryBuilder b(7400);
    b.Begin("Definitions");
    for (int i = 0; i < count; ++i) {
        b.Begin("ObjectType").String("Kind" + std::to_string(static_cast<uint32_t>(i) * 2654435761u));
        b.Begin("Count").Int(1).End();
        b.End();
    }
    b.End();
    b.Begin("Objects");
    writeObject(b, "Kind0", 10, "Only", "");
    b.End();
    return b.Finish();
}

std::vector<uint8_t> nestedBlocksFile(int depth) {
    FbxBinaryBuilder b(7400);
    for (int i = 0; i < depth; ++i) b.Begin("Nest").Int(i);
    for (int i = 0; i < depth; ++i) b.End();
    return b.Finish();
}
