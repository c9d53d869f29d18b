// The dialogs, message boxes, progress window and preference pages on their own.

#include "GuiTestSupport.h"
#include "animationset/CNewAnimationDlg.h"
#include "platform/GUT_AcceleratorTable.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_MessageHandler.h"
#include "platform/GUT_NewAnimationWnd.h"
#include "platform/GUT_ProgressWnd.h"
#include "platform/GUT_PropertiesWnd.h"
#include "platform/GUT_StringTable.h"
#include "platform/PR_AcceleratorPrefUI.h"
#include "platform/PR_AnimationSettingsUI.h"
#include "platform/PR_PreferenceUI.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

namespace fs = std::filesystem;

namespace {

class DialogTest : public ::testing::Test {
protected:
    void SetUp() override { PR_Preferences::UseStore(std::make_unique<UT_MemorySettingsStore>()); }
    void TearDown() override { PR_Preferences::ResetInstance(); }

    UT_SettingsStore& Store() { return PR_Preferences::Instance().Store(); }
    std::optional<int64_t> Annoying(uint32_t id) {
        return Store().GetInt(PR_Preferences::kAnnoyingMessageSection, std::to_string(id));
    }

    TempFolder folder{"dialogs"};
    RecordingMessages messages;
    UT_MessageHandlerScope scope{&messages};
};

TEST_F(DialogTest, NewAnimationWindowRefusesWithTheRulesMessages) {
    fs::create_directories(folder.Path() / "Taken");
    CNewAnimationDlg rules(u"New Animation Set", u"Untitled", folder.Wide());
    GUT_NewAnimationWnd window(nullptr, rules);
    EXPECT_EQ(window.windowTitle(), "New Animation Set");
    EXPECT_EQ(window.LocationField()->text().toStdString(), folder.Path().string());

    struct Case {
        QString name;
        std::string location;
        UT_WString message;
    };
    const std::string here = folder.Path().string();
    const Case refused[] = {
        {"   ", here, u"Enter an animation name."},
        {"a/b", here, CNewAnimationDlg::kInvalidNameMessage},
        {"Reel.v2", here, CNewAnimationDlg::kInvalidNameMessage},
        {QString(261, QLatin1Char('x')), here, CNewAnimationDlg::kInvalidNameMessage},
        {"Reel", here + "/nowhere", u"Cannot Access the Specified Project Path"},
        {"Taken", here, u"This project folder already exists; please choose another name."},
    };
    for (const Case& c : refused) {
        messages.messages.clear();
        window.NameField()->setText(c.name);
        window.LocationField()->setText(QString::fromStdString(c.location));
        window.accept();
        EXPECT_EQ(window.result(), QDialog::Rejected) << c.name.toStdString();
        ASSERT_EQ(messages.messages.size(), 1u) << c.name.toStdString();
        EXPECT_EQ(messages.messages[0].text, c.message);
        // The window stays with the (trimmed) name selected for another try.
        EXPECT_EQ(window.NameField()->selectedText(), c.name.trimmed());
    }

    messages.messages.clear();
    window.NameField()->setText("  Reel  ");
    window.LocationField()->setText(QString::fromStdString(here));
    window.accept();
    EXPECT_EQ(window.result(), QDialog::Accepted);
    EXPECT_TRUE(messages.messages.empty());
    EXPECT_EQ(rules.name, u"Reel");
    EXPECT_EQ(rules.Folder().Path(), folder.Path() / "Reel");
}

TEST_F(DialogTest, PropertiesWindowChecksItsValues) {
    GUT_PropertiesWnd window(nullptr, {12, 500, 375});
    EXPECT_EQ(window.windowTitle(), "Animation Properties");
    EXPECT_EQ(window.FrameRateField()->text(), "12");

    struct Case {
        QLineEdit* field;
        QString text;
        UT_WString message;
    };
    const Case refused[] = {
        {window.FrameRateField(), "0", u"The minimum value is 1"},
        {window.FrameRateField(), "101", u"The maximum value is 100"},
        {window.FrameRateField(), "fast", u"\"fast\" is not a valid value for frameRate."},
        {window.WidthField(), "9000", u"The maximum value is 8192"},
        {window.HeightField(), "-5", u"\"-5\" is not a valid value for cameraHeight."},
    };
    for (const Case& c : refused) {
        window.FrameRateField()->setText("24");
        window.WidthField()->setText("640");
        window.HeightField()->setText("480");
        c.field->setText(c.text);
        messages.messages.clear();
        window.accept();
        EXPECT_EQ(window.result(), QDialog::Rejected);
        ASSERT_EQ(messages.messages.size(), 1u) << c.text.toStdString();
        EXPECT_EQ(messages.messages[0].text, c.message);
        EXPECT_EQ(c.field->selectedText(), c.text);
    }
    window.FrameRateField()->setText("24");
    window.WidthField()->setText("640");
    window.HeightField()->setText(" 480 ");
    window.accept();
    EXPECT_EQ(window.result(), QDialog::Accepted);
    EXPECT_EQ(window.Result(), (GUT_PropertiesWnd::Values{24, 640, 480}));
}

// A step that checks the box's buttons and presses one.
ModalScript::Step Press(QMessageBox::StandardButtons expected, QMessageBox::StandardButton press,
                        bool tick = false) {
    return [=](QWidget* modal) {
        auto* box = dynamic_cast<QMessageBox*>(modal);
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->standardButtons(), expected);
        if (tick) {
            ASSERT_NE(box->checkBox(), nullptr);
            box->checkBox()->setChecked(true);
        }
        ModalScript::Click(box->button(press));
    };
}

