#pragma once

#include <QWidget>

class CAnimationSetObj;

// The current scene at a glance: its camera frame on the stage colour of the mode, and
// its elements in the composition order of the mode with their colours and frames.
// Drawing mode puts the elements beside the stage, Sceneplanning mode below it, as a
// tree.
class GUT_SceneOverview : public QWidget {
public:
    explicit GUT_SceneOverview(QWidget* parent = nullptr);

    void SetSet(CAnimationSetObj* set);
    void SetSceneplanningMode(bool on);
    bool IsSceneplanningMode() const { return sceneplanning_; }
    // The rectangles of the last paint, for the layout of each mode.
    QRect StageRect() const { return stage_; }
    QRect ElementsRect() const { return elements_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void Layout();

    CAnimationSetObj* set_ = nullptr;
    bool sceneplanning_ = false;
    QRect stage_;
    QRect elements_;
};
