// The main window over the application flows: menus, title, questions, dialogs, recent
// files, drops, modes and a screenshot.

#include "GuiTestSupport.h"
#include "core/UT_FileOperations.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_ElementCommands.h"
#include "platform/GUT_NewAnimationWnd.h"
#include "platform/GUT_SceneOverview.h"
#include "platform/GUT_TimelineWnd.h"
#include "render/CInteractivePlaybackControl.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <QUrl>
#include <fstream>
#include <map>

namespace fs = std::filesystem;

namespace {

// Fills the New Animation Set or Save As window and presses OK.
ModalScript::Step FillNameDialog(const QString& title, const QString& name, const fs::path& location) {
    return [=](QWidget* modal) {
        auto* window = dynamic_cast<GUT_NewAnimationWnd*>(modal);
        ASSERT_NE(window, nullptr) << modal->windowTitle().toStdString();
        EXPECT_EQ(window->windowTitle(), title);
        window->NameField()->setText(name);
        window->LocationField()->setText(QString::fromStdString(location.string()));
        ModalScript::Accept(window);
    };
}

ModalScript::Step CancelDialog(const QString& title) {
    return [=](QWidget* modal) {
        EXPECT_EQ(modal->windowTitle(), title);
        ModalScript::Reject(modal);
    };
}

// Runs a command and lets the scripted windows come and go.
bool RunScripted(CMainFrame& frame, uint32_t id, ModalScript& script) {
    const bool done = frame.ExecuteCommand(id);
    EXPECT_TRUE(script.Done());
    return done;
}

class MainFrameTest : public ShellTest {
protected:
    // A saved project made with the model alone, for the tests that open projects.
    fs::path MakeProject(const char* name) {
        FakeAppHost fake;
        auto set = std::make_unique<CAnimationSetObj>();
        set->InitialiseNew(12, 500, 375);
        set->SetName(UT_FromUtf8(name));
        CSketchrunDoc document(fake);
        document.Attach(std::move(set), UT_FilePath(folder.Path() / name));
        document.Set()->SetForcedDirty(true);
        EXPECT_TRUE(document.Save());
        return folder.Path() / name / (std::string(name) + ".qmp");
    }

