// Settings stores, the preferences over them, and the user colours of a project.

#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_MemFile.h"
#include "core/PR_Preferences.h"
#include "core/PR_UserColorSettings.h"
#include "core/UT_SettingsStore.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <sstream>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using P = PR_Preferences;

// A fresh folder under the system's temporary folder, removed afterwards.
class TempFolder {
public:
    TempFolder() {
        static int counter = 0;
        path_ = fs::temp_directory_path() /
                ("qms-settings-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        fs::remove_all(path_);
        fs::create_directories(path_);
    }
    ~TempFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    const fs::path& Path() const { return path_; }

private:
    fs::path path_;
};

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteAll(const fs::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
}

TEST(Preferences, EmptyStoreGivesEveryDefault) {
    UT_MemorySettingsStore store;
    const uint64_t sixteenGiB = uint64_t{16} << 30;
    P prefs(store, sixteenGiB);
    EXPECT_EQ(prefs.FrameRate(), 12u);
    EXPECT_EQ(prefs.CameraWidth(), 500u);
    EXPECT_EQ(prefs.CameraHeight(), 375u);
    EXPECT_TRUE(prefs.Direct3D());
    EXPECT_FALSE(prefs.Direct3DSoftware());
    EXPECT_FALSE(prefs.Direct3DNoCopyBuffer());
    EXPECT_TRUE(prefs.SmoothPegs());
    EXPECT_TRUE(prefs.SmoothTools());
    EXPECT_TRUE(prefs.SmoothTextures());
    EXPECT_EQ(prefs.TextureReductionSize(), 2048u);
    EXPECT_TRUE(prefs.ConservativeTextureManagement());
    EXPECT_EQ(prefs.PolygonCacheMemory(), 64u);
    EXPECT_EQ(prefs.Tension(), 0);
    EXPECT_EQ(prefs.Continuity(), 0);
    EXPECT_EQ(prefs.Bias(), 0);
    EXPECT_EQ(prefs.AngleUnit(), 0u);
    EXPECT_EQ(prefs.CoordinateUnit(), 3u);
    EXPECT_TRUE(prefs.ShowUnits());
    EXPECT_EQ(prefs.PegColor(), 0xFF8080u);
    EXPECT_EQ(prefs.EffectColor(), 0x3480C4u);
    EXPECT_EQ(prefs.ParamGroupColor(), 0x003480u);
    EXPECT_EQ(prefs.CameraColor(), 0x8080FFu);
    EXPECT_EQ(prefs.SoundColor(), 0xD6A9B9u);
    EXPECT_EQ(prefs.DrawingColor(), 0x008000u);
    EXPECT_EQ(prefs.ImageColor(), 0x008000u);
    EXPECT_EQ(prefs.MediaColor(), 0x348080u);
    EXPECT_EQ(prefs.TimelineBGColor(), 0xFFFFFFu);
    EXPECT_EQ(prefs.DrawingViewBGColor(), 0xFFFFFFu);
    EXPECT_TRUE(prefs.UseSceneBGColor());
    EXPECT_FALSE(prefs.UseSceneBGColorInSV());
    EXPECT_EQ(prefs.TimeMeasurementUnit(), 1u);
    EXPECT_EQ(prefs.OnionColorBefore(), 0x0000FFu);
    EXPECT_EQ(prefs.OnionColorAfter(), 0x00FF00u);
    EXPECT_TRUE(prefs.EnableOSShade());
    EXPECT_TRUE(prefs.EnableSLTShade());
    EXPECT_TRUE(prefs.EnableALTShade());
    EXPECT_EQ(prefs.TemplateName(), u"No Name");
    EXPECT_EQ(prefs.TemplateCopyright(), u"No Copyright");
    EXPECT_EQ(prefs.GlobalTemplatePath(), u"");
    EXPECT_EQ(prefs.ExportDir(), u"");
    EXPECT_EQ(prefs.ProjectDir(), u"");
    // 40% of 16 GiB does not fit in 32 bits.
    EXPECT_EQ(prefs.TextureMemory(), 6871947673u);
    // Loading writes nothing.
    EXPECT_TRUE(store.All().empty());
}

TEST(Preferences, TextureMemoryDefaultDoesNotWrap) {
    EXPECT_EQ(P::DefaultTextureMemory(0), 0u);
    EXPECT_EQ(P::DefaultTextureMemory(10), 4u);
    EXPECT_EQ(P::DefaultTextureMemory(12), 4u);
    EXPECT_EQ(P::DefaultTextureMemory(13), 5u);
    EXPECT_EQ(P::DefaultTextureMemory(UINT64_MAX), 7378697629483820646u);
    std::mt19937_64 random(7);
    for (int i = 0; i < 1000; ++i) {
        const uint64_t memory = random() >> (random() % 40);
        const unsigned __int128 exact = static_cast<unsigned __int128>(memory) * 2 / 5;
        EXPECT_EQ(P::DefaultTextureMemory(memory), static_cast<uint64_t>(exact)) << memory;
    }
    EXPECT_GT(P::PhysicalMemory(), 0u);
}

TEST(Preferences, FlagsReadOneOrNotZeroByKey) {
    UT_MemorySettingsStore store;
    store.Set("Renderer", "Direct3D", "2");
    store.Set("Renderer", "smoothPegs", "1");
    store.Set("UIUnits", "showUnits", "2");
    store.Set("UIColors", "useSceneBGColorInSV", "-1");
    store.Set("OnionSkinColor", "enableOSShade", "0");
    P prefs(store, 0);
    EXPECT_FALSE(prefs.Direct3D());
    EXPECT_TRUE(prefs.SmoothPegs());
    EXPECT_TRUE(prefs.ShowUnits());
    EXPECT_TRUE(prefs.UseSceneBGColorInSV());
    EXPECT_FALSE(prefs.EnableOSShade());
}

TEST(Preferences, DamagedValuesFallBackToTheDefault) {
    UT_MemorySettingsStore store;
    store.Set("Animation", "frameRate", "twelve");
    store.Set("Animation", "cameraWidth", "-5");
    store.Set("Animation", "cameraHeight", "99999999999");
    store.Set("Scene", "Tension", "-3");
    store.Set("Scene", "Bias", "0x80000000");
    store.Set("UIColors", "pegColor", "0x1000000");
    store.Set("UIColors", "soundColor", "0x00abCD");
    store.Set("UIUnits", "angleUnit", "");
    store.Set("SoftRender", "TextureMemory", "99999999999999999999");
    P prefs(store, 1000);
    EXPECT_EQ(prefs.FrameRate(), 12u);
    EXPECT_EQ(prefs.CameraWidth(), 500u);
    EXPECT_EQ(prefs.CameraHeight(), 375u);
    EXPECT_EQ(prefs.Tension(), -3);
    EXPECT_EQ(prefs.Bias(), 0);
    EXPECT_EQ(prefs.PegColor(), 0xFF8080u);
    EXPECT_EQ(prefs.SoundColor(), 0x00ABCDu);
    EXPECT_EQ(prefs.AngleUnit(), 0u);
    EXPECT_EQ(prefs.TextureMemory(), 400u);
}

TEST(Preferences, TemplateTextsFallToTheRegistrationKeys) {
    UT_MemorySettingsStore store;
    store.Set("", "UserName", "Ada");
    store.Set("", "CompanyName", "Quilmoor");
    {
        P prefs(store, 0);
        EXPECT_EQ(prefs.TemplateName(), u"Ada");
        EXPECT_EQ(prefs.TemplateCopyright(), u"Quilmoor");
    }
    store.Set("Template", "name", "Bo \xC3\xA9");
    P prefs(store, 0);
    EXPECT_EQ(prefs.TemplateName(), u"Bo \u00E9");
}

TEST(Preferences, PersistThroughTheIniFile) {
    TempFolder folder;
    const fs::path file = folder.Path() / "sub" / "Quilmoor Studio 2.0.ini";
    {
        UT_IniSettingsStore store(file.string());
        P prefs(store, 1 << 30);
        EXPECT_EQ(prefs.SetFromText(P::kFrameRate, "25"), u"");
        EXPECT_EQ(prefs.SetFromText(P::kPegColor, "0x123456"), u"");
        EXPECT_EQ(prefs.SetFromText(P::kDirect3D, "0"), u"");
        EXPECT_EQ(prefs.SetFromText(P::kTemplateName, " line\nbreak\\ "), u"");
        EXPECT_EQ(prefs.SetFromText(P::kBias, "-1"), u"");
        ASSERT_TRUE(prefs.Save());
        prefs.SilenceMessage(4242);
    }
    const std::string text = ReadAll(file);
    EXPECT_NE(text.find("\nframeRate=25\n"), std::string::npos) << text;
    EXPECT_NE(text.find("[Animation]\n"), std::string::npos) << text;
    EXPECT_NE(text.find("name=\\sline\\nbreak\\\\\\s\n"), std::string::npos) << text;
    EXPECT_NE(text.find("[AnnoyingMessage]\n4242=1\n"), std::string::npos) << text;
    // Colours are written as 0xBBGGRR.
    EXPECT_NE(text.find("\npegColor=0x123456\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\ncolorAfter=0x00FF00\n"), std::string::npos) << text;

    UT_IniSettingsStore store(file.string());
    P prefs(store, 1 << 30);
    EXPECT_EQ(prefs.FrameRate(), 25u);
    EXPECT_EQ(prefs.PegColor(), 0x123456u);
    EXPECT_FALSE(prefs.Direct3D());
    EXPECT_EQ(prefs.TemplateName(), u" line\nbreak\\ ");
    EXPECT_EQ(prefs.Bias(), -1);
    EXPECT_EQ(prefs.CameraWidth(), 500u);
    EXPECT_TRUE(prefs.IsMessageSilenced(4242));
    EXPECT_FALSE(prefs.IsMessageSilenced(4243));

    prefs.ClearSilencedMessages();
    prefs.ResetToDefaults();
    EXPECT_EQ(prefs.FrameRate(), 12u);
    UT_IniSettingsStore reread(file.string());
    EXPECT_TRUE(reread.All().empty());
}

TEST(Preferences, PageRulesRefuseBadValues) {
    UT_MemorySettingsStore store;
    P prefs(store, uint64_t{10} << 30);
    EXPECT_EQ(prefs.Validate(P::kFrameRate, "0"), u"The minimum value is 1");
    EXPECT_EQ(prefs.Validate(P::kFrameRate, "101"), u"The maximum value is 100");
    EXPECT_EQ(prefs.Validate(P::kFrameRate, "100"), u"");
    EXPECT_EQ(prefs.Validate(P::kFrameRate, "12fps"), u"\"12fps\" is not a valid value for frameRate.");
    EXPECT_EQ(prefs.Validate(P::kCameraWidth, "8193"), u"The maximum value is 8192");
    EXPECT_EQ(prefs.Validate(P::kTextureReductionSize, "1000"), u"The texture size must be a power of two.");
    EXPECT_EQ(prefs.Validate(P::kTextureReductionSize, "1024"), u"");
    EXPECT_EQ(prefs.Validate(P::kDirect3D, "2"), u"The maximum value is 1");
    EXPECT_EQ(prefs.Validate(P::kCoordinateUnit, "4"), u"The maximum value is 3");
    EXPECT_EQ(prefs.Validate(P::kTension, "-2"), u"The minimum value is -1");
    EXPECT_EQ(prefs.Validate(P::kPegColor, "0xFFFFFF"), u"");
    EXPECT_NE(prefs.Validate(P::kPegColor, "0x1000000"), u"");
    EXPECT_EQ(prefs.Validate(P::kTextureMemory, "1048575"), u"The minimum value is 1048576");
    EXPECT_EQ(prefs.Validate(P::kTextureMemory, "4294967296"), u"");
    EXPECT_EQ(prefs.Validate(P::kTextureMemory, "4294967297"), u"The maximum value is 4294967296");
    EXPECT_EQ(prefs.Validate(P::kProjectDir, "/no/such/folder/here"),
              u"Cannot Access the Specified Project Path");
    EXPECT_EQ(prefs.Validate(P::kProjectDir, fs::temp_directory_path().string()), u"");
    EXPECT_EQ(prefs.Validate(P::kTemplateName, ""), u"");
    // A refused value leaves the old one.
    EXPECT_NE(prefs.SetFromText(P::kFrameRate, "0"), u"");
    EXPECT_EQ(prefs.FrameRate(), 12u);
}

TEST(Preferences, EachPageShowsItsSections) {
    EXPECT_EQ(P::KeysOfPage(P::Page::kAnimation),
              (std::vector<P::Key>{P::kFrameRate, P::kCameraWidth, P::kCameraHeight}));
    EXPECT_EQ(P::KeysOfPage(P::Page::kScene).front(), P::kAngleUnit);
    EXPECT_EQ(P::KeysOfPage(P::Page::kScene).back(), P::kBias);
    // Every key but the memory of the software renderer is on exactly one page.
    std::vector<int> pagesOf(P::kKeyCount, 0);
    for (P::Page page : {P::Page::kTemplate, P::Page::kScene, P::Page::kRenderer, P::Page::kOnionSkin,
                         P::Page::kDefaultColors, P::Page::kAnimation})
        for (P::Key key : P::KeysOfPage(page))
            ++pagesOf[key];
    for (int key = 0; key < P::kKeyCount; ++key)
        EXPECT_EQ(pagesOf[key], key == P::kTextureMemory ? 0 : 1) << P::Info(static_cast<P::Key>(key)).name;
    EXPECT_EQ(P::ChangeNotice(P::Page::kAnimation),
              u"This change will be applied to all new animation sets.");
    EXPECT_EQ(P::ChangeNotice(P::Page::kRenderer), u"");
}

TEST(Preferences, KeysAreFoundByNameOrSectionInAnyCase) {
    EXPECT_EQ(P::FindKey("frameRate"), P::kFrameRate);
    EXPECT_EQ(P::FindKey("FRAMERATE"), P::kFrameRate);
    EXPECT_EQ(P::FindKey("Template/name"), P::kTemplateName);
    EXPECT_EQ(P::FindKey("Animation/name"), std::nullopt);
    EXPECT_EQ(P::FindKey("nosuchkey"), std::nullopt);
    EXPECT_EQ(P::FindKey(""), std::nullopt);
    // Every key is found under its own names, and no two keys share a name.
    std::set<std::string> names;
    for (int i = 0; i < P::kKeyCount; ++i) {
        const P::KeyInfo& info = P::Info(static_cast<P::Key>(i));
        EXPECT_EQ(P::FindKey(info.name), static_cast<P::Key>(i));
        EXPECT_EQ(P::FindKey(std::string(info.section) + "/" + info.name), static_cast<P::Key>(i));
        EXPECT_TRUE(names.insert(info.name).second) << info.name;
    }
}

TEST(Preferences, InstanceUsesTheInstalledStore) {
    auto store = std::make_unique<UT_MemorySettingsStore>();
    store->Set("animation", "FRAMERATE", "30");
    P::UseStore(std::move(store));
    EXPECT_EQ(P::Instance().FrameRate(), 30u);
    EXPECT_EQ(&P::Instance(), &P::Instance());
    P::UseStore(std::make_unique<UT_MemorySettingsStore>());
    EXPECT_EQ(P::Instance().FrameRate(), 12u);
    P::ResetInstance();
}

TEST(IniSettingsStore, ParsesLooseTextAndIgnoresJunk) {
    const auto sections = UT_IniSettingsStore::Parse("top = level\r\n"
                                                     "; comment\n"
                                                     "# another\n"
                                                     "\n"
                                                     "[ Animation ]\n"
                                                     "frameRate =  24 \n"
                                                     "no equals sign\n"
                                                     "=no key\n"
                                                     "[broken\n"
                                                     "cameraWidth=640\n"
                                                     "[animation]\n"
                                                     "FrameRate=25\n"
                                                     "a=b=c");
    UT_MemorySettingsStore store;
    for (const auto& [section, keys] : sections)
        for (const auto& [key, value] : keys)
            store.Set(section, key, value);
    EXPECT_EQ(store.Get("", "TOP"), "level");
    EXPECT_EQ(store.Get("Animation", "framerate"), "25");
    EXPECT_EQ(store.Get("Animation", "cameraWidth"), "640");
    EXPECT_EQ(store.Get("Animation", "a"), "b=c");
    EXPECT_EQ(store.Keys("animation").size(), 3u);
    EXPECT_EQ(store.Get("Animation", "no equals sign"), std::nullopt);
    EXPECT_EQ(sections.size(), 2u);
}

TEST(IniSettingsStore, FormatIsExactAndRoundTripsRandomText) {
    UT_MemorySettingsStore::Sections sections;
    sections["B"]["k"] = "1";
    sections[""]["UserName"] = "x";
    sections["a"]["z"] = "\t2";
    EXPECT_EQ(UT_IniSettingsStore::Format(sections), "UserName=x\n\n[a]\nz=\\t2\n\n[B]\nk=1\n");

    std::mt19937 random(99);
    const std::string alphabet = " \t\r\n\\=[];#ab\xC3\xA9";
    for (int round = 0; round < 200; ++round) {
        UT_MemorySettingsStore::Sections original;
        for (int i = 0; i < 5; ++i) {
            std::string value;
            for (unsigned n = random() % 12; n > 0; --n)
                value += alphabet[random() % alphabet.size()];
            original["S" + std::to_string(random() % 3)]["k" + std::to_string(i)] = value;
        }
        const auto reread = UT_IniSettingsStore::Parse(UT_IniSettingsStore::Format(original));
        EXPECT_EQ(reread, original) << UT_IniSettingsStore::Format(original);
    }
}

TEST(IniSettingsStore, UnwritableFileIsReportedNotFatal) {
    TempFolder folder;
    const fs::path blocker = folder.Path() / "file";
    WriteAll(blocker, "not a folder");
    UT_IniSettingsStore store((blocker / "settings.ini").string());
    store.Set("A", "b", "c");
    EXPECT_FALSE(store.Flush());
    EXPECT_EQ(store.Get("A", "b"), "c");
    P prefs(store, 0);
    EXPECT_FALSE(prefs.Save());
}

TEST(IniSettingsStore, DefaultPathFollowsXdgConfigHome) {
    const char* savedXdg = std::getenv("XDG_CONFIG_HOME");
    const std::string xdg = savedXdg ? savedXdg : "";
    setenv("XDG_CONFIG_HOME", "/tmp/xdg", 1);
    EXPECT_EQ(UT_IniSettingsStore::DefaultPath(),
              "/tmp/xdg/Quilmoor Technologies Inc/Quilmoor Studio 2.0.ini");
    setenv("XDG_CONFIG_HOME", "", 1);
    const char* home = std::getenv("HOME");
    if (home && home[0]) {
        EXPECT_EQ(UT_IniSettingsStore::DefaultPath(),
                  std::string(home) + "/.config/Quilmoor Technologies Inc/Quilmoor Studio 2.0.ini");
    }
    // A relative folder is not a valid XDG_CONFIG_HOME.
    setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(UT_IniSettingsStore::DefaultPath().find("relative"), std::string::npos);
    if (savedXdg)
        setenv("XDG_CONFIG_HOME", xdg.c_str(), 1);
    else
        unsetenv("XDG_CONFIG_HOME");
}

TEST(SettingsStore, ParseIntAcceptsDecimalAndHexOnly) {
    EXPECT_EQ(UT_SettingsStore::ParseInt("42"), 42);
    EXPECT_EQ(UT_SettingsStore::ParseInt(" -7 "), -7);
    EXPECT_EQ(UT_SettingsStore::ParseInt("+7"), 7);
    EXPECT_EQ(UT_SettingsStore::ParseInt("0xFf"), 255);
    EXPECT_EQ(UT_SettingsStore::ParseInt("-9223372036854775808"), INT64_MIN);
    EXPECT_EQ(UT_SettingsStore::ParseInt("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(UT_SettingsStore::ParseInt("9223372036854775808"), std::nullopt);
    EXPECT_EQ(UT_SettingsStore::ParseInt("0x"), std::nullopt);
    EXPECT_EQ(UT_SettingsStore::ParseInt("1.5"), std::nullopt);
    EXPECT_EQ(UT_SettingsStore::ParseInt("-"), std::nullopt);
    EXPECT_EQ(UT_SettingsStore::ParseInt(""), std::nullopt);
    EXPECT_EQ(UT_SettingsStore::ParseInt("12a"), std::nullopt);
}

// The user colours.
class FakeSet : public PR_UserColorSettings::Owner {
public:
    std::set<PR_ElementRef> alive;
    bool ElementExists(const PR_ElementRef& element) const override { return alive.count(element) != 0; }
};

std::vector<uint8_t> Bytes(const DB_MemFile& file) {
    return {file.Data(), file.Data() + file.Size()};
}

class UserColorTest : public ::testing::Test {
protected:
    void SetUp() override { CoreRegisterTypes(); }
    UT_MemorySettingsStore store;
    P prefs{store, 0};
};

TEST_F(UserColorTest, LookUpsFallBackToTheKindColour) {
    PR_UserColorSettings colors;
    const PR_ElementRef e{1, 2};
    EXPECT_EQ(colors.GetColor(PR_UserColorSettings::kElementColors, e, 3, prefs),
              (PR_ColorRecord{0x80, 0x80, 0xFF, 100}));
    EXPECT_EQ(colors.GetColor(PR_UserColorSettings::kElementColors, e, 0, prefs),
              (PR_ColorRecord{0x00, 0x80, 0x00, 100}));
    EXPECT_EQ(colors.GetColor(PR_UserColorSettings::kElementColors, e, 2, prefs),
              (PR_ColorRecord{0xB9, 0xA9, 0xD6, 100}));
    EXPECT_EQ(colors.GetColor(PR_UserColorSettings::kElementColors, e, 6, prefs),
              (PR_ColorRecord{128, 128, 128, 100}));
    EXPECT_EQ(colors.GetColor(PR_UserColorSettings::kBackgroundColors, e, 3, prefs),
              (PR_ColorRecord{255, 255, 255, 100}));
    EXPECT_FALSE(colors.IsModified());

    colors.SetWidth(e, 7, 250, prefs);
    EXPECT_TRUE(colors.IsModified());
    EXPECT_EQ(colors.GetColor(PR_UserColorSettings::kElementColors, e, 0, prefs),
              (PR_ColorRecord{0xC4, 0x80, 0x34, 250}));
    colors.ResetColumnWidths();
    EXPECT_EQ(colors.GetColor(PR_UserColorSettings::kElementColors, e, 0, prefs).width, 100u);
    colors.RemoveColor(PR_UserColorSettings::kElementColors, e);
    EXPECT_FALSE(colors.HasColor(PR_UserColorSettings::kElementColors, e));
    colors.MarkClean();
    colors.ToggleFlag(PR_UserColorSettings::kShowThumbnails);
    EXPECT_TRUE(colors.GetFlag(PR_UserColorSettings::kShowThumbnails));
    EXPECT_TRUE(colors.IsModified());
}

TEST_F(UserColorTest, WriteIsExactPrunesAndRoundTrips) {
    FakeSet set;
    set.alive = {{1, 2}, {1, 3}};
    PR_UserColorSettings colors;
    colors.SetOwner(&set);
    colors.SetColor(PR_UserColorSettings::kElementColors, {1, 3}, {10, 20, 30, 7});
    colors.SetColor(PR_UserColorSettings::kElementColors, {9, 9}, {1, 1, 1, 1});
    colors.SetColor(PR_UserColorSettings::kBackgroundColors, {1, 2}, {4, 5, 6, 100});
    colors.SetFlag(PR_UserColorSettings::kShowNotes, false);
    // A snapshot in memory neither prunes nor counts as saved.
    {
        DB_MemFile snapshot;
        DB_Archive out(&snapshot, true);
        ASSERT_TRUE(out.WriteTyped(colors));
    }
    EXPECT_TRUE(colors.IsModified());
    EXPECT_EQ(colors.Count(PR_UserColorSettings::kElementColors), 2u);
    DB_MemFile file;
    {
        DB_Archive out(&file, false);
        ASSERT_TRUE(out.WriteTyped(colors));
    }
    EXPECT_FALSE(colors.IsModified());
    EXPECT_EQ(colors.Count(PR_UserColorSettings::kElementColors), 1u);
    const std::vector<uint8_t> expected = {
        0x90, 0x01,                                     // type 400
        0x01, 0x00, 0x00, 0x00,                         // one element colour
        0x01, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00, // scene 1, element 3
        10,   20,   30,   0x07, 0x00, 0x00, 0x00,       // colour, width 7
        0x01, 0x00, 0x00, 0x00,                         // one background colour
        0x01, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, // scene 1, element 2
        4,    5,    6,    100,  0x00, 0x00, 0x00,       // colour, width 100
        1,    1,    0,    0,                            // flags
    };
    EXPECT_EQ(Bytes(file), expected);
    EXPECT_EQ(CPersistentTypeRegistry::Instance().ShortName(400), "TL_UISettings");

    file.Rewind();
    DB_Archive in(&file, false);
    std::unique_ptr<PR_UserColorSettings> copy = in.ReadNewAs<PR_UserColorSettings>();
    EXPECT_EQ(copy->Entries(PR_UserColorSettings::kElementColors),
              colors.Entries(PR_UserColorSettings::kElementColors));
    EXPECT_EQ(copy->Entries(PR_UserColorSettings::kBackgroundColors),
              colors.Entries(PR_UserColorSettings::kBackgroundColors));
    EXPECT_FALSE(copy->GetFlag(PR_UserColorSettings::kShowNotes));
    EXPECT_TRUE(copy->GetFlag(PR_UserColorSettings::kShowExposure));
    EXPECT_FALSE(copy->IsModified());
}

TEST_F(UserColorTest, OldVersionsHaveNoWidthsOrFlags) {
    const std::vector<uint8_t> body = {
        0x01, 0x00, 0x00, 0x00, 0x05, 0x00, 0x00, 0x00, 0x06, 0x00,
        0x00, 0x00, 1,    2,    3,    0x00, 0x00, 0x00, 0x00,
    };
    DB_MemFile file;
    file.Write(body.data(), body.size());
    file.Rewind();
    DB_Archive in(&file, true);
    in.SetVersion(31);
    PR_UserColorSettings colors;
    colors.SetFlag(PR_UserColorSettings::kShowElementName, false);
    colors.SetColor(PR_UserColorSettings::kBackgroundColors, {7, 7}, {});
    colors.Read(in);
    EXPECT_EQ(file.BytesLeft(), 0u);
    EXPECT_EQ(colors.GetColor(PR_UserColorSettings::kElementColors, {5, 6}, 0, prefs),
              (PR_ColorRecord{1, 2, 3, 100}));
    EXPECT_EQ(colors.Count(PR_UserColorSettings::kBackgroundColors), 0u);
    EXPECT_TRUE(colors.GetFlag(PR_UserColorSettings::kShowElementName));
    EXPECT_TRUE(colors.GetFlag(PR_UserColorSettings::kShowNotes));
    EXPECT_FALSE(colors.GetFlag(PR_UserColorSettings::kShowThumbnails));
    EXPECT_FALSE(colors.IsModified());

    // The same bytes at version 32 lack the width and flags: a clear error, not a crash.
    file.Rewind();
    DB_Archive current(&file, true);
    current.SetVersion(32);
    EXPECT_THROW(colors.Read(current), DB_Exception);
}

TEST_F(UserColorTest, AbsurdCountIsRefused) {
    const std::vector<uint8_t> body = {0xFF, 0xFF, 0xFF, 0x7F, 0x01, 0x02};
    DB_MemFile file;
    file.Write(body.data(), body.size());
    file.Rewind();
    DB_Archive in(&file, true);
    PR_UserColorSettings colors;
    EXPECT_THROW(colors.Read(in), DB_Exception);
}

} // namespace
