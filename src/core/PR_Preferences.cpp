#include "core/PR_Preferences.h"

#include "core/UT_Format.h"

#include <cstdio>
#include <filesystem>
#include <unistd.h>

namespace {

using Kind = PR_Preferences::Kind;

constexpr PR_Preferences::KeyInfo kKeys[PR_Preferences::kKeyCount] = {
    {"Animation", "frameRate", Kind::kUnsigned, 12, nullptr, nullptr},
    {"Animation", "cameraWidth", Kind::kUnsigned, 500, nullptr, nullptr},
    {"Animation", "cameraHeight", Kind::kUnsigned, 375, nullptr, nullptr},
    {"Renderer", "Direct3D", Kind::kFlagIsOne, 1, nullptr, nullptr},
    {"Renderer", "Direct3DSoftware", Kind::kFlagIsOne, 0, nullptr, nullptr},
    {"Renderer", "Direct3DNoCopyBuffer", Kind::kFlagIsOne, 0, nullptr, nullptr},
    {"Renderer", "smoothPegs", Kind::kFlagIsOne, 1, nullptr, nullptr},
    {"Renderer", "smoothTools", Kind::kFlagIsOne, 1, nullptr, nullptr},
    {"Renderer", "smoothTextures", Kind::kFlagIsOne, 1, nullptr, nullptr},
    {"Renderer", "textureReductionSize", Kind::kUnsigned, 2048, nullptr, nullptr},
    {"Renderer", "conservativeTextureManagement", Kind::kFlagIsOne, 1, nullptr, nullptr},
    {"Renderer", "polygonCacheMemory", Kind::kUnsigned, 64, nullptr, nullptr},
    {"Scene", "Tension", Kind::kSigned, 0, nullptr, nullptr},
    {"Scene", "Continuity", Kind::kSigned, 0, nullptr, nullptr},
    {"Scene", "Bias", Kind::kSigned, 0, nullptr, nullptr},
    {"UIUnits", "angleUnit", Kind::kUnsigned, 0, nullptr, nullptr},
    {"UIUnits", "coordinateUnit", Kind::kUnsigned, 3, nullptr, nullptr},
    {"UIUnits", "showUnits", Kind::kFlagNonZero, 1, nullptr, nullptr},
    {"UIColors", "pegColor", Kind::kColour, 0xFF8080, nullptr, nullptr},
    {"UIColors", "effectColor", Kind::kColour, 0x3480C4, nullptr, nullptr},
    {"UIColors", "paramGroupColor", Kind::kColour, 0x003480, nullptr, nullptr},
    {"UIColors", "cameraColor", Kind::kColour, 0x8080FF, nullptr, nullptr},
    {"UIColors", "soundColor", Kind::kColour, 0xD6A9B9, nullptr, nullptr},
    {"UIColors", "drawingColor", Kind::kColour, 0x008000, nullptr, nullptr},
    {"UIColors", "imageColor", Kind::kColour, 0x008000, nullptr, nullptr},
    {"UIColors", "mediaColor", Kind::kColour, 0x348080, nullptr, nullptr},
    {"UIColors", "timelineBGColor", Kind::kColour, 0xFFFFFF, nullptr, nullptr},
    {"UIColors", "drawingViewBGColor", Kind::kColour, 0xFFFFFF, nullptr, nullptr},
    {"UIColors", "useSceneBGColor", Kind::kFlagNonZero, 1, nullptr, nullptr},
    {"UIColors", "useSceneBGColorInSV", Kind::kFlagNonZero, 0, nullptr, nullptr},
    {"UIColors", "timeMeasurementUnit", Kind::kUnsigned, 1, nullptr, nullptr},
    {"OnionSkinColor", "colorBefore", Kind::kColour, 0x0000FF, nullptr, nullptr},
    {"OnionSkinColor", "colorAfter", Kind::kColour, 0x00FF00, nullptr, nullptr},
    {"OnionSkinColor", "enableOSShade", Kind::kFlagNonZero, 1, nullptr, nullptr},
    {"OnionSkinColor", "enableSLTShade", Kind::kFlagNonZero, 1, nullptr, nullptr},
    {"OnionSkinColor", "enableALTShade", Kind::kFlagNonZero, 1, nullptr, nullptr},
    {"Template", "name", Kind::kText, 0, u"No Name", "UserName"},
    {"Template", "copyright", Kind::kText, 0, u"No Copyright", "CompanyName"},
    {"Template", "globaltemplatepath", Kind::kText, 0, u"", nullptr},
    {"Template", "ExportDir", Kind::kText, 0, u"", nullptr},
    {"Template", "ProjectDir", Kind::kText, 0, u"", nullptr},
    {"SoftRender", "TextureMemory", Kind::kBytes, 0, nullptr, nullptr},
};

bool SameName(std::string_view a, std::string_view b) {
    UT_SettingsNameLess less;
    return !less(a, b) && !less(b, a);
}

// The values a stored number may take for its kind; anything else counts as damaged.
bool FitsKind(Kind kind, int64_t value) {
    switch (kind) {
    case Kind::kUnsigned:
        return value >= 0 && value <= UINT32_MAX;
    case Kind::kSigned:
        return value >= INT32_MIN && value <= INT32_MAX;
    case Kind::kFlagIsOne:
    case Kind::kFlagNonZero:
        return value >= INT32_MIN && value <= UINT32_MAX;
    case Kind::kColour:
        return value >= 0 && value <= 0xFFFFFF;
    case Kind::kBytes:
        return value >= 0;
    case Kind::kText:
        return false;
    }
    return false;
}

struct Range {
    int64_t low;
    int64_t high;
};

// The limits the preference pages accept for a number, beyond the limits of its kind.
Range PageRange(PR_Preferences::Key key, uint64_t textureMemoryDefault) {
    switch (key) {
    case PR_Preferences::kFrameRate:
        return {1, 100};
    case PR_Preferences::kCameraWidth:
    case PR_Preferences::kCameraHeight:
        return {1, 8192};
    case PR_Preferences::kTextureReductionSize:
        return {64, 8192};
    case PR_Preferences::kPolygonCacheMemory:
        return {1, 4096};
    case PR_Preferences::kTension:
    case PR_Preferences::kContinuity:
    case PR_Preferences::kBias:
        return {-1, 1};
    case PR_Preferences::kAngleUnit:
    case PR_Preferences::kTimeMeasurementUnit:
        return {0, 1};
    case PR_Preferences::kCoordinateUnit:
        return {0, 3};
    case PR_Preferences::kTextureMemory:
        // From one megabyte to the memory-derived default.
        return {int64_t{1} << 20, static_cast<int64_t>(std::max<uint64_t>(textureMemoryDefault, 1u << 20))};
    default:
        break;
    }
    switch (PR_Preferences::Info(key).kind) {
    case Kind::kFlagIsOne:
    case Kind::kFlagNonZero:
        return {0, 1};
    case Kind::kColour:
        return {0, 0xFFFFFF};
    default:
        return {INT64_MIN, INT64_MAX};
    }
}

struct Singleton {
    std::unique_ptr<UT_SettingsStore> store;
    std::unique_ptr<PR_Preferences> preferences;
};

Singleton& TheSingleton() {
    static Singleton singleton;
    return singleton;
}

} // namespace

