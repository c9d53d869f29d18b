#include "motion/CInterpolation.h"

CInterpolation::CInterpolation(int16_t x0, double y0, int16_t x1, double y1) {
    keys_.push_back(std::make_unique<CInterpolationPoint>(x0, y0));
    keys_.push_back(std::make_unique<CInterpolationPoint>(x1, y1));
    Renumber();
}

std::unique_ptr<CFunctionBase> CInterpolation::Clone(bool deep) const {
    auto copy = std::make_unique<CInterpolation>();
    copy->CopyFrom(*this, deep);
    return copy;
}

void CInterpolation::Discretize(CDiscretizedCurve& samples, double) const {
    samples.Clear();
    if (keys_.size() < 2)
        return;
    for (const auto& key : keys_)
        AppendSample(samples, key->x, key->y);
}

double CInterpolation::EvaluateSegment(int i, int j, double x) const {
    if (i < 0 || j != i + 1 || j >= KeyCount())
        return 0.0;
    const CFunctionPoint& k0 = *keys_[static_cast<size_t>(i)];
    const CFunctionPoint& k1 = *keys_[static_cast<size_t>(j)];
    if (x < k0.x || x > k1.x)
        return 0.0;
    if (x == k0.x)
        return k0.y;
    if (x == k1.x)
        return k1.y;
    C2DPoint point;
    point.Lerp(k0, k1, (x - k0.x) / (k1.x - k0.x));
    return point.y;
}
