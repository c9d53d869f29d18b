#include "vector/GR_BezierPath2d.h"

#include "core/DB_Archive.h"
#include "core/DB_Exception.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace {

// Splitting stops at this depth even when the chord rule still asks for it: only pieces
// about 2^48 times the chord rule size (far beyond any drawing) ever get there, and it keeps
// huge or non-finite coordinates from recursing without end.
constexpr int kMaxSplitDepth = 48;

GR_Point2f ToFloat(const GR_Point2d& p) {
    return {static_cast<float>(p.x), static_cast<float>(p.y)};
}

// What the pair recursion found between two chords. Parameters are those of the chords, in
// 0 to 1; `conditions` counts which of 0 < u, u < 1, 0 < v, v < 1 hold.
struct ChordSolution {
    int count = 0;
    double u[2] = {0.0, 0.0};
    double v[2] = {0.0, 0.0};
    GR_Point2d point[2];
    bool atEnd[2] = {false, false};
    int conditions[2] = {0, 0};
    // Sign of the cross product of the directions; 0 for parallel chords.
    int sign = 0;
};

// Exact decisions on the chords of two pieces: every comparison is between the computed
// cross or dot products, never between divided values.
ChordSolution SolveChords(const GR_Bezier2d& a, const GR_Bezier2d& b) {
    ChordSolution s;
    const GR_Point2d a0 = a.First(), a1 = a.Last(), b0 = b.First(), b1 = b.Last();
    const GR_Point2d da = a1 - a0, db = b1 - b0, w = b0 - a0;
    double d = GR_Cross(da, db);
    if (d != 0.0) {
        double nu = GR_Cross(w, db), nv = GR_Cross(w, da);
        s.sign = d > 0.0 ? 1 : -1;
        if (d < 0.0) {
            d = -d;
            nu = -nu;
            nv = -nv;
        }
        if (!(nu >= 0.0 && nu <= d && nv >= 0.0 && nv <= d))
            return s;
        if ((nu == 0.0 && !a.closedStart) || (nu == d && !a.closedEnd) || (nv == 0.0 && !b.closedStart) ||
            (nv == d && !b.closedEnd))
            return s;
        s.count = 1;
        s.u[0] = nu / d;
        s.v[0] = nv / d;
        s.atEnd[0] = nu == 0.0 || nu == d || nv == 0.0 || nv == d;
        s.conditions[0] = (nu > 0.0) + (nu < d) + (nv > 0.0) + (nv < d);
        s.point[0] = nu == 0.0 ? a0 : nu == d ? a1 : nv == 0.0 ? b0 : nv == d ? b1 : a0 + da * s.u[0];
        return s;
    }
    const double la = GR_Dot(da, da), lb = GR_Dot(db, db);
    if (la == 0.0 || lb == 0.0 || GR_Cross(w, da) != 0.0)
        return s;
    // Collinear: the ends of the overlap are chord ends that lie on the other chord.
    const auto onChord = [](const GR_Point2d& p, const GR_Point2d& start, const GR_Point2d& dir,
                            double length, const GR_Bezier2d& piece, double& t) {
        const double n = GR_Dot(p - start, dir);
        if (n < 0.0 || n > length || (n == 0.0 && !piece.closedStart) || (n == length && !piece.closedEnd))
            return false;
        t = n == 0.0 ? 0.0 : n == length ? 1.0 : n / length;
        return true;
    };
    const auto add = [&](const GR_Point2d& p, double u, double v) {
        for (int i = 0; i < s.count; ++i)
            if (s.point[i] == p)
                return;
        if (s.count == 2)
            return;
        s.point[s.count] = p;
        s.u[s.count] = u;
        s.v[s.count] = v;
        s.atEnd[s.count] = true;
        s.conditions[s.count] = (u > 0.0) + (u < 1.0) + (v > 0.0) + (v < 1.0);
        ++s.count;
    };
    double t = 0.0;
    if (a.closedStart && onChord(a0, b0, db, lb, b, t))
        add(a0, 0.0, t);
    if (a.closedEnd && onChord(a1, b0, db, lb, b, t))
        add(a1, 1.0, t);
    if (b.closedStart && onChord(b0, a0, da, la, a, t))
        add(b0, t, 0.0);
    if (b.closedEnd && onChord(b1, a0, da, la, a, t))
        add(b1, t, 1.0);
    return s;
}

// Receives the chord pairs that the recursion reaches, with the segment indices.
class ChordSink {
public:
    virtual ~ChordSink() = default;
    virtual void Chords(size_t i, const GR_Bezier2d& a, size_t j, const GR_Bezier2d& b) = 0;
};

