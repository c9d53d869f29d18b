#include "core/PR_UserColorSettings.h"

#include "core/DB_Archive.h"
#include "core/PR_Preferences.h"

namespace {

// Element kind codes that have a colour of their own in the preferences.
enum KindCode : uint32_t {
    kVectorDrawing = 0,
    kImage = 1,
    kSound = 2,
    kPeg = 3,
    kCamera = 4,
    kMedia = 5,
    kEffect = 7,
    kParameterGroup = 8
};

} // namespace

PR_ColorRecord PR_UserColorSettings::FromBgr(uint32_t bgr) {
    return PR_ColorRecord{static_cast<uint8_t>(bgr & 0xFF), static_cast<uint8_t>((bgr >> 8) & 0xFF),
                          static_cast<uint8_t>((bgr >> 16) & 0xFF), kDefaultWidth};
}

PR_ColorRecord PR_UserColorSettings::KindColor(uint32_t kindCode, const PR_Preferences& preferences) {
    switch (kindCode) {
    case kVectorDrawing:
        return FromBgr(preferences.DrawingColor());
    case kImage:
        return FromBgr(preferences.ImageColor());
    case kSound:
        return FromBgr(preferences.SoundColor());
    case kPeg:
        return FromBgr(preferences.PegColor());
    case kCamera:
        return FromBgr(preferences.CameraColor());
    case kMedia:
        return FromBgr(preferences.MediaColor());
    case kEffect:
        return FromBgr(preferences.EffectColor());
    case kParameterGroup:
        return FromBgr(preferences.ParamGroupColor());
    default:
        return PR_ColorRecord{};
    }
}

PR_ColorRecord PR_UserColorSettings::GetColor(Map map, const PR_ElementRef& element, uint32_t kindCode,
                                              const PR_Preferences& preferences) const {
    auto it = maps_[map].find(element);
    if (it != maps_[map].end())
        return it->second;
    if (map == kBackgroundColors)
        return FromBgr(preferences.TimelineBGColor());
    return KindColor(kindCode, preferences);
}

bool PR_UserColorSettings::HasColor(Map map, const PR_ElementRef& element) const {
    return maps_[map].count(element) != 0;
}

void PR_UserColorSettings::SetColor(Map map, const PR_ElementRef& element, const PR_ColorRecord& record) {
    maps_[map][element] = record;
    modified_ = true;
}

void PR_UserColorSettings::RemoveColor(Map map, const PR_ElementRef& element) {
    maps_[map].erase(element);
    modified_ = true;
}

void PR_UserColorSettings::SetWidth(const PR_ElementRef& element, uint32_t kindCode, uint32_t width,
                                    const PR_Preferences& preferences) {
    PR_ColorRecord record = GetColor(kElementColors, element, kindCode, preferences);
    record.width = width;
    SetColor(kElementColors, element, record);
}

void PR_UserColorSettings::ResetColumnWidths() {
    for (auto& [element, record] : maps_[kElementColors])
        record.width = kDefaultWidth;
    modified_ = true;
}

void PR_UserColorSettings::SetFlag(Flag flag, bool value) {
    flags_[flag] = value;
    modified_ = true;
}

void PR_UserColorSettings::Read(DB_Archive& archive) {
    const bool hasWidths = archive.Version() > kLastVersionWithoutWidths;
    // Two ids and three colour bytes, and the width when the version has it.
    const size_t entryBytes = hasWidths ? 15 : 11;
    for (auto& map : maps_) {
        map.clear();
        const uint32_t count = archive.ReadCount(entryBytes);
        for (uint32_t i = 0; i < count; ++i) {
            PR_ElementRef element;
            element.scene = archive.ReadId();
            element.element = archive.ReadId();
            PR_ColorRecord record;
            record.red = archive.ReadU8();
            record.green = archive.ReadU8();
            record.blue = archive.ReadU8();
            record.width = hasWidths ? archive.ReadU32() : kDefaultWidth;
            map[element] = record;
        }
    }
    if (hasWidths) {
        for (bool& flag : flags_)
            flag = archive.ReadBool();
    } else {
        flags_ = {true, true, true, false};
    }
    modified_ = false;
}

void PR_UserColorSettings::Write(DB_Archive& archive) {
    // A snapshot in memory (an undo step, a drag) copies the settings as they are.
    const bool toFile = !archive.IsEmbedded();
    if (owner_ && toFile) {
        for (auto& map : maps_)
            std::erase_if(map, [this](const auto& entry) { return !owner_->ElementExists(entry.first); });
    }
    for (const auto& map : maps_) {
        archive.WriteCount(map.size());
        for (const auto& [element, record] : map) {
            archive.WriteId(element.scene);
            archive.WriteId(element.element);
            archive.WriteU8(record.red);
            archive.WriteU8(record.green);
            archive.WriteU8(record.blue);
            archive.WriteU32(record.width);
        }
    }
    for (bool flag : flags_)
        archive.WriteBool(flag);
    if (toFile)
        modified_ = false;
}
