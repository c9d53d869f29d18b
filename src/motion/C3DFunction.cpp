#include "motion/C3DFunction.h"

#include "core/DB_Archive.h"
#include "motion/CCatmullPoint.h"

#include <algorithm>
#include <cmath>

void C3DFunction::Read(DB_Archive& archive) {
    keys_.clear();
    cache_.Clear();
    LoadPoints(archive);
    ReadTail(archive);
    dirty_ = 1;
}

void C3DFunction::ReadTail(DB_Archive& archive) {
    modeByte_ = archive.ReadU8();
    if (archive.Version() <= 0x1F) {
        archive.ReadU32();
        archive.ReadU32();
        return;
    }
    const int16_t smoothness = archive.ReadI16();
    if (smoothness < 1 || smoothness > kMaxSmoothness)
        archive.ThrowUnexpected();
    smoothness_ = smoothness;
}

void C3DFunction::LoadPoints(DB_Archive& archive) {
    // A key is at least a position, an index, a frame and two flags.
    const uint32_t count = archive.ReadCount(24);
    keys_.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        std::unique_ptr<C3DFunctionPoint> key = NewPoint();
        key->Read(archive);
        const double frame = key->frame;
        if (!(frame >= kMinFrame && frame <= kMaxFrame) || (!keys_.empty() && frame < keys_.back()->frame))
            archive.ThrowUnexpected();
        keys_.push_back(std::move(key));
    }
}

void C3DFunction::Write(DB_Archive& archive) {
    archive.WriteCount(keys_.size());
    for (auto& key : keys_)
        key->Write(archive);
    archive.WriteU8(modeByte_);
    archive.WriteI16(smoothness_);
}

void C3DFunction::CopyFrom(const C3DFunction& source) {
    keys_.clear();
    for (const auto& key : source.keys_) {
        std::unique_ptr<C3DFunctionPoint> copy = NewPoint();
        copy->SetPosition(*key);
        copy->index = key->index;
        copy->frame = key->frame;
        copy->lockedInTime = key->lockedInTime;
        copy->lockedInSpace = key->lockedInSpace;
        auto* from = dynamic_cast<const CCatmullPoint*>(key.get());
        auto* to = dynamic_cast<CCatmullPoint*>(copy.get());
        if (from && to) {
            to->tension = from->tension;
            to->continuity = from->continuity;
            to->bias = from->bias;
        }
        keys_.push_back(std::move(copy));
    }
    modeByte_ = source.modeByte_;
    smoothness_ = source.smoothness_;
    cache_ = source.cache_;
    dirty_ = source.dirty_;
}

void C3DFunction::SetSmoothness(int steps) {
    smoothness_ = static_cast<int16_t>(std::clamp(steps, 1, kMaxSmoothness));
    dirty_ = 1;
}

int C3DFunction::InsertionPlace(double frame) const {
    if (keys_.size() < 2 || !(frame > keys_.front()->frame && frame < keys_.back()->frame))
        return -1;
    if (FindKeyAt(frame) >= 0)
        return -1;
    for (size_t i = 0; i < keys_.size(); ++i) {
        if (keys_[i]->frame > frame)
            return static_cast<int>(i);
    }
    return -1;
}

void C3DFunction::AddKey(const C3DPoint& position, double frame, int* outIndex, bool locked) {
    const int place = InsertionPlace(frame);
    if (place < 0)
        return;
    std::unique_ptr<C3DFunctionPoint> key = NewPoint();
    key->SetPosition(position);
    key->frame = frame;
    key->lockedInTime = locked ? 1 : 0;
    auto* from = dynamic_cast<const CCatmullPoint*>(&position);
    auto* to = dynamic_cast<CCatmullPoint*>(key.get());
    if (from && to) {
        to->tension = from->tension;
        to->continuity = from->continuity;
        to->bias = from->bias;
    }
    keys_.insert(keys_.begin() + place, std::move(key));
    Renumber();
    dirty_ = 1;
    if (outIndex)
        *outIndex = place;
}

int C3DFunction::FindKeyAt(double frame) const {
    for (size_t i = 0; i < keys_.size(); ++i) {
        if (keys_[i]->frame == frame)
            return static_cast<int>(i);
    }
    return -1;
}