    void NewProject(const char* name) {
        ModalScript script;
        script.Then(
            FillNameDialog(QStringLiteral("New Animation Set"), QString::fromUtf8(name), folder.Path()));
        ASSERT_TRUE(RunScripted(Frame(), kCmdFileNew, script));
    }
};

TEST_F(MainFrameTest, MenuBarAndTitleFollowTheDocument) {
    Start();
    EXPECT_TRUE(Frame().isVisible());
    EXPECT_EQ(Frame().CurrentMenu(), CMainFrame::kMenuNoDocument);
    EXPECT_EQ(MenuTitles(), (QStringList{"File", "Edit", "Help"}));
    std::set<uint32_t> commands = MenuCommands();
    EXPECT_TRUE(commands.count(kCmdFileNew) && commands.count(kCmdFileOpen) && commands.count(kCmdAppExit));
    EXPECT_FALSE(commands.count(kCmdFileSave) || commands.count(kCmdFileClose) ||
                 commands.count(kCmdDrawingMode));
    EXPECT_EQ(Frame().windowTitle(), "Quilmoor Studio");
    // Commands of the other bar do nothing without a document.
    EXPECT_FALSE(Run(kCmdFileSave));

    NewProject("Reel");
    ASSERT_NE(Document(), nullptr);
    EXPECT_EQ(Frame().CurrentMenu(), CMainFrame::kMenuDocument);
    EXPECT_EQ(MenuTitles(), (QStringList{"File", "Edit", "View", "Scene", "Element", "Exposure", "Palette",
                                         "Play", "Help"}));
    commands = MenuCommands();
    for (uint32_t id : std::initializer_list<uint32_t>{kCmdFileClose,
                                                       kCmdFileSave,
                                                       kCmdFileSaveAs,
                                                       kCmdFileProperties,
                                                       kCmdDrawingMode,
                                                       kCmdSceneplanningMode,
                                                       kCmdFileSaveGlobalLibrary,
                                                       kCmdEditUndo,
                                                       kCmdEditRedo,
                                                       kCmdViewSceneList,
                                                       kCmdSceneAdd,
                                                       kCmdSceneDelete,
                                                       kCmdSceneRename,
                                                       kCmdSceneToggleVisibility,
                                                       kCmdElementNewDrawing,
                                                       kCmdElementClone,
                                                       kCmdCellTwos,
                                                       kCmdColourNew,
                                                       kCmdViewPalettes,
                                                       uint32_t{CInteractivePlaybackControl::kPlay},
                                                       uint32_t{CInteractivePlaybackControl::kRate24}})
        EXPECT_TRUE(commands.count(id)) << id;
    EXPECT_FALSE(Frame().Action(kCmdFileSaveGlobalLibrary)->isEnabled()); // no library window
    EXPECT_EQ(Frame().windowTitle(), "Reel[*] - Quilmoor Studio");
    EXPECT_TRUE(Frame().isWindowModified()); // a new set is saved by the first Save

    ASSERT_TRUE(Run(kCmdFileSave));
    EXPECT_FALSE(Frame().isWindowModified());

    ASSERT_TRUE(Run(kCmdFileClose));
    EXPECT_EQ(Document(), nullptr);
    EXPECT_EQ(Frame().CurrentMenu(), CMainFrame::kMenuNoDocument);
    EXPECT_EQ(Frame().windowTitle(), "Quilmoor Studio");
    EXPECT_TRUE(messages.questions.empty());
}

// Notes the cursor while the files of a save are renamed into place; can fail a rename.
class CursorAtRename : public UT_FileOperations {
public:
    int Rename(const UT_FilePath& from, const UT_FilePath& to) override {
        const QCursor* cursor = QApplication::overrideCursor();
        shapes.push_back(cursor ? cursor->shape() : Qt::ArrowCursor);
        return fail ? EACCES : UT_FileOperations::Rename(from, to);
    }
    std::vector<Qt::CursorShape> shapes;
    bool fail = false;
};

TEST_F(MainFrameTest, SavingShowsTheWaitCursorAndReportsAfterIt) {
    Start();
    NewProject("Reel");
    CursorAtRename operations;
    UT_FileOperations* previous = UT_FileOperations::SetCurrent(&operations);
    EXPECT_TRUE(Run(kCmdFileSave));
    ASSERT_FALSE(operations.shapes.empty());
    for (const Qt::CursorShape shape : operations.shapes)
        EXPECT_EQ(shape, Qt::WaitCursor);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    // A failed save reports once the wait is over, and the document stays modified.
    struct CursorAtMessage : RecordingMessages {
        void Message(int severity, const UT_WString& text) override {
            waiting = QApplication::overrideCursor() != nullptr;
            RecordingMessages::Message(severity, text);
        }
        bool waiting = true;
    } report;
    UT_MessageHandlerScope reporting(&report);
    Document()->Set()->SetForcedDirty(true);
    operations.fail = true;
    EXPECT_FALSE(Run(kCmdFileSave));
    UT_FileOperations::SetCurrent(previous);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    ASSERT_EQ(report.messages.size(), 1u);
    EXPECT_EQ(report.messages[0].text.rfind(u"Error while saving the animation set.", 0), 0u);
    EXPECT_FALSE(report.waiting);
    EXPECT_TRUE(Frame().isWindowModified());
}

TEST_F(MainFrameTest, NewFlowWithEveryAnswer) {
    Start();
    // Cancel in the dialog: nothing happens, nothing is written.
    {
        ModalScript script;
        script.Then(CancelDialog(QStringLiteral("New Animation Set")));
        EXPECT_FALSE(RunScripted(Frame(), kCmdFileNew, script));
        EXPECT_EQ(Document(), nullptr);
    }
    NewProject("First");
    CAnimationSetObj* first = Document()->Set();

    // Unsaved changes, Cancel: no dialog, the document stays.
    messages.answers = {UT_MessageHandler::kCancel};
    EXPECT_FALSE(Run(kCmdFileNew));
    ASSERT_EQ(messages.questions.size(), 1u);
    EXPECT_EQ(messages.questions[0], u"Save changes to First?");
    EXPECT_EQ(Document()->Set(), first);

    // No: the first set goes unsaved.
    messages.answers = {UT_MessageHandler::kNo};
    NewProject("Second");
    EXPECT_EQ(Document()->Set()->Name(), u"Second");
    EXPECT_FALSE(fs::exists(folder.Path() / "First"));

    // Yes: saved first, then replaced.
    messages.answers = {UT_MessageHandler::kYes};
    NewProject("Third");
    EXPECT_TRUE(fs::is_regular_file(folder.Path() / "Second" / "Second.qmp"));
    EXPECT_EQ(Document()->Set()->Name(), u"Third");
    EXPECT_EQ(Frame().windowTitle(), "Third[*] - Quilmoor Studio");
}

TEST_F(MainFrameTest, OpenDialogAndItsFolder) {
    const fs::path project = MakeProject("Reel");
    Start();
    {
        ModalScript script;
        script.Then([](QWidget* modal) {
            auto* dialog = dynamic_cast<QFileDialog*>(modal);
            ASSERT_NE(dialog, nullptr);
            EXPECT_EQ(dialog->windowTitle(), "Open Animation Set");
            EXPECT_EQ(dialog->nameFilters(),
                      (QStringList{"Quilmoor Studio Project (*.qmp)", "All Files (*)"}));
            ModalScript::Reject(dialog);
        });
        EXPECT_FALSE(RunScripted(Frame(), kCmdFileOpen, script));
        EXPECT_EQ(Document(), nullptr);
    }
    {
        ModalScript script;
        script.Then([&](QWidget* modal) {
            auto* dialog = dynamic_cast<QFileDialog*>(modal);
            ASSERT_NE(dialog, nullptr);
            // The path typed into the file name field, as a user may type it.
            auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            ASSERT_NE(name, nullptr);
            const QString path = QString::fromStdString(project.string());
            ModalScript::Later([dialog, name, path] {
                name->setText(path);
                static_cast<QDialog*>(dialog)->accept();
            });
        });
        ASSERT_TRUE(RunScripted(Frame(), kCmdFileOpen, script));
    }
    ASSERT_NE(Document(), nullptr);
    EXPECT_EQ(Document()->Set()->Name(), u"Reel");
    EXPECT_EQ(Frame().windowTitle(), "Reel[*] - Quilmoor Studio");
    EXPECT_FALSE(Frame().isWindowModified());
    // The next New and Open start beside this project, in this run and the next.
    UT_IniSettingsStore written(SettingsPath().string());
    EXPECT_EQ(written.Get("Template", "ProjectDir"), folder.Path().string());
    EXPECT_EQ(host->ProjectDir().Path(), folder.Path());
}

TEST_F(MainFrameTest, SaveAsCopiesAndRenames) {
    Start();
    NewProject("Reel");
    ASSERT_TRUE(Run(kCmdFileSave));
    {
        ModalScript script;
        script.Then([](QWidget* modal) {
            auto* window = dynamic_cast<GUT_NewAnimationWnd*>(modal);
            ASSERT_NE(window, nullptr);
            EXPECT_EQ(window->windowTitle(), "Save As");
            EXPECT_EQ(window->NameField()->text(), "Reel");
            ModalScript::Reject(window);
        });
        EXPECT_FALSE(RunScripted(Frame(), kCmdFileSaveAs, script));
        EXPECT_EQ(Document()->Set()->Name(), u"Reel");
    }
    {
        ModalScript script;
        script.Then(FillNameDialog(QStringLiteral("Save As"), QStringLiteral("Copy"), folder.Path()));
        ASSERT_TRUE(RunScripted(Frame(), kCmdFileSaveAs, script));
    }
    EXPECT_TRUE(fs::is_regular_file(folder.Path() / "Copy" / "Copy.qmp"));
    EXPECT_FALSE(fs::exists(folder.Path() / "Copy" / "Reel.qmp"));
    EXPECT_TRUE(fs::is_regular_file(folder.Path() / "Reel" / "Reel.qmp"));
    EXPECT_EQ(Frame().windowTitle(), "Copy[*] - Quilmoor Studio");
    EXPECT_FALSE(Frame().isWindowModified());
    ASSERT_FALSE(app->RecentFiles().empty());
    EXPECT_EQ(app->RecentFiles().front().Path(), folder.Path() / "Copy" / "Copy.qmp");
}

TEST_F(MainFrameTest, CancellingTheProgressOfSaveAsKeepsTheProject) {
    Start();
    NewProject("Reel");
    ASSERT_TRUE(Run(kCmdFileSave));
    fs::create_directories(folder.Path() / "Reel" / "Sound");
    for (int i = 0; i < 20; ++i)
        std::ofstream(folder.Path() / "Reel" / "Sound" / ("take" + std::to_string(i) + ".wav")) << "RIFF";

    ModalScript script(0);
    script.Then(FillNameDialog(QStringLiteral("Save As"), QStringLiteral("Copy"), folder.Path()));
    script.Then([](QWidget* modal) {
        // The copy shows its progress in a window of its own.
        auto* progress = dynamic_cast<QDialog*>(modal);
        ASSERT_NE(progress, nullptr);
        EXPECT_TRUE(progress->windowTitle().startsWith("Save As")) << progress->windowTitle().toStdString();
        auto* cancel = progress->findChild<QPushButton*>();
        ASSERT_NE(cancel, nullptr);
        EXPECT_EQ(cancel->text(), " Cancel ");
        ModalScript::Click(cancel);
    });
    EXPECT_FALSE(RunScripted(Frame(), kCmdFileSaveAs, script));
    EXPECT_FALSE(fs::exists(folder.Path() / "Copy"));
    EXPECT_EQ(Document()->Set()->Name(), u"Reel");
    EXPECT_EQ(Frame().windowTitle(), "Reel[*] - Quilmoor Studio");
    EXPECT_TRUE(messages.messages.empty());
}

TEST_F(MainFrameTest, CloseAndExitNeverLoseWork) {
    Start();
    NewProject("Reel");

    messages.answers = {UT_MessageHandler::kCancel};
    EXPECT_FALSE(Run(kCmdFileClose));
    EXPECT_NE(Document(), nullptr);

    // Exit asks as the window closes; Cancel keeps the program running.
    messages.answers = {UT_MessageHandler::kCancel};
    Run(kCmdAppExit);
    EXPECT_TRUE(Frame().isVisible());
    ASSERT_NE(Document(), nullptr);

    // Yes saves before the window goes.
    messages.answers = {UT_MessageHandler::kYes};
    Run(kCmdAppExit);
    EXPECT_FALSE(Frame().isVisible());
    EXPECT_EQ(Document(), nullptr);
    EXPECT_TRUE(fs::is_regular_file(folder.Path() / "Reel" / "Reel.qmp"));
    EXPECT_EQ(messages.questions.size(), 3u);
    // The window's place is kept for the next start.
    UT_IniSettingsStore written(SettingsPath().string());
    EXPECT_TRUE(written.Get(GUT_DesktopHost::kSettingsSection, GUT_DesktopHost::kPlacementKey).has_value());
}

TEST_F(MainFrameTest, RecentFilesSurviveARestart) {
    std::vector<fs::path> projects;
    for (const char* name : {"P1", "P2", "P3", "P4", "P5"})
        projects.push_back(MakeProject(name));
    Start();
    for (const fs::path& project : projects)
        ASSERT_TRUE(app->OpenDocumentFile(UT_FilePath(project)));

    Restart();
    ASSERT_EQ(app->RecentFiles().size(), 4u);
    EXPECT_EQ(app->RecentFiles()[0].Path(), projects[4]);
    EXPECT_EQ(app->RecentFiles()[3].Path(), projects[1]);
    // The menu shows them newest first, numbered.
    const std::set<uint32_t> commands = MenuCommands();
    for (uint32_t id = kCmdRecentFileFirst; id < kCmdRecentFileFirst + 4; ++id)
        EXPECT_TRUE(commands.count(id)) << id;
    EXPECT_FALSE(commands.count(kCmdRecentFileFirst + 4));
    QAction* second = Frame().Action(kCmdRecentFileFirst + 1);
    EXPECT_TRUE(second->text().startsWith("&2 ")) << second->text().toStdString();
    EXPECT_TRUE(second->text().endsWith("P4.qmp")) << second->text().toStdString();

    second->trigger();
    ASSERT_NE(Document(), nullptr);
    EXPECT_EQ(Document()->Set()->Name(), u"P4");
    EXPECT_EQ(app->RecentFiles()[0].Path(), projects[3]);

    // A project that went away leaves the list, in the file too.
    fs::remove_all(folder.Path() / "P5");
    Restart();
    Frame().Action(kCmdRecentFileFirst + 1)->trigger();
    EXPECT_EQ(Document(), nullptr);
    EXPECT_EQ(app->RecentFiles().size(), 3u);
    Restart();
    EXPECT_EQ(app->RecentFiles().size(), 3u);
}

TEST_F(MainFrameTest, CommandLineProjectOpensAtStart) {
    const fs::path project = MakeProject("Reel");
    Start({project.string()});
    ASSERT_NE(Document(), nullptr);
    EXPECT_EQ(Frame().CurrentMenu(), CMainFrame::kMenuDocument);
    Stop();

    messages.messages.clear();
    Start({(folder.Path() / "Missing.qmp").string()}, false);
    EXPECT_EQ(Document(), nullptr);
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_NE(messages.messages[0].text.find(u"could not be found."), UT_WString::npos);
}

TEST_F(MainFrameTest, Direct3DIsMentionedOnlyWhenAskedFor) {
    Start();
    EXPECT_TRUE(messages.messages.empty());
    Stop();
    PR_Preferences::Instance().Store().Set("Renderer", "Direct3D", "1");
    PR_Preferences::Instance().Store().Flush();
    Restart();
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(messages.messages[0].text, u"Failed to initialize DX7.0.\nOpenGL will be used for rendering.");
    EXPECT_FALSE(app->UsesDirect3D());
}

TEST_F(MainFrameTest, DroppedProjectFilesOpen) {
    const fs::path first = MakeProject("First");
    const fs::path second = MakeProject("Second");
    std::ofstream(folder.Path() / "notes.txt") << "not a project";
    Start();

    auto drop = [&](const fs::path& path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path.string()))});
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&Frame(), &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent dropped(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&Frame(), &dropped);
        return true;
    };
    EXPECT_FALSE(drop(folder.Path() / "notes.txt"));
    EXPECT_EQ(Document(), nullptr);

    ASSERT_TRUE(drop(first));
    ASSERT_NE(Document(), nullptr);
    EXPECT_EQ(Document()->Set()->Name(), u"First");

    // A dropped project folder opens the project of its name; unsaved changes are asked
    // about first, and Cancel keeps them.
    Document()->Set()->SetForcedDirty(true);
    messages.answers = {UT_MessageHandler::kCancel};
    ASSERT_TRUE(drop(second.parent_path()));
    EXPECT_EQ(Document()->Set()->Name(), u"First");
    messages.answers = {UT_MessageHandler::kNo};
    ASSERT_TRUE(drop(second.parent_path()));
    EXPECT_EQ(Document()->Set()->Name(), u"Second");
}

