#pragma once

#include "platform/GUT_CommandTarget.h"
#include "platform/GUT_ElementPropertiesWnd.h"

#include <cstdint>
#include <vector>

class AS_DopeSheetLevelObj;
class CAnimationSetObj;
class CDopeSheetObj;
class QWidget;

// The name of an element kind as the interface shows it ("Drawing", "Peg").
const char* GUT_KindName(uint32_t kind);

// The Element menu: elements of the current scene added by kind, renamed, noted,
// deleted, cloned, given new properties, another parent or another place among the rows
// of the mode's order. Each change runs through the set's history. The element concerned
// is the one of the current cell; a deletion takes every element of the selection. A new
// element or clone becomes the current cell's element. Dialogs open over `dialogParent`.
class GUT_ElementCommands : public GUT_CommandTarget {
public:
    explicit GUT_ElementCommands(QWidget* dialogParent);
    ~GUT_ElementCommands() override;
    GUT_ElementCommands(const GUT_ElementCommands&) = delete;
    GUT_ElementCommands& operator=(const GUT_ElementCommands&) = delete;

    void SetSet(CAnimationSetObj* set);

    // The operations, false when nothing changed. `createCode` is the creation command's
    // code of the kind.
    bool Add(uint32_t createCode);
    // A name the scene refuses is reported and changes nothing.
    bool Rename(uint32_t elementId, const UT_WString& name);
    // Elements below a deleted one in the Sceneplanning order go with it, once the user
    // agreed.
    bool Delete(const std::vector<uint32_t>& elementIds);
    bool Clone(uint32_t elementId);
    bool SetNote(uint32_t elementId, const UT_WString& note);
    // Every field that differs, as one entry of the history.
    bool ChangeProperties(uint32_t elementId, const GUT_ElementPropertiesWnd::Values& values);
    // AS_kInvalidId makes the element a top row.
    bool Reparent(uint32_t elementId, uint32_t parentId);
    // Past the previous or next row of the same parent, in the mode's order.
    bool Move(uint32_t elementId, bool up);

    // The element of the current cell, or null.
    AS_DopeSheetLevelObj* Current() const;
    // The elements of the selection, or the current one alone when the current cell
    // lies outside the selection.
    std::vector<uint32_t> Selected() const;
    // The elements that the element may hang below in the Sceneplanning order.
    std::vector<uint32_t> ParentCandidates(uint32_t elementId) const;

    bool UpdateCommand(uint32_t id, State& state) override;
    bool OnCommand(uint32_t id) override;

private:
    CDopeSheetObj* Scene() const;
    bool IsSceneplanning() const;
    // The row the element's moves go past; -1 when there is none.
    int SiblingRow(uint32_t elementId, bool up) const;
    void MakeCurrent(uint32_t elementId);
    bool RunRename();
    bool RunNote();
    bool RunProperties();
    bool RunParent();

    QWidget* parent_;
    CAnimationSetObj* set_ = nullptr;
};
