#include "platform/task.h"
#include "simulator/simulated_clock.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct Guard {
    int& count;
    ~Guard() { ++count; }
};

Task<int> Deep(Clock& clock, int& cleaned) {
    Guard guard{cleaned};
    co_await Sleep(clock, 10ms);
    co_return 7;
}

Task<> Outer(Clock& clock, int& cleaned, int& result) {
    Guard guard{cleaned};
    result = co_await Deep(clock, cleaned);
}

TEST(Task, PassesAValueUpAfterTheWait) {
    SimulatedClock clock;
    int cleaned = 0;
    int result = 0;
    Task<> task = Outer(clock, cleaned, result);
    clock.RunFor(10ms);
    EXPECT_EQ(result, 0); // lazy: nothing ran yet
    task.Start();
    clock.RunFor(9ms);
    EXPECT_EQ(result, 0);
    clock.RunFor(1ms);
    EXPECT_EQ(result, 7);
    EXPECT_EQ(cleaned, 2);
    EXPECT_FALSE(task.Running());
}

TEST(Task, DestroyingCancelsEveryWaitInside) {
    SimulatedClock clock;
    int cleaned = 0;
    int result = 0;
    {
        Task<> task = Outer(clock, cleaned, result);
        task.Start();
        clock.RunFor(5ms);
    }
    EXPECT_EQ(cleaned, 2);
    clock.RunFor(1s); // a wait left behind would resume a destroyed frame
    EXPECT_EQ(result, 0);
}

Task<> Fails(Clock& clock) {
    co_await Sleep(clock, 1ms);
    throw std::runtime_error("broken");
}

Task<> Catches(Clock& clock, std::string& caught) {
    try {
        co_await Fails(clock);
    } catch (const std::runtime_error& error) {
        caught = error.what();
    }
}

TEST(Task, ExceptionsPassThrough) {
    SimulatedClock clock;
    std::string caught;
    Task<> task = Catches(clock, caught);
    task.Start();
    clock.RunFor(1ms);
    EXPECT_EQ(caught, "broken");
}

Task<> WaitFor(Signal& signal, std::string& order, char name) {
    co_await signal.Wait();
    order += name;
}

TEST(Signal, WakesAllWhoWaitInOrderAndNeverInline) {
    SimulatedClock clock;
    Signal signal(clock);
    std::string order;
    Task<> a = WaitFor(signal, order, 'a');
    Task<> b = WaitFor(signal, order, 'b');
    Task<> c = WaitFor(signal, order, 'c');
    a.Start();
    b.Start();
    c.Start();
    signal.Notify();
    EXPECT_EQ(order, "");
    b = Task<>(); // cancelled between the notification and its turn
    clock.RunFor(0ms);
    EXPECT_EQ(order, "ac");
    signal.Notify(); // nobody waits: nothing is remembered
    clock.RunFor(0ms);
    EXPECT_EQ(order, "ac");
}

} // namespace
} // namespace tarnex