void C3DFunction::MoveKey(int index, const C3DPoint& position, double* outFrame) {
    C3DFunctionPoint* key = GetKey(index);
    if (!key) {
        if (outFrame)
            *outFrame = -1.0;
        return;
    }
    key->SetPosition(position);
    if (outFrame)
        *outFrame = key->frame;
    dirty_ = 1;
}

void C3DFunction::SetDuration(int length) {
    if (keys_.size() < 2 || length < 2)
        return;
    length = std::min(length, 32767);
    const int first = MotionTruncFrame(keys_.front()->frame);
    const int last = MotionTruncFrame(keys_.back()->frame);
    if (last - first + 1 == length || last == first)
        return;
    const double scale = static_cast<double>(length - 1) / static_cast<double>(last - first);
    for (size_t i = 1; i + 1 < keys_.size(); ++i) {
        C3DFunctionPoint& key = *keys_[i];
        key.SetLockedInTime(false);
        key.SetFrame((key.frame - first) * scale + first);
    }
    keys_.back()->SetFrame(first + length - 1);
    dirty_ = 1;
}

C3DFunctionPoint* C3DFunction::GetKey(int index) const {
    if (index < 0 || index >= KeyCount())
        return nullptr;
    return keys_[static_cast<size_t>(index)].get();
}

void C3DFunction::DeleteKey(int index) {
    if (index <= 0 || index >= KeyCount() - 1)
        return;
    keys_.erase(keys_.begin() + index);
    Renumber();
    dirty_ = 1;
}

void C3DFunction::OffsetAll(const C3DPoint& delta) {
    for (auto& key : keys_)
        key->Add(delta);
    dirty_ = 1;
}

void C3DFunction::HoldPosition(double frame0, double frame1, bool lockFirst) {
    const C3DPoint p = Evaluate(frame0);
    auto lockKeyAt = [this](double frame, const C3DPoint& position) {
        const int index = FindKeyAt(frame);
        if (index < 0) {
            AddKey(position, frame, nullptr, true);
        } else if (!keys_[static_cast<size_t>(index)]->lockedInTime) {
            SetLockInTime(index, frame, true);
        }
    };
    if (lockFirst)
        lockKeyAt(frame0, p);
    lockKeyAt(frame1, Evaluate(frame1));
    MoveKey(FindKeyAt(frame1), p, nullptr);
    dirty_ = 1;
}

void C3DFunction::ExtendTo(int length) {
    if (keys_.size() < 2 || length <= GetDurationInFrames() || length > 32767)
        return;
    const C3DFunctionPoint& last = *keys_.back();
    std::unique_ptr<C3DFunctionPoint> key = NewPoint();
    key->SetPosition(last);
    key->frame = MotionTruncFrame(keys_.front()->frame) + length - 1;
    key->lockedInTime = 1;
    key->lockedInSpace = 1;
    keys_.push_back(std::move(key));
    Renumber();
    dirty_ = 1;
}

int C3DFunction::GetDurationInFrames() const {
    if (keys_.empty())
        return 0;
    return MotionTruncFrame(keys_.back()->frame - keys_.front()->frame) + 1;
}

bool C3DFunction::GetFrameRecord(int frame, C3DPoint& position, C3DPoint& before, C3DPoint& after) {
    if (dirty_ || (cache_.RecordCount() == 0 && keys_.size() >= 2)) {
        dirty_ = 1;
        Discretize(0);
    }
    const size_t count = cache_.RecordCount();
    if (count == 0)
        return false;
    const int clamped = std::clamp(frame, 0, static_cast<int>(count - 1));
    cache_.GetPosition(clamped, position);
    cache_.GetNeighbours(clamped, before, after);
    return true;
}

void C3DFunction::Renumber() {
    for (size_t i = 0; i < keys_.size(); ++i)
        keys_[i]->index = static_cast<int16_t>(i);
}

int C3DFunction::FirstKeyAfter(double frame) const {
    for (size_t i = 0; i < keys_.size(); ++i) {
        if (keys_[i]->frame > frame)
            return static_cast<int>(i);
    }
    return -1;
}

int C3DFunction::LastKeyBefore(double frame) const {
    const int after = FirstKeyAfter(frame);
    return after < 0 ? -1 : after - 1;
}
