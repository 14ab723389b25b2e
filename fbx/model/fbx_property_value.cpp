#include "fbx/model/fbx_property_value.h"

#include <type_traits>

namespace {

template <class T>
class TypedValue final : public FbxPropertyValue {
public:
    explicit TypedValue(EFbxType type) : FbxPropertyValue(type) {}
    TypedValue(EFbxType type, const T& value) : FbxPropertyValue(type), value_(value) {}
    void* Data() override { return &value_; }
    const void* Data() const override { return &value_; }
    FbxPropertyValue* Clone() const override { return new TypedValue(GetType(), value_); }

private:
    T value_{};
};

}  // namespace

FbxPropertyValue* FbxPropertyValue::Create(EFbxType type) {
    return FbxVisitType(type, static_cast<FbxPropertyValue*>(nullptr), [&](auto* tag) -> FbxPropertyValue* {
        using T = std::remove_pointer_t<decltype(tag)>;
        return new TypedValue<T>(type);
    });
}
