#pragma once

#include "core/UT_Node.h"
#include "core/UT_UniqueId.h"
#include "vector/GR_DrawingObj.h"
#include "vector/GR_LayerChange.h"
#include "vector/GR_SharedPath.h"
#include "vector/GR_StrokeDesc.h"

#include <cstdint>
#include <memory>
#include <vector>

class GR_Layer;

// A vector drawing (type 202): a tree of groups and layers, each layer a planar map of
// strokes, and the shared records of the strokes' paths. Layers are counted, indexed and
// visited in drawing order, leaf by leaf from left to right; the first is drawn first, at
// the back. Changes that keep the planar map valid go through GR_DrawingAccess.
class GR_VectorDrawingObj : public GR_DrawingObj {
public:
    // What the planar data of a drawing read from a stream is worth.
    enum Rebuild : uint8_t {
        kTrusted = 0,
        // From an older form: rebuilt at the next SetDrawing, keeping zone colours.
        kRebuildKeepZones = 1,
        // The same, with colours taken from the longest boundary of each zone.
        kRebuildLongestBoundary = 2,
    };

    GR_VectorDrawingObj();
    ~GR_VectorDrawingObj() override;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    GR_Box2d GetBounds() override;

    // Removes every node and layer.
    void Clear();
    uint8_t GetRebuild() const { return rebuild_; }
    void SetRebuild(uint8_t rebuild) { rebuild_ = rebuild; }
    GR_SharedPathSet& Paths() { return paths_; }

    // Layers in drawing order.
    GR_Layer* FirstLayer() const;
    GR_Layer* LastLayer() const;
    GR_Layer* NextLayer(const GR_Layer* layer) const;
    GR_Layer* PreviousLayer(const GR_Layer* layer) const;
    size_t LayerCount() const;
    GR_Layer* LayerAt(size_t index) const;
    // The position of a layer in drawing order, or -1.
    long IndexOf(const GR_Layer* layer) const;

    UT_Node* GetRoot() const { return root_.get(); }
    // The node at a path ([0] is the root), or nullptr.
    UT_Node* LayerNodeAt(const GR_LayerPath& path) const;
    GR_LayerPath PathOf(const UT_Node* node) const;
    GR_LayerPath PathOf(const GR_Layer* layer) const;
    // Puts a node in at an insertion path: all elements but the last name the parent, and a
    // last element i puts it right after child i - 1, or first when i is 0. A drawing
    // without a root gets one at the first insertion. False for a path that is not valid;
    // the node is then deleted.
    bool InsertNode(const GR_LayerPath& path, std::unique_ptr<UT_Node> node);
    // Whether InsertNode would take a node at the path.
    bool CanInsert(const GR_LayerPath& path) const;
    // Takes a node out of the tree for the caller. With `detach` its layers move their
    // paths to sets of their own, so that the node can outlive the drawing.
    std::unique_ptr<UT_Node> TakeNode(UT_Node* node, bool detach = true);
    // Deletes a node with its subtree; a group left without children goes with it, and a
    // root left without children is deleted.
    void DeleteNode(UT_Node* node);
    // The nearest ancestor group that would be left without children if this node went,
    // below the root; nullptr when there is none.
    UT_Node* EmptiedGroup(const UT_Node* node) const;

    // One new description per stroke, layer by layer.
    void CopyDescriptions(std::vector<std::unique_ptr<GR_StrokeDesc>>& out) const;
    bool UsesColor(UT_UniqueId id) const;
    // True if, in every layer, every half-edge of every zone has that zone's colour, both
    // in the zone and in its nested outer zones.
    bool CheckZones();

private:
    std::unique_ptr<UT_Node> ReadTree(DB_Archive& archive, int depth);
    void WriteTree(DB_Archive& archive, UT_Node& node);
    void AttachLayers(UT_Node& top);

    // The path records are declared first so that they outlive the layers.
    GR_SharedPathSet paths_;
    std::unique_ptr<UT_Node> root_;
    uint8_t rebuild_ = kTrusted;
};
