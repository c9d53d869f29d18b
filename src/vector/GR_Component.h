#pragma once

#include "vector/GR_Box2d.h"

#include <cstdint>
#include <span>
#include <vector>

class GR_VectorStroke;
class GR_Zone;

// One connected set of strokes with its zones.
class GR_Component {
public:
    // The bounded zones.
    std::vector<GR_Zone*> inner;
    // The outside of the component; not paintable. Null only for a component whose box is
    // empty.
    GR_Zone* outer = nullptr;
    // The zone this component lies in; null for a top component.
    GR_Zone* parent = nullptr;
    // Box of all control points, and of knot points only (used to test nesting).
    GR_Box2d box;
    GR_Box2d knotBox;
    // Its strokes, in the order they were reached.
    std::span<GR_VectorStroke* const> strokes;
    // Position in the layer's vector of components.
    uint32_t index = 0;
};
