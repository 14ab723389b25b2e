#include "fbx/model/fbx_tess_mesh.h"

#include <cstddef>

void TessMesh::Clear() {
    mVertices.clear();
    mEdges.clear();
    mFaces.clear();
    mFreeEdges.clear();
    mFreeFaces.clear();
    mFirstFace = mLastFace = kTessNone;
    mFaceCount = mEdgeCount = 0;
}

int32_t TessMesh::AddVertex(double x, double y) {
    mVertices.push_back({x, y, kTessNone, 0});
    return static_cast<int32_t>(mVertices.size() - 1);
}

int32_t TessMesh::NewEdge(int32_t source, int32_t face) {
    int32_t e;
    if (!mFreeEdges.empty()) {
        e = mFreeEdges.back();
        mFreeEdges.pop_back();
    } else {
        e = static_cast<int32_t>(mEdges.size());
        mEdges.emplace_back();
    }
    mEdges[e] = {source, kTessNone, kTessNone, kTessNone, face};
    ++mEdgeCount;
    return e;
}

void TessMesh::FreeEdge(int32_t e) {
    mEdges[e] = {};
    mFreeEdges.push_back(e);
    --mEdgeCount;
}

int32_t TessMesh::NewFace() {
    int32_t f;
    if (!mFreeFaces.empty()) {
        f = mFreeFaces.back();
        mFreeFaces.pop_back();
    } else {
        f = static_cast<int32_t>(mFaces.size());
        mFaces.emplace_back();
    }
    mFaces[f] = {kTessNone, kTessNone, mLastFace};
    if (mLastFace != kTessNone)
        mFaces[mLastFace].next = f;
    else
        mFirstFace = f;
    mLastFace = f;
    ++mFaceCount;
    return f;
}

void TessMesh::FreeFace(int32_t f) {
    TessFace& face = mFaces[f];
    if (face.prev != kTessNone)
        mFaces[face.prev].next = face.next;
    else
        mFirstFace = face.next;
    if (face.next != kTessNone)
        mFaces[face.next].prev = face.prev;
    else
        mLastFace = face.prev;
    face = {};
    mFreeFaces.push_back(f);
    --mFaceCount;
}

int32_t TessMesh::AddTriangle(int32_t a, int32_t b, int32_t c) {
    int32_t f = NewFace();
    int32_t ab = NewEdge(a, f), bc = NewEdge(b, f), ca = NewEdge(c, f);
    Link(ab, bc);
    Link(bc, ca);
    Link(ca, ab);
    mFaces[f].edge = ab;
    mVertices[a].edge = ab;
    mVertices[b].edge = bc;
    mVertices[c].edge = ca;
    mVertices[a].degree = mVertices[b].degree = mVertices[c].degree = 2;
    return f;
}

int TessMesh::FaceSize(int32_t face) const {
    int size = 0;
    int32_t e = mFaces[face].edge;
    do {
        ++size;
        e = mEdges[e].next;
    } while (e != mFaces[face].edge);
    return size;
}

// Calls visit(e) for each edge that starts at v, turning counter-clockwise
// from v's edge and, if that meets a border, clockwise from it too, until
// visit returns true; the result is that edge or kTessNone. The map from an
// edge to the twin of its prev is one to one, so the first walk comes back
// to the start or ends at a border.
template <typename Visit>
int32_t TessMesh::FindAround(int32_t v, Visit visit) const {
    const int32_t start = mVertices[v].edge;
    if (start == kTessNone) return kTessNone;
    for (int32_t e = start;;) {
        if (visit(e)) return e;
        e = mEdges[mEdges[e].prev].twin;
        if (e == start) return kTessNone;
        if (e == kTessNone) break;
    }
    for (int32_t e = start;;) {
        const int32_t twin = mEdges[e].twin;
        if (twin == kTessNone) return kTessNone;
        e = mEdges[twin].next;
        if (e == start) return kTessNone;
        if (visit(e)) return e;
    }
}

