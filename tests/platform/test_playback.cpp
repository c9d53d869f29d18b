// Playback in the main window: the timer's ticks come through Qt's event loop, the idle
// passes prepare the next frame, and the views follow the current cell. The timer runs on a
// clock that only the test moves.

#include "GuiTestSupport.h"
#include "animationset/SetTestUtil.h"
#include "platform/GUT_MessageLoop.h"
#include "platform/GUT_Playback.h"
#include "platform/GUT_PlaybackToolBar.h"
#include "platform/GUT_TimelineWnd.h"
#include "render/FakeClock.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QThread>
#include <chrono>
#include <thread>

namespace {

using Control = CInteractivePlaybackControl;
using Data = AS_CellIteratorObserverData;

// The frames that playback shows, as the views hear them.
class FrameRecorder : public AS_CellIteratorObserverInterface {
public:
    FrameRecorder() { AS_CellIteratorObservable::Instance().Attach(this); }
    ~FrameRecorder() override { AS_CellIteratorObservable::Instance().Detach(this); }
    void CellIteratorChanged(const void*, const Data& data) override {
        if (data.code == Data::kPlaybackFrame)
            frames.push_back(AS_CellIteratorObservable::Instance().Frame());
        codes.push_back(data.code);
    }
    // The frames without the repeats of a frame shown twice.
    std::vector<int32_t> Distinct() const {
        std::vector<int32_t> out;
        for (const int32_t frame : frames)
            if (out.empty() || out.back() != frame)
                out.push_back(frame);
        return out;
    }
    std::vector<int32_t> frames;
    std::vector<uint32_t> codes;
};

class PlaybackWindowTest : public ShellTest {
protected:
    void SetUp() override {
        ShellTest::SetUp();
        Start();
        NewDocument("Reel");
        Frame().resize(1000, 700);
        Frame().show();
        Frame().Playback()->SetClock(clock);
        const auto& rows = Frame().Timeline()->Rows();
        for (size_t i = 0; i < rows.size(); ++i)
            if (rows[i].id == Document()->Set()->CurrentScene()->FindElementByName(u"Drawing")->GetId())
                row = static_cast<int32_t>(i);
        ASSERT_GE(row, 0);
        // Drawing "1" on frames 0 to 5, through the timeline.
        Click(0);
        QTest::keyClicks(Frame().Timeline(), "1");
        ASSERT_NE(Frame().Timeline()->Editor(), nullptr);
        QTest::keyClick(Frame().Timeline()->Editor(), Qt::Key_Return);
        Click(0);
        for (int i = 0; i < 5; ++i)
            ASSERT_TRUE(Run(kCmdCellExtendRun));
        ASSERT_EQ(Current().GetSceneLastFrame(), 5);
    }

    AS_CellIteratorObservable& Current() const { return AS_CellIteratorObservable::Instance(); }
    GUT_Playback& Playback() const { return *Frame().Playback(); }
    void Click(int32_t frame, Qt::KeyboardModifiers modifiers = {}) const {
        GUT_TimelineWnd& timeline = *Frame().Timeline();
        QTest::mouseClick(timeline.viewport(), Qt::LeftButton, modifiers,
                          timeline.CellRect(frame, row).center());
    }
    bool Enabled(uint32_t id) const {
        QApplication::processEvents();
        return Frame().Action(id)->isEnabled();
    }
    // Moves the clock one period at a time until `done`, letting the Qt loop deliver each
    // tick and run its idle passes; false if it never happens.
    bool PlayUntil(const std::function<bool()>& done) {
        for (int periods = 0; periods < 100 && !done(); ++periods) {
            const size_t dispatched = Playback().Loop().Dispatched();
            const Control* control = Playback().Control();
            clock.Advance(std::chrono::milliseconds(control ? control->Timer().Period() : 1));
            // A tick is due now; it comes unless playback ended meanwhile.
            const auto delivered = [&] {
                return Playback().Loop().Dispatched() > dispatched || !Playback().IsPlaying();
            };
            if (!QTest::qWaitFor(delivered))
                break;
            for (int i = 0; i < GUT_MessageLoop::kIdlePasses + 1; ++i)
                QApplication::processEvents();
        }
        return done();
    }