PR_Preferences::PR_Preferences(UT_SettingsStore& store, uint64_t physicalMemory)
    : store_(store), physicalMemory_(physicalMemory) {
    Load();
}

PR_Preferences& PR_Preferences::Instance() {
    Singleton& singleton = TheSingleton();
    if (!singleton.preferences) {
        if (!singleton.store)
            singleton.store = std::make_unique<UT_IniSettingsStore>(UT_IniSettingsStore::DefaultPath());
        singleton.preferences = std::make_unique<PR_Preferences>(*singleton.store);
    }
    return *singleton.preferences;
}

void PR_Preferences::UseStore(std::unique_ptr<UT_SettingsStore> store) {
    ResetInstance();
    TheSingleton().store = std::move(store);
}

void PR_Preferences::ResetInstance() {
    Singleton& singleton = TheSingleton();
    singleton.preferences.reset();
    singleton.store.reset();
}

const PR_Preferences::KeyInfo& PR_Preferences::Info(Key key) {
    return kKeys[key];
}

std::optional<PR_Preferences::Key> PR_Preferences::FindKey(std::string_view name) {
    std::string_view section;
    const size_t slash = name.find('/');
    if (slash != std::string_view::npos) {
        section = name.substr(0, slash);
        name = name.substr(slash + 1);
    }
    for (size_t i = 0; i < kKeyCount; ++i) {
        if (SameName(kKeys[i].name, name) && (section.empty() || SameName(kKeys[i].section, section)))
            return static_cast<Key>(i);
    }
    return std::nullopt;
}

uint64_t PR_Preferences::PhysicalMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0)
        return 0;
    return static_cast<uint64_t>(pages) * static_cast<uint64_t>(pageSize);
}

uint64_t PR_Preferences::DefaultTextureMemory(uint64_t physicalMemory) {
    return physicalMemory / 5 * 2 + physicalMemory % 5 * 2 / 5;
}

int64_t PR_Preferences::DefaultNumber(Key key) const {
    if (kKeys[key].kind == Kind::kBytes)
        return static_cast<int64_t>(std::min<uint64_t>(DefaultTextureMemory(physicalMemory_), INT64_MAX));
    return kKeys[key].defaultNumber;
}

UT_WString PR_Preferences::DefaultText(Key key) const {
    return kKeys[key].defaultText ? UT_WString(kKeys[key].defaultText) : UT_WString();
}

void PR_Preferences::Load() {
    for (size_t i = 0; i < kKeyCount; ++i) {
        const Key key = static_cast<Key>(i);
        const KeyInfo& info = kKeys[i];
        if (info.kind == Kind::kText) {
            std::optional<std::string> value = store_.Get(info.section, info.name);
            if (!value && info.fallbackKey)
                value = store_.Get("", info.fallbackKey);
            texts_[i] = value ? UT_FromUtf8(*value) : DefaultText(key);
            continue;
        }
        const std::optional<int64_t> value = store_.GetInt(info.section, info.name);
        numbers_[i] = value && FitsKind(info.kind, *value) ? *value : DefaultNumber(key);
    }
}

