#include <algorithm>
#include <cstring>

#include "qe/fatal_error.h"
#include "tarn/kiva_builder_index_buffer.h"
#include "tarn/kiva_builder_vertex_buffer.h"

namespace tarn {

void writeBufferData(BufferRecord* record, const void* bytes, size_t size) {
    if (!record) qe::fatalError("buffer written after its builder is gone");
    const size_t n = std::min(size, record->data.size());
    if (n > 0) std::memcpy(record->data.data(), bytes, n);
}

void KivaBuilderVertexBuffer::writeData(const void* bytes, size_t size) { writeBufferData(record_, bytes, size); }

void KivaBuilderIndexBuffer::writeData(const void* bytes, size_t size) { writeBufferData(record_, bytes, size); }

}  // namespace tarn
