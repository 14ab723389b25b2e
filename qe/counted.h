#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace qe {

// Polymorphic base of every object with a shared lifetime. The count starts
// at 0; whoever brings it from 1 to 0 calls release(), which destroys the
// object unless a subclass knows better (an interned material may have been
// picked up again by its cache in the meantime).
class Counted {
public:
    Counted() = default;
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    void addRef() { count_.fetch_add(1, std::memory_order_seq_cst); }
    void dropRef() {
        if (count_.fetch_sub(1, std::memory_order_seq_cst) == 1) release();
    }
    // Takes a reference only while the object is alive (count above 0), so
    // that a lookup never revives an object whose final release has begun.
    bool tryAddRef() {
        uint32_t c = count_.load(std::memory_order_seq_cst);
        while (c != 0)
            if (count_.compare_exchange_weak(c, c + 1, std::memory_order_seq_cst)) return true;
        return false;
    }
    uint32_t refCount() const { return count_.load(std::memory_order_seq_cst); }

    virtual void release() { delete this; }
    virtual ~Counted() = default;

private:
    std::atomic<uint32_t> count_{0};
};

// A counted reference: takes one reference when set, drops it when cleared.
// An empty one is valid. adopt() takes over a reference that a factory has
// already taken for its caller.
template <class T>
class Ref {
public:
    Ref() = default;
    Ref(std::nullptr_t) {}
    explicit Ref(T* p) : p_(p) {
        if (p_) p_->addRef();
    }
    Ref(const Ref& o) : Ref(o.p_) {}
    Ref(Ref&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
    template <class U>
    Ref(const Ref<U>& o) : Ref(static_cast<T*>(o.get())) {}
    template <class U>
    Ref(Ref<U>&& o) noexcept : p_(o.detach()) {}
    ~Ref() { reset(); }

    Ref& operator=(const Ref& o) {
        Ref(o).swap(*this);
        return *this;
    }
    Ref& operator=(Ref&& o) noexcept {
        Ref(std::move(o)).swap(*this);
        return *this;
    }

    static Ref adopt(T* p) {
        Ref r;
        r.p_ = p;
        return r;
    }
    // Gives up the reference without dropping it.
    T* detach() { return std::exchange(p_, nullptr); }
    void reset() {
        if (T* p = std::exchange(p_, nullptr)) p->dropRef();
    }
    void swap(Ref& o) noexcept { std::swap(p_, o.p_); }

    T* get() const { return p_; }
    T* operator->() const { return p_; }
    T& operator*() const { return *p_; }
    explicit operator bool() const { return p_ != nullptr; }
    friend bool operator==(const Ref& a, const Ref& b) { return a.p_ == b.p_; }

private:
    T* p_ = nullptr;
};

}  // namespace qe
