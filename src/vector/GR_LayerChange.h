#pragma once

#include <cstdint>
#include <vector>

// The address of a node in a drawing's layer tree: the first element stands for the root
// and is 0, each further element is a child index. A layer's path has at least 2 elements.
using GR_LayerPath = std::vector<uint32_t>;

enum class GR_ChangeKind : uint32_t { kAdded = 0, kRemoved = 1, kChanged = 2, kMoved = 3 };

// What listeners of a transaction receive. A move names the new place first and the old
// place second; every other change names its node's place first.
struct GR_LayerChange {
    GR_ChangeKind kind = GR_ChangeKind::kChanged;
    GR_LayerPath path;
    GR_LayerPath second;
};

// Carries a path through one change of the tree: a later sibling of an added or removed
// node shifts, a moved node takes its subtree along. False when the path's node went away.
bool GR_CarryPath(const GR_LayerChange& change, GR_LayerPath& path);