TEST_F(DialogTest, MessageBoxesAnswerWithTheButtonPressed) {
    GUT_MessageHandler handler(GUT_LoadString);
    using H = UT_MessageHandler;
    using B = QMessageBox;
    ModalScript script;
    script.Then(Press(B::Yes | B::No | B::Cancel, B::No))
        .Then(Press(B::Yes | B::No | B::Cancel, B::Cancel))
        .Then(Press(B::Yes | B::No, B::Yes))
        .Then(Press(B::Retry | B::Cancel, B::Retry))
        .Then(Press(B::Abort | B::Retry | B::Ignore, B::Ignore))
        .Then(Press(B::Ok | B::Cancel, B::Ok))
        .Then([](QWidget* modal) {
            // Escape on a Yes and No question answers No.
            ModalScript::Later([modal] { QTest::keyClick(modal, Qt::Key_Escape); });
        })
        .Then([](QWidget* modal) {
            auto* box = dynamic_cast<QMessageBox*>(modal);
            ASSERT_NE(box, nullptr);
            EXPECT_EQ(box->icon(), QMessageBox::Critical);
            EXPECT_EQ(box->text(), "Disk full");
            EXPECT_EQ(box->windowTitle(), "Quilmoor Studio");
            EXPECT_EQ(box->checkBox(), nullptr);
            ModalScript::Click(box->button(QMessageBox::Ok));
        });
    EXPECT_EQ(handler.Question(H::kYesNoCancel, u"Save changes to Reel?"), H::kNo);
    EXPECT_EQ(handler.Question(H::kYesNoCancel, u"Save changes to Reel?"), H::kCancel);
    EXPECT_EQ(handler.Question(H::kYesNo, u"Convert?"), H::kYes);
    EXPECT_EQ(handler.Question(H::kRetryCancel, u"Retry?"), H::kRetry);
    EXPECT_EQ(handler.Question(H::kAbortRetryIgnore, u"Stop?"), H::kIgnore);
    EXPECT_EQ(handler.Question(H::kOkCancel, u"Go on?"), H::kOk);
    EXPECT_EQ(handler.Question(H::kYesNo, u"Convert?"), H::kNo);
    handler.Message(H::kError, u"Disk full");
    EXPECT_TRUE(script.Done());
}

