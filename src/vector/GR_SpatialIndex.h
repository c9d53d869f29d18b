#pragma once

#include "vector/GR_Box2d.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class GR_BezierPath2d;
class GR_VectorDrawingObj;
class GR_VectorStroke;

// A uniform grid over a drawing's strokes, built over the drawing's bounds with at most 128
// cells a side and cells of at least 64 units. A stroke is entered in every cell that its
// box meets; strokes beyond the grid go to its border cells, so nothing is ever missed.
class GR_SpatialIndex {
public:
    static constexpr uint32_t kMaxCells = 128;
    static constexpr double kMinCellSize = 64.0;

    void Build(const GR_VectorDrawingObj& drawing);
    void Clear();
    void Insert(GR_VectorStroke* stroke);
    void Remove(GR_VectorStroke* stroke);
    size_t Size() const { return size_; }
    // True when the strokes entered since the last build reach well beyond the grid, so that
    // its border cells fill up: time to build it again.
    bool Outgrown() const;

    // The strokes whose box meets the box grown by the radius, by serial.
    void Query(const GR_Box2d& box, double radius, std::vector<GR_VectorStroke*>& out) const;
    void Query(const GR_BezierPath2d& path, double radius, std::vector<GR_VectorStroke*>& out) const;

private:
    struct CellRange {
        uint32_t x0, y0, x1, y1;
    };
    void Setup(const GR_Box2d& bounds);
    CellRange RangeOf(const GR_Box2d& box) const;
    uint32_t Column(double x) const;
    uint32_t Row(double y) const;

    double x0_ = 0.0, y0_ = 0.0, cell_ = kMinCellSize;
    uint32_t columns_ = 0, rows_ = 0;
    std::vector<std::vector<GR_VectorStroke*>> cells_;
    size_t size_ = 0;
    // The union of the boxes of all strokes entered.
    GR_Box2d content_;
};
