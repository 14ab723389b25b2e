#include "fbx/model/fbx_connection_point.h"

#include <algorithm>

#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_property_page.h"

namespace {

// Index of the last link to `point`, or -1.
int lastIndexOf(const std::vector<FbxConnectionPoint::Link>& links, const FbxConnectionPoint* point) {
    for (int i = static_cast<int>(links.size()) - 1; i >= 0; --i)
        if (links[static_cast<size_t>(i)].point == point) return i;
    return -1;
}

bool notify(FbxConnectEvent::EType type, FbxConnectionPoint* src, FbxConnectionPoint* dst) {
    bool ok = true;
    if (FbxObject* owner = dst->GetOwnerObject())
        ok = owner->ConnectNotify(FbxConnectEvent{type, FbxConnectEvent::eSrcSide, src, dst}) && ok;
    if (FbxObject* owner = src->GetOwnerObject())
        ok = owner->ConnectNotify(FbxConnectEvent{type, FbxConnectEvent::eDstSide, src, dst}) && ok;
    return ok;
}

uint32_t normaliseConnectType(uint32_t type) {
    bool low = (type & FbxConnectionPoint::eLowMask) != 0;
    bool high = (type & FbxConnectionPoint::eHighMask) != 0;
    if (!low && !high) return type | FbxConnectionPoint::eConnectDefault;
    if (!high) return type | 4;
    if (!low) return type | 2;
    return type;
}

}  // namespace

FbxConnectionPoint::~FbxConnectionPoint() {
    if (!IsView()) DisconnectAll();
}

FbxObject* FbxConnectionPoint::GetOwnerObject() const { return page_ ? page_->Owner() : nullptr; }

bool FbxCriteria::Passes(const FbxConnectionPoint* point) const {
    if (none_ || !point) return false;
    if (properties_ == point->IsObjectPoint()) return false;
    FbxObject* owner = point->GetOwnerObject();
    if (!owner) return false;
    return !classId_.IsValid() || owner->GetClassId().Is(classId_);
}

bool FbxConnectionPoint::Connect(FbxConnectionPoint* src, FbxConnectionPoint* dst, uint32_t connectType, int before) {
    if (!src || !dst) return false;
    if (src->IsView()) src = src->parentView_;
    if (dst->IsView()) dst = dst->parentView_;
    if (!(src->type_ & eSource) || !(dst->type_ & eDestination)) return false;
    if (before > static_cast<int>(dst->src_.size())) return false;
    if (!notify(FbxConnectEvent::eConnectRequest, src, dst)) return false;
    notify(FbxConnectEvent::eConnect, src, dst);
    uint32_t type = normaliseConnectType(connectType);
    if (dst->type_ & eOneWay) type |= eConnectOneWay;
    dst->AddSrcLink(Link{src, type}, before);
    if (type & eConnectOneWay)
        src->hiddenDst_.push_back(dst);
    else
        src->AddDstLink(Link{dst, type});
    notify(FbxConnectEvent::eConnected, src, dst);
    return true;
}

bool FbxConnectionPoint::Disconnect(FbxConnectionPoint* src, FbxConnectionPoint* dst) {
    if (!src || !dst) return false;
    if (src->IsView()) src = src->parentView_;
    if (dst->IsView()) dst = dst->parentView_;
    int index = lastIndexOf(dst->src_, src);
    if (index < 0) return false;
    if (!notify(FbxConnectEvent::eDisconnectRequest, src, dst)) return false;
    notify(FbxConnectEvent::eDisconnect, src, dst);
    bool oneWay = (dst->src_[static_cast<size_t>(index)].type & eConnectOneWay) != 0;
    dst->RemoveSrcLink(src);
    if (oneWay)
        src->RemoveHiddenDst(dst);
    else
        src->RemoveDstLink(dst);
    notify(FbxConnectEvent::eDisconnected, src, dst);
    return true;
}

void FbxConnectionPoint::DisconnectAll() {
    while (!src_.empty()) {
        Link link = src_.back();
        if (link.type & eConnectOneWay)
            link.point->RemoveHiddenDst(this);
        else
            link.point->RemoveDstLink(this);
        RemoveSrcLink(link.point);
    }
    while (!dst_.empty()) {
        Link link = dst_.back();
        link.point->RemoveSrcLink(this);
        RemoveDstLink(link.point);
    }
    while (!hiddenDst_.empty()) {
        FbxConnectionPoint* dst = hiddenDst_.back();
        hiddenDst_.pop_back();
        dst->RemoveSrcLink(this);
    }
}

void FbxConnectionPoint::ForgetAllLinks() {
    src_.clear();
    dst_.clear();
    hiddenDst_.clear();
    for (auto& view : views_) {
        view->src_.clear();
        view->dst_.clear();
    }
}

void FbxConnectionPoint::AddSrcLink(Link link, int before) {
    if (before < 0 || before >= static_cast<int>(src_.size())) {
        src_.push_back(link);
        for (auto& view : views_)
            if (view->filter_.Passes(link.point)) view->src_.push_back(link);
        return;
    }
    src_.insert(src_.begin() + before, link);
    for (auto& view : views_) {
        if (!view->filter_.Passes(link.point)) continue;
        // Keep the view in its parent's order: it holds, before the new
        // link, exactly the passing links before it in the parent.
        size_t position = 0;
        for (int i = 0; i < before; ++i)
            if (view->filter_.Passes(src_[static_cast<size_t>(i)].point)) ++position;
        view->src_.insert(view->src_.begin() + static_cast<std::ptrdiff_t>(position), link);
    }
}

void FbxConnectionPoint::AddDstLink(Link link) {
    dst_.push_back(link);
    for (auto& view : views_)
        if (view->filter_.Passes(link.point)) view->dst_.push_back(link);
}

