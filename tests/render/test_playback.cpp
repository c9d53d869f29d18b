// The control of interactive playback, driven command by command and tick by tick, and
// end to end through its timer on a clock the test moves and a headless message loop.

#include "FakeClock.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/SPO_SettingsMgr.h"
#include "animationset/SetTestUtil.h"
#include "core/UT_SettingsStore.h"
#include "render/CInteractivePlayBackToolBar.h"
#include "render/CInteractivePlaybackControl.h"
#include "render/UI_HeadlessLoop.h"

#include <thread>

namespace {

using namespace std::chrono_literals;
using Control = CInteractivePlaybackControl;
using Data = AS_CellIteratorObserverData;

// The main window: commands to the control, idle time to its step.
class FakeFrame : public CInteractivePlaybackFrame, public UI_CommandTarget {
public:
    void PlaybackStarted() override { events.push_back("started"); }
    void PlaybackEnded() override { events.push_back("ended"); }
    void RunIdleWork(long count) override { events.push_back("idle " + std::to_string(count)); }
    bool OnCommand(uint32_t commandId) override { return control && control->OnCommand(commandId); }
    bool OnIdle(long) override { return control && control->Step(); }

    Control* control = nullptr;
    std::vector<std::string> events;
};

// What the views of the current cell hear, with the control's state at that moment.
class CellRecorder : public AS_CellIteratorObserverInterface {
public:
    struct Heard {
        uint32_t code;
        int32_t frame;
        int32_t level;
        uint32_t state;
        bool operator==(const Heard&) const = default;
    };
    void Listen() { AS_CellIteratorObservable::Instance().Attach(this); }
    ~CellRecorder() override { AS_CellIteratorObservable::Instance().Detach(this); }
    void CellIteratorChanged(const void*, const Data& data) override {
        const AS_CellIteratorObservable& cell = AS_CellIteratorObservable::Instance();
        heard.push_back({data.code, cell.Frame(), cell.LevelIndex(), control ? control->GetState() : 99u});
    }
    std::vector<int32_t> Frames(uint32_t code = Data::kPlaybackFrame) const {
        std::vector<int32_t> frames;
        for (const Heard& h : heard)
            if (h.code == code)
                frames.push_back(h.frame);
        return frames;
    }
    std::vector<uint32_t> Codes() const {
        std::vector<uint32_t> codes;
        for (const Heard& h : heard)
            codes.push_back(h.code);
        return codes;
    }
    const Control* control = nullptr;
    std::vector<Heard> heard;
};

// A scene whose Drawing order holds "Drawing" on frames 0 to 5 and "Hand" on 0 to 3, at
// 12 frames a second, as the current set.
class PlaybackTest : public SetCommandTest {
protected:
    void SetUp() override {
        SetCommandTest::SetUp();
        set = MakeNewSet();
        scene = set->CurrentScene();
        auto* drawing = dynamic_cast<AS_DrawingLevelObj*>(scene->FindElementByName(u"Drawing"));
        drawing->SetCells(drawing->CreateDrawing(u"1"), 0, 6);
        auto* hand = static_cast<AS_DrawingLevelObj*>(
            scene->AddElement(AS_VectorGraphicLevelObj::Create(scene->NewElementId(), u"Hand")));
        hand->SetCells(hand->CreateDrawing(u"1"), 0, 4);
        CAnimationSetObj::SetCurrent(set.get());
        range = std::make_unique<SPO_SettingsMgr>(set.get());
        recorder.Listen();
    }

    std::unique_ptr<Control> MakeControl(bool rangeMode) {
        auto control =
            std::make_unique<Control>(frame, loop, &toolbar, range.get(), rangeMode, settings, clock);
        frame.control = control.get();
        recorder.control = control.get();
        return control;
    }
    AS_CellIteratorObservable& Cell() { return AS_CellIteratorObservable::Instance(); }
    void PlayRange(int32_t first, int32_t last) {
        range->SetCustomRange(true);
        range->SetFirstFrame(first);
        range->SetLastFrame(last);
    }

