#pragma once

#include "vector/GR_LayerChange.h"

class GR_VectorDrawingObj;
class UT_Node;

// Told of every change of a drawing's layers made through a transaction. A removal and the
// first change of a layer in a transaction come before the layer is touched, so that a
// listener can still copy it; an addition and a move come after.
class GR_Listener {
public:
    virtual ~GR_Listener() = default;
    virtual void LayerChanged(GR_VectorDrawingObj& drawing, UT_Node* node, const GR_LayerChange& change) = 0;
};
