#include "platform/timer.h"
#include "simulator/simulated_clock.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct Ticks {
    SimulatedClock clock;
    std::vector<long> at; // ms
    void Note() { at.push_back(clock.Now().count()); }
};

TEST(Timer, FirstDelayHoldsOnceThenTheOwnInterval) {
    Ticks t;
    Timer timer(t.clock, "t", 5s, [&] { t.Note(); });
    timer.Reset(15s);
    timer.Enable();
    t.clock.RunFor(14999ms);
    EXPECT_TRUE(t.at.empty());
    t.clock.RunFor(10001ms);
    EXPECT_EQ(t.at, (std::vector<long>{15000, 20000, 25000}));
}

TEST(Timer, EnablingAnEnabledTimerKeepsItsPhase) {
    Ticks t;
    Timer timer(t.clock, "t", 10s, [&] { t.Note(); });
    timer.Enable();
    t.clock.RunFor(9s);
    timer.Enable();
    t.clock.RunFor(1s);
    EXPECT_EQ(t.at, (std::vector<long>{10000}));
    timer.SetInterval(10s); // starts the count anew
    t.clock.RunFor(9s);
    timer.Disable();
    timer.Enable();
    t.clock.RunFor(10s);
    EXPECT_EQ(t.at, (std::vector<long>{10000, 29000}));
}

TEST(Timer, StoppedTimerStaysSilentUntilReset) {
    Ticks t;
    Timer timer(t.clock, "t", 1s, [&] { t.Note(); });
    timer.Enable();
    timer.Stop();
    timer.Enable(); // a handler that re-arms itself must not undo the stop
    t.clock.RunFor(1min);
    EXPECT_TRUE(t.at.empty());
    timer.Reset(2s);
    timer.Enable();
    t.clock.RunFor(3s);
    EXPECT_EQ(t.at.size(), 2u);
}

struct SlowHandler {
    Ticks t;
    Duration work = 2500ms;
    int finished = 0;
    Task<> Handle() {
        t.Note();
        co_await Sleep(t.clock, work);
        ++finished;
    }
};

TEST(Timer, TicksDuringAWaitingHandlerAreDropped) {
    SlowHandler slow;
    Timer timer(slow.t.clock, "t", 1s, [&] { return slow.Handle(); });
    timer.Enable();
    slow.t.clock.RunFor(7s);
    EXPECT_EQ(slow.t.at, (std::vector<long>{1000, 4000, 7000}));
    timer.CancelHandler();
    timer.Disable();
    slow.t.clock.RunFor(1min);
    EXPECT_EQ(slow.finished, 2);
}

} // namespace
} // namespace tarnex
