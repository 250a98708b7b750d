#include "tests/contracts/contract.h"

namespace tarnex {
namespace {

using ClockContract = Contract<Rig>;

TEST_P(ClockContract, CallsRunInTheOrderOfTheirDueTimes) {
    Clock& clock = rig->LoopClock();
    std::string order;
    const CallId cancelled = clock.CallAfter(10ms, [&] { order += 'x'; });
    clock.CallAfter(10ms, [&] {
        order += 'b';
        clock.CallAfter(1ms, [&] { order += 'd'; });
        clock.CallAfter(-5ms, [&] { order += 'c'; });
        clock.Cancel(cancelled);
    });
    clock.CallAfter(0ms, [&] { order += 'a'; });
    clock.Cancel(cancelled);
    EXPECT_EQ(order, "");
    ASSERT_TRUE(Until([&] { return order.size() == 4; }));
    EXPECT_EQ(order, "abcd");
}

TEST_P(ClockContract, NothingRunsBeforeItsTimeAndTheLoopIsLookedAtBeforeItSleeps) {
    Clock& clock = rig->LoopClock();
    const Duration due = clock.Now() + 20ms;
    int looks = 0;
    bool done = false;
    clock.BeforeSleep([&] { ++looks; });
    clock.CallAfter(5ms, [] {});
    clock.CallAfter(20ms, [&] {
        EXPECT_GE(clock.Now(), due);
        done = true;
    });
    ASSERT_TRUE(Until([&] { return done && looks > 0; }));
    clock.BeforeSleep({});
    looks = 0;
    RunForAWhile();
    EXPECT_EQ(looks, 0);
}

INSTANTIATE_TEST_SUITE_P(Asio, ClockContract, testing::Values(&Make<Rig, OnRealLoop<Rig>>));
INSTANTIATE_TEST_SUITE_P(Simulated, ClockContract,
                         testing::Values(&Make<Rig, OnSimulatedClock<Rig>>));

} // namespace
} // namespace tarnex
