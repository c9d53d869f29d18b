#include "motion/CFunctionAdapter.h"

#include "motion/CSpline.h"
#include "motion/CVelocityBased.h"

#include <algorithm>

CFunctionAdapter::CFunctionAdapter(CFunctionPlace* targetPlace) : target(targetPlace) {
    CFunctionAdapter::ResetRange();
}

void CFunctionAdapter::ResetRange() {
    minValue = -10000.0;
    maxValue = 10000.0;
}

void CFunctionAdapter::ClampKeyToRange(int index) {
    CFunctionPoint* key = Target()->GetKey(index);
    if (!key)
        return;
    key->y = std::clamp(key->y, minValue, maxValue);
    if (CUIControlPoint* in = key->GetInHandle())
        in->y = std::clamp(in->y, minValue, maxValue);
    if (CUIControlPoint* out = key->GetOutHandle())
        out->y = std::clamp(out->y, minValue, maxValue);
}

C2DPoint CFunctionAdapter::MoveHandle(int id, int mode, double x, double y) {
    Target()->MoveHandle(id, mode, x, y);
    if (id < 0)
        return C2DPoint(-1.0, -1.0);
    ClampKeyToRange(id / 2);
    if (CUIControlPoint* handle = Target()->GetHandle(id))
        return C2DPoint(handle->x, handle->y);
    return C2DPoint(-1.0, -1.0);
}

void CFunctionAdapter::SetKeyValue(int index, double y, double* outX) {
    ClampValue(index, y);
    Target()->SetKeyValue(index, y, outX);
    ClampKeyToRange(index);
}

CVelocityFunctionAdapter::CVelocityFunctionAdapter(CFunctionPlace* targetPlace)
    : CFunctionAdapter(targetPlace) {
    CVelocityFunctionAdapter::ResetRange();
}

void CVelocityFunctionAdapter::ResetRange() {
    minValue = 0.0;
    maxValue = 100.0;
}

void CVelocityFunctionAdapter::ClampValue(int index, double& y) {
    CFunctionBase& curve = *Target();
    CFunctionPoint* key = curve.GetKey(index);
    if (!key)
        return;
    if (index == 0) {
        y = 0.0;
        return;
    }
    if (index == curve.KeyCount() - 1) {
        y = 100.0;
        return;
    }
    CFunctionPoint* next = curve.GetKey(index + 1);
    CFunctionPoint* prev = curve.GetKey(index - 1);
    y = std::clamp(y, 0.01, 99.99);
    if (y > next->y)
        y = next->y;
    if (CUIControlPoint* nextIn = next->GetInHandle(); nextIn && nextIn->y < y)
        nextIn->y = y;
    if (y < prev->y)
        y = prev->y;
    if (CUIControlPoint* prevOut = prev->GetOutHandle(); prevOut && prevOut->y > y)
        prevOut->y = y;
    CUIControlPoint* in = key->GetInHandle();
    CUIControlPoint* out = key->GetOutHandle();
    const double inD = in ? in->y - key->y : 0.0;
    const double outD = out ? out->y - key->y : 0.0;
    if (in && inD + y < prev->y)
        in->y = prev->y - y + key->y;
    if (out && outD + y > next->y)
        out->y = next->y - y + key->y;
}

C2DPoint CVelocityFunctionAdapter::MoveHandle(int id, int mode, double x, double y) {
    CFunctionBase& curve = *Target();
    const int owner = id / 2;
    CFunctionPoint* key = curve.GetKey(owner);
    if (id < 0 || !key)
        return C2DPoint(-1.0, -1.0);
    if (id % 2 == 0) {
        if (CFunctionPoint* prev = curve.GetKey(owner - 1); prev && y < prev->y)
            y = prev->y;
        if (y > key->y)
            y = key->y;
    } else {
        if (CFunctionPoint* next = curve.GetKey(owner + 1); next && y > next->y)
            y = next->y;
        if (y < key->y)
            y = key->y;
    }
    curve.MoveHandle(id, mode, x, y);
    double own = key->y;
    ClampValue(owner, own);
    if (CUIControlPoint* handle = curve.GetHandle(id))
        return C2DPoint(handle->x, handle->y);
    return C2DPoint(-1.0, -1.0);
}

void CVelocityFunctionAdapter::AddKey(double x, double y) {
    CFunctionBase& curve = *Target();
    curve.AddKey(x, y);
    const int frame = MotionTruncFrame(x);
    for (int i = 1; i + 1 < curve.KeyCount(); ++i) {
        CFunctionPoint& key = *curve.GetKey(i);
        if (MotionTruncFrame(key.x) != frame)
            continue;
        CFunctionPoint& prev = *curve.GetKey(i - 1);
        CFunctionPoint& next = *curve.GetKey(i + 1);
        if (CUIControlPoint* in = key.GetInHandle(); in && in->y - key.y + y < prev.y)
            in->y = prev.y;
        if (CUIControlPoint* out = key.GetOutHandle(); out && out->y - key.y + y > next.y)
            out->y = next.y;
        if (CUIControlPoint* nextIn = next.GetInHandle(); nextIn && nextIn->y < y)
            nextIn->y = y;
        if (CUIControlPoint* prevOut = prev.GetOutHandle(); prevOut && prevOut->y > y)
            prevOut->y = y;
        break;
    }
}

CScaleFunctionAdapter::CScaleFunctionAdapter(CFunctionPlace* targetPlace, CFunctionPlace* velocityPlace)
    : CFunctionAdapter(targetPlace), velocity(velocityPlace) {}

void CScaleFunctionAdapter::ChangeKind(int kind) {
    std::unique_ptr<CFunctionBase> replacement;
    if (kind == 1)
        replacement = std::make_unique<CSpline>();
    else if (kind == 2)
        replacement = std::make_unique<CVelocityBased>(velocity);
    else
        return;
    replacement->ConvertFrom(*Target());
    *target = std::move(replacement);
}

CFOVFunctionAdapter::CFOVFunctionAdapter(CFunctionPlace* targetPlace) : CFunctionAdapter(targetPlace) {
    CFOVFunctionAdapter::ResetRange();
}

void CFOVFunctionAdapter::ResetRange() {
    minValue = 10.0;
    maxValue = 150.0;
}

void CFOVFunctionAdapter::ClampValue(int, double& y) {
    y = std::clamp(y, 10.0, 150.0);
}

C2DPoint CFOVFunctionAdapter::MoveHandle(int id, int mode, double x, double y) {
    return CFunctionAdapter::MoveHandle(id, mode, x, std::clamp(y, 10.0, 150.0));
}
