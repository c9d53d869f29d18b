#include "motion/CSpline.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// The polynomial form of one Bezier coordinate: ((a*t + b)*t + c)*t + p0.
struct Cubic {
    double a, b, c, p0;
    Cubic(double p0v, double h0, double h1, double p1) {
        c = 3.0 * (h0 - p0v);
        b = 3.0 * (h1 - h0) - c;
        a = p1 - p0v - c - b;
        p0 = p0v;
    }
    double At(double t) const { return ((a * t + b) * t + c) * t + p0; }
};

struct Segment {
    Cubic x, y;
};

Segment SegmentOf(const CSplinePoint& k0, const CSplinePoint& k1) {
    return Segment{Cubic(k0.x, k0.outHandle.x, k1.inHandle.x, k1.x),
                   Cubic(k0.y, k0.outHandle.y, k1.inHandle.y, k1.y)};
}

bool InUnit(double t) {
    return t >= 0.0 && t <= 1.0;
}

void Place(CUIControlPoint& handle, double x, double y) {
    handle.x = x;
    handle.y = y;
}

} // namespace

double MotionBezierParameter(double x0, double a, double b, double x1, double x) {
    const double ca = (a - b) * 3.0 + x1 - x0;
    const double cb = (x0 - 2.0 * a + b) * 3.0;
    const double cc = (a - x0) * 3.0;
    const double cd = x0 - x;
    std::vector<double> roots;
    if (ca == 0.0 && cb == 0.0) {
        if (cc != 0.0)
            roots.push_back(-cd / cc);
    } else if (ca == 0.0) {
        const double disc = cc * cc - 4.0 * cb * cd;
        if (disc >= 0.0) {
            const double s = cc >= 0.0 ? -1.0 : 1.0;
            const double q = -0.5 * (cc + s * std::sqrt(disc));
            roots.push_back(q / cb);
            if (q != 0.0)
                roots.push_back(cd / q);
        }
    } else {
        const double a2 = cb / ca;
        const double b2 = cc / ca;
        const double c2 = cd / ca;
        const double q = (a2 * a2 - 3.0 * b2) / 9.0;
        const double r = (2.0 * a2 * a2 * a2 - 9.0 * a2 * b2 + 27.0 * c2) / 54.0;
        const double q3 = q * q * q;
        if (r * r < q3) {
            const double theta = std::acos(r / std::sqrt(q3));
            const double twoPi = 2.0 * M_PI;
            for (double k : {0.0, 1.0, -1.0})
                roots.push_back(-2.0 * std::sqrt(q) * std::cos((theta + k * twoPi) / 3.0) - a2 / 3.0);
        } else {
            const double root = std::cbrt(std::fabs(r) + std::sqrt(r * r - q3));
            const double u = r >= 0.0 ? -root : root;
            const double v = u == 0.0 ? 0.0 : q / u;
            roots.push_back(u + v - a2 / 3.0);
        }
    }
    for (double t : roots) {
        if (InUnit(t))
            return t;
    }
    // Rounding left no root inside: take the nearest candidate, or the chord's guess.
    double best = x1 != x0 ? (x - x0) / (x1 - x0) : 0.0;
    double bestDistance = INFINITY;
    for (double t : roots) {
        const double distance = t < 0.0 ? -t : t - 1.0;
        if (distance < bestDistance) {
            bestDistance = distance;
            best = t;
        }
    }
    return std::isfinite(best) ? std::clamp(best, 0.0, 1.0) : 0.5;
}

CSpline::CSpline(int16_t x0, double y0, int16_t x1, double y1) {
    const int third = (x1 - x0) / 3;
    auto first = std::make_unique<CSplinePoint>(x0, y0);
    first->outHandle.Set(x0 + third, y0);
    auto last = std::make_unique<CSplinePoint>(x1, y1);
    last->inHandle.Set(x1 - third, y1);
    keys_.push_back(std::move(first));
    keys_.push_back(std::move(last));
    NumberAllHandles();
}

void CSpline::NumberAllHandles() {
    for (size_t i = 0; i < keys_.size(); ++i) {
        keys_[i]->index = static_cast<int16_t>(i);
        keys_[i]->SetInHandleId(static_cast<int16_t>(2 * i));
        keys_[i]->SetOutHandleId(static_cast<int16_t>(2 * i + 1));
    }
}

