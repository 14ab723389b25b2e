#pragma once

#include "qe/dlist_item.h"
#include "tarn/index_buffer.h"
#include "tarn/kiva_container.h"

namespace tarn {

class KivaBuilder;

// An index buffer of a KivaBuilder: writes straight into its record.
class KivaBuilderIndexBuffer final : public IndexBuffer, public qe::DListItem<KivaBuilderIndexBuffer> {
public:
    KivaBuilderIndexBuffer(KivaBuilder* factory, BufferRecord* record) : factory_(factory), record_(record) {}

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

}  // namespace tarn
