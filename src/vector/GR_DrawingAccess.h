#pragma once

#include "vector/GR_Color.h"
#include "vector/GR_LayerChange.h"
#include "vector/GR_LineStyle.h"
#include "vector/GR_SharedPath.h"
#include "vector/GR_SpatialIndex.h"
#include "vector/GR_StrokeDesc.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

class CM_PaletteList;
class GR_Layer;
class GR_LayerNode;
class GR_Listener;
class GR_VectorDrawingObj;
class GR_VectorStroke;
class GR_Zone;
class UT_Node;

// The transaction through which every change of a drawing's planar maps passes. A tool
// keeps one per context and aims it with SetDrawing; then BeginEdit, edit operations, and
// Commit, which applies the pending strokes, cuts them against the strokes of their layers
// until nothing is left to cut, recolours the zones, cleans the layers and removes layers
// left empty. Listeners hear of every change of a layer, in time to copy it first.
class GR_DrawingAccess {
public:
    // How a commit recolours the zones of a changed layer.
    enum Mode : uint32_t {
        // Colours flow from the strokes crossed on the way in; the topmost layer's colour wins.
        kKeepZones = 1,
        // The same, with the colour of the highest count in the topmost layer, if positive.
        kKeepZonesByCount = 3,
        // Each zone takes the colour that its longest stretch of boundary carries.
        kLongestBoundary = 4,
        kLongestBoundaryAgain = 5,
    };
    // The state of a stroke in the pending map.
    enum State : uint8_t { kNone = 0, kAdded = 1, kMoved = 2, kRemoved = 3, kAddedRemoved = 4 };

    // Colour ids resolve through the palettes; without them every id counts as a plain colour.
    explicit GR_DrawingAccess(CM_PaletteList* palettes = nullptr);
    GR_DrawingAccess(const GR_DrawingAccess&) = delete;
    GR_DrawingAccess& operator=(const GR_DrawingAccess&) = delete;
    // An open transaction is committed.
    ~GR_DrawingAccess();

    // Aims the access at a drawing. A drawing in an older form is rebuilt here: every stroke
    // is replaced by an equal one and the whole is committed, which remakes every crossing,
    // vertex and zone from the stored paths.
    void SetDrawing(GR_VectorDrawingObj* drawing);
    GR_VectorDrawingObj* GetDrawing() const { return drawing_; }
    void SetPalettes(CM_PaletteList* palettes) { palettes_ = palettes; }
    CM_PaletteList* GetPalettes() const { return palettes_; }
    void AddListener(GR_Listener* listener);
    void RemoveListener(GR_Listener* listener);

    // Starts a transaction: clears the pending strokes and the touched layers, and brings the
    // index up to date. An unknown mode counts as kKeepZones.
    void BeginEdit(uint32_t mode = kKeepZones);
    bool IsEditing() const { return editing_; }
    uint32_t GetMode() const { return mode_; }
    void Commit();

    // Stroke edits. A stroke added in a transaction is in no layer until Commit; its target
    // layer and style may be read meanwhile.
    GR_VectorStroke* AddStroke(const GR_StrokeDesc& desc, GR_Layer* layer);
    // A transaction of its own: a new layer of the kind right after the given node, or last
    // under the root, with all the strokes. The layer, or nullptr if nothing of it was left.
    GR_Layer* AddStrokes(const std::vector<GR_StrokeDesc>& descs, uint16_t kind,
                         const UT_Node* after = nullptr);
    GR_VectorStroke* CopyStrokeTo(GR_VectorStroke* stroke, GR_Layer* layer);
    void MoveStroke(GR_VectorStroke* stroke, GR_Layer* layer);
    void RemoveStroke(GR_VectorStroke* stroke);
    void SetStrokeStyle(GR_VectorStroke* stroke, const GR_LineStyle& style);
    void SetStrokeColor(GR_VectorStroke* stroke, int side, GR_ColorRef colour);
    // The left colour of every half-edge of the zone and of the outer zones of its nested
    // components.
    void SetZoneColor(GR_Zone* zone, GR_ColorRef colour);

    // Tree edits, each announced at once.
    GR_Layer* AddLayer(uint16_t kind, const GR_LayerPath& path);
    bool RemoveLayer(const GR_LayerPath& path);
    bool MoveLayer(const GR_LayerPath& from, const GR_LayerPath& to);
    // The descriptions go to a new layer, and copies of the new strokes to every other layer
    // whose bounds meet their common box, so that each of them is cut. The new layer.
    GR_Layer* CutWithStrokes(const std::vector<GR_StrokeDesc>& descs);
    void RemoveAllStrokes(GR_Layer* layer);
    void RemoveAllLayers();
    void MoveAllStrokes(GR_Layer* from, GR_Layer* to);
    // Copies every child of the other drawing's root, with its subtree, behind the last
    // child of this root: groups as groups, layers as new layers with copies of the strokes.
    void AppendDrawing(const GR_VectorDrawingObj& other);

    // Queries, through the index.
    // The nearest stroke no further than the radius, with its path parameter.
    GR_VectorStroke* PickStroke(const GR_Point2d& point, double radius, double* parameter = nullptr);
    // Strokes with an end point inside the polygon, and strokes whose path crosses it.
    void StrokesInLasso(const std::vector<GR_Point2d>& polygon, GR_StrokeSet& out);
    // The line the user drew: from the stroke along its vertices, through every end whose
    // end flag is 0, to every stroke of the ring with an equal style.
    void CollectLogicalStroke(GR_VectorStroke* stroke, GR_StrokeSet& out);

    State StateOf(const GR_VectorStroke* stroke) const;
    const GR_SpatialIndex& Index() const { return index_; }
    // The number of rounds of apply, intersect and split of the last commit.
    size_t LastCommitRounds() const { return lastRounds_; }

private:
    struct SplitRecord {
        GR_Point2f point;
        bool cut = false;
    };
    using PendingMap = std::map<GR_VectorStroke*, uint8_t, GR_SerialLess>;
    // Per path (keyed by its first stroke), the split parameters in order.
    using SplitMap = std::map<GR_VectorStroke*, std::map<double, SplitRecord>, GR_SerialLess>;
    struct LayerLess {
        bool operator()(const GR_Layer* a, const GR_Layer* b) const;
    };

    void EnsureEditing();
    // A tree edit: a new stamp, keeping the index valid when it was.
    void TreeChanged();
    void Touch(GR_Layer* layer);
    void Announce(UT_Node* node, const GR_LayerChange& change);
    void Rebuild();
    void RefreshIndex();

    // The steps of a commit.
    void Apply();
    void Intersect(SplitMap& splits);
    void AddSplits(GR_VectorStroke* pathStroke, const GR_BezierPath2d& path, double parameter,
                   const GR_Point2f& point, bool cut, SplitMap& splits);
    void Split(const SplitMap& splits);
    void RemoveEmptyLayers();

    // Taking a node out of the tree with what depends on its layers: pending strokes,
    // touched layers and index entries. Announced; groups left empty go too.
    void RemoveNode(UT_Node* node);
    void ForgetLayer(GR_Layer* layer);
    void PruneGroup(UT_Node* parent);

    GR_VectorDrawingObj* drawing_ = nullptr;
    CM_PaletteList* palettes_;
    GR_SpatialIndex index_;
    uint64_t stamp_ = 0;
    std::vector<GR_Listener*> listeners_;
    uint32_t mode_ = kKeepZones;
    bool editing_ = false;
    PendingMap pending_;
    std::map<GR_Layer*, bool, LayerLess> touched_;
    size_t lastRounds_ = 0;
};