void CSpline::ApplyPreset(int keyIndex, int preset) {
    CSplinePoint* left = SplineKey(keyIndex);
    CSplinePoint* right = SplineKey(keyIndex + 1);
    if (!left || !right)
        return;
    const double x0 = left->x, y0 = left->y, x1 = right->x, y1 = right->y;
    CUIControlPoint& out = left->outHandle;
    CUIControlPoint& in = right->inHandle;
    switch (preset) {
    case kLinear:
        Place(out, x0 + (x1 - x0) / 3.0, y0 + (y1 - y0) / 3.0);
        Place(in, x1 - (x1 - x0) / 3.0, y1 - (y1 - y0) / 3.0);
        break;
    case kEaseInOut:
        Place(out, x0 + (x1 - x0) * 0.25, y0);
        Place(in, x1 - (x1 - x0) * 0.25, y1);
        break;
    case kExtremeEaseInOut:
        Place(out, x0 + (x1 - x0) * 0.5, y0);
        Place(in, x1 - (x1 - x0) * 0.5, y1);
        break;
    case kSlowDeceleration:
        Place(out, x0, y1);
        Place(in, x0 * 0.9 + x1 * 0.1, y1);
        break;
    case kSlowAcceleration:
        Place(out, x1 * 0.9 + x0 * 0.1, y0);
        Place(in, x1, y0);
        break;
    case kFastInOut:
        Place(out, x0, y0 + (y1 - y0) * 0.25);
        Place(in, x1, y1 - (y1 - y0) * 0.25);
        break;
    case kExtremeFastInOut:
        Place(out, x0, y0 + (y1 - y0) * 0.5);
        Place(in, x1, y1 - (y1 - y0) * 0.5);
        break;
    default:
        break;
    }
}

void CSpline::ReshapeAll(int preset) {
    for (int i = 0; i + 1 < KeyCount(); ++i)
        ApplyPreset(i, preset);
}

void CSpline::ReshapeSegment(int keyIndex, int preset) {
    if (keyIndex < 0 || keyIndex >= KeyCount())
        return;
    ApplyPreset(keyIndex == KeyCount() - 1 ? keyIndex - 1 : keyIndex, preset);
}

void CSpline::SetConstantAll(double y) {
    const int n = KeyCount();
    for (int i = 0; i < n; ++i) {
        CSplinePoint* key = SplineKey(i);
        key->y = y;
        if (i > 0)
            key->inHandle.y = y;
        if (i < n - 1)
            key->outHandle.y = y;
    }
}

void CSpline::SetConstantSegment(int keyIndex, double y) {
    CSplinePoint* left = SplineKey(keyIndex);
    CSplinePoint* right = SplineKey(keyIndex + 1);
    if (!left || !right)
        return;
    left->y = y;
    left->outHandle.y = y;
    right->y = y;
    right->inHandle.y = y;
}

CUIControlPoint* CSpline::GetHandle(int id) {
    if (id < 0)
        return nullptr;
    CSplinePoint* key = SplineKey(id / 2);
    if (!key)
        return nullptr;
    return id % 2 == 0 ? &key->inHandle : &key->outHandle;
}

