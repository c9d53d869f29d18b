#include "motion/CCatmullCurve.h"

#include "core/DB_Archive.h"
#include "motion/CInterpolation.h"

#include <algorithm>
#include <cmath>

namespace {

struct Vec {
    double x, y, z;
};

Vec operator-(const C3DPoint& a, const C3DPoint& b) {
    return Vec{static_cast<double>(a.x) - b.x, static_cast<double>(a.y) - b.y,
               static_cast<double>(a.z) - b.z};
}
Vec operator+(const Vec& a, const Vec& b) {
    return Vec{a.x + b.x, a.y + b.y, a.z + b.z};
}
Vec operator-(const Vec& a, const Vec& b) {
    return Vec{a.x - b.x, a.y - b.y, a.z - b.z};
}
Vec operator*(double s, const Vec& v) {
    return Vec{s * v.x, s * v.y, s * v.z};
}

double Ratio(double numerator, double denominator) {
    return denominator == 0.0 ? 0.0 : numerator / denominator;
}

float Single(double v) {
    return static_cast<float>(v);
}

} // namespace

CCatmullCurve::CCatmullCurve(int16_t frame0, const C3DPoint& position0, int16_t frame1,
                             const C3DPoint& position1, CFunctionPlace* velocity, uint8_t modeByte)
    : C3DFunction(modeByte), velocityPlace(velocity) {
    for (auto [frame, position] : {std::pair{frame0, position0}, std::pair{frame1, position1}}) {
        auto key = std::make_unique<CCatmullPoint>(position, frame);
        key->lockedInTime = 1;
        key->lockedInSpace = 1;
        keys_.push_back(std::move(key));
    }
    Renumber();
}

void CCatmullCurve::ReadTail(DB_Archive& archive) {
    C3DFunction::ReadTail(archive);
    if (archive.Version() <= 0x1F)
        archive.ReadU64();
}

void CCatmullCurve::SetLockInTime(int index, double frame, bool lock) {
    C3DFunctionPoint* key = GetKey(index);
    if (!key)
        return;
    key->SetLockedInTime(lock);
    if (lock)
        key->SetFrame(std::floor(frame));
    dirty_ = 1;
}

void CCatmullCurve::SetLockInSpace(int index, double frame, bool lock) {
    C3DFunctionPoint* key = GetKey(index);
    if (!key)
        return;
    key->SetLockedInSpace(lock);
    if (lock)
        key->SetFrame(frame);
    dirty_ = 1;
}

std::unique_ptr<C3DFunction> CCatmullCurve::Clone(bool deep) const {
    auto copy = std::make_unique<CCatmullCurve>();
    copy->smoothness_ = smoothness_;
    if (deep) {
        copy->velocityPlace = velocityPlace;
        copy->CopyFrom(*this);
    }
    return copy;
}

void CCatmullCurve::CopyFrom(const C3DFunction& source) {
    C3DFunction::CopyFrom(source);
    evenPace_.reset();
}

void CCatmullCurve::SetFromPoints(const C3DPoint* points, int firstFrame, int count,
                                  CFunctionPlace* velocity) {
    keys_.clear();
    velocityPlace = velocity;
    for (int k = 0; k < count; ++k) {
        auto key = std::make_unique<CCatmullPoint>(points[k], firstFrame + k);
        key->index = static_cast<int16_t>(k);
        key->lockedInTime = 1;
        key->lockedInSpace = 1;
        key->tension = key->continuity = key->bias = 0.0f;
        keys_.push_back(std::move(key));
    }
    if (!keys_.empty()) {
        static_cast<CCatmullPoint&>(*keys_.front()).TakeDefaults();
        static_cast<CCatmullPoint&>(*keys_.back()).TakeDefaults();
    }
    cache_.Clear();
    dirty_ = 1;
}

const CFunctionBase& CCatmullCurve::Velocity() {
    if (velocityPlace && *velocityPlace)
        return **velocityPlace;
    if (!evenPace_) {
        const int16_t first =
            keys_.empty() ? 0 : static_cast<int16_t>(MotionTruncFrame(keys_.front()->frame));
        const int16_t last = keys_.empty() ? 0 : static_cast<int16_t>(MotionTruncFrame(keys_.back()->frame));
        evenPace_ = std::make_unique<CInterpolation>(first, first, last, last);
    }
    return *evenPace_;
}

