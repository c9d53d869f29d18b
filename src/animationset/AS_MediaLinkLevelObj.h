#pragma once

#include "animationset/AS_BaseLevelElement.h"

// A media element with its placement. Its cells, which link media objects of the
// set, are not held yet: it reads and writes an empty cell list and refuses a
// stream that carries cells.
class AS_MediaLinkLevelObj : public AS_BaseLevelElement {
public:
    AS_MediaLinkLevelObj() : AS_BaseLevelElement(kLevelMedia, AS_kInvalidId, nullptr) {}
    AS_MediaLinkLevelObj(uint32_t id, std::shared_ptr<AS_CommonLevel> common)
        : AS_BaseLevelElement(kLevelMedia, id, std::move(common)) {}
    static std::unique_ptr<AS_MediaLinkLevelObj> Create(uint32_t id, const UT_WString& name) {
        return std::make_unique<AS_MediaLinkLevelObj>(id, std::make_shared<AS_CommonLevel>(name, id));
    }

    uint32_t GetDuration() const override { return 0; }
    int32_t GetFirstFrame() const override { return 0; }
    int32_t GetLastFrame() const override { return 0; }
    std::unique_ptr<AS_DopeSheetLevelObj> Clone(uint32_t newId, bool copyCells) const override;

protected:
    // Any common half: media links share the plain common fields.
    bool AcceptsCommon(const AS_CommonLevel&) const override { return true; }
    void WriteOwn(DB_Archive& archive) override;
    void ReadOwn(DB_Archive& archive) override;
};
