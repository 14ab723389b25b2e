#pragma once

namespace qe {

struct DefaultListTag;

// An intrusive doubly linked list link embedded in an object of type T. An
// item in no list points to itself. A list is a circular chain through one
// head item owned by the list's owner; the list neither owns nor counts its
// items. Tag lets one object sit on several lists.
template <class T, class Tag = DefaultListTag>
class DListItem {
public:
    DListItem() : next_(this), prev_(this) {}
    DListItem(const DListItem&) = delete;
    DListItem& operator=(const DListItem&) = delete;
    ~DListItem() { unlink(); }

    bool linked() const { return next_ != this; }

    // Harmless on an unlinked item.
    void unlink() {
        next_->prev_ = prev_;
        prev_->next_ = next_;
        next_ = prev_ = this;
    }

    // Inserts item right after this one (at the front when this is a head).
    void insertFront(DListItem& item) {
        item.unlink();
        item.next_ = next_;
        item.prev_ = this;
        next_->prev_ = &item;
        next_ = &item;
    }

    // Inserts item right before this one (at the back when this is a head).
    void insertBack(DListItem& item) {
        item.unlink();
        item.prev_ = prev_;
        item.next_ = this;
        prev_->next_ = &item;
        prev_ = &item;
    }

    DListItem* next() const { return next_; }
    DListItem* prev() const { return prev_; }

    // The object holding this link; only valid on items that are not heads.
    T* object() { return static_cast<T*>(this); }

    // Calls f(T&) for every item after this head, front to back. f may
    // unlink the item it is given.
    template <class F>
    void forEach(F&& f) {
        for (DListItem* it = next_; it != this;) {
            DListItem* following = it->next_;
            f(*it->object());
            it = following;
        }
    }

private:
    DListItem* next_;
    DListItem* prev_;
};

}  // namespace qe