void CCatmullCurve::Discretize(int steps) {
    if (!dirty_)
        return;
    if (keys_.size() < 2) {
        cache_.Clear();
        return;
    }
    SampleSpline(steps <= 0 ? smoothness_ : std::min(steps, kMaxSmoothness));
    evenPace_.reset();
    Reparametrise();
    dirty_ = 0;
}

void CCatmullCurve::SampleSpline(int steps) {
    const size_t n = keys_.size();
    cache_.Clear();
    cache_.steps = static_cast<int16_t>(steps);
    const int frames = GetDurationInFrames();
    cache_.Reserve((n - 1) * static_cast<size_t>(steps) + 1, frames > 0 ? static_cast<size_t>(frames) : 0);
    cache_.AppendSample(C3DCurvePoint(*keys_.front(), keys_.front()->frame));
    for (size_t i = 0; i + 1 < n; ++i) {
        const auto& k1 = static_cast<const CCatmullPoint&>(*keys_[i]);
        const auto& k2 = static_cast<const CCatmullPoint&>(*keys_[i + 1]);
        const C3DPoint& p0 = i > 0 ? static_cast<const C3DPoint&>(*keys_[i - 1]) : k1;
        const C3DPoint& p3 = i + 2 < n ? static_cast<const C3DPoint&>(*keys_[i + 2]) : k2;
        const double dA = k1.Distance(p0);
        const double dB = k2.Distance(k1);
        const double dC = p3.Distance(k2);
        const double w1 = Ratio(dB, dA + dB);
        const double w2 = Ratio(dC, dB + dC);
        const double t1 = k1.tension, c1 = k1.continuity, b1 = k1.bias;
        const double t2 = k2.tension, c2 = k2.continuity, b2 = k2.bias;
        const Vec inChord = k1 - p0;
        const Vec chord = k2 - k1;
        const Vec outChord = p3 - k2;
        const Vec r1 = ((1 - t1) * (1 + c1) * (1 + b1) * w1) * inChord +
                       ((1 - t1) * (1 - c1) * (1 - b1) * (1 - w1)) * chord;
        const Vec r2 = ((1 - t2) * (1 - c2) * (1 + b2) * w2) * chord +
                       ((1 - t2) * (1 + c2) * (1 - b2) * (1 - w2)) * outChord;
        const Vec a = 2.0 * (Vec{0, 0, 0} - chord) + r1 + r2;
        const Vec bc = 3.0 * chord - 2.0 * r1 - r2;
        for (int k = 1; k <= steps; ++k) {
            const double s = static_cast<double>(k) / steps;
            const double s2 = s * s;
            const double s3 = s2 * s;
            const C3DPoint sample(a.x * s3 + bc.x * s2 + r1.x * s + k1.x,
                                  a.y * s3 + bc.y * s2 + r1.y * s + k1.y,
                                  a.z * s3 + bc.z * s2 + r1.z * s + k1.z);
            cache_.AppendSample(C3DCurvePoint(sample, 0.0));
        }
    }
}