int32_t TessMesh::FindBetween(int32_t a, int32_t b, bool eitherWay) const {
    // An edge that ends at a vertex is the prev of one that starts there, so
    // the edges around either end show all edges between the two.
    const bool aroundA = mVertices[a].degree <= mVertices[b].degree;
    const int32_t from = aroundA ? a : b, to = aroundA ? b : a;
    int32_t found = kTessNone;
    FindAround(from, [&](int32_t e) {
        const int32_t in = mEdges[e].prev;
        if (aroundA || eitherWay) {
            if (Target(e) == to) found = e;
        }
        if (found == kTessNone && (!aroundA || eitherWay)) {
            if (mEdges[in].source == to) found = in;
        }
        return found != kTessNone;
    });
    return found;
}

int32_t TessMesh::SplitFace(int32_t face, double x, double y) {
    const int32_t p = AddVertex(x, y);
    mScratch.clear();
    int32_t e = mFaces[face].edge;
    do {
        mScratch.push_back(e);
        e = mEdges[e].next;
    } while (e != mFaces[face].edge);

    const size_t size = mScratch.size();
    int32_t firstOut = kTessNone, lastIn = kTessNone;
    for (size_t i = 0; i < size; ++i) {
        const int32_t side = mScratch[i];
        const int32_t f = i == 0 ? face : NewFace();
        const int32_t in = NewEdge(mEdges[mScratch[(i + 1) % size]].source, f);
        const int32_t out = NewEdge(p, f);
        Link(side, in);
        Link(in, out);
        Link(out, side);
        mEdges[side].face = f;
        mFaces[f].edge = side;
        ++mVertices[mEdges[side].source].degree;
        if (i == 0)
            firstOut = out;
        else
            Pair(lastIn, out);
        lastIn = in;
    }
    Pair(lastIn, firstOut);
    mVertices[p].edge = firstOut;
    mVertices[p].degree = static_cast<int32_t>(size);
    return p;
}

bool TessMesh::SwapEdge(int32_t e) {
    const int32_t t = mEdges[e].twin;
    return t != kTessNone && !Joined(mEdges[mEdges[e].prev].source, mEdges[mEdges[t].prev].source) && FlipEdge(e);
}

bool TessMesh::FlipEdge(int32_t e) {
    const int32_t t = mEdges[e].twin;
    if (t == kTessNone) return false;
    const int32_t en = mEdges[e].next, ep = mEdges[e].prev;
    const int32_t tn = mEdges[t].next, tp = mEdges[t].prev;
    if (mEdges[en].next != ep || mEdges[tn].next != tp) return false;
    const int32_t a = mEdges[e].source, b = mEdges[t].source;
    const int32_t c = mEdges[ep].source, d = mEdges[tp].source;
    const int32_t f1 = mEdges[e].face, f2 = mEdges[t].face;
    mEdges[e].source = d;
    mEdges[t].source = c;
    Link(e, ep);
    Link(ep, tn);
    Link(tn, e);
    Link(t, tp);
    Link(tp, en);
    Link(en, t);
    mEdges[tn].face = f1;
    mEdges[en].face = f2;
    mFaces[f1].edge = e;
    mFaces[f2].edge = t;
    if (mVertices[a].edge == e) mVertices[a].edge = tn;
    if (mVertices[b].edge == t) mVertices[b].edge = en;
    --mVertices[a].degree;
    --mVertices[b].degree;
    ++mVertices[c].degree;
    ++mVertices[d].degree;
    return true;
}

