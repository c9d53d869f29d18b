#pragma once

#include "vector/GR_Box2d.h"
#include "vector/GR_Color.h"
#include "vector/GR_Component.h"
#include "vector/GR_StrokeEnd.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// One boundary cycle of a layer's planar map: the half-edges met by the walk
// h := Twin(Next(h)) from the first one, all with the zone on their left. A zone is the
// outer zone of its component exactly when the component says so; every other zone is a
// bounded region, what the user sees as a zone.
class GR_Zone {
public:
    // The colour is the left colour of the first half-edge; after a commit every half-edge
    // of the zone carries it.
    const GR_ColorRef& Color() const { return first.LeftColor(); }
    bool IsOuter() const;

    // Calls f(half-edge) for each half-edge of the cycle, from the first.
    template <class F> void ForEachHalfEdge(F f) const {
        GR_StrokeEnd h = first;
        do {
            f(h);
            h = h.NextInZone();
        } while (h != first);
    }
    size_t HalfEdgeCount() const;

    // Box of the control points of its strokes, and of their knot points.
    GR_Box2d box;
    GR_Box2d knotBox;
    GR_StrokeEnd first;
    GR_Component* component = nullptr;
    // The components nested directly inside this zone; not owned.
    std::vector<GR_Component*> children;
    // Position in the layer's vector of zones.
    uint32_t index = 0;
};

inline bool GR_Zone::IsOuter() const {
    return component && component->outer == this;
}

inline size_t GR_Zone::HalfEdgeCount() const {
    size_t count = 0;
    ForEachHalfEdge([&](const GR_StrokeEnd&) { ++count; });
    return count;
}