TEST_F(DialogTest, SilencedMessagesStayQuietUntilCleared) {
    GUT_MessageHandler handler(GUT_LoadString);
    using H = UT_MessageHandler;
    {
        ModalScript script;
        // Shown without ticking: shown again next time.
        script.Then([](QWidget* modal) {
            auto* box = dynamic_cast<QMessageBox*>(modal);
            ASSERT_NE(box, nullptr);
            EXPECT_EQ(box->text(), "This change will be applied to all new animation sets.");
            EXPECT_EQ(box->icon(), QMessageBox::Information);
            ASSERT_NE(box->checkBox(), nullptr);
            EXPECT_EQ(box->checkBox()->text(), "Don't show this message again");
            ModalScript::Click(box->button(QMessageBox::Ok));
        });
        script.Then(Press(QMessageBox::Ok, QMessageBox::Ok, true));
        handler.MessageOnceById(H::kInformation, kStrAppliesToNewSets, nullptr);
        EXPECT_FALSE(Annoying(kStrAppliesToNewSets));
        bool silenced = false;
        handler.MessageOnceById(H::kInformation, kStrAppliesToNewSets, &silenced);
        EXPECT_TRUE(silenced);
        EXPECT_EQ(Annoying(kStrAppliesToNewSets), 1);
    }
    // Silenced: no box at all (the script would fail on one).
    handler.MessageOnceById(H::kInformation, kStrAppliesToNewSets, nullptr);

    // A question remembers the answer it was silenced with; Cancel is never remembered.
    {
        ModalScript script;
        script.Then(
            Press(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Cancel, true));
        script.Then(Press(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::No, true));
        EXPECT_EQ(handler.QuestionOnceById(H::kYesNoCancel, 4242, nullptr), H::kCancel);
        EXPECT_FALSE(Annoying(4242));
        EXPECT_EQ(handler.QuestionOnceById(H::kYesNoCancel, 4242, nullptr), H::kNo);
    }
    EXPECT_EQ(handler.QuestionOnceById(H::kYesNoCancel, 4242, nullptr), H::kNo);

    // A caller's own flag silences a message by text.
    bool flag = true;
    handler.MessageOnce(H::kWarning, u"Once only", &flag);

    ASSERT_TRUE(PR_Preferences::Instance().ClearSilencedMessages());
    ModalScript script;
    script.Then(Press(QMessageBox::Ok, QMessageBox::Ok));
    handler.MessageOnceById(H::kInformation, kStrAppliesToNewSets, nullptr);
}

TEST_F(DialogTest, ProgressWindowShowsThePercentageAndCancels) {
    {
        GUT_ProgressWnd progress(nullptr, u"Save As");
        QDialog* window = progress.Window();
        EXPECT_TRUE(window->isVisible());
        EXPECT_EQ(window->size(), QSize(390, 130));
        EXPECT_EQ(window->windowTitle(), "Save As");
        EXPECT_EQ(progress.CancelButton()->text(), " Cancel ");
        progress.SetRange(100, 300, 100);
        EXPECT_EQ(window->windowTitle(), "Save As [0%]");
        progress.SetPosition(150);
        EXPECT_EQ(window->windowTitle(), "Save As [25%]");
        EXPECT_EQ(window->findChild<QProgressBar*>()->value(), 25);
        progress.Step();
        EXPECT_EQ(progress.ShownPercent(), 25); // 51 of 200 is still 25
        progress.SetPosition(299);
        EXPECT_EQ(window->windowTitle(), "Save As [99%]");
        progress.SetPosition(1000);
        EXPECT_EQ(window->windowTitle(), "Save As [100%]");
        progress.SetText(u"Scene-001");
        progress.ProcessEvents();
        EXPECT_FALSE(progress.IsCancelled());
        QTest::mouseClick(progress.CancelButton(), Qt::LeftButton);
        EXPECT_TRUE(progress.IsCancelled());
        EXPECT_TRUE(window->isVisible()); // the operation closes it, not the click
    }
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}) {
        GUT_ProgressWnd progress(nullptr);
        EXPECT_EQ(progress.Window()->windowTitle(), "Progress");
        progress.SetRange(0, 0, 0); // an empty range is complete
        EXPECT_EQ(progress.ShownPercent(), 100);
        QTest::keyClick(progress.Window(), key);
        progress.ProcessEvents();
        EXPECT_TRUE(progress.IsCancelled()) << key;
        EXPECT_TRUE(progress.Window()->isVisible());
    }
}

