#include "adapters/asio/asio_loop.h"
#include "tests/adapters/run_until.h"

#include <thread>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(AsioLoop, TimeStandsStillInAHandlerAndAStopLeavesWhatIsOwed) {
    AsioLoop loop;
    int runs = 0;
    loop.CallAfter(0ms, [&] {
        const Duration seen = loop.Now();
        std::this_thread::sleep_for(5ms);
        EXPECT_EQ(loop.Now(), seen);
        loop.CallAfter(0ms, [&loop, seen] {
            EXPECT_GE(loop.Now(), seen + 5ms);
            loop.Stop();
        });
        loop.CallAfter(0ms, [&] { ++runs; });
    });
    loop.Run();
    EXPECT_EQ(runs, 0);
    EXPECT_TRUE(RunUntil(loop, [&] { return runs == 1; }));
}

TEST(AsioLoop, CallsOfAnotherThreadEndASleepAndRunInOrderInTheLoop) {
    AsioLoop loop;
    loop.CallAfter(24h, [] { FAIL(); });
    int told = 0;
    const std::thread::id own = std::this_thread::get_id();
    std::thread other([&] {
        for (int i = 0; i < 1000; ++i)
            loop.Post([&, i] {
                EXPECT_EQ(std::this_thread::get_id(), own);
                EXPECT_EQ(told++, i);
            });
        loop.Post([&] { loop.CallAfter(5ms, [&] { loop.Stop(); }); }); // cuts the sleep short
    });
    loop.Run();
    other.join();
    EXPECT_EQ(told, 1000);
}

} // namespace
} // namespace tarnex