    std::unique_ptr<CAnimationSetObj> set;
    CDopeSheetObj* scene = nullptr;
    std::unique_ptr<SPO_SettingsMgr> range;
    UT_MemorySettingsStore settings;
    FakeClock clock;
    FakeFrame frame;
    UI_HeadlessLoop loop{frame};
    CInteractivePlayBackToolBar toolbar;
    CellRecorder recorder;
};

TEST_F(PlaybackTest, OneCellPlaysTheWholeSceneTickByTickAndComesBack) {
    std::unique_ptr<Control> control = MakeControl(false);
    Cell().SetCell({2, 0});
    Cell().SelectCurrentCell();
    EXPECT_EQ(control->GetState(), Control::kReady);

    control->OnCommand(Control::kPlay);
    EXPECT_TRUE(control->IsPlaying());
    EXPECT_TRUE(control->Timer().IsRunning());
    EXPECT_EQ(frame.events, (std::vector<std::string>{"started"}));
    EXPECT_EQ(Cell().SelectedFrames(), std::vector<AS_FrameRange>(2, AS_FrameRange{0, 6})) << "widened";
    // The start goes out at once, on the last row of the selection, from the frame of the cell.
    ASSERT_EQ(recorder.heard.size(), 1u);
    EXPECT_EQ(recorder.heard[0], (CellRecorder::Heard{Data::kPlaybackFrame, 2, 1, Control::kReady}));

    std::vector<uint32_t> states;
    while (control->IsPlaying()) {
        control->Tick();
        states.push_back(control->GetState());
        control->Tick(); // a second tick before the step: ignored
        control->Step();
        states.push_back(control->GetState());
    }
    EXPECT_EQ(recorder.Frames(), (std::vector<int32_t>{2, 2, 3, 4, 5}));
    for (size_t i = 1; i < recorder.heard.size() - 1; ++i)
        EXPECT_EQ(recorder.heard[i].state, Control::kShowing) << "observers draw while the tick shows";
    EXPECT_EQ(states, (std::vector<uint32_t>{1, 2, 1, 2, 1, 2, 1, 2}));
    EXPECT_EQ(recorder.Codes().back(), Data::kPlaybackEnded);
    EXPECT_FALSE(control->Timer().IsRunning());
    EXPECT_EQ(frame.events, (std::vector<std::string>{"started", "ended"}));
    EXPECT_EQ(Cell().Cell(), (AS_CellPosition{2, 0})) << "back where the user stood";
    EXPECT_TRUE(Cell().IsSingleCell());

    // A tick that was still queued when playback stopped shows nothing.
    const size_t heard = recorder.heard.size();
    control->Tick();
    EXPECT_EQ(recorder.heard.size(), heard);
}

TEST_F(PlaybackTest, ASelectionPlaysItsOwnFramesOnly) {
    std::unique_ptr<Control> control = MakeControl(false);
    Cell().Set(scene, &scene->DrawingOrder(), {1, 0}, {3, 1}, {1, 0});
    const AS_CellIterator before = Cell();
    control->Play();
    EXPECT_EQ(Cell().SelectedFrames(), before.SelectedFrames()) << "no widening";
    EXPECT_EQ(Cell().LevelIndex(), 1);
    while (control->IsPlaying()) {
        control->Tick();
        control->Step();
    }
    EXPECT_EQ(recorder.Frames(), (std::vector<int32_t>{1, 1, 2, 3}));
    EXPECT_EQ(recorder.Codes().back(), Data::kPlaybackEnded);
    EXPECT_EQ(Cell().Cell(), before.Cell());
    EXPECT_EQ(Cell().SelectedLevels(), before.SelectedLevels());
}

TEST_F(PlaybackTest, LoopWrapsAroundInBothModes) {
    std::unique_ptr<Control> control = MakeControl(false);
    control->OnCommand(Control::kToggleLoop);
    EXPECT_TRUE(toolbar.IsPressed(Control::kToggleLoop));
    Cell().Set(scene, &scene->DrawingOrder(), {3, 0}, {5, 0}, {4, 0});
    control->Play();
    for (int i = 0; i < 7; ++i) {
        control->Tick();
        control->Step();
    }
    EXPECT_TRUE(control->IsPlaying());
    EXPECT_EQ(recorder.Frames(), (std::vector<int32_t>{4, 4, 5, 3, 4, 5, 3, 4}));
    EXPECT_EQ(frame.events, (std::vector<std::string>{"started", "idle -1", "idle -1"}));
    control->Stop();

    std::unique_ptr<Control> ranged = MakeControl(true);
    ranged->SetLoop(true);
    PlayRange(1, 2);
    recorder.heard.clear();
    ranged->Play();
    EXPECT_TRUE(recorder.heard.empty()) << "range mode leaves the cell alone until the first tick";
    for (int i = 0; i < 5; ++i) {
        ranged->Tick();
        ranged->Step();
    }
    EXPECT_EQ(recorder.Frames(), (std::vector<int32_t>{1, 2, 1, 2, 1}));
    EXPECT_EQ(ranged->RangeFrame(), 2);
}

TEST_F(PlaybackTest, RangeModeEndsAtItsLastFrameAndAtOnceOnASingleFrame) {
    std::unique_ptr<Control> control = MakeControl(true);
    PlayRange(2, 4);
    Cell().SetCell({3, 1});
    control->Play();
    EXPECT_EQ(control->RangeFrame(), 3) << "the current frame, inside the range, is where it starts";
    while (control->IsPlaying()) {
        control->Tick();
        control->Step();
    }
    EXPECT_EQ(recorder.Frames(), (std::vector<int32_t>{3, 4}));
    EXPECT_EQ(recorder.Codes().back(), Data::kPlaybackEnded);
    EXPECT_EQ(Cell().Frame(), 4) << "range mode keeps the cell at the last frame shown";

    // The last frame of a range is no place to start; a single frame stops at the first step.
    control->Play();
    EXPECT_EQ(control->RangeFrame(), 2);
    control->Stop();
    PlayRange(2, 2);
    control->SetLoop(true);
    EXPECT_FALSE(control->CanPlay());
    recorder.heard.clear();
    control->Play();
    control->Tick();
    EXPECT_FALSE(control->Step());
    EXPECT_FALSE(control->IsPlaying());
    EXPECT_EQ(recorder.Codes(), (std::vector<uint32_t>{Data::kPlaybackFrame, Data::kPlaybackEnded}));
}

TEST_F(PlaybackTest, AMoveByTheUserEndsPlaybackWhereTheUserPutTheCell) {
    std::unique_ptr<Control> control = MakeControl(false);
    control->Play();
    control->Tick();
    control->Step();
    // The exposure sheet moves the cell.
    Cell().SetCell({1, 0});
    Cell().SelectCurrentCell();
    Cell().NotifyMove(nullptr);
    EXPECT_FALSE(control->IsPlaying());
    EXPECT_FALSE(control->Timer().IsRunning());
    EXPECT_EQ(control->GetState(), Control::kReady);
    EXPECT_EQ(frame.events, (std::vector<std::string>{"started", "ended"}));
    EXPECT_EQ(Cell().Cell(), (AS_CellPosition{1, 0}));
    EXPECT_EQ(recorder.Codes(),
              (std::vector<uint32_t>{Data::kPlaybackFrame, Data::kPlaybackFrame, Data::kMoved}))
        << "no end of playback is sent, and the selection is not put back";
    EXPECT_TRUE(toolbar.IsEnabled(Control::kPlay));

    // The timeline's range plays on whatever the cell does.
    std::unique_ptr<Control> ranged = MakeControl(true);
    PlayRange(0, 5);
    ranged->Play();
    Cell().NotifyMove(nullptr);
    EXPECT_TRUE(ranged->IsPlaying());
}

TEST_F(PlaybackTest, StepsByTheUser) {
    std::unique_ptr<Control> control = MakeControl(false);
    Cell().Set(scene, &scene->DrawingOrder(), {1, 0}, {3, 0}, {3, 0});
    control->OnCommand(Control::kNextFrame);
    EXPECT_EQ(Cell().Frame(), 3) << "the end of the range, without loop";
    control->SetLoop(true);
    control->OnCommand(Control::kNextFrame);
    EXPECT_EQ(Cell().Frame(), 1) << "around, with loop";
    control->OnCommand(Control::kPrevFrame);
    EXPECT_EQ(Cell().Frame(), 3);
    control->OnCommand(Control::kFirstFrame);
    EXPECT_EQ(Cell().Frame(), 1);
    control->OnCommand(Control::kLastFrame);
    EXPECT_EQ(Cell().Frame(), 3);
    EXPECT_EQ(recorder.Codes(), std::vector<uint32_t>(5, Data::kUserStep));

    std::unique_ptr<Control> ranged = MakeControl(true);
    PlayRange(2, 4);
    ranged->OnCommand(Control::kNextFrame);
    EXPECT_EQ(Cell().Frame(), 4) << "limited to the range";
    ranged->OnCommand(Control::kFirstFrame);
    EXPECT_EQ(Cell().Frame(), 2);
    ranged->OnCommand(Control::kPrevFrame);
    EXPECT_EQ(Cell().Frame(), 2);
}

TEST_F(PlaybackTest, RatesAndTheirSettings) {
    {
        std::unique_ptr<Control> control = MakeControl(false);
        EXPECT_TRUE(control->UsesSetRate()) << "useASFPS is on without a stored value";
        EXPECT_EQ(control->FrameRate(), 12) << "the set's rate without a stored one";
        control->Play();
        EXPECT_EQ(control->Timer().Period(), 83u);
        // A rate change during playback takes effect at once, without a stop.
        control->OnCommand(Control::kRate30);
        EXPECT_TRUE(control->IsPlaying());
        EXPECT_TRUE(control->Timer().IsRunning());
        EXPECT_EQ(control->Timer().Period(), 33u);
        EXPECT_FALSE(control->UsesSetRate());
        control->OnCommand(Control::kUseSetRate);
        EXPECT_EQ(control->FrameRate(), 12);
        control->OnCommand(Control::kRate24);
    }
    EXPECT_EQ(settings.GetInt(Control::kSettingsSection, Control::kFrameRateKey), 24);
    EXPECT_EQ(settings.GetInt(Control::kSettingsSection, Control::kUseSetRateKey), 0);
    {
        std::unique_ptr<Control> control = MakeControl(false);
        EXPECT_EQ(control->FrameRate(), 24);
        control->Play();
        EXPECT_EQ(control->Timer().Period(), 41u) << "the stored rate, not the set's";
    }
    settings.Set(Control::kSettingsSection, Control::kFrameRateKey, "0");
    settings.Set(Control::kSettingsSection, Control::kUseSetRateKey, "7");
    std::unique_ptr<Control> control = MakeControl(false);
    EXPECT_EQ(control->FrameRate(), 1) << "a damaged rate comes back within reach";
    EXPECT_TRUE(control->UsesSetRate());
    control.reset();
    CAnimationSetObj::SetCurrent(nullptr);
    settings.Remove(Control::kSettingsSection, Control::kFrameRateKey);
    EXPECT_EQ(MakeControl(false)->FrameRate(), Control::kDefaultFrameRate) << "no set: 24";
}

TEST_F(PlaybackTest, ToolbarButtonsAndLine) {
    std::unique_ptr<Control> control = MakeControl(false);
    EXPECT_TRUE(toolbar.IsEnabled(Control::kPlay)) << "one cell of a scene of six frames";
    EXPECT_FALSE(toolbar.IsEnabled(Control::kStop));
    EXPECT_EQ(toolbar.Text(), u"frame: 1/6 (1, 1)");
    control->Play();
    EXPECT_FALSE(toolbar.IsEnabled(Control::kPlay));
    EXPECT_TRUE(toolbar.IsEnabled(Control::kStop));
    control->Tick();
    control->Step();
    control->Tick();
    EXPECT_EQ(toolbar.Text(), u"frame: 2/6 (1, 6)");
    control->Stop();
    EXPECT_TRUE(toolbar.IsEnabled(Control::kPlay));
    EXPECT_FALSE(toolbar.IsEnabled(Control::kStop));

    // A selection of one frame on two rows has nothing to play.
    Cell().SetSelection({2, 0}, {2, 1});
    Cell().NotifyMove(nullptr);
    EXPECT_FALSE(toolbar.IsEnabled(Control::kPlay));
    EXPECT_EQ(toolbar.Text(), u"frame: 1/6 (3, 3)");
}

TEST_F(PlaybackTest, EndToEndThroughTheTimerAtTheLowerSpeedOfASlowRedraw) {
    std::unique_ptr<Control> control = MakeControl(false);
    Cell().Set(scene, &scene->DrawingOrder(), {0, 1}, {3, 1}, {0, 1});
    control->Play();
    const auto period = std::chrono::milliseconds(control->Timer().Period());
    auto waitForPending = [&](size_t count) {
        for (int i = 0; i < 10000 && loop.Pending() < count; ++i)
            std::this_thread::sleep_for(1ms);
        return loop.Pending() >= count;
    };

    // One tick per period: each shows the next frame.
    clock.Advance(period);
    ASSERT_TRUE(waitForPending(1));
    EXPECT_EQ(loop.RunPending(), 1u);
    clock.Advance(period);
    ASSERT_TRUE(waitForPending(1));
    loop.RunPending();
    EXPECT_EQ(recorder.Frames(), (std::vector<int32_t>{0, 0, 1}));

    // A redraw that takes three periods: three ticks queue up, one frame shows, and the
    // next tick shows the next frame: nothing is skipped.
    for (size_t queued = 1; queued <= 3; ++queued) {
        clock.Advance(period);
        ASSERT_TRUE(waitForPending(queued));
    }
    EXPECT_EQ(loop.RunPending(), 3u);
    EXPECT_EQ(recorder.Frames(), (std::vector<int32_t>{0, 0, 1, 2}));
    clock.Advance(period);
    ASSERT_TRUE(waitForPending(1));
    loop.RunPending();
    EXPECT_EQ(recorder.Frames(), (std::vector<int32_t>{0, 0, 1, 2, 3}));
    EXPECT_FALSE(control->IsPlaying()) << "the step after the last frame ended playback";
    EXPECT_EQ(recorder.Codes().back(), Data::kPlaybackEnded);
    EXPECT_FALSE(control->Timer().IsRunning());
}

} // namespace
