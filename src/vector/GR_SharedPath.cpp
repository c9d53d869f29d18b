#include "vector/GR_SharedPath.h"

#include "vector/GR_VectorStroke.h"

#include <cmath>

bool GR_SerialLess::operator()(const GR_VectorStroke* a, const GR_VectorStroke* b) const {
    return a->Serial() < b->Serial();
}

GR_SharedPath::GR_SharedPath(GR_BezierPath2d path) : path_(std::move(path)) {
    ComputeBounds();
}

void GR_SharedPath::Read(DB_Archive& archive) {
    path_.Read(archive);
    ComputeBounds();
}

void GR_SharedPath::Write(DB_Archive& archive) {
    path_.Write(archive);
}

void GR_SharedPath::ComputeBounds() {
    bounds_ = path_.Bounds();
    length_ = path_.PolygonLength();
    knotBounds_ = GR_Box2d();
    for (size_t k = 0; k < path_.KnotCount(); ++k)
        knotBounds_.Add(path_.Point(path_.KnotPoint(k)));
}

bool GR_PathLess(const GR_BezierPath2d& a, const GR_BezierPath2d& b) {
    if (a.points.size() != b.points.size())
        return a.points.size() < b.points.size();
    const size_t knots = a.KnotCount();
    if (knots != b.KnotCount())
        return knots < b.KnotCount();
    for (size_t i = 0; i < a.points.size(); ++i) {
        const GR_Point2f& p = a.points[i];
        const GR_Point2f& q = b.points[i];
        if (p.x != q.x)
            return p.x < q.x;
        if (p.y != q.y)
            return p.y < q.y;
    }
    for (size_t k = 0; k < knots; ++k) {
        const size_t i = a.KnotPoint(k), j = b.KnotPoint(k);
        if (i != j)
            return i < j;
    }
    return false;
}

GR_BezierPath2d GR_SharedPathSet::NormalForm(const GR_BezierPath2d& path) {
    GR_BezierPath2d normal(path);
    normal.SnapAllPoints();
    normal.CleanUp();
    normal.CompressKnots();
    return normal;
}

bool GR_SharedPathSet::IsUsable(const GR_BezierPath2d& path) {
    // Written so that a NaN fails too.
    for (const GR_Point2f& p : path.points)
        if (!(std::abs(p.x) <= kMaxCoordinate) || !(std::abs(p.y) <= kMaxCoordinate))
            return false;
    return true;
}

GR_SharedPath* GR_SharedPathSet::Intern(const GR_BezierPath2d& path) {
    return InternNormal(NormalForm(path));
}

GR_SharedPath* GR_SharedPathSet::InternNormal(GR_BezierPath2d&& normal) {
    auto found = records_.find(normal);
    if (found != records_.end())
        return found->get();
    auto record = std::make_unique<GR_SharedPath>(std::move(normal));
    record->owner_ = this;
    return records_.insert(std::move(record)).first->get();
}

void GR_SharedPathSet::AddUser(GR_SharedPath* record, GR_VectorStroke* stroke) {
    record->strokes_.insert(stroke);
}

void GR_SharedPathSet::RemoveUser(GR_SharedPath* record, GR_VectorStroke* stroke) {
    record->strokes_.erase(stroke);
    if (!record->strokes_.empty())
        return;
    auto found = records_.find(record->Path());
    if (found != records_.end() && found->get() == record)
        records_.erase(found);
}