bool FbxConnectionPoint::RemoveSrcLink(const FbxConnectionPoint* point) {
    int index = lastIndexOf(src_, point);
    if (index < 0) return false;
    src_.erase(src_.begin() + index);
    for (auto& view : views_) {
        if (!view->filter_.Passes(point)) continue;
        int v = lastIndexOf(view->src_, point);
        if (v >= 0) view->src_.erase(view->src_.begin() + v);
    }
    return true;
}

bool FbxConnectionPoint::RemoveDstLink(const FbxConnectionPoint* point) {
    int index = lastIndexOf(dst_, point);
    if (index < 0) return false;
    dst_.erase(dst_.begin() + index);
    for (auto& view : views_) {
        if (!view->filter_.Passes(point)) continue;
        int v = lastIndexOf(view->dst_, point);
        if (v >= 0) view->dst_.erase(view->dst_.begin() + v);
    }
    return true;
}

void FbxConnectionPoint::RemoveHiddenDst(const FbxConnectionPoint* point) {
    for (size_t i = hiddenDst_.size(); i-- > 0;) {
        if (hiddenDst_[i] == point) {
            hiddenDst_.erase(hiddenDst_.begin() + static_cast<std::ptrdiff_t>(i));
            return;
        }
    }
}

// Both ends list a connection, so the shorter list answers: one object
// with very many connections (a material on every node of a scene) must not
// make each check a walk of all of them. Views list only what their filter
// passes and are asked by their own lists.

bool FbxConnectionPoint::IsConnectedSrc(const FbxConnectionPoint* point) const {
    if (!point) return false;
    if (!IsView() && !point->IsView() && point->dst_.size() + point->hiddenDst_.size() < src_.size()) {
        // A one-way connection stands among the other end's hidden ones.
        return lastIndexOf(point->dst_, this) >= 0 ||
               std::find(point->hiddenDst_.begin(), point->hiddenDst_.end(), this) != point->hiddenDst_.end();
    }
    return lastIndexOf(src_, point) >= 0;
}

bool FbxConnectionPoint::IsConnectedDst(const FbxConnectionPoint* point) const {
    if (!point) return false;
    if (!IsView() && !point->IsView() && point->src_.size() < dst_.size()) {
        // A one-way connection is listed by its destination alone and is no
        // destination of this point.
        for (const Link& link : point->src_)
            if (link.point == this && !(link.type & eConnectOneWay)) return true;
        return false;
    }
    return lastIndexOf(dst_, point) >= 0;
}

FbxConnectionPoint* FbxConnectionPoint::GetView(const FbxCriteria& filter) {
    if (IsView()) return parentView_->GetView(filter);
    for (auto& view : views_)
        if (view->filter_ == filter) return view.get();
    auto view = std::make_unique<FbxConnectionPoint>(page_, id_);
    view->type_ = type_ | eFilter | eOnDemand;
    view->parentView_ = this;
    view->filter_ = filter;
    for (const Link& link : src_)
        if (filter.Passes(link.point)) view->src_.push_back(link);
    for (const Link& link : dst_)
        if (filter.Passes(link.point)) view->dst_.push_back(link);
    views_.push_back(std::move(view));
    return views_.back().get();
}

FbxConnectionPoint* FbxConnectionPoint::FindView(const FbxCriteria& filter) const {
    const FbxConnectionPoint* self = IsView() ? parentView_ : this;
    for (const auto& view : self->views_)
        if (view->filter_ == filter) return view.get();
    return nullptr;
}

const std::vector<FbxConnectionPoint::Link>* FbxConnectionPoint::FilteredList(bool sources, const FbxCriteria& filter) {
    FbxConnectionPoint* self = IsView() ? parentView_ : this;
    FbxConnectionPoint* view = self->FindView(filter);
    if (!view) {
        if ((sources ? self->src_ : self->dst_).size() <= kScanLimit) return nullptr;
        view = self->GetView(filter);
    }
    return sources ? &view->src_ : &view->dst_;
}

int FbxConnectionPoint::FilteredCount(bool sources, const FbxCriteria& filter) {
    if (const std::vector<Link>* list = FilteredList(sources, filter)) return static_cast<int>(list->size());
    FbxConnectionPoint* self = IsView() ? parentView_ : this;
    int count = 0;
    for (const Link& link : sources ? self->src_ : self->dst_)
        if (filter.Passes(link.point)) ++count;
    return count;
}

FbxConnectionPoint* FbxConnectionPoint::FilteredAt(bool sources, const FbxCriteria& filter, int index) {
    if (index < 0) return nullptr;
    if (const std::vector<Link>* list = FilteredList(sources, filter))
        return static_cast<size_t>(index) < list->size() ? (*list)[static_cast<size_t>(index)].point : nullptr;
    FbxConnectionPoint* self = IsView() ? parentView_ : this;
    for (const Link& link : sources ? self->src_ : self->dst_)
        if (filter.Passes(link.point) && index-- == 0) return link.point;
    return nullptr;
}

bool FbxConnectionPoint::MoveSrc(int from, int to) {
    int count = static_cast<int>(src_.size());
    if (from < 0 || from >= count || to < 0 || to >= count) return false;
    if (from == to) return true;
    Link link = src_[static_cast<size_t>(from)];
    src_.erase(src_.begin() + from);
    src_.insert(src_.begin() + to, link);
    RebuildViewSources();
    return true;
}

void FbxConnectionPoint::RebuildViewSources() {
    for (auto& view : views_) {
        view->src_.clear();
        for (const Link& link : src_)
            if (view->filter_.Passes(link.point)) view->src_.push_back(link);
    }
}