// Boxes of the ranges that halving produces, in heap order: node 1 is the whole path,
// 2n and 2n + 1 its halves.
class RangeTree {
public:
    RangeTree(const GR_BezierPath2d& path, bool halfOpen) : path_(path), halfOpen_(halfOpen) {
        const size_t segments = path.SegmentCount();
        if (segments == 0)
            return;
        boxes_.resize(4 * segments);
        Build(1, Root());
    }
    GR_PathRange Root() const { return {0, static_cast<uint16_t>(path_.SegmentCount()), 1, 1}; }
    GR_PathRange Left(const GR_PathRange& r) const {
        GR_PathRange left = r.Left();
        left.closedLast = halfOpen_ ? 0 : 1;
        return left;
    }
    GR_PathRange Right(const GR_PathRange& r) const { return r.Right(); }
    const GR_Box2d& Box(size_t node) const { return boxes_[node]; }
    void Segment(const GR_PathRange& r, GR_Bezier2d& out) const {
        path_.Segment(r.first, out);
        out.closedStart = r.closedFirst;
        out.closedEnd = r.closedLast;
        out.InvalidateBox();
    }

private:
    void Build(size_t node, const GR_PathRange& r) {
        if (r.IsSingle()) {
            GR_Bezier2d segment;
            Segment(r, segment);
            boxes_[node] = segment.Box();
            return;
        }
        Build(2 * node, Left(r));
        Build(2 * node + 1, Right(r));
        boxes_[node] = boxes_[2 * node];
        boxes_[node].Merge(boxes_[2 * node + 1]);
    }

    const GR_BezierPath2d& path_;
    bool halfOpen_;
    std::vector<GR_Box2d> boxes_;
};

// The pair recursion of two paths: halving of knot ranges, then bisection of the pieces of
// two segments until both obey the chord rule.
class PairWalker {
public:
    // halfOpen: a point shared by two neighbouring pieces belongs to the later one only.
    // grow: the second side's boxes are grown by this much before the overlap test.
    PairWalker(const GR_BezierPath2d& first, const GR_BezierPath2d& second, bool same, bool halfOpen,
               double grow, bool selfSegments, ChordSink& sink)
        : first_(first), second_(second), same_(same), halfOpen_(halfOpen), grow_(grow),
          selfSegments_(selfSegments), sink_(sink), treeA_(first, halfOpen),
          treeB_(same ? treeA_ : ownB_.emplace(second, halfOpen)) {}

    void Run() {
        if (first_.SegmentCount() == 0 || second_.SegmentCount() == 0)
            return;
        Ranges(treeA_.Root(), 1, treeB_.Root(), 1);
    }

private:
    bool Overlap(const GR_Box2d& a, const GR_Box2d& b) const {
        if (grow_ > 0.0) {
            GR_Box2d grown = b;
            grown.Grow(grow_);
            return a.Overlaps(grown);
        }
        return a.Overlaps(b);
    }

    void Ranges(const GR_PathRange& a, size_t nodeA, const GR_PathRange& b, size_t nodeB) {
        if (same_ && a.first >= b.last)
            return;
        if (!Overlap(treeA_.Box(nodeA), treeB_.Box(nodeB)))
            return;
        if (a.IsSingle() && b.IsSingle()) {
            GR_Bezier2d sa, sb;
            treeA_.Segment(a, sa);
            treeB_.Segment(b, sb);
            i_ = a.first;
            j_ = b.first;
            if (same_ && i_ == j_) {
                if (selfSegments_)
                    SelfPiece(sa, 0);
                return;
            }
            if (same_ && i_ == 0 && j_ + 1 == first_.SegmentCount() && sa.First() == sb.Last()) {
                // The closing point of a closed path is where it starts, not a crossing.
                sb.closedEnd = 0;
                sb.InvalidateBox();
            }
            Pieces(sa, 0, sb, 0);
            return;
        }
        const bool splitA = !a.IsSingle(), splitB = !b.IsSingle();
        if (splitA && splitB) {
            Ranges(treeA_.Left(a), 2 * nodeA, treeB_.Left(b), 2 * nodeB);
            Ranges(treeA_.Left(a), 2 * nodeA, treeB_.Right(b), 2 * nodeB + 1);
            Ranges(treeA_.Right(a), 2 * nodeA + 1, treeB_.Left(b), 2 * nodeB);
            Ranges(treeA_.Right(a), 2 * nodeA + 1, treeB_.Right(b), 2 * nodeB + 1);
        } else if (splitA) {
            Ranges(treeA_.Left(a), 2 * nodeA, b, nodeB);
            Ranges(treeA_.Right(a), 2 * nodeA + 1, b, nodeB);
        } else {
            Ranges(a, nodeA, treeB_.Left(b), 2 * nodeB);
            Ranges(a, nodeA, treeB_.Right(b), 2 * nodeB + 1);
        }
    }

    void Halve(const GR_Bezier2d& piece, GR_Bezier2d& left, GR_Bezier2d& right) const {
        piece.SplitSnapped(0.5, left, right);
        if (halfOpen_) {
            left.closedEnd = 0;
            left.InvalidateBox();
        }
    }

    bool NeedsSplit(const GR_Bezier2d& piece, int depth) const {
        return depth < kMaxSplitDepth && !piece.IsSmall();
    }