TEST_F(DialogTest, PreferencesSheetChecksEveryPageAndSaves) {
    PR_Preferences& preferences = PR_Preferences::Instance();
    GUT_AcceleratorTable accelerators;
    PR_PreferenceUI sheet(nullptr, preferences, accelerators);
    ASSERT_EQ(sheet.Pages().size(), 7u);
    auto field = [&](PR_Preferences::Key key) -> QWidget* {
        for (PR_PreferencePage* page : sheet.Pages())
            if (QWidget* widget = page->Field(key))
                return widget;
        return nullptr;
    };
    auto* frameRate = dynamic_cast<QLineEdit*>(field(PR_Preferences::kFrameRate));
    auto* projects = dynamic_cast<QLineEdit*>(field(PR_Preferences::kProjectDir));
    auto* smoothPegs = dynamic_cast<QCheckBox*>(field(PR_Preferences::kSmoothPegs));
    ASSERT_TRUE(frameRate && projects && smoothPegs);
    EXPECT_EQ(frameRate->text(), "12");
    EXPECT_TRUE(smoothPegs->isChecked());

    // The first refusal shows on its page, with the rules' message.
    frameRate->setText("0");
    projects->setText(QString::fromStdString((folder.Path() / "missing").string()));
    sheet.Tabs()->setCurrentIndex(3);
    sheet.accept();
    EXPECT_EQ(sheet.result(), QDialog::Rejected);
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(messages.messages[0].text, u"The minimum value is 1");
    EXPECT_EQ(sheet.Tabs()->currentIndex(), 0);

    frameRate->setText("24");
    messages.messages.clear();
    sheet.accept();
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(messages.messages[0].text, u"Cannot Access the Specified Project Path");
    EXPECT_EQ(sheet.Tabs()->currentWidget(), sheet.Pages()[5]);
    EXPECT_EQ(preferences.FrameRate(), 12u); // nothing is written before all pages pass

    projects->setText(QString::fromStdString(folder.Path().string()));
    smoothPegs->setChecked(false);
    sheet.accept();
    EXPECT_EQ(sheet.result(), QDialog::Accepted);
    EXPECT_EQ(preferences.FrameRate(), 24u);
    EXPECT_FALSE(preferences.SmoothPegs());
    EXPECT_EQ(preferences.Store().Get("Animation", "frameRate"), "24");
    EXPECT_EQ(preferences.Store().Get("Renderer", "smoothPegs"), "0");
    EXPECT_EQ(preferences.Store().Get("Template", "ProjectDir"), folder.Path().string());
    // A change of the "Animation" page ends with its message, which may be silenced.
    EXPECT_EQ(messages.messageIds, std::vector<uint32_t>{kStrAppliesToNewSets});

    // Without a change of the "Animation" page, no such message.
    PR_PreferenceUI again(nullptr, preferences, accelerators);
    again.accept();
    EXPECT_EQ(messages.messageIds.size(), 1u);
}

