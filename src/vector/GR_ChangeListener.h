#pragma once

#include "vector/GR_Listener.h"

#include <vector>

// Records the changes of the tree (all but plain changes of a layer's strokes), so that a
// holder of layer paths, such as a selection, can carry its paths through them afterwards.
class GR_ChangeListener : public GR_Listener {
public:
    void LayerChanged(GR_VectorDrawingObj& drawing, UT_Node* node, const GR_LayerChange& change) override;

    const std::vector<GR_LayerChange>& Changes() const { return changes_; }
    void Clear() { changes_.clear(); }
    // Carries a path through the recorded changes in order; false when it vanished.
    bool Replay(GR_LayerPath& path) const;

private:
    std::vector<GR_LayerChange> changes_;
};