    void Pieces(const GR_Bezier2d& a, int depthA, const GR_Bezier2d& b, int depthB) {
        if (!Overlap(a.Box(), b.Box()))
            return;
        const bool splitA = NeedsSplit(a, depthA), splitB = NeedsSplit(b, depthB);
        GR_Bezier2d al, ar, bl, br;
        if (splitA)
            Halve(a, al, ar);
        if (splitB)
            Halve(b, bl, br);
        if (splitA && splitB) {
            Pieces(al, depthA + 1, bl, depthB + 1);
            Pieces(al, depthA + 1, br, depthB + 1);
            Pieces(ar, depthA + 1, bl, depthB + 1);
            Pieces(ar, depthA + 1, br, depthB + 1);
        } else if (splitA) {
            Pieces(al, depthA + 1, b, depthB);
            Pieces(ar, depthA + 1, b, depthB);
        } else if (splitB) {
            Pieces(a, depthA, bl, depthB + 1);
            Pieces(a, depthA, br, depthB + 1);
        } else {
            sink_.Chords(i_, a, j_, b);
        }
    }

    // A cubic can cross itself: its halves are compared with each other, the point they
    // share left out.
    void SelfPiece(const GR_Bezier2d& piece, int depth) {
        if (piece.degree < 3 || !NeedsSplit(piece, depth))
            return;
        GR_Bezier2d left, right;
        piece.SplitSnapped(0.5, left, right);
        left.closedEnd = 0;
        left.InvalidateBox();
        SelfPiece(left, depth + 1);
        SelfPiece(right, depth + 1);
        Pieces(left, depth + 1, right, depth + 1);
    }

    const GR_BezierPath2d& first_;
    const GR_BezierPath2d& second_;
    bool same_, halfOpen_;
    double grow_;
    bool selfSegments_;
    ChordSink& sink_;
    std::optional<RangeTree> ownB_;
    RangeTree treeA_;
    const RangeTree& treeB_;
    size_t i_ = 0, j_ = 0;
};

// Point and tangents of a path at the chord parameter u of a piece of segment i. At a knot
// the exact point and both neighbouring tangents; at an inner end of a piece its (grid)
// point with the segment's derivative; inside a chord the chord's own direction, in the
// segment's parameter, so that the angular order agrees with the chords that were solved.
void HitSide(const GR_BezierPath2d& path, size_t i, const GR_Bezier2d& piece, double u,
             const GR_Point2d& point, GR_Point2d& outPoint, GR_Point2d& tangentIn, GR_Point2d& tangentOut,
             double& parameter) {
    const double t = (u == 0.0) ? piece.t0 : (u == 1.0) ? piece.t1 : piece.MapBack(u);
    parameter = static_cast<double>(i) + t;
    if ((u == 0.0 || u == 1.0) && (t == 0.0 || t == 1.0)) {
        path.TangentsAt(parameter, outPoint, tangentIn, tangentOut);
        return;
    }
    outPoint = point;
    GR_Point2d derivative;
    if (u == 0.0 || u == 1.0) {
        GR_Bezier2d segment;
        path.Segment(i, segment);
        derivative = segment.DerivativeAt(t);
    } else {
        derivative = (piece.Last() - piece.First()) * (1.0 / (piece.t1 - piece.t0));
    }
    tangentIn = -derivative;
    tangentOut = derivative;
}

class HitCollector : public ChordSink {
public:
    HitCollector(const GR_BezierPath2d& a, const GR_BezierPath2d& b, std::vector<GR_PathHit>& out)
        : a_(a), b_(b), out_(out) {}
    void Chords(size_t i, const GR_Bezier2d& pa, size_t j, const GR_Bezier2d& pb) override {
        const ChordSolution s = SolveChords(pa, pb);
        for (int k = 0; k < s.count; ++k) {
            GR_PathHit hit;
            HitSide(a_, i, pa, s.u[k], s.point[k], hit.firstPoint, hit.firstTangentIn, hit.firstTangentOut,
                    hit.firstParameter);
            HitSide(b_, j, pb, s.v[k], s.point[k], hit.secondPoint, hit.secondTangentIn, hit.secondTangentOut,
                    hit.secondParameter);
            out_.push_back(hit);
        }
    }

private:
    const GR_BezierPath2d& a_;
    const GR_BezierPath2d& b_;
    std::vector<GR_PathHit>& out_;
};

class NearHitFinder : public ChordSink {
public:
    NearHitFinder(const GR_BezierPath2d& a, const GR_BezierPath2d& b, const GR_Bezier2d::GapTest& test,
                  double radius, const GR_ParameterBounds& bounds, bool forward, GR_PathHit& best,
                  bool& found)
        : a_(a), b_(b), test_(test), radius2_(radius * radius), bounds_(bounds), forward_(forward),
          best_(best), found_(found) {}

