#include "vector/GR_LayerChange.h"

#include "vector/GR_ChangeListener.h"
#include "vector/GR_LayerListener.h"

#include <algorithm>

namespace {

bool IsPrefix(const GR_LayerPath& prefix, const GR_LayerPath& path) {
    return prefix.size() <= path.size() && std::equal(prefix.begin(), prefix.end(), path.begin());
}

// Siblings at and after an inserted node's place move one on.
void Inserted(const GR_LayerPath& at, GR_LayerPath& path) {
    if (at.empty() || path.size() < at.size())
        return;
    const size_t depth = at.size() - 1;
    if (std::equal(at.begin(), at.begin() + depth, path.begin()) && path[depth] >= at[depth])
        ++path[depth];
}

// A removed node takes its subtree with it; later siblings move one back.
bool Removed(const GR_LayerPath& at, GR_LayerPath& path) {
    if (at.empty())
        return true;
    if (IsPrefix(at, path))
        return false;
    const size_t depth = at.size() - 1;
    if (path.size() > depth && std::equal(at.begin(), at.begin() + depth, path.begin()) &&
        path[depth] > at[depth])
        --path[depth];
    return true;
}

} // namespace

bool GR_CarryPath(const GR_LayerChange& change, GR_LayerPath& path) {
    switch (change.kind) {
    case GR_ChangeKind::kAdded:
        Inserted(change.path, path);
        return true;
    case GR_ChangeKind::kRemoved:
        return Removed(change.path, path);
    case GR_ChangeKind::kMoved: {
        const GR_LayerPath& to = change.path;
        const GR_LayerPath& from = change.second;
        if (IsPrefix(from, path)) {
            GR_LayerPath moved = to;
            moved.insert(moved.end(), path.begin() + static_cast<long>(from.size()), path.end());
            path = std::move(moved);
            return true;
        }
        Removed(from, path);
        Inserted(to, path);
        return true;
    }
    case GR_ChangeKind::kChanged:
        return true;
    }
    return true;
}

void GR_ChangeListener::LayerChanged(GR_VectorDrawingObj&, UT_Node*, const GR_LayerChange& change) {
    if (change.kind != GR_ChangeKind::kChanged)
        changes_.push_back(change);
}

bool GR_ChangeListener::Replay(GR_LayerPath& path) const {
    for (const GR_LayerChange& change : changes_)
        if (!GR_CarryPath(change, path))
            return false;
    return true;
}

void GR_LayerListener::LayerChanged(GR_VectorDrawingObj&, UT_Node*, const GR_LayerChange& change) {
    if (valid_ && !GR_CarryPath(change, path_))
        valid_ = false;
}
