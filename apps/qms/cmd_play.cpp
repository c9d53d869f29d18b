// qms play: a scene run by the playback control at its frame rate, headless. Each frame
// shown is printed with the time it was shown, so the real rate can be measured.

#include "QmsCommands.h"
#include "QmsHost.h"
#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_CellLevelInterface.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CSketchrunDoc.h"
#include "animationset/SPO_SettingsMgr.h"
#include "core/PR_Preferences.h"
#include "render/CInteractivePlaybackControl.h"
#include "render/UI_HeadlessLoop.h"

#include <cstdio>
#include <string>

namespace {

using Clock = CMultimediaTimer::Clock;

// The main window of a headless run: commands go to the control, idle time to its step,
// and the end of playback ends the loop.
class HeadlessFrame : public UI_CommandTarget, public CInteractivePlaybackFrame {
public:
    void Attach(CInteractivePlaybackControl* control, UI_HeadlessLoop* loop) {
        control_ = control;
        loop_ = loop;
    }
    bool OnCommand(uint32_t commandId) override { return control_ && control_->OnCommand(commandId); }
    bool OnIdle(long) override { return control_ && control_->Step(); }
    void PlaybackStarted() override {}
    void PlaybackEnded() override {
        if (loop_)
            loop_->Quit();
    }
    void RunIdleWork(long) override {}

private:
    CInteractivePlaybackControl* control_ = nullptr;
    UI_HeadlessLoop* loop_ = nullptr;
};

struct Shown {
    int32_t frame;
    double milliseconds;
};

// Writes down each frame that playback shows, and stops playback after the last frame of
// the last pass.
class FrameRecorder : public AS_CellIteratorObserverInterface {
public:
    FrameRecorder(UI_MessageLoop& loop, Clock::TimePoint start, int32_t lastFrame, int64_t passes)
        : loop_(loop), start_(start), lastFrame_(lastFrame), passes_(passes) {
        AS_CellIteratorObservable::Instance().Attach(this);
    }
    ~FrameRecorder() override { AS_CellIteratorObservable::Instance().Detach(this); }
    FrameRecorder(const FrameRecorder&) = delete;
    FrameRecorder& operator=(const FrameRecorder&) = delete;

    void CellIteratorChanged(const void*, const AS_CellIteratorObserverData& data) override {
        if (data.code != AS_CellIteratorObserverData::kPlaybackFrame || stopping_)
            return;
        const int32_t frame = AS_CellIteratorObservable::Instance().Frame();
        const std::chrono::duration<double, std::milli> since = Clock::System().Now() - start_;
        shown.push_back({frame, since.count()});
        // The position that the step prepares next would begin another pass.
        if (frame == lastFrame_ && --passes_ <= 0) {
            stopping_ = true;
            loop_.PostCommand(CInteractivePlaybackControl::kStop);
        }
    }

    std::vector<Shown> shown;

private:
    UI_MessageLoop& loop_;
    Clock::TimePoint start_;
    int32_t lastFrame_;
    int64_t passes_;
    bool stopping_ = false;
};

std::string Fixed(double value, int decimals) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    return buffer;
}

double Milliseconds(Clock::Duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

} // namespace

