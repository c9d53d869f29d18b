#include "motion/C3DFunctionAdapter.h"

#include <algorithm>

CAdapted3DPoint::CAdapted3DPoint(C3DFunctionPoint* key, int axis)
    : CPlainFunctionPoint(key->frame, key->Axis(axis)), source(key) {
    index = key->index;
}

void CDiscretized3DCurveAdapter::Clear() {
    if (source)
        source->Clear();
}

void CDiscretized3DCurveAdapter::Get(size_t i, CCurvePoint& out) const {
    C3DCurvePoint sample;
    if (source && source->GetSample(i, sample))
        out.Set(sample.frame, sample.Axis(axis));
    else
        out.Set(0.0, 0.0);
}

C3DFunctionAdapter::C3DFunctionAdapter(C3DFunctionPlace* pathPlace, int axis)
    : path_(pathPlace), axis_(std::clamp(axis, 0, 2)) {
    Rebuild();
}

void C3DFunctionAdapter::Rebuild() const {
    adapted_.clear();
    for (const auto& key : Path()->GetKeys())
        adapted_.push_back(std::make_unique<CAdapted3DPoint>(key.get(), axis_));
}

const CFunctionBase::KeyArray& C3DFunctionAdapter::GetKeys() const {
    Rebuild();
    return adapted_;
}

int C3DFunctionAdapter::GetDuration() const {
    const C3DFunction& path = *Path();
    if (path.KeyCount() == 0)
        return 0;
    return MotionTruncFrame(path.GetKey(path.KeyCount() - 1)->frame) + 1;
}

CFunctionPoint* C3DFunctionAdapter::GetKey(int index) const {
    if (index < 0 || static_cast<size_t>(index) >= adapted_.size())
        return nullptr;
    return adapted_[static_cast<size_t>(index)].get();
}

void C3DFunctionAdapter::AddKey(double frame, double value) {
    C3DPoint position = Path()->Evaluate(frame);
    position.SetAxis(axis_, value);
    int index = -1;
    Path()->AddKey(position, frame, &index, true);
    Rebuild();
}

void C3DFunctionAdapter::DeleteKey(int index) {
    Path()->DeleteKey(index);
    Rebuild();
}

std::unique_ptr<CFunctionBase> C3DFunctionAdapter::Clone(bool) const {
    return std::make_unique<C3DFunctionAdapter>(path_, axis_);
}

double C3DFunctionAdapter::Evaluate(double frame) const {
    return Path()->Evaluate(frame).Axis(axis_);
}

double C3DFunctionAdapter::EvaluateSegment(int, int, double frame) const {
    return Evaluate(frame);
}

void C3DFunctionAdapter::Discretize(CDiscretizedCurve& samples, double steps) const {
    C3DFunction& path = *Path();
    path.Discretize(static_cast<int>(steps));
    CDiscretized3DCurve& cache = path.GetCache();
    if (auto* adapter = dynamic_cast<CDiscretized3DCurveAdapter*>(&samples)) {
        adapter->source = &cache;
        adapter->axis = axis_;
        return;
    }
    samples.Clear();
    for (const C3DCurvePoint& sample : cache.Samples())
        samples.Append(CCurvePoint(sample.frame, sample.Axis(axis_)));
}

void C3DFunctionAdapter::SetKeyValue(int index, double value, double* outFrame) {
    C3DFunctionPoint* key = Path()->GetKey(index);
    if (!key)
        return;
    C3DPoint position = *key;
    position.SetAxis(axis_, value);
    Path()->MoveKey(index, position, outFrame);
    if (CFunctionPoint* adapted = GetKey(index))
        adapted->y = key->Axis(axis_);
}

void C3DFunctionAdapter::OffsetValues(double dy) {
    C3DPoint delta;
    delta.SetAxis(axis_, dy);
    Path()->OffsetAll(delta);
    Rebuild();
}

void C3DFunctionAdapter::HoldValue(double frame0, double frame1, bool insertFirst) {
    C3DFunction& path = *Path();
    const double v = Evaluate(frame0);
    auto lockKeyAt = [&path](double frame) {
        const int index = path.FindKeyAt(frame);
        if (index < 0)
            path.AddKey(path.Evaluate(frame), frame, nullptr, true);
        else if (!path.GetKey(index)->lockedInTime)
            path.SetLockInTime(index, frame, true);
    };
    if (insertFirst)
        lockKeyAt(frame0);
    lockKeyAt(frame1);
    Rebuild();
    SetKeyValue(path.FindKeyAt(frame1), v, nullptr);
}

void C3DFunctionAdapter::SetLockInTime(int index, double frame, bool lock) {
    Path()->SetLockInTime(index, frame, lock);
    Path()->Discretize(0);
    Rebuild();
}

void C3DFunctionAdapter::SetLockInSpace(int index, double frame, bool lock) {
    Path()->SetLockInSpace(index, frame, lock);
    Path()->Discretize(0);
    Rebuild();
}

bool C3DFunctionAdapter::IsLockedInTime(int index) const {
    const C3DFunctionPoint* key = Path()->GetKey(index);
    return key && key->lockedInTime != 0;
}
