#pragma once

#include "core/UT_SettingsStore.h"
#include "core/UT_String.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

// The user's choices for all projects, read from and written to a settings store by
// section. One instance serves the process; tests point it at a store of their own.
class PR_Preferences {
public:
    // How a stored value is read. Flags of the "Renderer" family are set only when the
    // value is 1; the other flags are set when it is not 0.
    enum class Kind { kUnsigned, kSigned, kFlagIsOne, kFlagNonZero, kColour, kText, kBytes };

    enum Key : uint8_t {
        kFrameRate,
        kCameraWidth,
        kCameraHeight,
        kDirect3D,
        kDirect3DSoftware,
        kDirect3DNoCopyBuffer,
        kSmoothPegs,
        kSmoothTools,
        kSmoothTextures,
        kTextureReductionSize,
        kConservativeTextureManagement,
        kPolygonCacheMemory,
        kTension,
        kContinuity,
        kBias,
        kAngleUnit,
        kCoordinateUnit,
        kShowUnits,
        kPegColor,
        kEffectColor,
        kParamGroupColor,
        kCameraColor,
        kSoundColor,
        kDrawingColor,
        kImageColor,
        kMediaColor,
        kTimelineBGColor,
        kDrawingViewBGColor,
        kUseSceneBGColor,
        kUseSceneBGColorInSV,
        kTimeMeasurementUnit,
        kColorBefore,
        kColorAfter,
        kEnableOSShade,
        kEnableSLTShade,
        kEnableALTShade,
        kTemplateName,
        kTemplateCopyright,
        kGlobalTemplatePath,
        kExportDir,
        kProjectDir,
        kTextureMemory,
        kKeyCount
    };

    // The pages of the preference sheet that show these values.
    enum class Page { kTemplate, kScene, kRenderer, kOnionSkin, kDefaultColors, kAnimation };

    struct KeyInfo {
        const char* section;
        const char* name;
        Kind kind;
        // The value of an absent key; for kBytes it is replaced by the memory-derived default.
        int64_t defaultNumber;
        const char16_t* defaultText;
        // For texts: a key outside any section consulted when this one is absent.
        const char* fallbackKey;
    };

    static constexpr const char* kAnnoyingMessageSection = "AnnoyingMessage";

    // A view over `store`, loaded at once. `physicalMemory` gives the memory-derived default.
    explicit PR_Preferences(UT_SettingsStore& store, uint64_t physicalMemory = PhysicalMemory());
    PR_Preferences(const PR_Preferences&) = delete;
    PR_Preferences& operator=(const PR_Preferences&) = delete;

    // The process's preferences, created on first use over the INI file of the user
    // unless a store was installed.
    static PR_Preferences& Instance();
    // Installs `store` for Instance() and loads from it; null goes back to the INI file.
    static void UseStore(std::unique_ptr<UT_SettingsStore> store);
    // Forgets the instance and its store, for tests.
    static void ResetInstance();

    static const KeyInfo& Info(Key key);
    // By key name ("frameRate") or section and name ("Animation/frameRate"), in any case.
    static std::optional<Key> FindKey(std::string_view name);
    static uint64_t PhysicalMemory();
    // 40% of `physicalMemory`, computed without wrapping.
    static uint64_t DefaultTextureMemory(uint64_t physicalMemory);

    void Load();
    // Writes every value back by section; false if the store could not be written.
    bool Save();
    // Removes every key of the preferences from the store and goes back to the defaults;
    // false if the store could not be written.
    bool ResetToDefaults();
    UT_SettingsStore& Store() { return store_; }

    // Generic access. Number() of a text key is 0; Text() of a number key is its decimal.
    int64_t Number(Key key) const { return numbers_[key]; }
    UT_WString Text(Key key) const;
    bool Flag(Key key) const;
    int64_t DefaultNumber(Key key) const;
    UT_WString DefaultText(Key key) const;
    // Sets a value from its text, after the checks of the preference pages. Empty result:
    // accepted; else the message that refuses it.
    UT_WString SetFromText(Key key, std::string_view text);
    // The checks of the preference pages, without setting anything.
    UT_WString Validate(Key key, std::string_view text) const;
    // The keys a page shows, in the order of the sections: author, copyright and folders;
    // units and path defaults; the renderer; onion skin; row colours; new sets.
    static std::vector<Key> KeysOfPage(Page page);
    // What a page tells the user once a change on it is accepted; empty for most pages.
    static UT_WString ChangeNotice(Page page);
    void SetNumber(Key key, int64_t value) { numbers_[key] = value; }
    void SetText(Key key, const UT_WString& value) { texts_[key] = value; }

