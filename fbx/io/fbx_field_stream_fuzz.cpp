// Opens arbitrary bytes as an FBX file and walks every field and value of
// every section.
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_field_walk_testing.h"
#include "fbx/io/fbx_memory_file_testing.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FbxMemoryFile file(data, size);
    FbxFieldStream stream;
    stream.SetFbx7Mode(true);
    FbxHeaderInfo info;
    if (!stream.OpenStream(&file, nullptr, false, false, &info)) return 0;
    for (int section = 0; section < stream.SectionCount(); ++section) {
        if (!stream.OpenSection(section)) continue;
        FbxWalkFields(stream);
        // A second walk serves the kept root and reuses the scratch results.
        FbxWalkFields(stream);
        stream.CloseSection();
    }
    return 0;
}