bool PR_Preferences::Save() {
    for (size_t i = 0; i < kKeyCount; ++i) {
        const KeyInfo& info = kKeys[i];
        if (info.kind == Kind::kText) {
            store_.Set(info.section, info.name, UT_ToUtf8(texts_[i]));
        } else if (info.kind == Kind::kColour) {
            char text[16];
            std::snprintf(text, sizeof text, "0x%06llX", static_cast<unsigned long long>(numbers_[i]));
            store_.Set(info.section, info.name, text);
        } else {
            store_.SetInt(info.section, info.name, numbers_[i]);
        }
    }
    return store_.Flush();
}

bool PR_Preferences::ResetToDefaults() {
    for (const KeyInfo& info : kKeys)
        store_.Remove(info.section, info.name);
    for (size_t i = 0; i < kKeyCount; ++i) {
        const Key key = static_cast<Key>(i);
        numbers_[i] = kKeys[i].kind == Kind::kText ? 0 : DefaultNumber(key);
        texts_[i] = DefaultText(key);
    }
    return store_.Flush();
}

UT_WString PR_Preferences::Text(Key key) const {
    if (kKeys[key].kind == Kind::kText)
        return texts_[key];
    return UT_FromUtf8(std::to_string(numbers_[key]));
}

bool PR_Preferences::Flag(Key key) const {
    return kKeys[key].kind == Kind::kFlagIsOne ? numbers_[key] == 1 : numbers_[key] != 0;
}

std::optional<int64_t> PR_Preferences::ParseValue(Key key, std::string_view text) const {
    const std::optional<int64_t> value = UT_SettingsStore::ParseInt(text);
    if (!value || !FitsKind(kKeys[key].kind, *value))
        return std::nullopt;
    return value;
}

UT_WString PR_Preferences::Validate(Key key, std::string_view text) const {
    const KeyInfo& info = kKeys[key];
    if (info.kind == Kind::kText) {
        const bool isFolder = key == kGlobalTemplatePath || key == kExportDir || key == kProjectDir;
        std::error_code error;
        if (isFolder && !text.empty() && !std::filesystem::is_directory(std::filesystem::path(text), error))
            return u"Cannot Access the Specified Project Path";
        return {};
    }
    const std::optional<int64_t> value = ParseValue(key, text);
    if (!value)
        return UT_Fmt(u"\"%S\" is not a valid value for %S.", UT_FromUtf8(text), UT_FromUtf8(info.name));
    const Range range = PageRange(key, DefaultTextureMemory(physicalMemory_));
    if (*value < range.low)
        return UT_Fmt(u"The minimum value is %d", UT_Num(range.low));
    if (*value > range.high)
        return UT_Fmt(u"The maximum value is %d", UT_Num(range.high));
    if (key == kTextureReductionSize && (*value & (*value - 1)) != 0)
        return u"The texture size must be a power of two.";
    return {};
}

std::vector<PR_Preferences::Key> PR_Preferences::KeysOfPage(Page page) {
    std::vector<const char*> sections;
    switch (page) {
    case Page::kTemplate:
        sections = {"Template"};
        break;
    case Page::kScene:
        sections = {"UIUnits", "Scene"};
        break;
    case Page::kRenderer:
        sections = {"Renderer"};
        break;
    case Page::kOnionSkin:
        sections = {"OnionSkinColor"};
        break;
    case Page::kDefaultColors:
        sections = {"UIColors"};
        break;
    case Page::kAnimation:
        sections = {"Animation"};
        break;
    }
    std::vector<Key> keys;
    for (const char* section : sections)
        for (size_t i = 0; i < kKeyCount; ++i)
            if (SameName(kKeys[i].section, section))
                keys.push_back(static_cast<Key>(i));
    return keys;
}

UT_WString PR_Preferences::ChangeNotice(Page page) {
    if (page == Page::kAnimation)
        return u"This change will be applied to all new animation sets.";
    return {};
}

UT_WString PR_Preferences::SetFromText(Key key, std::string_view text) {
    UT_WString refusal = Validate(key, text);
    if (!refusal.empty())
        return refusal;
    if (kKeys[key].kind == Kind::kText)
        texts_[key] = UT_FromUtf8(text);
    else
        numbers_[key] = *ParseValue(key, text);
    return {};
}

bool PR_Preferences::IsMessageSilenced(uint32_t messageId) const {
    const std::optional<int64_t> value = store_.GetInt(kAnnoyingMessageSection, std::to_string(messageId));
    return value && *value != 0;
}

bool PR_Preferences::SilenceMessage(uint32_t messageId) {
    store_.SetInt(kAnnoyingMessageSection, std::to_string(messageId), 1);
    return store_.Flush();
}

bool PR_Preferences::ClearSilencedMessages() {
    store_.RemoveSection(kAnnoyingMessageSection);
    return store_.Flush();
}
