#pragma once

#include "animationset/AS_DopeSheetObservable.h"
#include "platform/GUT_CommandTarget.h"

#include <QWidget>
#include <cstddef>
#include <cstdint>

class CAnimationSetObj;
class QAbstractItemModel;
class QListView;

// The scenes of the open set in sequence order. A click makes a scene current; the
// scenes are added, deleted, renamed (in place), reordered by dragging and shown or
// hidden with their check box, each through a command on the set's history. The list
// follows the set's notifications, so undo and redo show in it like any change.
class GUT_SceneListWnd : public QWidget, public AS_DopeSheetObserverInterface, public GUT_CommandTarget {
public:
    explicit GUT_SceneListWnd(QWidget* parent = nullptr);
    ~GUT_SceneListWnd() override;

    void SetSet(CAnimationSetObj* set);
    CAnimationSetObj* Set() const { return set_; }
    QListView* View() const { return view_; }
    QAbstractItemModel* Model() const;

    // The operations of the list and of the Scene menu. False when nothing changed.
    // A new scene goes after the current one and becomes current.
    bool AddScene();
    // The set keeps at least one scene.
    bool DeleteScene(uint32_t sceneId);
    // A name the set refuses is reported and changes nothing.
    bool RenameScene(uint32_t sceneId, const UT_WString& name);
    bool ToggleVisibility(uint32_t sceneId);
    // `to` is the insertion point before the move, as a drop gives it.
    bool MoveScene(size_t from, size_t to);
    void ActivateScene(uint32_t sceneId);

    void DopeSheetChanged(const void* sender, const AS_DopeSheetUpdateData& data) override;
    void DopeSheetObservableGone(const void* observable) override;

    bool UpdateCommand(uint32_t id, State& state) override;
    bool OnCommand(uint32_t id) override;

private:
    class RowModel;

    void Reload();
    uint32_t CurrentSceneId() const;

    CAnimationSetObj* set_ = nullptr;
    RowModel* model_ = nullptr;
    QListView* view_ = nullptr;
};