    void Chords(size_t i, const GR_Bezier2d& pa, size_t j, const GR_Bezier2d& pb) override {
        const ChordSolution s = SolveChords(pa, pb);
        if (s.count > 0) {
            for (int k = 0; k < s.count; ++k) {
                GR_PathHit hit;
                HitSide(a_, i, pa, s.u[k], s.point[k], hit.firstPoint, hit.firstTangentIn,
                        hit.firstTangentOut, hit.firstParameter);
                HitSide(b_, j, pb, s.v[k], s.point[k], hit.secondPoint, hit.secondTangentIn,
                        hit.secondTangentOut, hit.secondParameter);
                Offer(hit);
            }
            return;
        }
        // Nearest approach: each closed end of one chord against the other chord.
        double bestD = radius2_;
        bool any = false;
        double bu = 0.0, bv = 0.0;
        GR_Point2d pA, pB;
        const auto consider = [&](const GR_Point2d& p, const GR_Bezier2d& chord, bool pOnA, double pParam) {
            const GR_Point2d c0 = chord.First(), dir = chord.Last() - chord.First();
            const double len = GR_Dot(dir, dir);
            double t = len > 0.0 ? GR_Dot(p - c0, dir) / len : 0.0;
            t = std::clamp(t, 0.0, 1.0);
            // An open end belongs to the neighbouring piece, which reports it.
            if ((t == 0.0 && !chord.closedStart) || (t == 1.0 && !chord.closedEnd))
                return;
            const GR_Point2d q = c0 + dir * t;
            const double dist = GR_DistanceSquared(p, q);
            if (dist > bestD || (any && dist == bestD))
                return;
            bestD = dist;
            any = true;
            bu = pOnA ? pParam : t;
            bv = pOnA ? t : pParam;
            pA = pOnA ? p : q;
            pB = pOnA ? q : p;
        };
        if (pa.closedStart)
            consider(pa.First(), pb, true, 0.0);
        if (pa.closedEnd)
            consider(pa.Last(), pb, true, 1.0);
        if (pb.closedStart)
            consider(pb.First(), pa, false, 0.0);
        if (pb.closedEnd)
            consider(pb.Last(), pa, false, 1.0);
        if (!any)
            return;
        GR_PathHit hit;
        HitSide(a_, i, pa, bu, pA, hit.firstPoint, hit.firstTangentIn, hit.firstTangentOut,
                hit.firstParameter);
        HitSide(b_, j, pb, bv, pB, hit.secondPoint, hit.secondTangentIn, hit.secondTangentOut,
                hit.secondParameter);
        hit.distance = bestD;
        hit.bridge = pB - pA;
        Offer(hit);
    }

private:
    void Offer(GR_PathHit& hit) {
        const double t = hit.firstParameter;
        const bool inside =
            forward_ ? (t > bounds_.lower && t <= bounds_.upper) : (t >= bounds_.lower && t < bounds_.upper);
        if (!inside)
            return;
        if (found_ && !(forward_ ? hit.IsBefore(best_) : hit.IsAfter(best_)))
            return;
        if (!test_.Accept(hit))
            return;
        best_ = hit;
        found_ = true;
    }

    const GR_BezierPath2d& a_;
    const GR_BezierPath2d& b_;
    const GR_Bezier2d::GapTest& test_;
    double radius2_;
    GR_ParameterBounds bounds_;
    bool forward_;
    GR_PathHit& best_;
    bool& found_;
};

class CrossingCounter : public ChordSink {
public:
    explicit CrossingCounter(std::vector<GR_LineCrossing>* record = nullptr) : record_(record) {}
    void Chords(size_t i, const GR_Bezier2d& pa, size_t, const GR_Bezier2d& pb) override {
        const ChordSolution s = SolveChords(pa, pb);
        for (int k = 0; k < s.count; ++k) {
            if (s.atEnd[k])
                touched = true;
            if (s.sign == 0)
                continue;
            const int c = s.conditions[k];
            const int weight = c == 4 ? 4 : c == 3 ? 2 : c == 2 ? 1 : 0;
            sum += s.sign * weight;
            if (weight != 0 && s.v[k] < nearest)
                nearest = s.v[k];
            if (record_) {
                GR_LineCrossing crossing;
                crossing.line = s.v[k];
                crossing.parameter = static_cast<double>(i) + pa.MapBack(s.u[k]);
                crossing.point = s.point[k];
                crossing.weight = s.sign * weight;
                crossing.direction = pa.Last() - pa.First();
                record_->push_back(crossing);
            }
        }
    }
    int sum = 0;
    bool touched = false;
    double nearest = 2.0;

private:
    std::vector<GR_LineCrossing>* record_;
};

// Every piece is closed at both ends here: a line through a point shared by two pieces
// meets both, and the weights 2 + 2 make one crossing of it.
void CountPieces(const GR_Bezier2d& piece, size_t i, int depth, const GR_Bezier2d& line,
                 CrossingCounter& counter) {
    if (!piece.Box().Overlaps(line.Box()))
        return;
    if (depth < kMaxSplitDepth && !piece.IsSmall()) {
        GR_Bezier2d left, right;
        piece.SplitSnapped(0.5, left, right);
        CountPieces(left, i, depth + 1, line, counter);
        CountPieces(right, i, depth + 1, line, counter);
        return;
    }
    counter.Chords(i, piece, 0, line);
}

