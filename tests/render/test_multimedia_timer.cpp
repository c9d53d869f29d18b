// The periodic timer on a clock that the test moves: ticks at the deadlines of a fixed grid,
// late wake-ups that neither drift nor burst, and the start, stop and period rules.

#include "FakeClock.h"
#include "render/UI_HeadlessLoop.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace std::chrono_literals;

class CountingTimer : public CMultimediaTimer {
public:
    explicit CountingTimer(Clock& clock, uint32_t resolution = 0, uint32_t eventType = kCallbackEvent)
        : CMultimediaTimer(resolution, eventType, clock) {}
    ~CountingTimer() override { Stop(); }

    void OnTimer() override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ++ticks_;
        }
        ticked_.notify_all();
    }
    // Waits for the timer's thread, which the test cannot see otherwise; the limit only
    // keeps a broken timer from hanging the test.
    bool WaitForTicks(uint64_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return ticked_.wait_for(lock, 10s, [&] { return ticks_ >= count; });
    }
    uint64_t Ticks() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return ticks_;
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable ticked_;
    uint64_t ticks_ = 0;
};

TEST(MultimediaTimerTest, TicksOnAFixedGridWhateverTheWakeUps) {
    FakeClock clock;
    CountingTimer timer(clock);
    ASSERT_TRUE(timer.Start(10));
    clock.Advance(9ms);
    clock.Advance(1ms);
    ASSERT_TRUE(timer.WaitForTicks(1));
    // The target wake-up comes 5 ms late; the third deadline stays at 30 ms.
    clock.Advance(15ms);
    ASSERT_TRUE(timer.WaitForTicks(2));
    clock.Advance(5ms);
    ASSERT_TRUE(timer.WaitForTicks(3)) << "the grid drifted with the late wake-up";
    timer.Stop();
    EXPECT_EQ(timer.Ticks(), 3u) << "deadlines at 10, 20 and 30 ms, nothing before";
    const CMultimediaTimer::Statistics statistics = timer.GetStatistics();
    EXPECT_EQ(statistics.ticks, 3u);
    EXPECT_EQ(statistics.skipped, 0u);
    EXPECT_EQ(statistics.worstLate, 5ms);
    EXPECT_EQ(statistics.totalLate, 5ms);
}

TEST(MultimediaTimerTest, AWakeUpLaterThanAPeriodSkipsRatherThanBursts) {
    FakeClock clock;
    CountingTimer timer(clock);
    ASSERT_TRUE(timer.Start(10));
    clock.Advance(35ms);
    ASSERT_TRUE(timer.WaitForTicks(1));
    clock.Advance(5ms);
    ASSERT_TRUE(timer.WaitForTicks(2));
    timer.Stop();
    EXPECT_EQ(timer.Ticks(), 2u) << "one tick for the deadlines at 10, 20 and 30 ms, then 40 ms";
    const CMultimediaTimer::Statistics statistics = timer.GetStatistics();
    EXPECT_EQ(statistics.skipped, 2u);
    EXPECT_EQ(statistics.worstLate, 25ms);
    EXPECT_EQ(statistics.MeanLate(), 12500us);
}

TEST(MultimediaTimerTest, StartStopAndPeriodRules) {
    FakeClock clock;
    CountingTimer timer(clock, 5);
    EXPECT_EQ(timer.Resolution(), 5u);
    EXPECT_TRUE(timer.Stop()) << "nothing running";
    EXPECT_TRUE(timer.SetPeriod(20)) << "nothing running";
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_FALSE(timer.Start(CMultimediaTimer::kMaximumPeriod + 1));
    ASSERT_TRUE(timer.Start(1));
    EXPECT_EQ(timer.Period(), 5u) << "raised to the resolution";
    EXPECT_NE(timer.TimerId(), 0u);
    EXPECT_FALSE(timer.Start(10)) << "one timer at a time";
    clock.Advance(5ms);
    ASSERT_TRUE(timer.WaitForTicks(1));

    // A new period starts a new grid from now: 5 ms, then every 8 ms.
    ASSERT_TRUE(timer.SetPeriod(8));
    EXPECT_TRUE(timer.IsRunning());
    EXPECT_EQ(timer.Period(), 8u);
    clock.Advance(7ms);
    clock.Advance(1ms);
    ASSERT_TRUE(timer.WaitForTicks(2));
    EXPECT_EQ(timer.GetStatistics().totalLate, 0ms);
    EXPECT_TRUE(timer.Stop());
    EXPECT_EQ(timer.TimerId(), 0u);
    EXPECT_EQ(timer.Ticks(), 2u);

    CountingTimer once(clock);
    ASSERT_TRUE(once.Start(10, 0, nullptr, true));
    clock.Advance(50ms);
    ASSERT_TRUE(once.WaitForTicks(1));
    once.Stop();
    EXPECT_EQ(once.Ticks(), 1u);

    // Events of the system's own kinds do not exist here.
    CountingTimer event(clock, 0, 1);
    EXPECT_FALSE(event.Start(10));
}

class Recorder : public UI_CommandTarget {
public:
    bool OnCommand(uint32_t commandId) override {
        commands.push_back(commandId);
        return true;
    }
    bool OnIdle(long count) override {
        idle.push_back(count);
        return wantMoreIdle;
    }
    std::vector<uint32_t> commands;
    std::vector<long> idle;
    bool wantMoreIdle = false;
};

TEST(HeadlessLoopTest, CommandsInPostOrderThenBoundedIdle) {
    Recorder target;
    UI_HeadlessLoop loop(target);
    target.wantMoreIdle = true;
    std::thread feeder([&] {
        for (uint32_t id = 1; id <= 50; ++id)
            loop.PostCommand(id);
    });
    feeder.join();
    EXPECT_EQ(loop.RunPending(), 50u);
    std::vector<uint32_t> expected(50);
    for (uint32_t id = 1; id <= 50; ++id)
        expected[id - 1] = id;
    EXPECT_EQ(target.commands, expected);
    // Only the last command found the queue empty; a target asking for more gets a few
    // passes, counted from 0, and no more.
    EXPECT_EQ(target.idle, (std::vector<long>{0, 1, 2, 3}));

    // Quit from another thread ends Run.
    std::thread stopper([&] { loop.Quit(); });
    loop.Run();
    stopper.join();
    loop.PostCommand(99);
    EXPECT_EQ(loop.RunPending(), 0u) << "nothing runs after Quit";
}

} // namespace
