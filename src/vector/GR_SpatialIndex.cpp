#include "vector/GR_SpatialIndex.h"

#include "vector/GR_Layer.h"
#include "vector/GR_SharedPath.h"
#include "vector/GR_VectorDrawingObj.h"
#include "vector/GR_VectorStroke.h"

#include <algorithm>
#include <cmath>

void GR_SpatialIndex::Clear() {
    cells_.clear();
    columns_ = rows_ = 0;
    size_ = 0;
    content_ = GR_Box2d();
}

bool GR_SpatialIndex::Outgrown() const {
    if (content_.empty || cells_.empty())
        return false;
    const double width = columns_ * cell_, height = rows_ * cell_;
    return content_.xmin < x0_ - width / 4 || content_.ymin < y0_ - height / 4 ||
           content_.xmax > x0_ + width * 1.25 || content_.ymax > y0_ + height * 1.25;
}

void GR_SpatialIndex::Setup(const GR_Box2d& bounds) {
    cells_.clear();
    size_ = 0;
    content_ = GR_Box2d();
    if (bounds.empty || !std::isfinite(bounds.xmin) || !std::isfinite(bounds.xmax) ||
        !std::isfinite(bounds.ymin) || !std::isfinite(bounds.ymax)) {
        x0_ = y0_ = 0.0;
        cell_ = kMinCellSize;
        columns_ = rows_ = 1;
    } else {
        const double width = bounds.xmax - bounds.xmin, height = bounds.ymax - bounds.ymin;
        cell_ = std::max(kMinCellSize, std::max(width, height) / kMaxCells);
        x0_ = bounds.xmin;
        y0_ = bounds.ymin;
        columns_ = std::clamp(static_cast<uint32_t>(std::floor(width / cell_)) + 1, 1u, kMaxCells);
        rows_ = std::clamp(static_cast<uint32_t>(std::floor(height / cell_)) + 1, 1u, kMaxCells);
    }
    cells_.resize(size_t(columns_) * rows_);
}

void GR_SpatialIndex::Build(const GR_VectorDrawingObj& drawing) {
    GR_Box2d bounds;
    for (GR_Layer* layer = drawing.FirstLayer(); layer; layer = drawing.NextLayer(layer))
        bounds.Merge(layer->Bounds());
    Setup(bounds);
    for (GR_Layer* layer = drawing.FirstLayer(); layer; layer = drawing.NextLayer(layer))
        for (GR_VectorStroke* s = layer->FirstStroke(); s; s = s->next)
            Insert(s);
}

uint32_t GR_SpatialIndex::Column(double x) const {
    const double c = std::floor((x - x0_) / cell_);
    if (!(c > 0.0))
        return 0;
    return c >= columns_ - 1 ? columns_ - 1 : static_cast<uint32_t>(c);
}

uint32_t GR_SpatialIndex::Row(double y) const {
    const double r = std::floor((y - y0_) / cell_);
    if (!(r > 0.0))
        return 0;
    return r >= rows_ - 1 ? rows_ - 1 : static_cast<uint32_t>(r);
}

GR_SpatialIndex::CellRange GR_SpatialIndex::RangeOf(const GR_Box2d& box) const {
    return {Column(box.xmin), Row(box.ymin), Column(box.xmax), Row(box.ymax)};
}

void GR_SpatialIndex::Insert(GR_VectorStroke* stroke) {
    if (cells_.empty())
        Setup(GR_Box2d());
    const GR_Box2d& box = stroke->SharedPath()->Bounds();
    if (box.empty)
        return;
    const CellRange r = RangeOf(box);
    for (uint32_t y = r.y0; y <= r.y1; ++y)
        for (uint32_t x = r.x0; x <= r.x1; ++x)
            cells_[size_t(y) * columns_ + x].push_back(stroke);
    ++size_;
    content_.Merge(box);
}

void GR_SpatialIndex::Remove(GR_VectorStroke* stroke) {
    const GR_Box2d& box = stroke->SharedPath()->Bounds();
    if (cells_.empty() || box.empty)
        return;
    const CellRange r = RangeOf(box);
    bool found = false;
    for (uint32_t y = r.y0; y <= r.y1; ++y)
        for (uint32_t x = r.x0; x <= r.x1; ++x) {
            std::vector<GR_VectorStroke*>& cell = cells_[size_t(y) * columns_ + x];
            auto it = std::find(cell.begin(), cell.end(), stroke);
            if (it != cell.end()) {
                *it = cell.back();
                cell.pop_back();
                found = true;
            }
        }
    if (found)
        --size_;
}

void GR_SpatialIndex::Query(const GR_Box2d& box, double radius, std::vector<GR_VectorStroke*>& out) const {
    out.clear();
    if (cells_.empty() || box.empty)
        return;
    GR_Box2d grown = box;
    grown.closedXmin = grown.closedYmin = grown.closedXmax = grown.closedYmax = 1;
    if (radius > 0.0)
        grown.Grow(radius);
    const CellRange r = RangeOf(grown);
    const uint64_t mark = GR_VectorStroke::NewMark();
    for (uint32_t y = r.y0; y <= r.y1; ++y)
        for (uint32_t x = r.x0; x <= r.x1; ++x)
            for (GR_VectorStroke* s : cells_[size_t(y) * columns_ + x]) {
                if (s->mark == mark)
                    continue;
                s->mark = mark;
                if (s->SharedPath()->Bounds().Overlaps(grown))
                    out.push_back(s);
            }
    std::sort(out.begin(), out.end(), GR_SerialLess());
}

void GR_SpatialIndex::Query(const GR_BezierPath2d& path, double radius,
                            std::vector<GR_VectorStroke*>& out) const {
    Query(path.Bounds(), radius, out);
}
