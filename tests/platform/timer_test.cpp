#include "platform/timer.h"
#include "simulator/simulated_clock.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct TimerTest : testing::Test {
    Task<> HandleSlowly() {
        at.push_back(clock.Now());
        co_await Sleep(clock, 2500ms);
        ++finished;
    }

    SimulatedClock clock;
    int finished = 0;
    std::vector<Duration> at;
    Timer timer{clock, 10s, [this] { at.push_back(clock.Now()); }};
    using Ticks = std::vector<Duration>;
};

TEST_F(TimerTest, FirstDelayHoldsOnceThenTheOwnInterval) {
    timer.Reset(15s);
    timer.Enable();
    clock.RunFor(35s);
    EXPECT_EQ(at, (Ticks{15s, 25s, 35s}));
}

TEST_F(TimerTest, EnablingAnEnabledTimerKeepsItsPhase) {
    timer.Enable();
    clock.RunFor(9s);
    timer.Enable();
    clock.RunFor(1s);
    timer.SetInterval(10s); // starts the count anew
    clock.RunFor(9s);
    timer.Disable();
    timer.Enable();
    clock.RunFor(10s);
    EXPECT_EQ(at, (Ticks{10s, 29s}));
}

TEST_F(TimerTest, StoppedTimerStaysSilentUntilReset) {
    timer.Enable();
    timer.Stop();
    timer.Enable(); // a handler that re-arms itself must not undo the stop
    clock.RunFor(1min);
    timer.Reset(2s);
    timer.Enable();
    clock.RunFor(12s);
    EXPECT_EQ(at, (Ticks{62s, 72s}));
}

TEST_F(TimerTest, TicksDuringAWaitingHandlerAreDropped) {
    Timer slow(clock, 1s, [this] { return HandleSlowly(); });
    slow.Enable();
    clock.RunFor(7s);
    EXPECT_EQ(at, (Ticks{1s, 4s, 7s}));
    slow.CancelHandler();
    slow.Disable();
    clock.RunFor(1min);
    EXPECT_EQ(finished, 2);
}

} // namespace
} // namespace tarnex
