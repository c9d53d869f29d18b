#pragma once

// Helpers for driving the desktop program's windows from tests: answers to modal
// dialogs, a recorder of messages, and a running program over a settings file of the
// test's own.

#include "animationset/CAnimationSetObj.h"
#include "animationset/CSketchrunApp.h"
#include "animationset/CSketchrunDoc.h"
#include "animationset/FakeHosts.h"
#include "core/PR_Preferences.h"
#include "platform/CMainFrame.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_DesktopHost.h"
#include "platform/GUT_NewAnimationWnd.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenuBar>
#include <QTimer>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>

// Qt's strings in the messages of failed expectations.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

// Answers the modal windows that open while a test runs, one step per window, in order.
// A step gets the active modal window; whatever it does that opens another modal window
// must be queued (Later) so that the next step can answer that one. A modal window with
// no step left is rejected after a few seconds and the test fails.
class ModalScript {
public:
    using Step = std::function<void(QWidget* modal)>;

    // A zero interval answers at every turn of the event loop, for windows that only
    // live between two calls of a long operation.
    explicit ModalScript(int intervalMs = 10) {
        timer_.setInterval(intervalMs);
        QObject::connect(&timer_, &QTimer::timeout, [this] { Tick(); });
        timer_.start();
    }
    ~ModalScript() { EXPECT_TRUE(steps_.empty()) << steps_.size() << " modal window(s) never appeared"; }

    ModalScript& Then(Step step) {
        steps_.push_back(std::move(step));
        return *this;
    }
    bool Done() const { return steps_.empty(); }

    // Runs `action` from the event loop, after the current step returned.
    static void Later(std::function<void()> action) { QTimer::singleShot(0, std::move(action)); }
    static void Click(QAbstractButton* button) {
        ASSERT_NE(button, nullptr);
        Later([button] { button->click(); });
    }
    static void Accept(QWidget* modal) {
        Later([modal] { static_cast<QDialog*>(modal)->accept(); });
    }
    static void Reject(QWidget* modal) {
        Later([modal] { static_cast<QDialog*>(modal)->reject(); });
    }
    // Answers an input window (a name or a choice) titled `title` with `text`.
    static Step Answer(const QString& title, const QString& text) {
        return [=](QWidget* modal) {
            auto* input = qobject_cast<QInputDialog*>(modal);
            ASSERT_NE(input, nullptr) << modal->windowTitle().toStdString();
            EXPECT_EQ(input->windowTitle(), title);
            input->setTextValue(text);
            Accept(input);
        };
    }

private:
    void Tick() {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible()) {
            waiting_.invalidate();
            return;
        }
        if (steps_.empty()) {
            if (!waiting_.isValid())
                waiting_.start();
            if (waiting_.elapsed() > 3000) {
                ADD_FAILURE() << "unexpected modal window \"" << modal->windowTitle().toStdString() << "\" ("
                              << modal->metaObject()->className() << ")";
                if (auto* dialog = qobject_cast<QDialog*>(modal))
                    dialog->reject();
                else
                    modal->close();
            }
            return;
        }
        // One step per tick: the step's queued action runs before the next tick.
        Step step = std::move(steps_.front());
        steps_.pop_front();
        step(modal);
    }

    QTimer timer_;
    std::deque<Step> steps_;
    QElapsedTimer waiting_;
};

// Records messages, answers questions from a script, and remembers the numbers of the
// messages that may be silenced.
class RecordingMessages : public ScriptedMessages {
public:
    void MessageOnceById(int, uint32_t messageId, bool*) override { messageIds.push_back(messageId); }
    std::vector<uint32_t> messageIds;
};

// The desktop program started over a settings file in a folder of the test, with every
// question answered by `messages`.
class ShellTest : public ::testing::Test {
protected:
    void SetUp() override {
        UsePreferencesFile();
        // No splash between the tests.
        PR_Preferences::Instance().Store().Set(GUT_DesktopHost::kSettingsSection, GUT_DesktopHost::kSplashKey,
                                               "0");
        PR_Preferences::Instance().Store().Flush();
    }
    void TearDown() override {
        Stop();
        PR_Preferences::ResetInstance();
    }

    // A new process's view of the settings file.
    void UsePreferencesFile() {
        PR_Preferences::UseStore(std::make_unique<UT_IniSettingsStore>(SettingsPath().string()));
    }
    std::filesystem::path SettingsPath() const {
        return folder.Path() / "settings" / "Quilmoor Studio 2.0.ini";
    }

    void Start(const std::vector<std::string>& arguments = {}, bool expectStarted = true) {
        host = std::make_unique<GUT_DesktopHost>();
        app = std::make_unique<CSketchrunApp>(*host);
        host->SetApplication(app.get());
        EXPECT_EQ(app->InitInstance(arguments, nullptr), expectStarted);
    }
    // Ends the program as a user does, without asking anything.
    void Stop() {
        if (app)
            app->CloseDocument(false);
        app.reset();
        host.reset();
    }
    void Restart() {
        Stop();
        UsePreferencesFile();
        Start();
    }

    // File > New with a name in the test's folder, answered as a user does.
    void NewDocument(const char* name) {
        ModalScript script;
        script.Then([this, name](QWidget* modal) {
            auto* window = dynamic_cast<GUT_NewAnimationWnd*>(modal);
            ASSERT_NE(window, nullptr) << modal->windowTitle().toStdString();
            window->NameField()->setText(QString::fromUtf8(name));
            window->LocationField()->setText(QString::fromStdString(folder.Path().string()));
            ModalScript::Accept(window);
        });
        ASSERT_TRUE(Run(kCmdFileNew));
        ASSERT_NE(Document(), nullptr);
    }

    CMainFrame& Frame() const { return *host->Frame(); }
    CSketchrunDoc* Document() const { return app->Document(); }
    bool Run(uint32_t id) { return Frame().ExecuteCommand(id); }

    // The commands of the menu bar, recent files and submenus included.
    std::set<uint32_t> MenuCommands() const {
        std::set<uint32_t> ids;
        std::function<void(const QList<QAction*>&)> walk = [&](const QList<QAction*>& actions) {
            for (QAction* action : actions) {
                if (action->menu())
                    walk(action->menu()->actions());
                else if (!action->isSeparator())
                    ids.insert(action->data().toUInt());
            }
        };
        walk(Frame().menuBar()->actions());
        return ids;
    }
    QStringList MenuTitles() const {
        QStringList titles;
        for (QAction* action : Frame().menuBar()->actions())
            titles << action->text().remove(QLatin1Char('&'));
        return titles;
    }

    TempFolder folder{"shell"};
    RecordingMessages messages;
    UT_MessageHandlerScope scope{&messages};
    std::unique_ptr<GUT_DesktopHost> host;
    std::unique_ptr<CSketchrunApp> app;
};
