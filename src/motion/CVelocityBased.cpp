#include "motion/CVelocityBased.h"

void CVelocityBased::SetDuration(int length) {
    if (reference && *reference)
        (*reference)->SetDuration(length);
    CFunctionBase::SetDuration(length);
}

std::unique_ptr<CFunctionBase> CVelocityBased::Clone(bool deep) const {
    auto copy = std::make_unique<CVelocityBased>();
    copy->CopyFrom(*this, deep);
    return copy;
}

void CVelocityBased::CopyFrom(const CFunctionBase& source, bool deep) {
    CFunctionBase::CopyFrom(source, deep);
    if (auto* other = dynamic_cast<const CVelocityBased*>(&source); other && deep)
        reference = other->reference;
}

void CVelocityBased::Discretize(CDiscretizedCurve& samples, double steps) const {
    samples.Clear();
    if (keys_.empty())
        return;
    AppendSample(samples, keys_.front()->x, keys_.front()->y);
    if (!(steps >= 1.0) || steps > 1e6)
        return;
    for (size_t i = 0; i + 1 < keys_.size(); ++i) {
        const double x0 = keys_[i]->x;
        const double x1 = keys_[i + 1]->x;
        for (int k = 1; k <= steps; ++k) {
            const double x = x0 + k * (x1 - x0) / steps;
            AppendSample(samples, x, EvaluateSegment(static_cast<int>(i), static_cast<int>(i + 1), x));
        }
    }
}

double CVelocityBased::EvaluateSegment(int i, int j, double x) const {
    // The arguments are taken on trust as far as the curve's logic goes; indexes out
    // of range still give 0.0 rather than a read outside the keys.
    if (i < 0 || j < 0 || i >= KeyCount() || j >= KeyCount())
        return 0.0;
    const CFunctionPoint& k0 = *keys_[static_cast<size_t>(i)];
    const CFunctionPoint& k1 = *keys_[static_cast<size_t>(j)];
    const double dy = k1.y - k0.y;
    if (const CFunctionBase* f = Reference(); f && f != this) {
        const double f0 = f->Evaluate(k0.x);
        const double dF = f->Evaluate(k1.x) - f0;
        if (dF != 0.0)
            return k0.y + dy * (f->Evaluate(x) - f0) / dF;
    }
    const double slope = k1.x == k0.x ? 0.0 : dy / (k1.x - k0.x);
    return k0.y + (x - k0.x) * slope;
}