C2DPoint CSpline::MoveHandle(int id, int mode, double x, double y) {
    const C2DPoint result(-1.0, -1.0);
    const int n = KeyCount();
    if (id < 0 || id / 2 >= n)
        return result;
    const int k = id / 2;
    const bool isIn = id % 2 == 0;
    // The outer handles of the end keys lead out of the curve and cannot be moved.
    if ((isIn && k == 0) || (!isIn && k == n - 1))
        return result;
    if (k == 0 || k == n - 1)
        mode = kModeFree;
    CSplinePoint& key = *SplineKey(k);
    CUIControlPoint& dragged = isIn ? key.inHandle : key.outHandle;
    CUIControlPoint& opposite = isIn ? key.outHandle : key.inHandle;
    double lower, upper, oppLower = 0.0, oppUpper = 0.0;
    if (isIn) {
        lower = SplineKey(k - 1)->outHandle.x;
        upper = key.x;
        if (mode != kModeFree) {
            oppLower = key.x;
            oppUpper = SplineKey(k + 1)->inHandle.x;
        }
    } else {
        lower = key.x;
        upper = SplineKey(k + 1)->inHandle.x;
        if (mode != kModeFree) {
            oppLower = SplineKey(k - 1)->outHandle.x;
            oppUpper = key.x;
        }
    }
    if (x < lower)
        x = lower;
    if (x > upper)
        x = upper;

    const double vx = x - key.x;
    const double vy = y - key.y;
    const double len = std::sqrt(vx * vx + vy * vy);
    const float fx = static_cast<float>(vx);
    const float fy = static_cast<float>(vy);
    const float flen = std::sqrt(fx * fx + fy * fy);
    const float uy = flen > 0.0f ? fy / flen : 0.0f;
    y = key.y + static_cast<double>(uy) * len;
    if (mode != kModeSmooth && mode != kModeSymmetric) {
        dragged.Set(x, y);
        return result;
    }

    double ox = opposite.x;
    double oy = opposite.y;
    if (mode == kModeSmooth) {
        if (len > 0.0) {
            const double olen = std::hypot(opposite.x - key.x, opposite.y - key.y);
            ox = key.x - olen * (vx / len);
            oy = key.y - olen * (vy / len);
        }
    } else {
        ox = 2.0 * key.x - x;
        oy = 2.0 * key.y - y;
    }
    if (ox < oppLower && ox != key.x) {
        oy = key.y + (oppLower - key.x) * (oy - key.y) / (ox - key.x);
        ox = oppLower;
    }
    if (ox > oppUpper && ox != key.x) {
        oy = key.y + (oppUpper - key.x) * (oy - key.y) / (ox - key.x);
        ox = oppUpper;
    }
    if (mode == kModeSymmetric) {
        const double l1 = std::hypot(x - key.x, y - key.y);
        const double l2 = std::hypot(ox - key.x, oy - key.y);
        const float shortest = static_cast<float>(std::min(l1, l2));
        auto shorten = [&](double& px, double& py, double length) {
            if (length <= 0.0)
                return;
            const float dx = static_cast<float>((px - key.x) / length);
            const float dy = static_cast<float>((py - key.y) / length);
            px = key.x + static_cast<double>(dx * shortest);
            py = key.y + static_cast<double>(dy * shortest);
        };
        shorten(x, y, l1);
        shorten(ox, oy, l2);
    }
    dragged.Set(x, y);
    opposite.Set(ox, oy);
    return result;
}

int CSpline::HitHandle(double x, double y) const {
    const int n = KeyCount();
    auto near = [&](const CUIControlPoint& handle) {
        return std::fabs(handle.x - x) < 0.1 && std::fabs(handle.y - y) < 0.1;
    };
    for (int i = 0; i < n; ++i) {
        const CSplinePoint& key = *SplineKey(i);
        if (i > 0 && near(key.inHandle))
            return key.inHandle.id;
        if (i < n - 1 && near(key.outHandle))
            return key.outHandle.id;
    }
    return 0;
}

void CSpline::AddKey(double x, double y) {
    const int place = InsertionPlace(x);
    if (place < 0)
        return;
    CSplinePoint& left = *SplineKey(place - 1);
    CSplinePoint& right = *SplineKey(place);
    const double t = MotionBezierParameter(left.x, left.outHandle.x, right.inHandle.x, right.x, x);
    C2DPoint q0, q1, q2, r0, r1;
    q0.Lerp(left, left.outHandle, t);
    q1.Lerp(left.outHandle, right.inHandle, t);
    q2.Lerp(right.inHandle, right, t);
    r0.Lerp(q0, q1, t);
    r1.Lerp(q1, q2, t);
    auto key = std::make_unique<CSplinePoint>(x, y);
    key->inHandle.Set(r0.x, r0.y);
    key->outHandle.Set(r1.x, r1.y);
    left.outHandle.Set(q0.x, q0.y);
    right.inHandle.Set(q2.x, q2.y);
    InsertKey(static_cast<size_t>(place), std::move(key));
}

std::unique_ptr<CFunctionBase> CSpline::Clone(bool deep) const {
    auto copy = std::make_unique<CSpline>();
    copy->CopyFrom(*this, deep);
    return copy;
}

void CSpline::Discretize(CDiscretizedCurve& samples, double steps) const {
    samples.Clear();
    if (keys_.size() < 2)
        return;
    AppendSample(samples, keys_.front()->x, keys_.front()->y);
    if (!(steps >= 1.0) || steps > 1e6)
        return;
    for (int i = 0; i + 1 < KeyCount(); ++i) {
        const Segment segment = SegmentOf(*SplineKey(i), *SplineKey(i + 1));
        for (int k = 1; k <= steps; ++k) {
            const double t = k / steps;
            AppendSample(samples, segment.x.At(t), segment.y.At(t));
        }
    }
}