TEST_F(DialogTest, ShortcutTablesAndTheirPage) {
    GUT_AcceleratorTable table;
    using A = GUT_AcceleratorTable;
    EXPECT_EQ(table.Key(A::kDrawing, kCmdFileSave), "Ctrl+S");
    EXPECT_EQ(table.Key(A::kDrawing, kCmdSceneplanningMode), "F6");
    EXPECT_EQ(table.Key(A::kSceneplanning, kCmdDrawingMode), "F6");
    EXPECT_EQ(A::Normalise("ctrl+shift+s"), "Ctrl+Shift+S");
    EXPECT_EQ(A::Normalise("Hyper+Q"), "");
    for (const char* key : {"Escape", "Return", "Tab", "A", "Shift+A", "Space"})
        EXPECT_TRUE(A::IsReserved(key)) << key;
    for (const char* key : {"Ctrl+A", "F2", "Ctrl+Return", "Alt+Shift+X"})
        EXPECT_FALSE(A::IsReserved(key)) << key;

    // What the settings hold: changes from the defaults, bad values ignored, commands of
    // other programs kept.
    UT_SettingsStore& store = PR_Preferences::Instance().Store();
    store.Set("DrawingShortcuts", std::to_string(kCmdFileProperties), "ctrl+p");
    store.Set("DrawingShortcuts", std::to_string(kCmdFileNew), "");
    store.Set("DrawingShortcuts", std::to_string(kCmdFileOpen), "Escape");
    store.Set("DrawingShortcuts", "99999", "Ctrl+K");
    table.Load(store);
    EXPECT_EQ(table.Key(A::kDrawing, kCmdFileProperties), "Ctrl+P");
    EXPECT_EQ(table.Key(A::kDrawing, kCmdFileNew), "");
    EXPECT_EQ(table.Key(A::kDrawing, kCmdFileOpen), "Ctrl+O");
    EXPECT_EQ(table.Key(A::kSceneplanning, kCmdFileProperties), "");
    EXPECT_EQ(table.UnknownCommands(A::kDrawing), std::vector<uint32_t>{99999});

    PR_AcceleratorPrefUI page(PR_Preferences::Instance(), table);
    page.Load();
    const int rows = page.List()->topLevelItemCount();
    ASSERT_GT(rows, 0);
    const QTreeWidgetItem* last = page.List()->topLevelItem(rows - 1);
    EXPECT_EQ(last->text(0), "Other");
    EXPECT_EQ(last->text(1), "Unknown command");

    // A key another command has moves; reserved keys are refused.
    ASSERT_TRUE(page.SelectCommand(kCmdFileProperties));
    EXPECT_TRUE(page.AssignKey("Ctrl+S"));
    EXPECT_EQ(page.Table().Key(A::kDrawing, kCmdFileProperties), "Ctrl+S");
    EXPECT_EQ(page.Table().Key(A::kDrawing, kCmdFileSave), "");
    EXPECT_EQ(table.Key(A::kDrawing, kCmdFileSave), "Ctrl+S"); // not before Store
    EXPECT_FALSE(page.AssignKey("Escape"));
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(messages.messages[0].text, u"Cant map to this key");
    EXPECT_TRUE(page.Changed());

    // The other mode has its own table.
    page.SetMode(A::kSceneplanning);
    ASSERT_TRUE(page.SelectCommand(kCmdDrawingMode));
    page.RemoveKey();
    EXPECT_EQ(page.Table().Key(A::kSceneplanning, kCmdDrawingMode), "");
    EXPECT_EQ(page.Table().Key(A::kDrawing, kCmdSceneplanningMode), "F6");

    page.Store();
    ASSERT_TRUE(table.Save(store));
    GUT_AcceleratorTable reread;
    reread.Load(store);
    EXPECT_EQ(reread.Key(A::kDrawing, kCmdFileProperties), "Ctrl+S");
    EXPECT_EQ(reread.Key(A::kDrawing, kCmdFileSave), "");
    EXPECT_EQ(reread.Key(A::kSceneplanning, kCmdDrawingMode), "");
    EXPECT_EQ(reread.UnknownCommands(A::kDrawing), std::vector<uint32_t>{99999});

    // Reset asks first; No keeps the table.
    messages.answers = {UT_MessageHandler::kNo, UT_MessageHandler::kYes};
    page.ResetAll();
    EXPECT_EQ(page.Table().Key(A::kDrawing, kCmdFileSave), "");
    page.ResetAll();
    ASSERT_EQ(messages.questions.size(), 2u);
    EXPECT_EQ(messages.questions[0], u"Reset all shortcuts to their default value?");
    EXPECT_EQ(page.Table().Key(A::kDrawing, kCmdFileSave), "Ctrl+S");
    EXPECT_EQ(page.Table().Key(A::kSceneplanning, kCmdDrawingMode), "F6");
}

} // namespace
