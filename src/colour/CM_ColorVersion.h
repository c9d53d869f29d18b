#pragma once

#include "colour/CM_BaseColorObj.h"

#include <algorithm>
#include <cstdint>
#include <vector>

// Gives an entry one value of type T per palette style. There is always at least one value.
template <class T> class CM_ColorVersion : public CM_BaseColorObj {
public:
    CM_ColorVersion() : values_(1) {}
    explicit CM_ColorVersion(UT_WString name) : CM_BaseColorObj(std::move(name)), values_(1) {}
    CM_ColorVersion(UT_WString name, UT_UniqueId id) : CM_BaseColorObj(std::move(name), id), values_(1) {}

    uint32_t GetStyleCount() const override { return static_cast<uint32_t>(values_.size()); }
    uint32_t GetCurrentStyle() const override { return currentStyle_; }
    void SetCurrentStyle(uint32_t index) override { currentStyle_ = index; }
    void AppendStyleFrom(uint32_t from) override { values_.push_back(values_[Clamp(from)]); }
    void RemoveStyle(uint32_t index) override {
        if (values_.size() > 1 && index < values_.size())
            values_.erase(values_.begin() + index);
        if (currentStyle_ >= values_.size())
            currentStyle_ = static_cast<uint32_t>(values_.size() - 1);
    }

    // The value of the current style (the last one if the index runs past them).
    const T& Current() const { return values_[Clamp(currentStyle_)]; }
    T& Current() { return values_[Clamp(currentStyle_)]; }
    const T& ValueAt(uint32_t style) const { return values_[Clamp(style)]; }
    T& ValueAt(uint32_t style) { return values_[Clamp(style)]; }
    const std::vector<T>& Values() const { return values_; }
    // Replaces every value; an empty vector leaves one default value.
    void SetValues(std::vector<T> values) {
        values_ = std::move(values);
        if (values_.empty())
            values_.resize(1);
    }

protected:
    uint32_t Clamp(uint32_t index) const { return std::min<uint32_t>(index, uint32_t(values_.size() - 1)); }

    uint32_t currentStyle_ = 0;
    std::vector<T> values_;
};
