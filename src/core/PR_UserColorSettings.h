#pragma once

#include "core/CPersistentObjBase.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>

class PR_Preferences;

// The colour of one element row and the width of its column in the exposure sheet.
struct PR_ColorRecord {
    uint8_t red = 128;
    uint8_t green = 128;
    uint8_t blue = 128;
    uint32_t width = 100;
    bool operator==(const PR_ColorRecord&) const = default;
};

// An element of a scene, by ids.
struct PR_ElementRef {
    uint32_t scene = 0;
    uint32_t element = 0;
    auto operator<=>(const PR_ElementRef&) const = default;
};

// Colours that the user gave to single elements, stored in the project file (type 400).
// A look-up without an entry gives the colour the preferences hold for the element's kind.
class PR_UserColorSettings : public CPersistentObjBase {
public:
    enum Map { kElementColors = 0, kBackgroundColors = 1 };
    enum Flag { kShowElementName = 0, kShowExposure = 1, kShowNotes = 2, kShowThumbnails = 3 };
    static constexpr uint32_t kDefaultWidth = 100;
    // The last file version whose entries carry neither widths nor flags.
    static constexpr int32_t kLastVersionWithoutWidths = 31;

    // What the settings ask of the set that holds them.
    class Owner {
    public:
        virtual ~Owner() = default;
        virtual bool ElementExists(const PR_ElementRef& element) const = 0;
    };

    PR_UserColorSettings() = default;

    void SetOwner(const Owner* owner) { owner_ = owner; }

    // The record of `element` in `map`, or the default: for the element map the colour of
    // `kindCode` in the preferences; for the background map the timeline background colour.
    PR_ColorRecord GetColor(Map map, const PR_ElementRef& element, uint32_t kindCode,
                            const PR_Preferences& preferences) const;
    bool HasColor(Map map, const PR_ElementRef& element) const;
    void SetColor(Map map, const PR_ElementRef& element, const PR_ColorRecord& record);
    void RemoveColor(Map map, const PR_ElementRef& element);
    // Sets the column width, making an entry with the looked-up colour if there is none.
    void SetWidth(const PR_ElementRef& element, uint32_t kindCode, uint32_t width,
                  const PR_Preferences& preferences);
    // Every entry of the element map goes back to the default width.
    void ResetColumnWidths();
    size_t Count(Map map) const { return maps_[map].size(); }
    const std::map<PR_ElementRef, PR_ColorRecord>& Entries(Map map) const { return maps_[map]; }

    bool GetFlag(Flag flag) const { return flags_[flag]; }
    void SetFlag(Flag flag, bool value);
    void ToggleFlag(Flag flag) { SetFlag(flag, !flags_[flag]); }

    bool IsModified() const { return modified_; }
    void MarkClean() { modified_ = false; }

    // The default colour of an element row by kind code; grey for kinds without one.
    static PR_ColorRecord KindColor(uint32_t kindCode, const PR_Preferences& preferences);
    static PR_ColorRecord FromBgr(uint32_t bgr);

    void Read(DB_Archive& archive) override;
    // Drops the entries of elements that no longer exist, writes, and clears Modified;
    // written into an embedded archive (a snapshot) it only writes.
    void Write(DB_Archive& archive) override;

private:
    std::array<std::map<PR_ElementRef, PR_ColorRecord>, 2> maps_;
    std::array<bool, 4> flags_{true, true, true, false};
    bool modified_ = false;
    const Owner* owner_ = nullptr;
};
