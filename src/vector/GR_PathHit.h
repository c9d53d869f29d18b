#pragma once

#include "vector/GR_Point2d.h"

#include <cstdint>

// One meeting of two paths: a true crossing or shared point (distance 0), or a near pass.
struct GR_PathHit {
    // Branch numbers of the ring.
    enum : uint32_t {
        kFirstIn = 0,
        kFirstOut = 1,
        kSecondIn = 2,
        kSecondOut = 3,
        kBridge = 4,
        kNoBranch = ~0u
    };

    struct Branch {
        uint32_t branch = kNoBranch;
        uint8_t seen = 0;
    };

    GR_Point2d firstPoint;
    // Derivative towards the point, negated: it points back along the path.
    GR_Point2d firstTangentIn;
    GR_Point2d firstTangentOut;
    double firstParameter = 0.0;
    GR_Point2d secondPoint;
    GR_Point2d secondTangentIn;
    GR_Point2d secondTangentOut;
    double secondParameter = 0.0;
    // Squared distance of the two points in a near hit; 0 at a crossing.
    double distance = 0.0;
    // In a near hit, the direction from the first point to the second.
    GR_Point2d bridge;
    uint32_t ringCount = 0;
    Branch ring[4];
    bool ringBuilt = false;

    // Direction of a branch.
    GR_Point2d BranchDirection(uint32_t branch) const;
    // Builds the ring in counter-clockwise order; zero tangents are left out. A crossing
    // enters branches 3, 2, 1, 0, a near hit 4, 1, 0; an entry goes after the last one that
    // comes before it.
    void BuildRing();
    // The branch that follows the given one in the ring; kNoBranch when it is not there.
    uint32_t BranchAfter(uint32_t branch);
    // Whether this hit is walked before `best` when looking forward along the first path.
    // A hit whose next branch after 0 stays on the first path is refused at an equal
    // parameter; between two that leave it, the one reached first counter-clockwise from
    // the first tangent wins.
    bool IsBefore(GR_PathHit& best);
    // The mirror for walking backward: a larger parameter comes first.
    bool IsAfter(GR_PathHit& best);
};