// Every segment whose stored points come near the line piece, through the recursion.
void CountLine(const GR_BezierPath2d& path, const GR_Point2d& a, const GR_Point2d& b,
               CrossingCounter& counter) {
    const std::vector<GR_Point2f>& points = path.points;
    const GR_Bezier2d line(a, b);
    const GR_Box2d& lineBox = line.Box();
    for (size_t i = 0; i < path.SegmentCount(); ++i) {
        // A quick rejection on the stored points before the segment is built.
        const size_t first = path.KnotPoint(i), last = std::min(path.KnotPoint(i + 1), points.size() - 1);
        float xmin = points[first].x, xmax = xmin, ymin = points[first].y, ymax = ymin;
        for (size_t k = first + 1; k <= last; ++k) {
            xmin = std::min(xmin, points[k].x);
            xmax = std::max(xmax, points[k].x);
            ymin = std::min(ymin, points[k].y);
            ymax = std::max(ymax, points[k].y);
        }
        if (xmax < lineBox.xmin || xmin > lineBox.xmax || ymax < lineBox.ymin || ymin > lineBox.ymax)
            continue;
        GR_Bezier2d segment;
        path.Segment(i, segment);
        CountPieces(segment, i, 0, line, counter);
    }
}

void NearestPiece(const GR_Bezier2d& piece, size_t i, const GR_Point2d& p, int depth, double& best,
                  double& parameter, bool& improved) {
    if (piece.Box().DistanceSquared(p) >= best)
        return;
    if (depth < kMaxSplitDepth && !piece.IsSmall()) {
        GR_Bezier2d left, right;
        piece.SplitSnapped(0.5, left, right);
        NearestPiece(left, i, p, depth + 1, best, parameter, improved);
        NearestPiece(right, i, p, depth + 1, best, parameter, improved);
        return;
    }
    const GR_Point2d a = piece.First(), d = piece.Last() - a;
    const double length = GR_Dot(d, d);
    const double u = length > 0.0 ? std::clamp(GR_Dot(p - a, d) / length, 0.0, 1.0) : 0.0;
    const double dist = GR_DistanceSquared(p, a + d * u);
    if (dist < best) {
        best = dist;
        parameter = static_cast<double>(i) + piece.MapBack(u);
        improved = true;
    }
}

} // namespace

GR_BezierPath2d GR_BezierPath2d::Polyline(const std::vector<GR_Point2d>& pts) {
    GR_BezierPath2d path;
    if (pts.size() > kMaxPoints)
        return path;
    const size_t n = pts.size();
    path.points.reserve(n);
    for (size_t i = 0; i < n; ++i)
        path.points.push_back(ToFloat(pts[i]));
    path.step = n > 0 ? 1 : 0;
    return path;
}

size_t GR_BezierPath2d::KnotCount() const {
    if (step != 0)
        return points.empty() ? 0 : (points.size() - 1) / step + 1;
    return knots.size();
}

size_t GR_BezierPath2d::KnotPoint(size_t knot) const {
    return step != 0 ? knot * step : knots[knot];
}

size_t GR_BezierPath2d::LastKnotPoint() const {
    const size_t count = KnotCount();
    return count == 0 ? 0 : KnotPoint(count - 1);
}

size_t GR_BezierPath2d::SegmentCount() const {
    const size_t count = KnotCount();
    return count < 2 ? 0 : count - 1;
}

void GR_BezierPath2d::ExpandKnots() {
    if (step == 0)
        return;
    const size_t count = KnotCount();
    knots.resize(count);
    for (size_t k = 0; k < count; ++k)
        knots[k] = static_cast<uint16_t>(k * step);
    step = 0;
}

void GR_BezierPath2d::CompressKnots() {
    if (step != 0 || knots.size() < 2 || knots.front() != 0 || knots.back() + 1u != points.size())
        return;
    const uint32_t difference = knots[1] - knots[0];
    for (size_t k = 1; k < knots.size(); ++k)
        if (static_cast<uint32_t>(knots[k] - knots[k - 1]) != difference)
            return;
    step = difference;
    knots.clear();
}

void GR_BezierPath2d::Segment(size_t i, GR_Bezier2d& out) const {
    out = GR_Bezier2d();
    const size_t first = KnotPoint(i), last = KnotPoint(i + 1);
    const size_t degree = last - first;
    if (degree >= 1 && degree <= 3) {
        out.degree = static_cast<uint32_t>(degree);
        for (size_t k = 0; k <= degree; ++k)
            out.control[k] = Point(first + k);
    } else {
        // Not a valid segment: taken as the straight piece between its knots.
        out.degree = 1;
        out.control[0] = Point(first);
        out.control[1] = Point(last);
    }
}

bool GR_BezierPath2d::AppendSegment(const GR_Bezier2d& segment) {
    const uint32_t degree = segment.degree;
    if (degree < 1 || degree > 3)
        return false;
    const size_t base = points.empty() ? 1 : points.size();
    if (base + degree > kMaxPoints)
        return false;
    if (points.empty()) {
        step = 0;
        knots.assign(1, 0);
        points.push_back(ToFloat(segment.control[0]));
    } else if (step != 0 && (degree != step || (points.size() - 1) % step != 0)) {
        ExpandKnots();
    }
    for (uint32_t k = 1; k <= degree; ++k)
        points.push_back(ToFloat(segment.control[k]));
    if (step == 0)
        knots.push_back(static_cast<uint16_t>(points.size() - 1));
    return true;
}

