#pragma once

#include "core/CPersistentObjBase.h"

#include <cstdint>
#include <vector>

class AS_DopeSheetLevelObj;
class CDopeSheetObj;

// One row of a composition order.
struct AS_CompositionRow {
    uint32_t id = 0xFFFFFFFFu;
    bool shown = false;
    int32_t depth = 0; // 1 for a top row; a child is deeper than its parent
    bool collapsed = false;
    bool enabled = false; // takes part in the scene's drawing and frame range
    bool render = true;   // not persisted
    bool expanded = true; // not persisted
};

// The stacking and parenting of a scene's levels: rows in pre-order with a depth each.
// A level index anywhere in the system is a position among the shown rows.
class AS_CompositionOrder : public CPersistentObjBase {
public:
    // Level mask bits.
    enum : uint32_t {
        kMaskDrawing = 1,
        kMaskCamera = 4,
        kMaskPeg = 8,
        kMaskSound = 16,
        kMaskMedia = 32,
        kMaskEffect = 64,
        kMaskParamGroup = 128,
    };

    // The strategy of a tree change: where the cut subtree goes back and what happens
    // to it on the way.
    class BaseModifChilds {
    public:
        virtual ~BaseModifChilds() = default;
        // The first row for a target of -1; otherwise the target, less the subtree size
        // when the source stood before it.
        virtual int GetInsertPosition(int from, int to, int subtreeSize);
        virtual void Apply(std::vector<AS_CompositionRow>&) {}
    };

    // Walks the rows under a start row (all rows for -1), asking the subclass whether
    // to enter the children of a row and whether to give a row.
    class ChildScannerBase {
    public:
        ChildScannerBase(const AS_CompositionOrder& order, int startRow);
        virtual ~ChildScannerBase() = default;
        virtual bool CanDescend(int row) const = 0;
        virtual bool Accept(int row) const = 0;
        // The next row, or -1 when the walk is over.
        int NextRow();
        void Finish();
        int GetWantedDepth() const { return wantedDepth_; }
        bool IsFinished() const { return finished_; }

    protected:
        const AS_CompositionOrder& order_;

    private:
        friend class AS_CompositionOrder;
        bool finished_ = false;
        int startRow_;
        int currentRow_;
        int wantedDepth_;
    };

    // Does not enter the children of pegs and parameter groups.
    class NoPegRecursionChildScanner : public ChildScannerBase {
    public:
        using ChildScannerBase::ChildScannerBase;
        bool CanDescend(int row) const override;
        bool Accept(int) const override { return true; }
    };

    AS_CompositionOrder(CDopeSheetObj* scene, uint32_t levelMask) : scene_(scene), levelMask_(levelMask) {}

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    ~AS_CompositionOrder() override = default;
    // Adds a row for the level when the mask accepts its class.
    virtual void AddLevel(uint32_t id, bool shown);
    // Makes the subtree of `row` the last child of `newParent` (-1: a top row at the end).
    virtual bool Reparent(int row, int newParent) = 0;
    virtual bool ReparentByShownIndex(int from, int to) = 0;

    void SetScene(CDopeSheetObj* scene) { scene_ = scene; }
    CDopeSheetObj* Scene() const { return scene_; }
    uint32_t LevelMask() const { return levelMask_; }
    bool Accepts(const AS_DopeSheetLevelObj& level) const;
    const std::vector<AS_CompositionRow>& Rows() const { return rows_; }
    // Puts back rows that were taken from this order before (an undo), and rebuilds the
    // shown indices.
    void SetRows(std::vector<AS_CompositionRow> rows);
    const std::vector<int>& ShownIndices() const { return shown_; }

    int GetRowCount() const { return static_cast<int>(rows_.size()); }
    int GetShownCount() const { return static_cast<int>(shown_.size()); }
    AS_DopeSheetLevelObj* GetLevel(int shownIndex) const;
    AS_DopeSheetLevelObj* GetLevelOfRow(int row) const;
    // The level id of a row; -1 when out of range.
    uint32_t GetLevelId(int row) const;
    int FindRow(uint32_t id) const;
    int FindShownIndex(uint32_t id) const;
    int GetShownIndexAtOrAfter(int row) const;
    // The row, or -1, of a shown index.
    int RowOfShownIndex(int shownIndex) const;
    void RemoveLevel(uint32_t id);
    // Without children, the children take the parent's place, one level shallower.
    void RemoveRow(int row, bool withChildren);
    // Moves the subtree of `from` before `to`, or (before false) behind the whole subtree of `to`.
    void Move(int from, int to, bool before);
    void MoveByShownIndex(int from, int to, bool before);
    int GetDepth(int row) const;
    // One past the last row of the subtree of `row`.
    int SubtreeEnd(int row) const;
    void SetShownWithChildren(int row, bool shown);
    // The row alone; its children keep their flags.
    void SetShown(int row, bool shown);
    bool IsShown(int row) const;
    bool IsShownByShownIndex(int shownIndex) const;
    bool IsCollapsed(int row) const;
    void SetCollapsed(int row, bool value);
    bool IsEnabled(int row) const;
    void SetEnabled(int row, bool value);
    bool IsRender(int row) const;
    void SetRender(int row, bool value);
    bool IsExpanded(int row) const;
    void SetExpanded(int row, bool value);
    int GetParent(int row) const;
    int GetParentOfLevel(uint32_t id) const;
    bool IsAncestor(int ancestor, int row) const;
    // Over shown, enabled levels with frames; -1, -1 when there are none.
    void GetFrameRange(int32_t& first, int32_t& last);
    int32_t GetLastFrame() const;
    int NextChild(ChildScannerBase& scanner) const;
    void SetRangeDirty() { rangeDirty_ = true; }
    // The frame range must be computed again before it is used.
    bool IsRangeDirty() const { return rangeDirty_; }

protected:
    bool InRange(int row) const { return row >= 0 && row < GetRowCount(); }
    // Inserts the rows at `position` (clamped to the list) and rebuilds the shown indices.
    void InsertRows(int position, const std::vector<AS_CompositionRow>& rows);
    // Cuts the subtree of `row` out of the list.
    std::vector<AS_CompositionRow> CutSubtree(int row);
    void RebuildShown();

    std::vector<AS_CompositionRow> rows_;

private:
    CDopeSheetObj* scene_;
    std::vector<int> shown_;
    uint32_t levelMask_;
    bool rangeDirty_ = true;
    int32_t firstFrame_ = -1;
    int32_t lastFrame_ = -1;
};

// The order of Drawing mode and the exposure sheet: a flat list of drawings, sound and
// media, new levels at the end.
class AS_DSCompositionOrder : public AS_CompositionOrder {
public:
    explicit AS_DSCompositionOrder(CDopeSheetObj* scene = nullptr) : AS_CompositionOrder(scene, 49) {}
    bool Reparent(int, int) override { return true; }
    bool ReparentByShownIndex(int, int) override { return true; }
};

// The order of Sceneplanning mode and the timeline: the tree of every level, new levels
// on top.
class AS_SPCompositionOrder : public AS_CompositionOrder {
public:
    explicit AS_SPCompositionOrder(CDopeSheetObj* scene = nullptr) : AS_CompositionOrder(scene, 253) {}
    void AddLevel(uint32_t id, bool shown) override;
    bool Reparent(int row, int newParent) override;
    bool ReparentByShownIndex(int from, int to) override;
};
