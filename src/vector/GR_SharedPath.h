#pragma once

#include "core/CPersistentObjBase.h"
#include "vector/GR_BezierPath2d.h"
#include "vector/GR_Box2d.h"

#include <cstdint>
#include <memory>
#include <set>

class GR_SharedPathSet;
class GR_VectorStroke;

// Orders strokes by their creation serial, which stands in for identity wherever strokes
// are sorted, so that results and files do not depend on where objects happen to live.
struct GR_SerialLess {
    bool operator()(const GR_VectorStroke* a, const GR_VectorStroke* b) const;
};
using GR_StrokeSet = std::set<GR_VectorStroke*, GR_SerialLess>;

// One path and the strokes that use it. Two strokes with equal paths hold the same record,
// whatever their layers: a copy to another layer costs no path data, and a split cuts each
// path once for all its strokes. Persistent only as the path in full, which is how the
// stroke stream carries it the first time; the record itself has no type id.
class GR_SharedPath : public CPersistentObjBase {
public:
    GR_SharedPath() = default;
    explicit GR_SharedPath(GR_BezierPath2d path);
    GR_SharedPath(const GR_SharedPath&) = delete;
    GR_SharedPath& operator=(const GR_SharedPath&) = delete;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    const GR_BezierPath2d& Path() const { return path_; }
    // Box of all control points, and of the knot points only.
    const GR_Box2d& Bounds() const { return bounds_; }
    const GR_Box2d& KnotBounds() const { return knotBounds_; }
    // The length of the control polygon.
    double Length() const { return length_; }
    const GR_StrokeSet& Strokes() const { return strokes_; }
    size_t StrokeCount() const { return strokes_.size(); }
    // The user of lowest serial, or nullptr.
    GR_VectorStroke* FirstStroke() const { return strokes_.empty() ? nullptr : *strokes_.begin(); }
    GR_SharedPathSet* Owner() const { return owner_; }

private:
    friend class GR_SharedPathSet;
    void ComputeBounds();

    GR_BezierPath2d path_;
    GR_Box2d bounds_;
    GR_Box2d knotBounds_;
    double length_ = 0.0;
    GR_StrokeSet strokes_;
    GR_SharedPathSet* owner_ = nullptr;
};

// The order of the set: fewer points first, then fewer knots, then the points by x and y,
// then the knot indices.
bool GR_PathLess(const GR_BezierPath2d& a, const GR_BezierPath2d& b);

// The records of a drawing, keyed by path value. A record goes away with its last stroke.
class GR_SharedPathSet {
public:
    GR_SharedPathSet() = default;
    GR_SharedPathSet(const GR_SharedPathSet&) = delete;
    GR_SharedPathSet& operator=(const GR_SharedPathSet&) = delete;

    // The form in which a path enters a drawing: every coordinate rounded to the grid,
    // degenerate segments removed, the knot list turned into a uniform step where possible.
    static GR_BezierPath2d NormalForm(const GR_BezierPath2d& path);
    // No drawing reaches this far from its origin (the reference width is 5000 units). The
    // cost of cutting a curve grows with its size over the chord rule's 32 units, so a path
    // beyond it is no drawing data at all.
    static constexpr double kMaxCoordinate = 131072.0;
    // True when every coordinate is a number within kMaxCoordinate of the origin.
    static bool IsUsable(const GR_BezierPath2d& path);

    // The record of the path's normal form, made when there is none. The path must be finite.
    GR_SharedPath* Intern(const GR_BezierPath2d& path);
    // The same for a path already in normal form.
    GR_SharedPath* InternNormal(GR_BezierPath2d&& normal);

    // A stroke starts or stops using a record; the record goes with its last stroke.
    void AddUser(GR_SharedPath* record, GR_VectorStroke* stroke);
    void RemoveUser(GR_SharedPath* record, GR_VectorStroke* stroke);

    size_t Size() const { return records_.size(); }
    template <class F> void ForEach(F f) const {
        for (const auto& record : records_)
            f(*record);
    }

private:
    struct Less {
        using is_transparent = void;
        bool operator()(const std::unique_ptr<GR_SharedPath>& a,
                        const std::unique_ptr<GR_SharedPath>& b) const {
            return GR_PathLess(a->Path(), b->Path());
        }
        bool operator()(const GR_BezierPath2d& a, const std::unique_ptr<GR_SharedPath>& b) const {
            return GR_PathLess(a, b->Path());
        }
        bool operator()(const std::unique_ptr<GR_SharedPath>& a, const GR_BezierPath2d& b) const {
            return GR_PathLess(a->Path(), b);
        }
    };
    std::set<std::unique_ptr<GR_SharedPath>, Less> records_;
};
