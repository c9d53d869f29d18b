#include "vector/GR_PathHit.h"

namespace {

// Whether a is reached before b turning counter-clockwise from reference.
bool ReachedBefore(const GR_Point2d& reference, const GR_Point2d& a, const GR_Point2d& b) {
    const auto half = [&](const GR_Point2d& v) {
        const double c = GR_Cross(reference, v);
        return (c > 0.0 || (c == 0.0 && GR_Dot(reference, v) > 0.0)) ? 0 : 1;
    };
    const int ha = half(a), hb = half(b);
    if (ha != hb)
        return ha < hb;
    return GR_Cross(a, b) > 0.0;
}

bool LeavesFirstPath(uint32_t branch) {
    return branch != GR_PathHit::kFirstIn && branch != GR_PathHit::kFirstOut &&
           branch != GR_PathHit::kNoBranch;
}

} // namespace

GR_Point2d GR_PathHit::BranchDirection(uint32_t branch) const {
    switch (branch) {
    case kFirstIn:
        return firstTangentIn;
    case kFirstOut:
        return firstTangentOut;
    case kSecondIn:
        return secondTangentIn;
    case kSecondOut:
        return secondTangentOut;
    case kBridge:
        return bridge;
    default:
        return {};
    }
}

void GR_PathHit::BuildRing() {
    static const uint32_t kCrossing[] = {kSecondOut, kSecondIn, kFirstOut, kFirstIn};
    static const uint32_t kNear[] = {kBridge, kFirstOut, kFirstIn};
    const uint32_t* order = distance == 0.0 ? kCrossing : kNear;
    const uint32_t count = distance == 0.0 ? 4 : 3;
    ringCount = 0;
    for (uint32_t e = 0; e < count; ++e) {
        const GR_Point2d direction = BranchDirection(order[e]);
        if (direction.x == 0.0 && direction.y == 0.0)
            continue;
        uint32_t position = 0;
        for (uint32_t i = 0; i < ringCount; ++i)
            if (GR_DirectionBefore(BranchDirection(ring[i].branch), direction))
                position = i + 1;
        for (uint32_t i = ringCount; i > position; --i)
            ring[i] = ring[i - 1];
        ring[position] = Branch{order[e], 0};
        ++ringCount;
    }
    ringBuilt = true;
}

uint32_t GR_PathHit::BranchAfter(uint32_t branch) {
    if (!ringBuilt)
        BuildRing();
    for (uint32_t i = 0; i < ringCount; ++i)
        if (ring[i].branch == branch)
            return ring[(i + 1) % ringCount].branch;
    return kNoBranch;
}

bool GR_PathHit::IsBefore(GR_PathHit& best) {
    if (firstParameter != best.firstParameter)
        return firstParameter < best.firstParameter;
    const uint32_t mine = BranchAfter(kFirstIn);
    if (!LeavesFirstPath(mine))
        return false;
    const uint32_t theirs = best.BranchAfter(kFirstIn);
    if (!LeavesFirstPath(theirs))
        return true;
    return ReachedBefore(firstTangentIn, BranchDirection(mine), best.BranchDirection(theirs));
}

bool GR_PathHit::IsAfter(GR_PathHit& best) {
    if (firstParameter != best.firstParameter)
        return firstParameter > best.firstParameter;
    const uint32_t mine = BranchAfter(kFirstIn);
    if (!LeavesFirstPath(mine))
        return false;
    const uint32_t theirs = best.BranchAfter(kFirstIn);
    if (!LeavesFirstPath(theirs))
        return true;
    return ReachedBefore(firstTangentIn, best.BranchDirection(theirs), BranchDirection(mine));
}
