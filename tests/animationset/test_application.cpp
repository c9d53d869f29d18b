#include "FakeHosts.h"
#include "RegisterAll.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CSketchrunApp.h"
#include "animationset/CSketchrunDoc.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

class ApplicationTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterAllTypesForTests();
        host.newLocation = folder.Wide();
    }

    UT_FilePath ProjectOf(const char* name) const {
        return UT_FilePath(folder.Path() / name / (std::string(name) + ".qmp"));
    }

    // Creates and saves a project through the New flow.
    void MakeProject(CSketchrunApp& app, const char16_t* name) {
        host.newName = name;
        ASSERT_TRUE(app.OnFileNew());
        ASSERT_TRUE(app.OnFileSave());
    }

    TempFolder folder{"app"};
    ScriptedMessages messages;
    UT_MessageHandlerScope scope{&messages};
    FakeAppHost host;
};

TEST(ApplicationRules, LanguagePackSelection) {
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(0x0409), 1033u);
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(0x0809), 1033u); // any English
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(0x0C0C), 1036u); // any French is France's
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(0x0411), 0x0411u);
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(0x0412), 0x0412u);
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(0x0804), 2052u); // 2052 lies in 2048..3071
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(0x0C04), 1028u); // 3076 lies beyond
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(0x0407), 1033u);
    EXPECT_EQ(CSketchrunApp::LanguagePackName(1036), "res40c.dll");
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(CSketchrunApp::LanguageFromLocale("zh_CN.UTF-8")), 2052u);
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(CSketchrunApp::LanguageFromLocale("fr_CA")), 1036u);
    EXPECT_EQ(CSketchrunApp::SelectLanguagePack(CSketchrunApp::LanguageFromLocale("C")), 1033u);
}

TEST(ApplicationRules, PlazmicVariableMustBeANonZeroNumber) {
    EXPECT_FALSE(CSketchrunApp::IsNonZeroNumber(nullptr));
    EXPECT_FALSE(CSketchrunApp::IsNonZeroNumber(""));
    EXPECT_FALSE(CSketchrunApp::IsNonZeroNumber("0"));
    EXPECT_FALSE(CSketchrunApp::IsNonZeroNumber("yes"));
    EXPECT_FALSE(CSketchrunApp::IsNonZeroNumber("1x"));
    EXPECT_TRUE(CSketchrunApp::IsNonZeroNumber("1"));
    EXPECT_TRUE(CSketchrunApp::IsNonZeroNumber("-2.5"));
}

TEST_F(ApplicationTest, StartUpChecksScreenFrameAndOptions) {
    {
        host.depth = 16;
        CSketchrunApp app(host);
        EXPECT_FALSE(app.InitInstance({}, nullptr));
        ASSERT_EQ(messages.messages.size(), 1u);
        EXPECT_EQ(messages.messages[0].text,
                  u"Quilmoor Studio requires that the monitor be set to 24 or 32 bit color depth.");
        EXPECT_FALSE(host.frameShown);
    }
    messages.messages.clear();
    {
        host.depth = 24;
        host.frameOk = false;
        CSketchrunApp app(host);
        EXPECT_FALSE(app.InitInstance({}, nullptr));
        ASSERT_EQ(messages.messages.size(), 1u);
        EXPECT_EQ(messages.messages[0].text, u"Cannot initialize QMS from registry.");
    }
    messages.messages.clear();
    {
        host.frameOk = true;
        host.direct3D = true;
        host.language = 0x040C;
        CSketchrunApp app(host);
        EXPECT_TRUE(app.InitInstance({}, "1"));
        EXPECT_FALSE(host.plazmicRemoved);
        EXPECT_TRUE(app.PlazmicExportEnabled());
        EXPECT_FALSE(app.UsesDirect3D());
        EXPECT_EQ(app.LanguageId(), 1036u);
        EXPECT_EQ(host.requestedPack, 1036u);
        ASSERT_EQ(messages.messages.size(), 1u);
        EXPECT_EQ(messages.messages[0].text,
                  u"Failed to initialize DX7.0.\nOpenGL will be used for rendering.");
        EXPECT_TRUE(host.frameShown);
        EXPECT_EQ(app.Document(), nullptr);
    }
    {
        // A pack that does not load leaves English.
        host.packLoads = false;
        CSketchrunApp app(host);
        EXPECT_TRUE(app.InitInstance({}, "0"));
        EXPECT_TRUE(host.plazmicRemoved);
        EXPECT_EQ(app.LanguageId(), CSketchrunApp::kEnglish);
    }
}

