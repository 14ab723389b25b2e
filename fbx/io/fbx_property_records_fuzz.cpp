// Reads "Definitions" and every "Properties70" block of the first two levels
// of arbitrary bytes onto a test object, then applies the templates, so
// that property records of any shape are read without a crash or a leak.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_memory_file_testing.h"
#include "fbx/io/fbx_property_records.h"
#include "fbx/io/fbx_template_map.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_model_testing.h"

namespace {

FbxManager* fuzzManager() {
    static FbxManager* manager = [] {
        FbxManager* m = FbxManager::Create();
        RegisterTestClasses(m);
        return m;
    }();
    return manager;
}

// Reads the "Properties70" of every field instance of the current level,
// and of the level below when `depth` allows.
void readLevel(FbxFieldStream& stream, FbxObject& object, FbxStatus& status, int depth) {
    for (int i = 0; i < stream.FieldCount(); ++i) {
        int instances = stream.FieldInstanceCount(stream.FieldName(i));
        for (int k = 0; k < instances && k < 64; ++k) {
            if (!stream.BeginFieldAt(i, k)) break;
            if (stream.HasBlock()) {
                stream.EnterBlock();
                FbxReadProperties70(stream, object, status);
                if (depth > 0) readLevel(stream, object, status, depth - 1);
                stream.LeaveBlock();
            }
            stream.EndField();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FbxManager* manager = fuzzManager();
    FbxMemoryFile file(data, size);
    FbxFieldStream stream;
    stream.SetFbx7Mode(true);
    if (!stream.OpenStream(&file, nullptr, true)) return 0;

    FbxStatus status;
    std::vector<FbxString> types;
    FbxTemplateMap templates;
    FbxReadDefinitions(stream, *manager, types, templates, status);
    stream.RewindFields();

    FbxObject* object = FbxTestObject::Create(manager, "fuzz");
    templates.Apply(*object);
    FbxReadProperties70(stream, *object, status);
    stream.RewindFields();
    readLevel(stream, *object, status, 1);
    object->Destroy();
    return 0;
}
