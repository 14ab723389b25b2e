#pragma once

#include "fbx/model/fbx_type_traits.h"
#include "qe/counted.h"

// The shared value of a property: a base type and its storage. Pages share
// a value by reference; a page that writes a value it shares with another
// takes its own copy first.
class FbxPropertyValue : public qe::Counted {
public:
    // A new value of the base type, zero/empty, or null for a type that
    // stores nothing (compound, reference).
    static FbxPropertyValue* Create(EFbxType type);

    EFbxType GetType() const { return type_; }
    virtual void* Data() = 0;
    virtual const void* Data() const = 0;
    virtual FbxPropertyValue* Clone() const = 0;

protected:
    explicit FbxPropertyValue(EFbxType type) : type_(type) {}

private:
    EFbxType type_;
};