double CSpline::EvaluateSegment(int i, int j, double x) const {
    if (i < 0 || j != i + 1 || static_cast<size_t>(j) >= keys_.size())
        return 0.0;
    const auto& k0 = static_cast<const CSplinePoint&>(*keys_[static_cast<size_t>(i)]);
    const auto& k1 = static_cast<const CSplinePoint&>(*keys_[static_cast<size_t>(j)]);
    if (!(x >= k0.x && x <= k1.x))
        return 0.0;
    if (x == k0.x)
        return k0.y;
    if (x == k1.x)
        return k1.y;
    const Segment segment = SegmentOf(k0, k1);
    // Seven rounds of bisection on [0, 1]. Every bracket end is a multiple of 1/128, so
    // the bracket is kept as the integer `k` of its lower end: `(k + step) / 128` is
    // exactly the midpoint that `(hi - lo) * 0.5 + lo` gives. Rounds go in pairs: the
    // midpoint and both midpoints that may follow it are evaluated side by side and the
    // outcome is selected without branches, which halves the chain of dependent work.
    auto xAt = [&segment](int n) { return segment.x.At(n / 128.0); };
    int k = 0;
    for (int step = 64; step >= 2; step >>= 2) {
        const int half = step >> 1;
        const bool right = !(x < xAt(k + step));
        const bool rightOfLower = !(x < xAt(k + half));
        const bool rightOfUpper = !(x < xAt(k + step + half));
        k += right ? step + (rightOfUpper ? half : 0) : (rightOfLower ? half : 0);
    }
    k += x < xAt(k + 1) ? 0 : 1;
    // The bracket ends that were never moved stay at the keys themselves.
    const double lo = k / 128.0;
    const double hi = (k + 1) / 128.0;
    const double xLo = k == 0 ? k0.x : segment.x.At(lo);
    const double xHi = k == 127 ? k1.x : segment.x.At(hi);
    const double yLo = segment.y.At(lo);
    if (xHi == xLo)
        return yLo;
    return yLo + (x - xLo) * (segment.y.At(hi) - yLo) / (xHi - xLo);
}

void CSpline::SetKeyValue(int index, double y, double* outX) {
    CSplinePoint* key = SplineKey(index);
    if (!key)
        return;
    const double dy = y - key->y;
    key->y = y;
    key->inHandle.y += dy;
    key->outHandle.y += dy;
    if (outX)
        *outX = key->x;
}

void CSpline::SetFromValues(const double* values, int firstFrame, int count) {
    CFunctionBase::SetFromValues(values, firstFrame, count);
    if (count <= 0)
        return;
    for (int i = 0; i < count; ++i) {
        CSplinePoint& key = *SplineKey(i);
        key.inHandle.Set(0.0, 0.0);
        key.outHandle.Set(0.0, 0.0);
    }
    CSplinePoint& first = *SplineKey(0);
    CSplinePoint& last = *SplineKey(count - 1);
    const int third = (count - 1) / 3;
    first.inHandle.Set(-1.0, -1.0);
    last.outHandle.Set(-1.0, -1.0);
    first.outHandle.Set(first.x + third, first.y);
    last.inHandle.Set(last.x - third, last.y);
    NumberAllHandles();
}

void CSpline::ConvertFrom(const CFunctionBase& source) {
    CFunctionBase::ConvertFrom(source);
    const int n = KeyCount();
    for (int i = 0; i < n; ++i) {
        SplineKey(i)->inHandle.Set(0.0, 0.0);
        SplineKey(i)->outHandle.Set(0.0, 0.0);
    }
    for (int i = 1; i < n; ++i) {
        CSplinePoint& key = *SplineKey(i);
        CSplinePoint& prev = *SplineKey(i - 1);
        const double third = (key.x - prev.x) / 3.0;
        const double slopeIn = 2.0 * (key.y - source.Evaluate(key.x - 0.5));
        const double slopeOut = 2.0 * (source.Evaluate(prev.x + 0.5) - prev.y);
        prev.outHandle.Set(prev.x + third, prev.y + third * slopeOut);
        key.inHandle.Set(key.x - third, key.y - third * slopeIn);
    }
    NumberAllHandles();
}
