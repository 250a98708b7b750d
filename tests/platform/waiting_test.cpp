#include "platform/task.h"
#include "platform/timer.h"
#include "simulator/simulated_clock.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct Guard {
    int& count;
    ~Guard() { ++count; }
};

Task<int> Deep(Clock& clock, int& cleaned, bool fails) {
    Guard guard{cleaned};
    co_await Sleep(clock, 10ms);
    if (fails)
        throw 8;
    co_return 7;
}

Task<> Outer(Clock& clock, int& cleaned, int& result, bool fails) {
    Guard guard{cleaned};
    try {
        result = co_await Deep(clock, cleaned, fails);
    } catch (const int thrown) {
        result = thrown;
    }
}

TEST(Task, PassesAValueOrAnExceptionUpAfterTheWait) {
    for (const bool fails : {false, true}) {
        SimulatedClock clock;
        int cleaned = 0;
        int result = 0;
        Task<> task = Outer(clock, cleaned, result, fails);
        clock.RunFor(10ms);
        task.Start(); // lazy: nothing ran before
        clock.RunFor(9ms);
        EXPECT_EQ(result, 0);
        clock.RunFor(1ms);
        EXPECT_EQ(result, fails ? 8 : 7);
        EXPECT_EQ(cleaned, 2);
        EXPECT_FALSE(task.Running());
    }
}

TEST(Task, DestroyingCancelsEveryWaitInside) {
    SimulatedClock clock;
    int cleaned = 0;
    int result = 0;
    {
        Task<> task = Outer(clock, cleaned, result, false);
        task.Start();
        clock.RunFor(5ms);
    }
    EXPECT_EQ(cleaned, 2);
    clock.RunFor(1s); // a wait left behind would resume a destroyed frame
    EXPECT_EQ(result, 0);
}

Task<> WaitFor(Signal& signal, std::string& order, char name) {
    co_await signal.Wait();
    order += name;
}

TEST(Signal, WakesAllWhoWaitInOrderAndNeverInline) {
    SimulatedClock clock;
    Signal signal(clock);
    std::string order;
    std::map<char, Task<>> tasks;
    for (const char name : {'a', 'b', 'c'}) {
        tasks[name] = WaitFor(signal, order, name);
        tasks[name].Start();
    }
    signal.Notify();
    EXPECT_EQ(order, "");
    tasks['b'] = Task<>(); // cancelled between the notification and its turn
    clock.RunFor(0ms);
    EXPECT_EQ(order, "ac");
    signal.Notify(); // nobody waits: nothing is remembered
    tasks['b'] = WaitFor(signal, order, 'b');
    tasks['b'].Start();
    clock.RunFor(0ms);
    EXPECT_EQ(order, "ac");
}

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
