#pragma once

#include <cstdint>

class CAnimationSetObj;

// The frame range of scene planning for one set. Off the custom range, first and last
// frame follow the Sceneplanning order of the current scene, computed when asked, so
// they follow every change of it; with the custom range on, they are the stored ones.
class SPO_Settings {
public:
    explicit SPO_Settings(CAnimationSetObj* set) : set_(set) {}

    CAnimationSetObj* AnimationSet() const { return set_; }
    // -1 when the set has no current scene, or its order holds no frame.
    int32_t GetFirstFrame() const;
    int32_t GetLastFrame() const;
    // The stored frames, used while the custom range is on.
    void SetFirstFrame(int32_t frame) { first_ = frame; }
    void SetLastFrame(int32_t frame) { last_ = frame; }
    bool IsCustomRange() const { return custom_; }
    // Switching either way stores the order's present range, so that a custom range
    // starts from what the user saw.
    void SetCustomRange(bool custom);

private:
    void OrderRange(int32_t& first, int32_t& last) const;

    CAnimationSetObj* set_;
    int32_t first_ = 0;
    int32_t last_ = 0;
    bool custom_ = false;
};
