#pragma once

#include "animationset/AS_ClonableLevel.h"
#include "motion/CFunctionBase.h"

#include <memory>

// The shared half of a camera; it holds only the common fields.
class AS_CommonCameraLevel : public AS_CommonLevel {
public:
    using AS_CommonLevel::AS_CommonLevel;
};

// A camera: a frame of a size, a place in space and a field of view.
class AS_CameraLevelObj : public AS_ClonableLevel {
public:
    static constexpr double kDefaultWidth = 640.0;
    static constexpr double kDefaultHeight = 480.0;

    AS_CameraLevelObj();
    AS_CameraLevelObj(uint32_t id, std::shared_ptr<AS_CommonCameraLevel> common, uint32_t duration);
    // A width or height of 0 takes the default size.
    static std::unique_ptr<AS_CameraLevelObj> Create(uint32_t id, const UT_WString& name,
                                                     uint32_t duration = 10, uint32_t width = 0,
                                                     uint32_t height = 0);
    // The distance at which the 24-field frame fills a 30 degree view: 12 depth fields.
    static double DefaultDistance();

    uint32_t GetDuration() const override { return duration_; }
    int32_t GetFirstFrame() const override { return static_cast<int32_t>(startFrame_); }
    int32_t GetLastFrame() const override { return static_cast<int32_t>(startFrame_ + duration_); }
    std::unique_ptr<AS_DopeSheetLevelObj> Clone(uint32_t newId, bool copyCells) const override;
    // A new camera on a new common half with the same size, place, view and frames.
    std::unique_ptr<AS_CameraLevelObj> Duplicate(const UT_WString& name, uint32_t id) const;

    void SetSize(double width, double height) {
        width_ = width;
        height_ = height;
    }
    double Width() const { return width_; }
    double Height() const { return height_; }
    uint32_t StartFrame() const { return startFrame_; }
    void SetStartFrame(uint32_t frame) { startFrame_ = frame; }
    CFunctionBase* FieldOfView() const { return fieldOfView_.get(); }

    double y = 0.0;
    double x = 0.0;
    double z;
    bool fixed = true;
    double fixedFieldOfView = 30.0;

protected:
    bool AcceptsCommon(const AS_CommonLevel& common) const override;
    void WriteOwn(DB_Archive& archive) override;
    void ReadOwn(DB_Archive& archive) override;
    // The clipboard form carries the camera's own fields.
    void WriteDragBody(DB_Archive& archive) override { WriteOwn(archive); }
    void ReadDragBody(DB_Archive& archive) override { ReadOwn(archive); }

private:
    void CopyCameraFieldsTo(AS_CameraLevelObj& target, bool withFrames) const;

    uint32_t duration_ = 10;
    uint32_t startFrame_ = 0;
    double height_ = kDefaultHeight;
    double width_ = kDefaultWidth;
    CFunctionPlace fieldOfView_;
};