bool TessMesh::RemoveEdge(int32_t e) {
    const int32_t t = mEdges[e].twin;
    if (t == kTessNone) return false;
    const int32_t f1 = mEdges[e].face, f2 = mEdges[t].face;
    if (f1 == f2) return false;
    for (int32_t x = mEdges[t].next; x != t; x = mEdges[x].next) mEdges[x].face = f1;
    const int32_t en = mEdges[e].next, ep = mEdges[e].prev;
    const int32_t tn = mEdges[t].next, tp = mEdges[t].prev;
    Link(ep, tn);
    Link(tp, en);
    if (mFaces[f1].edge == e) mFaces[f1].edge = en;
    const int32_t a = mEdges[e].source, b = mEdges[t].source;
    if (mVertices[a].edge == e) mVertices[a].edge = tn;
    if (mVertices[b].edge == t) mVertices[b].edge = en;
    --mVertices[a].degree;
    --mVertices[b].degree;
    FreeFace(f2);
    FreeEdge(e);
    FreeEdge(t);
    return true;
}

int32_t TessMesh::SplitFaceByDiagonal(int32_t face, int32_t a, int32_t b) {
    int32_t fromA = kTessNone, fromB = kTessNone;
    int32_t e = mFaces[face].edge;
    do {
        if (mEdges[e].source == a && fromA == kTessNone) fromA = e;
        if (mEdges[e].source == b && fromB == kTessNone) fromB = e;
        e = mEdges[e].next;
    } while (e != mFaces[face].edge);
    if (a == b || fromA == kTessNone || fromB == kTessNone) return kTessNone;
    return SplitFaceBetween(fromA, fromB);
}

int32_t TessMesh::SplitFaceBetween(int32_t fromA, int32_t fromB) {
    const int32_t face = mEdges[fromA].face;
    if (fromA == fromB || mEdges[fromB].face != face || mEdges[fromA].next == fromB || mEdges[fromB].next == fromA)
        return kTessNone;
    const int32_t a = mEdges[fromA].source, b = mEdges[fromB].source;
    const int32_t intoA = mEdges[fromA].prev, intoB = mEdges[fromB].prev;
    // The part from b round to a takes the edge from a to b, the other its
    // twin. The smaller part moves to the new face, so that a face split
    // again and again near one end costs little each time.
    bool bPartSmaller = false;
    for (int32_t x = fromA, y = fromB; x != intoB; x = mEdges[x].next, y = mEdges[y].next) {
        if (y == intoA) {
            bPartSmaller = true;
            break;
        }
    }
    const int32_t f = NewFace();
    const int32_t d = NewEdge(a, bPartSmaller ? f : face), dt = NewEdge(b, bPartSmaller ? face : f);
    Link(intoA, d);
    Link(d, fromB);
    Link(intoB, dt);
    Link(dt, fromA);
    Pair(d, dt);
    const int32_t moved = bPartSmaller ? d : dt;
    for (int32_t x = mEdges[moved].next; x != moved; x = mEdges[x].next) mEdges[x].face = f;
    mFaces[f].edge = moved;
    if (mEdges[mFaces[face].edge].face != face) mFaces[face].edge = mEdges[moved].twin;
    ++mVertices[a].degree;
    ++mVertices[b].degree;
    return d;
}

void TessMesh::RemoveFace(int32_t face) {
    mScratch.clear();
    int32_t e = mFaces[face].edge;
    do {
        mScratch.push_back(e);
        e = mEdges[e].next;
    } while (e != mFaces[face].edge);

    // Vertices first, while the twins still lead out of the face.
    for (int32_t x : mScratch) {
        TessVertex& v = mVertices[mEdges[x].source];
        if (v.edge != x) continue;
        v.edge = mEdges[mEdges[x].prev].twin;
        if (v.edge == kTessNone && mEdges[x].twin != kTessNone) v.edge = mEdges[mEdges[x].twin].next;
    }
    for (int32_t x : mScratch) {
        if (mEdges[x].twin != kTessNone) {
            mEdges[mEdges[x].twin].twin = kTessNone;
        } else {
            --mVertices[mEdges[x].source].degree;
            --mVertices[Target(x)].degree;
        }
    }
    for (int32_t x : mScratch) FreeEdge(x);
    FreeFace(face);
}
