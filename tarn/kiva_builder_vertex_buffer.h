#pragma once

#include "qe/dlist_item.h"
#include "tarn/kiva_container.h"
#include "tarn/vertex_buffer.h"

namespace tarn {

class KivaBuilder;

// A vertex buffer of a KivaBuilder: writes straight into its record.
class KivaBuilderVertexBuffer final : public VertexBuffer, public qe::DListItem<KivaBuilderVertexBuffer> {
public:
    KivaBuilderVertexBuffer(KivaBuilder* factory, BufferRecord* record) : factory_(factory), record_(record) {}

    void writeData(const void* bytes, size_t size) override;

    KivaBuilder* builder() const { return factory_; }
    BufferRecord* record() const { return record_; }
    void unlinkFromBuilder() {
        this->unlink();
        factory_ = nullptr;
        record_ = nullptr;
    }

private:
    KivaBuilder* factory_;
    BufferRecord* record_;
};

// Copies at most record->data.size() bytes into the start of the record;
// a null record (the builder is gone) stops the program.
void writeBufferData(BufferRecord* record, const void* bytes, size_t size);

}  // namespace tarn