bool GR_BezierPath2d::ReplaceSegment(size_t i, const GR_Bezier2d& segment) {
    if (i >= SegmentCount() || segment.degree < 1 || segment.degree > 3)
        return false;
    const size_t first = KnotPoint(i), last = KnotPoint(i + 1);
    const size_t oldDegree = last - first;
    if (points.size() - oldDegree + segment.degree > kMaxPoints)
        return false;
    if (oldDegree != segment.degree)
        ExpandKnots();
    std::vector<GR_Point2f> replacement;
    for (uint32_t k = 0; k <= segment.degree; ++k)
        replacement.push_back(ToFloat(segment.control[k]));
    points.erase(points.begin() + first, points.begin() + last + 1);
    points.insert(points.begin() + first, replacement.begin(), replacement.end());
    if (step == 0) {
        const int shift = static_cast<int>(segment.degree) - static_cast<int>(oldDegree);
        for (size_t k = i + 1; k < knots.size(); ++k)
            knots[k] = static_cast<uint16_t>(knots[k] + shift);
    }
    return true;
}

void GR_BezierPath2d::RemovePoints(size_t first, size_t last) {
    if (points.empty() || first > last || first >= points.size())
        return;
    last = std::min(last, points.size() - 1);
    ExpandKnots();
    const size_t removed = last - first + 1;
    points.erase(points.begin() + first, points.begin() + last + 1);
    std::vector<uint16_t> kept;
    for (uint16_t k : knots) {
        if (k < first)
            kept.push_back(k);
        else if (k > last)
            kept.push_back(static_cast<uint16_t>(k - removed));
    }
    knots = std::move(kept);
}

void GR_BezierPath2d::Reverse() {
    std::reverse(points.begin(), points.end());
    if (step != 0 && (points.size() - 1) % step == 0)
        return;
    ExpandKnots();
    const size_t last = points.empty() ? 0 : points.size() - 1;
    for (uint16_t& k : knots)
        k = static_cast<uint16_t>(last - k);
    std::reverse(knots.begin(), knots.end());
}

void GR_BezierPath2d::Transform(const GR_Affine2d& matrix) {
    for (GR_Point2f& p : points)
        p = ToFloat(matrix.Apply(GR_ToDouble(p)));
}

GR_BezierPath2d GR_BezierPath2d::TransformedCopy(const GR_Affine2d& matrix) const {
    GR_BezierPath2d copy(*this);
    copy.Transform(matrix);
    return copy;
}

void GR_BezierPath2d::SnapPoint(size_t i) {
    if (i < points.size())
        points[i] = GR_SnapToGridF(Point(i));
}

void GR_BezierPath2d::SnapAllPoints() {
    for (size_t i = 0; i < points.size(); ++i)
        SnapPoint(i);
}

void GR_BezierPath2d::CleanUp() {
    const size_t segments = SegmentCount();
    if (segments == 0)
        return;
    std::vector<GR_Point2f> kept{points[KnotPoint(0)]};
    std::vector<uint16_t> keptKnots{0};
    for (size_t i = 0; i < segments; ++i) {
        const size_t first = KnotPoint(i), last = KnotPoint(i + 1);
        bool degenerate = true;
        for (size_t k = first + 1; k <= last; ++k)
            degenerate = degenerate && points[k] == points[first];
        if (degenerate)
            continue;
        kept.insert(kept.end(), points.begin() + first + 1, points.begin() + last + 1);
        keptKnots.push_back(static_cast<uint16_t>(kept.size() - 1));
    }
    points = std::move(kept);
    knots = std::move(keptKnots);
    step = 0;
    CompressKnots();
}

double GR_BezierPath2d::PolygonLength() const {
    double length = 0.0;
    for (size_t i = 1; i < points.size(); ++i)
        length += GR_Length(Point(i) - Point(i - 1));
    return length;
}

double GR_BezierPath2d::SignedArea() const {
    double sum = 0.0;
    if (points.size() < 3)
        return 0.0;
    const GR_Point2d origin = Point(0);
    for (size_t i = 1; i + 1 < points.size(); ++i)
        sum += GR_Cross(Point(i) - origin, Point(i + 1) - origin);
    return 0.5 * sum;
}

GR_Box2d GR_BezierPath2d::Bounds() const {
    GR_Box2d box;
    for (size_t i = 0; i < points.size(); ++i)
        box.Add(Point(i));
    return box;
}