int QmsRunPlay(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {"fps", "from", "to", "loop"});
    args.Check(2, 2);
    if (args.Option("from").has_value() != args.Option("to").has_value())
        throw QmsUsageError("--from and --to go together");
    std::optional<int64_t> fps;
    if (args.Option("fps")) {
        fps = QmsArgs::ParseInt(*args.Option("fps"), "--fps");
        if (*fps < 1 || *fps > CInteractivePlaybackControl::kMaximumFrameRate)
            throw QmsFailure("--fps must lie between 1 and " +
                             std::to_string(CInteractivePlaybackControl::kMaximumFrameRate) + ", not " +
                             *args.Option("fps") + ".");
    }
    int64_t passes = 1;
    if (args.Option("loop")) {
        passes = QmsArgs::ParseInt(*args.Option("loop"), "--loop");
        if (passes < 1)
            throw QmsFailure("--loop counts the passes through the frames: at least 1, not " +
                             *args.Option("loop") + ".");
    }

    QmsHost host;
    CSketchrunDoc document(host);
    QmsOpenProject(document, args.At(0, "PROJECT"));
    CAnimationSetObj& set = *document.Set();
    CDopeSheetObj& scene = QmsSceneArgument(set, args.At(1, "SCENE"));
    set.SetCurrentScene(&scene, true);
    AS_CellIteratorObservable& cell = AS_CellIteratorObservable::Instance();

    const bool rangeMode = args.Option("from").has_value();
    SPO_SettingsMgr& range = *document.Settings();
    if (rangeMode) {
        const int64_t from = QmsArgs::ParseInt(*args.Option("from"), "--from");
        const int64_t to = QmsArgs::ParseInt(*args.Option("to"), "--to");
        if (from < 1 || to < from || to > AS_kFrameLimit)
            throw QmsFailure("--from and --to must give frames from 1 on, the first not after the last.");
        range.SetCustomRange(true);
        range.SetFirstFrame(static_cast<int32_t>(from - 1));
        range.SetLastFrame(static_cast<int32_t>(to - 1));
    }

    // The user's rate settings serve, but what this run asks for is not kept.
    UT_MemorySettingsStore settings;
    UT_SettingsStore& user = PR_Preferences::Instance().Store();
    for (const char* key :
         {CInteractivePlaybackControl::kFrameRateKey, CInteractivePlaybackControl::kUseSetRateKey})
        if (std::optional<std::string> value = user.Get(CInteractivePlaybackControl::kSettingsSection, key))
            settings.Set(CInteractivePlaybackControl::kSettingsSection, key, *value);

    HeadlessFrame frame;
    UI_HeadlessLoop loop(frame);
    CInteractivePlaybackControl control(frame, loop, nullptr, &range, rangeMode, settings);
    frame.Attach(&control, &loop);
    if (fps)
        control.SetFrameRate(static_cast<int32_t>(*fps));
    if (!control.CanPlay())
        throw QmsFailure("Scene \"" + UT_ToUtf8(scene.Name()) +
                         "\" has nothing to play: its frames, or the ones asked for, are a single frame.");

    // The last frame that a pass shows: the end of the range, or of the selection that
    // playback widens to the whole scene.
    int32_t last = 0;
    if (rangeMode) {
        last = range.GetLastFrame();
    } else {
        AS_CellIterator widened(cell);
        if (widened.IsSingleCell())
            widened.SelectAll(true);
        last = std::min(widened.GetLastSelectedFrame(), widened.GetSceneLastFrame());
    }
    const Clock::TimePoint start = Clock::System().Now();
    FrameRecorder recorder(loop, start, last, passes);
    control.SetLoop(passes > 1);
    control.Play();
    loop.Run();
    control.Stop();

    const CMultimediaTimer::Statistics timing = control.Timer().GetStatistics();
    const std::vector<Shown>& shown = recorder.shown;
    const double span =
        shown.size() > 1 ? (shown.back().milliseconds - shown.front().milliseconds) / 1000.0 : 0.0;
    const double achieved = span > 0.0 ? static_cast<double>(shown.size() - 1) / span : 0.0;
    const int32_t period = 1000 / control.FrameRate();
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject()
            .Field("scene", scene.Name())
            .Field("fps", control.FrameRate())
            .Field("period_ms", period)
            .Key("frames")
            .BeginArray();
        for (const Shown& s : shown)
            json.BeginObject().Field("frame", s.frame + 1).Field("time_ms", s.milliseconds).EndObject();
        json.EndArray()
            .Field("shown", static_cast<int64_t>(shown.size()))
            .Field("seconds", span)
            .Field("achieved_fps", achieved)
            .Key("timer")
            .BeginObject()
            .Field("ticks", static_cast<int64_t>(timing.ticks))
            .Field("skipped", static_cast<int64_t>(timing.skipped))
            .Field("mean_late_ms", Milliseconds(timing.MeanLate()))
            .Field("worst_late_ms", Milliseconds(timing.worstLate))
            .EndObject()
            .EndObject();
        return 0;
    }
    for (const Shown& s : shown)
        context.out << "frame " << s.frame + 1 << " at " << Fixed(s.milliseconds, 3) << " ms\n";
    context.out << "# " << shown.size() << " frames in " << Fixed(span, 3) << " s: " << Fixed(achieved, 2)
                << " frames a second (asked " << control.FrameRate() << ", a tick every " << period
                << " ms)\n"
                << "# timer: " << timing.ticks << " ticks, late by "
                << Fixed(Milliseconds(timing.MeanLate()), 3) << " ms on average and "
                << Fixed(Milliseconds(timing.worstLate), 3) << " ms at worst, " << timing.skipped
                << " skipped\n";
    return 0;
}
