#pragma once

#include "motion/C2DPoint.h"

#include <memory>
#include <vector>

// The sampled form of a scalar curve: what is drawn and what is searched when a curve
// is inverted. MinY and MaxY need at least one sample.
class CDiscretizedCurve {
public:
    virtual ~CDiscretizedCurve() = default;
    virtual std::unique_ptr<CDiscretizedCurve> Clone() const {
        return std::make_unique<CDiscretizedCurve>(*this);
    }
    virtual void Clear() { samples_.clear(); }
    virtual size_t Count() const { return samples_.size(); }
    virtual void Append(const CCurvePoint& point) { samples_.push_back(point); }
    virtual void Get(size_t i, CCurvePoint& out) const { out = samples_[i]; }
    virtual void Set(size_t i, const CCurvePoint& point) { samples_[i] = point; }
    virtual double MinY() const;
    virtual double MaxY() const;

    void Reserve(size_t count) { samples_.reserve(count); }

private:
    std::vector<CCurvePoint> samples_;
};