void GR_BezierPath2d::TangentsAt(double t, GR_Point2d& point, GR_Point2d& tangentIn,
                                 GR_Point2d& tangentOut) const {
    tangentIn = tangentOut = point = GR_Point2d();
    const size_t segments = SegmentCount();
    if (segments == 0) {
        if (!points.empty())
            point = GR_SnapToGrid(Point(0));
        return;
    }
    if (!(t > 0.0))
        t = 0.0;
    if (t > static_cast<double>(segments))
        t = static_cast<double>(segments);
    const double whole = std::floor(t);
    const size_t i = static_cast<size_t>(whole);
    GR_Bezier2d segment;
    if (t == whole) {
        point = GR_SnapToGrid(Point(KnotPoint(i)));
        if (i > 0) {
            Segment(i - 1, segment);
            tangentIn = -segment.EndDerivative();
        }
        if (i < segments) {
            Segment(i, segment);
            tangentOut = segment.StartDerivative();
        }
        return;
    }
    Segment(i, segment);
    point = segment.Evaluate(t - whole);
    tangentOut = segment.DerivativeAt(t - whole);
    tangentIn = -tangentOut;
}

void GR_BezierPath2d::CutAfter(double t) {
    const size_t segments = SegmentCount();
    if (segments == 0 || !(t < static_cast<double>(segments)))
        return;
    if (!(t > 0.0))
        t = 0.0;
    const double whole = std::floor(t);
    const size_t i = static_cast<size_t>(whole);
    GR_BezierPath2d cut;
    GR_Bezier2d segment, left, right;
    for (size_t k = 0; k < i; ++k) {
        Segment(k, segment);
        cut.AppendSegment(segment);
    }
    if (t != whole) {
        Segment(i, segment);
        segment.SplitSnapped(t - whole, left, right);
        cut.AppendSegment(left);
    } else if (i == 0) {
        cut.points.push_back(points[KnotPoint(0)]);
        cut.knots.assign(1, 0);
    }
    *this = std::move(cut);
}

void GR_BezierPath2d::CutBefore(double t) {
    const size_t segments = SegmentCount();
    if (segments == 0 || !(t > 0.0))
        return;
    if (t > static_cast<double>(segments))
        t = static_cast<double>(segments);
    const double whole = std::floor(t);
    const size_t i = static_cast<size_t>(whole);
    GR_BezierPath2d cut;
    GR_Bezier2d segment, left, right;
    if (t != whole) {
        Segment(i, segment);
        segment.SplitSnapped(t - whole, left, right);
        cut.AppendSegment(right);
    } else if (i == segments) {
        cut.points.push_back(points[LastKnotPoint()]);
        cut.knots.assign(1, 0);
    }
    for (size_t k = i + 1 - (t == whole ? 1 : 0); k < segments; ++k) {
        Segment(k, segment);
        cut.AppendSegment(segment);
    }
    *this = std::move(cut);
}

void GR_BezierPath2d::KeepRange(double t0, double t1) {
    const size_t segments = SegmentCount();
    if (segments == 0)
        return;
    if (t1 < t0)
        std::swap(t0, t1);
    const double count = static_cast<double>(segments);
    t0 = std::clamp(t0, 0.0, count);
    t1 = std::clamp(t1, 0.0, count);
    const double whole = std::min(std::floor(t0), count - 1.0);
    if (t1 - whole <= 1.0) {
        GR_Bezier2d segment, left, right;
        Segment(static_cast<size_t>(whole), segment);
        const double f0 = t0 - whole, f1 = t1 - whole;
        if (f1 < 1.0) {
            segment.SplitSnapped(f1, left, right);
            segment = left;
        }
        if (f0 > 0.0) {
            segment.SplitSnapped(f1 > 0.0 ? f0 / f1 : 0.0, left, right);
            segment = right;
        }
        GR_BezierPath2d kept;
        kept.AppendSegment(segment);
        *this = std::move(kept);
        return;
    }
    CutAfter(t1);
    CutBefore(t0);
}

void GR_BezierPath2d::IntersectAll(const GR_BezierPath2d& other, bool same,
                                   std::vector<GR_PathHit>& out) const {
    HitCollector collector(*this, same ? *this : other, out);
    PairWalker(*this, same ? *this : other, same, true, 0.0, true, collector).Run();
}

bool GR_BezierPath2d::Intersects(const GR_BezierPath2d& other, bool same) const {
    std::vector<GR_PathHit> hits;
    IntersectAll(other, same, hits);
    return !hits.empty();
}

bool GR_BezierPath2d::FirstHit(const GR_BezierPath2d& other, const GR_ParameterBounds& bounds,
                               GR_PathHit& best, bool& found) const {
    std::vector<GR_PathHit> hits;
    IntersectAll(other, &other == this, hits);
    for (GR_PathHit& hit : hits)
        if (hit.firstParameter > bounds.lower && hit.firstParameter <= bounds.upper &&
            (!found || hit.IsBefore(best))) {
            best = hit;
            found = true;
        }
    return found;
}

bool GR_BezierPath2d::LastHit(const GR_BezierPath2d& other, const GR_ParameterBounds& bounds,
                              GR_PathHit& best, bool& found) const {
    std::vector<GR_PathHit> hits;
    IntersectAll(other, &other == this, hits);
    for (GR_PathHit& hit : hits)
        if (hit.firstParameter >= bounds.lower && hit.firstParameter < bounds.upper &&
            (!found || hit.IsAfter(best))) {
            best = hit;
            found = true;
        }
    return found;
}

