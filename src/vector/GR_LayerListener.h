#pragma once

#include "vector/GR_Listener.h"

// Follows the path of one layer through the changes of its drawing's tree.
class GR_LayerListener : public GR_Listener {
public:
    explicit GR_LayerListener(GR_LayerPath path) : path_(std::move(path)) {}

    void LayerChanged(GR_VectorDrawingObj& drawing, UT_Node* node, const GR_LayerChange& change) override;

    const GR_LayerPath& Path() const { return path_; }
    // False once the layer was removed.
    bool IsValid() const { return valid_; }

private:
    GR_LayerPath path_;
    bool valid_ = true;
};
