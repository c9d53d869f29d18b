#pragma once

#include "colour/CM_BaseColorObj.h"
#include "core/CPersistentObjBase.h"
#include "core/UT_String.h"
#include "core/UT_UniqueId.h"

#include <cstdint>
#include <memory>
#include <vector>

class CM_PaletteList;

// One style of a palette (a "flavour" in the user interface).
struct CM_PaletteStyle {
    uint32_t id = 0;
    UT_WString name;
    bool operator==(const CM_PaletteStyle&) const = default;
};

// A named list of colour entries with one or more styles (type 122). Every entry has
// one value per style, in the order of the styles. A palette that belongs to a list
// keeps the list's id map up to date as entries come and go.
class CM_Palette : public CPersistentObjBase {
public:
    // A palette with the invalid id and one style named "Default"; what a reader fills.
    CM_Palette();
    // A palette with a newly generated id and one style.
    CM_Palette(UT_WString name, UT_WString styleName);
    CM_Palette(const CM_Palette&) = delete;
    CM_Palette& operator=(const CM_Palette&) = delete;
    ~CM_Palette() override;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    const UT_WString& GetName() const { return name_; }
    void SetName(UT_WString name);
    UT_UniqueId GetId() const { return id_; }
    void SetId(UT_UniqueId id) { id_ = id; }

    // Entries, in display order.
    size_t GetEntryCount() const { return entries_.size(); }
    CM_BaseColorObj* GetEntry(size_t index) const {
        return index < entries_.size() ? entries_[index].get() : nullptr;
    }
    // Appends an entry, giving it one value per style of this palette. Returns it.
    CM_BaseColorObj* AddEntry(std::unique_ptr<CM_BaseColorObj> entry);
    // Inserts an entry before position `before` (at the end when past it).
    CM_BaseColorObj* InsertEntry(std::unique_ptr<CM_BaseColorObj> entry, size_t before);
    // Takes the entry out of the id map and deletes it; false for a bad position.
    bool RemoveEntry(size_t position);
    // Takes the entry out of the palette and the id map and gives it to the caller.
    std::unique_ptr<CM_BaseColorObj> TakeEntry(size_t position);
    bool MoveEntry(size_t from, size_t to);
    // Position of the entry with this id, or -1.
    int Find(UT_UniqueId id) const;
    // Sorts the entries by name (an introspective sort, insertion sort below 32 entries).
    void SortEntries();

    // Styles.
    size_t GetStyleCount() const { return styles_.size(); }
    const std::vector<CM_PaletteStyle>& GetStyles() const { return styles_; }
    uint32_t GetCurrentStyle() const { return currentStyle_; }
    // Sets the style in force, in the palette and in every entry. False for a bad index.
    bool SetCurrentStyle(uint32_t index);
    // Adds a style whose values copy those of the current style; its id is the largest
    // style id plus one. Returns its index.
    uint32_t AddStyle(UT_WString name);
    // Removes a style and its values; the last style cannot go.
    bool RemoveStyle(uint32_t index);
    bool RenameStyle(uint32_t index, UT_WString name);
    bool HasStyleNamed(std::u16string_view name) const;

    // Duplicates the content of another palette, not its name or id: its styles, its
    // current style, and for each entry a new one with the same name and values and a
    // newly generated id.
    void CopyFrom(const CM_Palette& other);
    // An exact copy outside any list: the same name, id, styles and current style, and a
    // duplicate of each entry with its id (textures share their images with the original).
    std::unique_ptr<CM_Palette> Clone() const;

    CM_PaletteList* GetList() const { return list_; }

private:
    friend class CM_PaletteList;
    // Joins or leaves a list: the entries enter or leave its id map.
    void AttachTo(CM_PaletteList* list);
    void Detach();
    // Gives an entry exactly one value per style, with this palette's current style.
    void Conform(CM_BaseColorObj& entry) const;
    void Touch();

    UT_WString name_;
    UT_UniqueId id_;
    std::vector<std::unique_ptr<CM_BaseColorObj>> entries_;
    std::vector<CM_PaletteStyle> styles_;
    uint32_t currentStyle_ = 0;
    CM_PaletteList* list_ = nullptr;
};
