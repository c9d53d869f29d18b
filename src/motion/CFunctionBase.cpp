#include "motion/CFunctionBase.h"

#include "core/DB_Archive.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

int MotionTruncFrame(double x) {
    if (!(x > INT16_MIN))
        return INT16_MIN;
    if (x > INT16_MAX)
        return INT16_MAX;
    return static_cast<int>(x);
}

void CFunctionBase::Read(DB_Archive& archive) {
    keys_.clear();
    LoadPoints(archive);
}

void CFunctionBase::Write(DB_Archive& archive) {
    archive.WriteCount(keys_.size());
    for (auto& key : keys_)
        key->Write(archive);
}

void CFunctionBase::LoadPoints(DB_Archive& archive) {
    // A key is at least two floats and two 16-bit fields.
    uint32_t count = archive.ReadCount(12);
    keys_.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        std::unique_ptr<CFunctionPoint> key = NewPoint();
        key->Read(archive);
        keys_.push_back(std::move(key));
    }
}

int CFunctionBase::GetDuration() const {
    if (keys_.empty())
        return 0;
    return MotionTruncFrame(keys_.back()->x) + 1;
}

void CFunctionBase::SetDuration(int length) {
    if (length < 2 || keys_.size() < 2)
        return;
    const int first = MotionTruncFrame(keys_.front()->x);
    const int last = MotionTruncFrame(keys_.back()->x);
    if (last == first)
        return;
    const double scale = static_cast<double>(length - 1) / static_cast<double>(last - first);
    size_t i = 0;
    while (i < keys_.size()) {
        CFunctionPoint& key = *keys_[i];
        const int newX = MotionTruncFrame((key.x - first) * scale + first + 0.5);
        CUIControlPoint* in = key.GetInHandle();
        CUIControlPoint* out = key.GetOutHandle();
        const double inD = in ? (key.x - in->x) * scale : 0.0;
        const double outD = out ? (out->x - key.x) * scale : 0.0;
        key.x = newX;
        if (in)
            in->x = newX - inD;
        if (out)
            out->x = newX + outD;
        if (i > 0 && MotionTruncFrame(keys_[i - 1]->x + 0.5) == MotionTruncFrame(key.x + 0.5)) {
            const bool isLast = i + 1 == keys_.size();
            if (!isLast) {
                keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(i));
                continue;
            }
            if (i - 1 > 0) {
                keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(i - 1));
                continue;
            }
        }
        ++i;
    }
    Renumber();
}

CFunctionPoint* CFunctionBase::GetKey(int index) const {
    if (index < 0 || index >= KeyCount())
        return nullptr;
    return keys_[static_cast<size_t>(index)].get();
}

C2DPoint CFunctionBase::MoveHandle(int, int, double, double) {
    return C2DPoint(-1.0, -1.0);
}

int CFunctionBase::InsertionPlace(double x) const {
    for (size_t i = 0; i < keys_.size(); ++i) {
        if (keys_[i]->x == x)
            return -1;
        if (keys_[i]->x > x)
            return i == 0 ? -1 : static_cast<int>(i);
    }
    return -1;
}

void CFunctionBase::InsertKey(size_t position, std::unique_ptr<CFunctionPoint> key) {
    keys_.insert(keys_.begin() + static_cast<std::ptrdiff_t>(position), std::move(key));
    Renumber();
}

void CFunctionBase::AddKey(double x, double y) {
    const int place = InsertionPlace(x);
    if (place < 0)
        return;
    std::unique_ptr<CFunctionPoint> key = NewPoint();
    key->Set(x, y);
    key->kind = 0;
    InsertKey(static_cast<size_t>(place), std::move(key));
}

void CFunctionBase::DeleteKey(int index) {
    if (index <= 0 || index >= KeyCount() - 1)
        return;
    keys_.erase(keys_.begin() + index);
    Renumber();
}

void CFunctionBase::Renumber() {
    const size_t n = keys_.size();
    for (size_t i = 0; i < n; ++i) {
        CFunctionPoint& key = *keys_[i];
        key.index = static_cast<int16_t>(i);
        if (i > 0)
            key.SetInHandleId(static_cast<int16_t>(2 * i));
        if (i + 1 < n)
            key.SetOutHandleId(static_cast<int16_t>(2 * i + 1));
    }
}

void CFunctionBase::CopyFrom(const CFunctionBase& source, bool deep) {
    keys_.clear();
    if (!deep)
        return;
    for (const auto& key : source.GetKeys()) {
        std::unique_ptr<CFunctionPoint> copy = NewPoint();
        copy->Assign(*key);
        keys_.push_back(std::move(copy));
    }
}

