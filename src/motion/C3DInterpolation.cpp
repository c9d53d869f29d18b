#include "motion/C3DInterpolation.h"

#include <algorithm>
#include <cmath>

C3DInterpolation::C3DInterpolation(int16_t frame0, const C3DPoint& position0, int16_t frame1,
                                   const C3DPoint& position1, uint8_t modeByte)
    : C3DFunction(modeByte) {
    smoothness_ = 1;
    keys_.push_back(std::make_unique<C3DInterpolationPoint>(position0, frame0));
    keys_.push_back(std::make_unique<C3DInterpolationPoint>(position1, frame1));
    Renumber();
}

std::unique_ptr<C3DFunction> C3DInterpolation::Clone(bool deep) const {
    auto copy = std::make_unique<C3DInterpolation>();
    if (deep)
        copy->CopyFrom(*this);
    return copy;
}

C3DPoint C3DInterpolation::Evaluate(double frame, bool wantNeighbours, C3DPoint* outBefore,
                                    C3DPoint* outAfter) {
    if (keys_.empty())
        return C3DPoint();
    size_t lo = 0;
    size_t hi = keys_.size() - 1;
    C3DPoint result;
    if (frame >= keys_.back()->frame) {
        lo = hi = keys_.size() - 1;
        result = *keys_.back();
    } else if (frame <= keys_.front()->frame) {
        lo = hi = 0;
        result = *keys_.front();
    } else {
        while (lo + 1 < hi) {
            const size_t mid = lo + (hi - lo) / 2;
            if (keys_[mid]->frame < frame)
                lo = mid;
            else
                hi = mid;
        }
        const C3DFunctionPoint& k0 = *keys_[lo];
        const C3DFunctionPoint& k1 = *keys_[hi];
        if (frame == k1.frame)
            result = k1;
        else
            result.Lerp(k0, k1, (frame - k0.frame) / (k1.frame - k0.frame));
    }
    if (wantNeighbours) {
        if (outBefore)
            *outBefore = *keys_[lo];
        if (outAfter)
            *outAfter = *keys_[hi];
    }
    return result;
}

void C3DInterpolation::Discretize(int) {
    cache_.Clear();
    cache_.steps = 1;
    const size_t n = keys_.size();
    cache_.Reserve(n, n);
    for (const auto& key : keys_)
        cache_.AppendSample(C3DCurvePoint(*key, key->frame));
    const std::vector<C3DCurvePoint>& samples = cache_.Samples();
    for (size_t i = 0; i < n; ++i)
        cache_.AppendRecord(samples[i], samples[i > 0 ? i - 1 : i], samples[i + 1 < n ? i + 1 : i]);
    dirty_ = 0;
}

void C3DInterpolation::AddKey(const C3DPoint& position, double frame, int* outIndex, bool locked) {
    C3DFunction::AddKey(position, frame, outIndex, locked);
    Discretize(0);
    dirty_ = 1;
}

void C3DInterpolation::MoveKey(int index, const C3DPoint& position, double* outFrame) {
    C3DFunction::MoveKey(index, position, outFrame);
    Discretize(0);
}

void C3DInterpolation::SetDurationRounded(int length) {
    if (keys_.size() < 2 || length < 2)
        return;
    length = std::min(length, 32767);
    const int first = MotionTruncFrame(keys_.front()->frame);
    const int last = MotionTruncFrame(keys_.back()->frame);
    if (last - first + 1 == length || last == first)
        return;
    const double scale = static_cast<double>(length - 1) / static_cast<double>(last - first);
    for (size_t i = 1; i + 1 < keys_.size(); ++i)
        keys_[i]->SetFrame(std::floor((keys_[i]->frame - first) * scale + first + 0.5));
    keys_.back()->SetFrame(first + length - 1);
    for (size_t i = 1; i < keys_.size();) {
        if (keys_[i]->frame == keys_[i - 1]->frame) {
            // The last key stays: of a pair that meets on the last frame the earlier one goes.
            keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(i + 1 == keys_.size() ? i - 1 : i));
            continue;
        }
        ++i;
    }
    Renumber();
    dirty_ = 1;
}