bool GR_BezierPath2d::FirstNearHit(const GR_BezierPath2d& other, const GR_Bezier2d::GapTest& test,
                                   double radius, bool same, const GR_ParameterBounds& bounds,
                                   GR_PathHit& best, bool& found) const {
    if (!(radius > 0.0))
        return found;
    NearHitFinder finder(*this, same ? *this : other, test, radius, bounds, true, best, found);
    PairWalker(*this, same ? *this : other, same, true, radius, false, finder).Run();
    return found;
}

bool GR_BezierPath2d::LastNearHit(const GR_BezierPath2d& other, const GR_Bezier2d::GapTest& test,
                                  double radius, bool same, const GR_ParameterBounds& bounds,
                                  GR_PathHit& best, bool& found) const {
    if (!(radius > 0.0))
        return found;
    NearHitFinder finder(*this, same ? *this : other, test, radius, bounds, false, best, found);
    PairWalker(*this, same ? *this : other, same, true, radius, false, finder).Run();
    return found;
}

void GR_BezierPath2d::CrossLine(const GR_Point2d& a, const GR_Point2d& b,
                                std::vector<GR_PathHit>& out) const {
    IntersectAll(Polyline({a, b}), false, out);
}

int GR_BezierPath2d::CountCrossings(const GR_Point2d& a, const GR_Point2d& b, bool& touched) const {
    double nearest = 2.0;
    return CountCrossings(a, b, touched, nearest);
}

int GR_BezierPath2d::CountCrossings(const GR_Point2d& a, const GR_Point2d& b, bool& touched,
                                    double& nearest) const {
    CrossingCounter counter;
    CountLine(*this, a, b, counter);
    touched = counter.touched;
    if (counter.nearest < nearest)
        nearest = counter.nearest;
    return counter.sum;
}

void GR_BezierPath2d::LineCrossings(const GR_Point2d& a, const GR_Point2d& b,
                                    std::vector<GR_LineCrossing>& out) const {
    CrossingCounter counter(&out);
    CountLine(*this, a, b, counter);
}

bool GR_BezierPath2d::Contains(const GR_Point2d& point, bool winding) const {
    if (KnotCount() < 2)
        return false;
    const GR_Box2d box = Bounds();
    if (!box.Contains(point))
        return false;
    bool touched = false;
    const int sum = CountCrossings(point, {point.x + (box.xmax - box.xmin) + 1.0, point.y}, touched);
    if (winding)
        return sum != 0 && sum % 4 == 0;
    return sum % 8 == 4 || sum % 8 == -4;
}

bool GR_BezierPath2d::NearestPoint(const GR_Point2d& point, double& bestDistance, double& parameter) const {
    const size_t segments = SegmentCount();
    if (segments == 0 || !(Bounds().DistanceSquared(point) < bestDistance))
        return false;
    bool improved = false;
    for (size_t i = 0; i < segments; ++i) {
        GR_Bezier2d segment;
        Segment(i, segment);
        NearestPiece(segment, i, point, 0, bestDistance, parameter, improved);
    }
    return improved;
}

void GR_BezierPath2d::Write(DB_Archive& archive) const {
    const size_t n = points.size();
    if (n > 0xFFFF)
        throw DB_Exception(u"A path of more than 65535 points cannot be written.");
    archive.WriteU16(static_cast<uint16_t>(n));
    std::vector<uint8_t> mask((n + 7) / 8, 0);
    for (size_t k = 0; k < KnotCount(); ++k) {
        const size_t index = KnotPoint(k);
        if (index < n)
            mask[index / 8] |= static_cast<uint8_t>(1u << (index % 8));
    }
    archive.WriteRaw(mask.data(), mask.size());
    for (const GR_Point2f& p : points) {
        archive.WriteF32(p.x);
        archive.WriteF32(p.y);
    }
}

void GR_BezierPath2d::Read(DB_Archive& archive) {
    const size_t n = archive.ReadU16();
    std::vector<uint8_t> mask((n + 7) / 8, 0);
    archive.ReadRaw(mask.data(), mask.size());
    std::vector<GR_Point2f> readPoints(n);
    for (GR_Point2f& p : readPoints) {
        p.x = archive.ReadF32();
        p.y = archive.ReadF32();
    }
    std::vector<uint16_t> readKnots;
    for (size_t i = 0; i < n; ++i)
        if (mask[i / 8] & (1u << (i % 8))) {
            if (!readKnots.empty() && i - readKnots.back() > 3)
                archive.ThrowUnexpected();
            readKnots.push_back(static_cast<uint16_t>(i));
        }
    if (n > 0 && (readKnots.empty() || readKnots.front() != 0 || readKnots.back() + 1u != n))
        archive.ThrowUnexpected();
    points = std::move(readPoints);
    knots = std::move(readKnots);
    step = 0;
    CompressKnots();
}
