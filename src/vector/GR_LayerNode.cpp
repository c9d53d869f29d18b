#include "vector/GR_LayerNode.h"

GR_LayerNode::GR_LayerNode(std::unique_ptr<GR_Layer> layer) : layer_(std::move(layer)) {
    if (layer_)
        layer_->node_ = this;
}

GR_LayerNode::~GR_LayerNode() = default;