    // "Animation"
    uint32_t FrameRate() const { return U32(kFrameRate); }
    uint32_t CameraWidth() const { return U32(kCameraWidth); }
    uint32_t CameraHeight() const { return U32(kCameraHeight); }
    // "Renderer"
    bool Direct3D() const { return Flag(kDirect3D); }
    bool Direct3DSoftware() const { return Flag(kDirect3DSoftware); }
    bool Direct3DNoCopyBuffer() const { return Flag(kDirect3DNoCopyBuffer); }
    bool SmoothPegs() const { return Flag(kSmoothPegs); }
    bool SmoothTools() const { return Flag(kSmoothTools); }
    bool SmoothTextures() const { return Flag(kSmoothTextures); }
    uint32_t TextureReductionSize() const { return U32(kTextureReductionSize); }
    bool ConservativeTextureManagement() const { return Flag(kConservativeTextureManagement); }
    uint32_t PolygonCacheMemory() const { return U32(kPolygonCacheMemory); }
    // "Scene"
    int32_t Tension() const { return I32(kTension); }
    int32_t Continuity() const { return I32(kContinuity); }
    int32_t Bias() const { return I32(kBias); }
    // "UIUnits"
    uint32_t AngleUnit() const { return U32(kAngleUnit); }
    uint32_t CoordinateUnit() const { return U32(kCoordinateUnit); }
    bool ShowUnits() const { return Flag(kShowUnits); }
    // "UIColors", as 0xBBGGRR.
    uint32_t PegColor() const { return U32(kPegColor); }
    uint32_t EffectColor() const { return U32(kEffectColor); }
    uint32_t ParamGroupColor() const { return U32(kParamGroupColor); }
    uint32_t CameraColor() const { return U32(kCameraColor); }
    uint32_t SoundColor() const { return U32(kSoundColor); }
    uint32_t DrawingColor() const { return U32(kDrawingColor); }
    uint32_t ImageColor() const { return U32(kImageColor); }
    uint32_t MediaColor() const { return U32(kMediaColor); }
    uint32_t TimelineBGColor() const { return U32(kTimelineBGColor); }
    uint32_t DrawingViewBGColor() const { return U32(kDrawingViewBGColor); }
    bool UseSceneBGColor() const { return Flag(kUseSceneBGColor); }
    bool UseSceneBGColorInSV() const { return Flag(kUseSceneBGColorInSV); }
    uint32_t TimeMeasurementUnit() const { return U32(kTimeMeasurementUnit); }
    // "OnionSkinColor"
    uint32_t OnionColorBefore() const { return U32(kColorBefore); }
    uint32_t OnionColorAfter() const { return U32(kColorAfter); }
    bool EnableOSShade() const { return Flag(kEnableOSShade); }
    bool EnableSLTShade() const { return Flag(kEnableSLTShade); }
    bool EnableALTShade() const { return Flag(kEnableALTShade); }
    // "Template"
    const UT_WString& TemplateName() const { return texts_[kTemplateName]; }
    const UT_WString& TemplateCopyright() const { return texts_[kTemplateCopyright]; }
    const UT_WString& GlobalTemplatePath() const { return texts_[kGlobalTemplatePath]; }
    const UT_WString& ExportDir() const { return texts_[kExportDir]; }
    const UT_WString& ProjectDir() const { return texts_[kProjectDir]; }
    // "SoftRender", in bytes.
    uint64_t TextureMemory() const { return static_cast<uint64_t>(numbers_[kTextureMemory]); }

    // Messages the user silenced, by number; written to the store at once. The setters
    // give false if the store could not be written.
    bool IsMessageSilenced(uint32_t messageId) const;
    bool SilenceMessage(uint32_t messageId);
    bool ClearSilencedMessages();

private:
    uint32_t U32(Key key) const { return static_cast<uint32_t>(numbers_[key]); }
    int32_t I32(Key key) const { return static_cast<int32_t>(numbers_[key]); }
    std::optional<int64_t> ParseValue(Key key, std::string_view text) const;

    UT_SettingsStore& store_;
    uint64_t physicalMemory_;
    std::array<int64_t, kKeyCount> numbers_{};
    std::array<UT_WString, kKeyCount> texts_;
};