    FakeClock clock;
    int32_t row = -1;
};

TEST_F(PlaybackWindowTest, PlaysTheSceneTickByTickAndComesBack) {
    const SetState before = StateOf(*Document()->Set());
    Click(2);
    FrameRecorder recorder;
    ASSERT_TRUE(Enabled(Control::kPlay));
    ASSERT_TRUE(Run(Control::kPlay));
    EXPECT_TRUE(Playback().IsPlaying());
    EXPECT_TRUE(Frame().Timeline()->IsPlaying());
    // While playing, nothing is edited and the cell is not moved by hand.
    EXPECT_TRUE(Enabled(Control::kStop));
    EXPECT_FALSE(Enabled(Control::kNextFrame));
    EXPECT_FALSE(Enabled(kCmdCellClear));
    EXPECT_FALSE(Frame().Timeline()->EditCell());

    ASSERT_TRUE(PlayUntil([&] { return !Playback().IsPlaying(); }));
    EXPECT_EQ(recorder.Distinct(), (std::vector<int32_t>{2, 3, 4, 5}));
    EXPECT_EQ(recorder.codes.back(), Data::kPlaybackEnded);
    EXPECT_FALSE(Frame().Timeline()->IsPlaying());
    EXPECT_FALSE(Playback().Control()->Timer().IsRunning());
    // Back where the user stood, with the buttons and the line of the model's toolbar.
    EXPECT_EQ(Current().Cell(), (AS_CellPosition{2, row}));
    EXPECT_TRUE(Enabled(Control::kPlay));
    EXPECT_FALSE(Enabled(Control::kStop));
    EXPECT_EQ(Frame().PlaybackBar()->FrameLine()->text(),
              QString::fromStdU16String(Frame().PlaybackBar()->Text()));
    EXPECT_TRUE(Frame().PlaybackBar()->FrameLine()->text().startsWith("frame: 3/"))
        << Frame().PlaybackBar()->FrameLine()->text().toStdString();
    // Playing changes nothing in the set.
    EXPECT_TRUE(StateOf(*Document()->Set()) == before);
    EXPECT_FALSE(Enabled(kCmdEditRedo));
}

TEST_F(PlaybackWindowTest, StopAClickAndTheFrameRange) {
    Click(0);
    ASSERT_TRUE(Run(Control::kPlay));
    ASSERT_TRUE(PlayUntil([&] { return Current().Frame() == 2; }));
    ASSERT_TRUE(Run(Control::kStop));
    EXPECT_FALSE(Playback().IsPlaying());
    EXPECT_EQ(Current().Cell(), (AS_CellPosition{0, row}));

    // A click in the timeline ends playback where the user put the cell.
    ASSERT_TRUE(Run(Control::kPlay));
    ASSERT_TRUE(PlayUntil([&] { return Current().Frame() == 1; }));
    Click(4);
    EXPECT_FALSE(Playback().IsPlaying());
    EXPECT_FALSE(Frame().Timeline()->IsPlaying());
    EXPECT_EQ(Current().Cell(), (AS_CellPosition{4, row}));

    // The frame range from a selection: range mode plays it and stops at its end.
    Click(1);
    Click(3, Qt::ShiftModifier);
    ASSERT_TRUE(Run(kCmdPlaySetRange));
    EXPECT_TRUE(Enabled(kCmdPlayClearRange));
    ASSERT_TRUE(Run(kCmdPlayRangeMode));
    EXPECT_TRUE(Frame().Action(kCmdPlayRangeMode)->isChecked());
    Click(0);
    FrameRecorder recorder;
    ASSERT_TRUE(Run(Control::kPlay));
    ASSERT_TRUE(PlayUntil([&] { return !Playback().IsPlaying(); }));
    EXPECT_EQ(recorder.Distinct(), (std::vector<int32_t>{1, 2, 3}));
    ASSERT_TRUE(Run(kCmdPlayClearRange));
    EXPECT_FALSE(Enabled(kCmdPlayClearRange));
}

// A target that writes down what reaches it, and on which thread.
class RecordingTarget : public UI_CommandTarget {
public:
    bool OnCommand(uint32_t id) override {
        ids.push_back(id);
        onGuiThread = onGuiThread && QThread::currentThread() == qApp->thread();
        return true;
    }
    bool OnIdle(long count) override {
        idle.push_back(count);
        return true;
    }
    std::vector<uint32_t> ids;
    std::vector<long> idle;
    bool onGuiThread = true;
};

TEST(GuiMessageLoop, CommandsFromAnotherThreadRunInOrderOnTheInterfaceThread) {
    RecordingTarget target;
    GUT_MessageLoop loop(target);
    std::thread poster([&loop] {
        for (uint32_t id = 0; id < 500; ++id)
            loop.PostCommand(id);
    });
    poster.join();
    EXPECT_TRUE(target.ids.empty()) << "nothing runs before the loop turns";
    ASSERT_TRUE(QTest::qWaitFor([&] { return loop.Dispatched() == 500; }));
    std::vector<uint32_t> expected(500);
    for (uint32_t id = 0; id < 500; ++id)
        expected[id] = id;
    EXPECT_EQ(target.ids, expected);
    EXPECT_TRUE(target.onGuiThread);

    // A target that always asks for more idle passes gets a bounded number after a command.
    target.idle.clear();
    loop.PostCommand(7);
    for (int i = 0; i < 50; ++i)
        QApplication::processEvents();
    ASSERT_EQ(target.idle.size(), static_cast<size_t>(GUT_MessageLoop::kIdlePasses));
    for (long i = 0; i < GUT_MessageLoop::kIdlePasses; ++i)
        EXPECT_EQ(target.idle[static_cast<size_t>(i)], i);
}

} // namespace