TEST_F(MainFrameTest, ModeSwitchSwapsShortcutsAndLayout) {
    Start();
    NewProject("Reel");
    CMainFrame& frame = Frame();
    frame.resize(900, 600);
    QAction* toSceneplanning = frame.Action(kCmdSceneplanningMode);
    QAction* toDrawing = frame.Action(kCmdDrawingMode);
    EXPECT_FALSE(frame.IsSceneplanningMode());
    EXPECT_TRUE(toDrawing->isChecked());
    EXPECT_EQ(toSceneplanning->shortcut(), QKeySequence(Qt::Key_F6));
    EXPECT_TRUE(toDrawing->shortcut().isEmpty());
    // The timeline below the stage shows the order of the mode: pegs belong to the
    // Sceneplanning order alone.
    auto count = [&frame](uint32_t kind) {
        const auto& rows = frame.Timeline()->Rows();
        return std::count_if(rows.begin(), rows.end(), [kind](const auto& row) { return row.kind == kind; });
    };
    EXPECT_LT(frame.Overview()->geometry().bottom(), frame.Timeline()->geometry().top());
    const auto drawings = count(kLevelVectorDrawing);
    EXPECT_FALSE(Run(kCmdElementNewPeg));
    ASSERT_TRUE(Run(kCmdElementNewDrawing));
    EXPECT_EQ(count(kLevelVectorDrawing), drawings + 1);
    EXPECT_EQ(count(kLevelPeg), 0);
    const size_t drawingRows = frame.Timeline()->Rows().size();

    ASSERT_TRUE(Run(kCmdSceneplanningMode));
    EXPECT_TRUE(frame.IsSceneplanningMode());
    EXPECT_TRUE(Document()->Set()->IsSceneplanningMode());
    EXPECT_TRUE(toSceneplanning->isChecked());
    EXPECT_EQ(toDrawing->shortcut(), QKeySequence(Qt::Key_F6));
    EXPECT_TRUE(toSceneplanning->shortcut().isEmpty());
    const auto pegs = count(kLevelPeg);
    ASSERT_TRUE(Run(kCmdElementNewPeg));
    EXPECT_EQ(count(kLevelPeg), pegs + 1);
    EXPECT_EQ(count(kLevelVectorDrawing), drawings + 1);
    EXPECT_GT(frame.Timeline()->Rows().size(), drawingRows);

    // Shortcuts common to both tables stay.
    EXPECT_EQ(frame.Action(kCmdFileSave)->shortcut(), QKeySequence(QKeySequence::fromString("Ctrl+S")));

    // The key itself, as the user presses it: F6 goes back and forth.
    frame.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
    QTest::keyClick(&frame, Qt::Key_F6);
    EXPECT_FALSE(frame.IsSceneplanningMode());
    EXPECT_FALSE(Document()->Set()->IsSceneplanningMode());
    EXPECT_EQ(frame.Timeline()->Rows().size(), drawingRows);
    EXPECT_EQ(count(kLevelPeg), 0);
    QTest::keyClick(&frame, Qt::Key_F6);
    EXPECT_TRUE(frame.IsSceneplanningMode());
}

