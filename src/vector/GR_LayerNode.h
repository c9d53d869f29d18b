#pragma once

#include "core/UT_Node.h"
#include "vector/GR_Layer.h"

#include <memory>

// A node of a drawing's layer tree that holds a layer. A node without one is a group.
class GR_LayerNode : public UT_Node {
public:
    explicit GR_LayerNode(std::unique_ptr<GR_Layer> layer);
    ~GR_LayerNode() override;

    GR_Layer* GetLayer() const { return layer_.get(); }

private:
    std::unique_ptr<GR_Layer> layer_;
};

// The layer of a node, or nullptr for a group.
inline GR_Layer* GR_LayerOf(const UT_Node* node) {
    const auto* layerNode = dynamic_cast<const GR_LayerNode*>(node);
    return layerNode ? layerNode->GetLayer() : nullptr;
}