void CCatmullCurve::Reparametrise() {
    const CFunctionBase& velocity = Velocity();
    velocity.Discretize(velocitySamples_, CFunctionBase::kSearchSteps);
    cache_.ClearRecords();
    // The search for each sample goes on from where the previous one ended, which finds
    // the same bracket as a search from the start while the samples do not fall.
    bool rising = true;
    {
        CCurvePoint previous, current;
        for (size_t i = 1; i < velocitySamples_.Count() && rising; ++i) {
            velocitySamples_.Get(i - 1, previous);
            velocitySamples_.Get(i, current);
            rising = current.y >= previous.y;
        }
    }
    auto pace = [&velocity](double frame) { return Single(velocity.Evaluate(frame)); };
    std::vector<C3DCurvePoint>& samples = cache_.Samples();
    const size_t steps = static_cast<size_t>(cache_.steps);
    const size_t n = keys_.size();
    size_t a = 0;
    while (a + 1 < n) {
        size_t b = a + 1;
        while (b + 1 < n && !keys_[b]->lockedInTime)
            ++b;
        const size_t count = steps * (b - a);
        const size_t s0 = steps * a;
        const size_t s1 = s0 + count;
        const double fa = MotionTruncFrame(keys_[a]->frame);
        const double fb = MotionTruncFrame(keys_[b]->frame);
        const double nf = fb - fa;
        const double v0 = velocity.Evaluate(fa);
        const double dV = velocity.Evaluate(fb) - v0;
        double length = 0.0;
        for (size_t i = s0 + 1; i <= s1; ++i)
            length += samples[i].Distance(samples[i - 1]);
        samples[s0].frame = fa;
        double acc = 0.0;
        double prevT = fa;
        size_t j = 0;
        size_t cursor = 0;
        const bool forward = rising && dV >= 0.0;
        for (size_t i = s0 + 1; i <= s1; ++i) {
            const C3DCurvePoint& current = samples[i];
            const C3DCurvePoint& previous = samples[i - 1];
            ++j;
            double u;
            if (length <= 0.0) {
                u = static_cast<double>(i - s0) / static_cast<double>(count);
            } else if (i == s1) {
                u = 1.0;
            } else {
                acc += current.Distance(previous);
                if (!forward)
                    cursor = 0;
                double t = prevT;
                if (!velocity.FindFrameFrom(velocitySamples_, v0 + (acc / length) * dV, cursor, t))
                    t = prevT;
                u = nf == 0.0 ? 0.0 : std::clamp((t - fa) / nf, 0.0, 1.0);
            }
            const double frame = u * nf + fa;
            samples[i].frame = frame;
            if (std::floor(prevT) < std::floor(frame) || i == 1) {
                double k = i == 1 ? std::floor(prevT) : std::floor(prevT) + 1.0;
                const float vPrev = pace(prevT);
                const float vCur = pace(frame);
                for (; k <= frame; k += 1.0) {
                    const float vk = pace(k);
                    const double w = vCur == vPrev ? 0.0 : static_cast<double>((vk - vPrev) / (vCur - vPrev));
                    C3DPoint position;
                    position.Lerp(previous, current, w);
                    cache_.AppendRecord(position, previous, current);
                }
            }
            if (j == steps && i != s1) {
                keys_[a + (i - s0) / steps]->SetFrame(frame);
                j = 0;
            }
            prevT = frame;
        }
        a = b;
    }
}

C3DPoint CCatmullCurve::Evaluate(double frame, bool wantNeighbours, C3DPoint* outBefore, C3DPoint* outAfter) {
    // A cache that was cleared from outside counts as stale.
    if (dirty_ || (cache_.SampleCount() < 2 && keys_.size() >= 2)) {
        dirty_ = 1;
        Discretize(0);
    }
    if (keys_.empty())
        return C3DPoint();
    const std::vector<C3DCurvePoint>& samples = cache_.Samples();
    auto neighbours = [&](size_t first) {
        if (wantNeighbours && samples.size() >= 2) {
            if (outBefore)
                *outBefore = samples[first];
            if (outAfter)
                *outAfter = samples[first + 1];
        }
    };
    if (keys_.size() < 2 || frame <= keys_.front()->frame) {
        neighbours(0);
        return *keys_.front();
    }
    if (frame >= keys_.back()->frame) {
        neighbours(samples.size() >= 2 ? samples.size() - 2 : 0);
        return *keys_.back();
    }
    size_t lo = 0;
    size_t hi = keys_.size() - 1;
    while (lo + 1 < hi) {
        const size_t mid = lo + (hi - lo) / 2;
        if (keys_[mid]->frame < frame)
            lo = mid;
        else
            hi = mid;
    }
    const size_t steps = static_cast<size_t>(cache_.steps);
    size_t slo = lo * steps;
    size_t shi = std::min(slo + steps, samples.size() - 1);
    while (slo + 1 < shi) {
        const size_t mid = slo + (shi - slo) / 2;
        if (samples[mid].frame < frame)
            slo = mid;
        else
            shi = mid;
    }
    const C3DCurvePoint& a = samples[slo];
    const C3DCurvePoint& c = samples[shi];
    const CFunctionBase& velocity = Velocity();
    const float vA = Single(velocity.Evaluate(a.frame));
    const float vC = Single(velocity.Evaluate(c.frame));
    const float v = Single(velocity.Evaluate(frame));
    const double w = vC == vA ? 0.0 : static_cast<double>((v - vA) / (vC - vA));
    if (wantNeighbours) {
        if (outBefore)
            *outBefore = a;
        if (outAfter)
            *outAfter = c;
    }
    C3DPoint result;
    result.Lerp(a, c, w);
    return result;
}