TEST_F(MainFrameTest, ScreenshotOfAnOpenDocument) {
    Start();
    NewProject("Reel");
    CMainFrame& frame = Frame();
    frame.resize(1280, 760);
    frame.show();
    ASSERT_TRUE(Run(kCmdSceneAdd));
    ASSERT_TRUE(Run(kCmdSceneAdd));
    QApplication::processEvents();

    // A small demo made as a user makes it: drawings typed into the timeline and held on
    // twos, an arm that hangs from a peg in the Sceneplanning tree.
    GUT_TimelineWnd& timeline = *frame.Timeline();
    auto type = [&timeline](int32_t frameIndex, int32_t row, const QString& name) {
        QTest::mouseClick(timeline.viewport(), Qt::LeftButton, {},
                          timeline.CellRect(frameIndex, row).center());
        QTest::keyClicks(&timeline, name.left(1));
        ASSERT_NE(timeline.Editor(), nullptr);
        QTest::keyClicks(timeline.Editor(), name.mid(1));
        QTest::keyClick(timeline.Editor(), Qt::Key_Return);
    };
    auto twos = [&](int32_t row, int32_t last) {
        QTest::mouseClick(timeline.viewport(), Qt::LeftButton, {}, timeline.CellRect(0, row).center());
        QTest::mouseClick(timeline.viewport(), Qt::LeftButton, Qt::ShiftModifier,
                          timeline.CellRect(last, row).center());
        ASSERT_TRUE(Run(kCmdCellTwos));
    };
    ASSERT_TRUE(Run(kCmdElementNewDrawing));
    const uint32_t arm = frame.Elements()->Current()->GetId();
    ASSERT_TRUE(frame.Elements()->Rename(arm, u"Arm"));
    const int32_t armRow = AS_CellIteratorObservable::Instance().LevelIndex();
    const int32_t bodyRow = armRow == 0 ? 1 : 0;
    for (int32_t i = 0; i < 6; ++i)
        type(i, bodyRow, QString::number(i + 1));
    twos(bodyRow, 5);
    for (int32_t i = 0; i < 4; ++i)
        type(i, armRow, QStringLiteral("arm%1").arg(i + 1));
    twos(armRow, 3);
    ASSERT_TRUE(Run(kCmdSceneplanningMode));
    ASSERT_TRUE(Run(kCmdElementNewPeg));
    const uint32_t peg = frame.Elements()->Current()->GetId();
    ASSERT_TRUE(frame.Elements()->Rename(peg, u"Shoulder"));
    ASSERT_TRUE(frame.Elements()->Reparent(arm, peg));
    AS_CellIteratorObservable& cell = AS_CellIteratorObservable::Instance();
    cell.SetCell({4, cell.LevelIndex()});
    cell.SelectCurrentCell();
    cell.NotifyMove(nullptr);
    QApplication::processEvents();
    EXPECT_TRUE(frame.Overview()->ExposureText().startsWith("Frame 5: "))
        << frame.Overview()->ExposureText().toStdString();
    const QImage image = frame.grab().toImage();
    ASSERT_FALSE(image.isNull());
    const QString path = QStringLiteral(QMS_TEST_OUTPUT_DIR "/qmstudio-main-window.png");
    ASSERT_TRUE(image.save(path)) << path.toStdString();

    // Not blank: many colours, none covering nearly everything, and the camera frame of
    // the stage in its colour.
    std::map<QRgb, int> counts;
    for (int y = 0; y < image.height(); y += 2)
        for (int x = 0; x < image.width(); x += 2)
            ++counts[image.pixel(x, y)];
    int samples = 0;
    int largest = 0;
    for (const auto& [colour, count] : counts) {
        samples += count;
        largest = std::max(largest, count);
    }
    EXPECT_GE(counts.size(), 16u);
    EXPECT_LT(largest, samples * 9 / 10);
    const QRect stage =
        frame.Overview()->StageRect().translated(frame.Overview()->mapTo(&frame, QPoint(0, 0)));
    ASSERT_TRUE(image.rect().contains(stage));
    EXPECT_EQ(QColor(image.pixel(stage.center())), QColor(Qt::white)); // inside the camera frame
    const uint32_t bgr = PR_Preferences::Instance().CameraColor();
    const QColor camera(bgr & 0xFF, (bgr >> 8) & 0xFF, (bgr >> 16) & 0xFF);
    int cameraPixels = 0;
    for (int y = stage.top(); y <= stage.bottom(); ++y)
        for (int x = stage.left(); x <= stage.right(); ++x)
            cameraPixels += QColor(image.pixel(x, y)) == camera;
    EXPECT_GT(cameraPixels, 100);
}

} // namespace