double CFunctionBase::Evaluate(double x) const {
    const int n = KeyCount();
    if (n == 0)
        return 0.0;
    if (keys_.back()->x < x)
        return keys_.back()->y;
    if (keys_.front()->x > x || n == 1)
        return keys_.front()->y;
    int lo = 0;
    int hi = n - 1;
    while (lo < hi - 1) {
        const int mid = lo + (hi - lo) / 2;
        if (keys_[static_cast<size_t>(mid)]->x < x)
            lo = mid;
        else
            hi = mid;
    }
    return EvaluateSegment(lo, hi, x);
}

bool CFunctionBase::FindFrameFrom(const CDiscretizedCurve& samples, double value, size_t& cursor,
                                  double& frame) const {
    const size_t count = samples.Count();
    CCurvePoint a;
    CCurvePoint b;
    size_t i = cursor;
    bool found = false;
    for (; i + 1 < count; ++i) {
        samples.Get(i, a);
        samples.Get(i + 1, b);
        const double low = std::min(a.y, b.y);
        const double high = std::max(a.y, b.y);
        if (value >= low && value <= high) {
            found = true;
            break;
        }
    }
    if (!found)
        return false;
    cursor = i;
    const int seg = SegmentOfSample(i);
    if (seg + 1 < KeyCount()) {
        for (int round = 0; round < 3; ++round) {
            const double mid = (a.x + b.x) * 0.5;
            const double y = EvaluateSegment(seg, seg + 1, mid);
            if (y > value)
                b.Set(mid, y);
            else
                a.Set(mid, y);
        }
    }
    const double w = b.y == a.y ? 0.0 : (value - a.y) / (b.y - a.y);
    frame = a.x + w * (b.x - a.x);
    return true;
}

double CFunctionBase::FindFrameForValue(CDiscretizedCurve& samples, double value, double startX) const {
    if (samples.Count() == 0)
        Discretize(samples, kSearchSteps);
    const size_t count = samples.Count();
    if (count == 0)
        return -1.0;
    size_t lo = 0;
    if (startX != 0.0) {
        size_t hi = count - 1;
        CCurvePoint point;
        while (lo + 1 < hi) {
            const size_t mid = lo + (hi - lo) / 2;
            samples.Get(mid, point);
            if (point.x < startX)
                lo = mid;
            else
                hi = mid;
        }
    }
    double frame = -1.0;
    if (!FindFrameFrom(samples, value, lo, frame))
        return -1.0;
    return frame;
}

void CFunctionBase::AppendSample(CDiscretizedCurve& samples, double x, double y) const {
    samples.Append(CCurvePoint(x, y));
}

void CFunctionBase::SetKeyValue(int index, double y, double* outX) {
    CFunctionPoint* key = GetKey(index);
    if (!key)
        return;
    key->y = y;
    if (outX)
        *outX = key->x;
}

int CFunctionBase::FindKeyAt(double x) const {
    for (size_t i = 0; i < keys_.size(); ++i) {
        if (keys_[i]->x == x)
            return static_cast<int>(i);
    }
    return -1;
}

void CFunctionBase::OffsetValues(double dy) {
    for (auto& key : GetKeys())
        key->y += dy;
}

void CFunctionBase::HoldValue(double x0, double x1, bool insertFirst) {
    const double v = Evaluate(x0);
    if (insertFirst && !IsKeyAt(x0))
        AddKey(x0, v);
    if (!IsKeyAt(x1))
        AddKey(x1, Evaluate(x1));
    double frame = 0.0;
    SetKeyValue(FindKeyAt(x1), v, &frame);
}

void CFunctionBase::SetFromValues(const double* values, int firstFrame, int count) {
    keys_.clear();
    for (int k = 0; k < count; ++k) {
        std::unique_ptr<CFunctionPoint> key = NewPoint();
        key->Set(firstFrame + k, values[k]);
        key->index = static_cast<int16_t>(k);
        keys_.push_back(std::move(key));
    }
}

void CFunctionBase::ConvertFrom(const CFunctionBase& source) {
    keys_.clear();
    for (const auto& from : source.GetKeys()) {
        std::unique_ptr<CFunctionPoint> key = NewPoint();
        key->Set(from->x, from->y);
        key->kind = from->kind;
        key->index = from->index;
        key->flag = from->flag;
        keys_.push_back(std::move(key));
    }
}
