#pragma once

#include "colour/CM_BaseColorObj.h"
#include "colour/CM_Color.h"
#include "colour/CM_Palette.h"
#include "core/CPersistentObjBase.h"
#include "core/OB_Observable.h"
#include "core/UT_UniqueId.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

class CM_RecoverColors;

// What observers of a palette list receive after a change.
struct CM_PaletteListData {
    enum Kind : uint32_t {
        kEntryMoved = 0,
        kEntryRemoved = 1,
        kEntryEdited = 2,
        kEntryRenamed = 3,
        kPaletteRenamed = 4,
        kPaletteDuplicatedSource = 5,
        kEntriesAdded = 6,
        kPaletteAdded = 7,
        kPaletteDuplicated = 8,
        kPaletteRemoved = 9,
        kStyleRenamed = 10,
        kStyleRemoved = 11,
        kStyleSwitched = 12,
        kStyleTinted = 13,
    };
    uint32_t kind = kEntryEdited;
    UT_UniqueId colorId;
    UT_UniqueId paletteId;
};

class CM_PaletteListObserverInterface {
public:
    virtual ~CM_PaletteListObserverInterface() = default;
    virtual void OnPaletteListChanged(const void* sender, const CM_PaletteListData& data) = 0;
};

using CM_PaletteListObservable = OB_Observable<CM_PaletteListObserverInterface, const CM_PaletteListData,
                                               &CM_PaletteListObserverInterface::OnPaletteListChanged>;

// Where colour ids resolve: the palettes of a project (type 120), the map from every
// entry's id to the entry, and the reserved colours "NoColor" (id -1) and "EraserColor"
// (id 1), which live in the map only.
class CM_PaletteList : public CPersistentObjBase, public CM_PaletteListObservable {
public:
    // The sink through which an undoable list hands the inverse of a recovery (to be
    // pushed on the history under the given name).
    using CommandSink =
        std::function<void(std::unique_ptr<CM_RecoverColors> inverse, const UT_WString& name)>;

    // An empty list with its reserved colours.
    explicit CM_PaletteList(bool undoable = false);
    CM_PaletteList(const CM_PaletteList&) = delete;
    CM_PaletteList& operator=(const CM_PaletteList&) = delete;
    ~CM_PaletteList() override;

    // Replaces the palettes with those read.
    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    // Palettes.
    size_t GetPaletteCount() const { return palettes_.size(); }
    CM_Palette* GetPalette(size_t index) const {
        return index < palettes_.size() ? palettes_[index].get() : nullptr;
    }
    CM_Palette* FindPalette(UT_UniqueId id) const;
    int IndexOfPalette(UT_UniqueId id) const;
    // A new empty palette with one style, appended.
    CM_Palette* AddPalette(UT_WString name, UT_WString styleName);
    // The palette "Default" with its style "Default" and 120 solid colours.
    CM_Palette* AddDefaultPalette();
    // Takes the palette in at `index` (appends when past the end); false, and the
    // palette is deleted, if its id is already in the list.
    bool InsertPalette(std::unique_ptr<CM_Palette> palette, size_t index);
    bool RemovePalette(UT_UniqueId id);
    // Takes the palette out of the list and gives it to the caller (for undo).
    std::unique_ptr<CM_Palette> TakePalette(UT_UniqueId id);
    // Sorts the entries of a palette by name.
    bool SortEntries(UT_UniqueId paletteId);

    // Plain edits of the model, each followed by its notification.
    // A new solid colour at the end of a palette (kind 6); null if there is no such palette.
    CM_Color* AddSolidColor(UT_UniqueId paletteId, UT_WString name, BM_Rgba colour);
    // Makes the colour of that id solid in the current style of its palette (kind 2);
    // false if no palette holds a CM_Color with that id.
    bool SetSolidColor(UT_UniqueId colorId, BM_Rgba colour);

    // Entries.
    struct EntryPlace {
        CM_Palette* palette = nullptr;
        int index = -1;
    };
    // The palette that holds the id and the position in it; null and -1 if none does.
    EntryPlace FindEntry(UT_UniqueId id) const;
    // The entry of the id, or that of "NoColor" when the id is unknown. Never null.
    CM_BaseColorObj* Resolve(UT_UniqueId id) const;
    // The entry of the id as the map holds it, or null.
    CM_BaseColorObj* Lookup(UT_UniqueId id) const;
    size_t GetIdCount() const { return idMap_.size(); }

    // Recovery of the colours of a drawing that this list does not know: each pair of
    // the map whose id does not resolve gets a copy in the palette "Recovered". Returns
    // the number of entries added.
    size_t Recover(const std::map<UT_UniqueId, const CM_BaseColorObj*>& colours);
    bool GetRecover() const { return recover_; }
    void SetRecover(bool recover) { recover_ = recover; }
    CM_Palette* GetRecoveredPalette() const { return recoveredPalette_; }
    // The recovery palette, made ("Recovered" with the style "Default") and appended
    // under the given id if the list has none; a null id asks for a new one.
    CM_Palette* EnsureRecoveredPalette(UT_UniqueId id = UT_UniqueId());
    bool IsUndoable() const { return undoable_; }
    void SetCommandSink(CommandSink sink) { commandSink_ = std::move(sink); }

    // Sends a change to the observers; every change marks the list modified.
    void Notify(const void* sender, const CM_PaletteListData& data) override;
    void NotifyChange(uint32_t kind, UT_UniqueId colorId, UT_UniqueId paletteId,
                      const void* sender = nullptr);

    bool IsModified() const { return modified_; }
    void MarkModified() { modified_ = true; }
    void MarkClean() { modified_ = false; }

private:
    friend class CM_Palette;
    // Puts an entry into the id map, or takes it out; the reserved ids are never replaced.
    void Enter(CM_BaseColorObj& entry);
    void Leave(CM_BaseColorObj& entry);
    void Clear();

    std::vector<std::unique_ptr<CM_Palette>> palettes_;
    std::map<UT_UniqueId, CM_BaseColorObj*> idMap_;
    std::vector<std::unique_ptr<CM_BaseColorObj>> reserved_;
    bool recover_ = true;
    CM_Palette* recoveredPalette_ = nullptr;
    bool undoable_;
    CommandSink commandSink_;
    bool modified_ = false;
};

// Registers the persistent classes of the colour library (120 to 125).
void ColourRegisterTypes();
