#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "fbx/model/fbx_criteria.h"
#include "qe/counted.h"

class FbxObject;
class FbxPropertyPage;

// The end of connections that a property (or an object, through its root
// property) has once it is first connected. It keeps its sources and
// destinations in connection order, and the filtered views made of them.
class FbxConnectionPoint : public qe::Counted {
public:
    // Type bits of a point.
    enum EType : uint32_t {
        eSource = 1,       // can be a source
        eDestination = 2,  // can be a destination
        eOneWay = 4,       // takes part one way only: its sources do not list it
        eFilter = 8,       // a filtered view of another point
        eOnDemand = 16,    // the view was made on demand
        eDefault = eSource | eDestination,
    };
    // Connect type: low two bits and three bits above them; 128 marks a
    // one-way connection.
    enum EConnectType : uint32_t {
        eLowMask = 3,
        eHighMask = 4 | 8 | 16,
        eConnectDefault = 6,
        eConnectOneWay = 128,
    };
    struct Link {
        FbxConnectionPoint* point;
        uint32_t type;
    };

    FbxConnectionPoint(FbxPropertyPage* page, int id) : page_(page), id_(id) {}
    ~FbxConnectionPoint() override;

    FbxPropertyPage* GetPage() const { return page_; }
    int GetId() const { return id_; }
    // The object that owns the point's property, null on a class page.
    FbxObject* GetOwnerObject() const;
    // True for an object's own point (its root property).
    bool IsObjectPoint() const { return id_ == 0; }

    uint32_t GetType() const { return type_; }
    void SetType(uint32_t type) { type_ = type; }
    bool IsView() const { return (type_ & eFilter) != 0; }

    // Connects src as a source of dst, appended to dst's sources, or placed
    // before dst's source at index `before`. Views stand for the point
    // behind them. False when a point is null, of the wrong kind, or when
    // an owner's ConnectNotify refuses.
    static bool Connect(FbxConnectionPoint* src, FbxConnectionPoint* dst, uint32_t connectType = 0, int before = -1);
    // Removes one connection of src to dst (the last one made when there
    // are several). False when there is none or an owner refuses.
    static bool Disconnect(FbxConnectionPoint* src, FbxConnectionPoint* dst);
    // Removes every connection of this point, sources first, without asking
    // the owners; used when the owner goes.
    void DisconnectAll();
    // Empties this point's lists without touching the other ends. Only for
    // the manager's final teardown, which does this to every point before
    // it frees any object.
    void ForgetAllLinks();

    const std::vector<Link>& Sources() const { return src_; }
    const std::vector<Link>& Destinations() const { return dst_; }
    bool IsConnectedSrc(const FbxConnectionPoint* point) const;
    bool IsConnectedDst(const FbxConnectionPoint* point) const;

    // The view of this point for a filter, made and filled on the first
    // request, kept in step with this point afterwards.
    FbxConnectionPoint* GetView(const FbxCriteria& filter);
    // The existing view for a filter, or null.
    FbxConnectionPoint* FindView(const FbxCriteria& filter) const;

    // Filtered reads of the sources (or destinations). A short list is
    // read by a scan, so that objects with a few connections carry no
    // views; a longer one through the filter's view, made on first need.
    static constexpr size_t kScanLimit = 16;
    int FilteredCount(bool sources, const FbxCriteria& filter);
    // The point of the index-th passing link, or null.
    FbxConnectionPoint* FilteredAt(bool sources, const FbxCriteria& filter, int index);
    int ViewCount() const { return static_cast<int>(views_.size()); }
    const FbxCriteria& GetFilter() const { return filter_; }

    // Moves the source at index `from` to index `to`, in the plain list and
    // in every view that holds it. False for an index out of range.
    bool MoveSrc(int from, int to);

private:
    void AddSrcLink(Link link, int before);
    void AddDstLink(Link link);
    // Removes the last link to `point` from the source (or destination)
    // list and from the views; false when there is none.
    bool RemoveSrcLink(const FbxConnectionPoint* point);
    bool RemoveDstLink(const FbxConnectionPoint* point);
    void RemoveHiddenDst(const FbxConnectionPoint* point);
    void RebuildViewSources();
    // The filter's list when a view serves it, else null (scan the plain
    // list).
    const std::vector<Link>* FilteredList(bool sources, const FbxCriteria& filter);

    FbxPropertyPage* page_;
    int id_;
    uint32_t type_ = eDefault;
    std::vector<Link> src_;
    std::vector<Link> dst_;
    // Destinations of one-way connections: not listed, but remembered so
    // that the connection can be undone when this point goes.
    std::vector<FbxConnectionPoint*> hiddenDst_;
    FbxConnectionPoint* parentView_ = nullptr;
    std::vector<std::unique_ptr<FbxConnectionPoint>> views_;
    FbxCriteria filter_;
};

// The event that ConnectNotify receives, once per owner. `direction` tells
// the receiving owner's side: eSrcSide when the other end is its new (or
// old) source, eDstSide when it is its destination.
struct FbxConnectEvent {
    enum EType { eConnectRequest, eConnect, eConnected, eDisconnectRequest, eDisconnect, eDisconnected };
    enum EDirection { eSrcSide, eDstSide };

    EType type;
    EDirection direction;
    FbxConnectionPoint* src;
    FbxConnectionPoint* dst;
};
