#pragma once

#include "animationset/AS_CellIteratorObservable.h"

#include <QString>
#include <QWidget>

class CAnimationSetObj;

// The current scene at a glance: its name and place in the sequence, and its camera frame
// on the stage colour of the mode, with the frame of the current cell and the drawings
// that the elements show at that frame. It follows the current cell, playback included.
class GUT_SceneOverview : public QWidget, public AS_CellIteratorObserverInterface {
public:
    explicit GUT_SceneOverview(QWidget* parent = nullptr);
    ~GUT_SceneOverview() override;

    void SetSet(CAnimationSetObj* set);
    void SetSceneplanningMode(bool on);
    bool IsSceneplanningMode() const { return sceneplanning_; }
    // The rectangle of the stage at the last paint.
    QRect StageRect() const { return stage_; }
    // What the stage says about the current frame: "Frame 3: Arm 2, Head 1".
    QString ExposureText() const;

    void CellIteratorChanged(const void* sender, const AS_CellIteratorObserverData& data) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    CAnimationSetObj* set_ = nullptr;
    bool sceneplanning_ = false;
    QRect stage_;
};