TEST_F(ApplicationTest, CommandLineFileOpensOrEndsStartUp) {
    {
        CSketchrunApp app(host);
        MakeProject(app, u"Short");
    }
    CSketchrunApp app(host);
    // Without the extension: the Open flow adds it.
    EXPECT_TRUE(app.InitInstance({(folder.Path() / "Short" / "Short").string()}, nullptr));
    ASSERT_NE(app.Document(), nullptr);
    EXPECT_EQ(app.Document()->Set()->Name(), u"Short");
    EXPECT_TRUE(host.documentShown);

    CSketchrunApp other(host);
    messages.messages.clear();
    EXPECT_FALSE(other.InitInstance({(folder.Path() / "Nowhere.qmp").string()}, nullptr));
    EXPECT_EQ(other.Document(), nullptr);
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_NE(messages.messages[0].text.find(
                  u"could not be found.\nThis file may have been moved, renamed or deleted."),
              UT_WString::npos);
}

TEST_F(ApplicationTest, NewFlowMakesADirtyDocumentAndRespectsCancel) {
    CSketchrunApp app(host);
    host.newDialogOk = false;
    EXPECT_FALSE(app.OnFileNew());
    EXPECT_EQ(app.Document(), nullptr);

    host.newDialogOk = true;
    ASSERT_TRUE(app.OnFileNew());
    CAnimationSetObj* set = app.Document()->Set();
    EXPECT_EQ(CAnimationSetObj::Current(), set);
    EXPECT_EQ(set->Name(), u"Film");
    EXPECT_TRUE(set->IsDirty());
    EXPECT_NE(set->CurrentScene(), nullptr);
    EXPECT_FALSE(fs::exists(folder.Path() / "Film")); // nothing on disk before the first Save

    // A second New with unsaved changes asks; Cancel keeps everything as it is.
    host.newName = u"Other";
    messages.answers = {UT_MessageHandler::kCancel};
    EXPECT_FALSE(app.OnFileNew());
    ASSERT_EQ(messages.questions.size(), 1u);
    EXPECT_EQ(messages.questions[0], u"Save changes to Film?");
    EXPECT_EQ(app.Document()->Set(), set);

    // Yes saves, then the new set replaces the old one.
    messages.answers = {UT_MessageHandler::kYes};
    ASSERT_TRUE(app.OnFileNew());
    EXPECT_TRUE(fs::exists(folder.Path() / "Film" / "Film.qmp"));
    EXPECT_EQ(app.Document()->Set()->Name(), u"Other");
}

TEST_F(ApplicationTest, OpenRemembersTheFolderBesideTheProject) {
    CSketchrunApp app(host);
    MakeProject(app, u"Alpha");
    ASSERT_TRUE(app.CloseDocument(true));
    EXPECT_FALSE(host.documentShown);
    EXPECT_EQ(CAnimationSetObj::Current(), nullptr);

    host.openAnswer = ProjectOf("Alpha");
    ASSERT_TRUE(app.OnFileOpen());
    EXPECT_EQ(host.projectDir.Path(), folder.Path());
    EXPECT_FALSE(app.Document()->IsModified());
    EXPECT_EQ(host.title, u"Alpha");
}

TEST_F(ApplicationTest, RecentFilesKeepFourNewestFirstAndForgetMissingOnes) {
    CSketchrunApp app(host);
    for (const char16_t* name : {u"P1", u"P2", u"P3", u"P4", u"P5"})
        MakeProject(app, name);
    for (const char* name : {"P1", "P2", "P3", "P4", "P5"})
        ASSERT_TRUE(app.OpenDocumentFile(ProjectOf(name)));
    ASSERT_EQ(app.RecentFiles().size(), 4u);
    EXPECT_EQ(app.RecentFiles()[0], ProjectOf("P5"));
    EXPECT_EQ(app.RecentFiles()[3], ProjectOf("P2"));
    EXPECT_EQ(host.storedRecent, app.RecentFiles());

    // Opening an entry moves it to the front.
    ASSERT_TRUE(app.OnRecentFile(2));
    EXPECT_EQ(app.RecentFiles()[0], ProjectOf("P3"));
    EXPECT_EQ(app.RecentFiles()[1], ProjectOf("P5"));

    // An entry whose file went away fails to open and leaves the list.
    fs::remove_all(folder.Path() / "P4");
    const size_t index = 2;
    ASSERT_EQ(app.RecentFiles()[index], ProjectOf("P4"));
    EXPECT_FALSE(app.OnRecentFile(index));
    EXPECT_EQ(app.Document(), nullptr);
    EXPECT_EQ(app.RecentFiles().size(), 3u);
    EXPECT_EQ(std::count(app.RecentFiles().begin(), app.RecentFiles().end(), ProjectOf("P4")), 0);
}

TEST_F(ApplicationTest, ExitWithUnsavedChanges) {
    CSketchrunApp app(host);
    MakeProject(app, u"Gamma");
    app.Document()->Set()->SetForcedDirty(true);

    messages.answers = {UT_MessageHandler::kCancel};
    EXPECT_FALSE(app.OnAppExit());
    EXPECT_NE(app.Document(), nullptr);

    messages.answers = {UT_MessageHandler::kNo};
    EXPECT_TRUE(app.OnAppExit());
    EXPECT_EQ(app.Document(), nullptr);
}

} // namespace
