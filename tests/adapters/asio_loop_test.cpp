#include "adapters/asio/asio_loop.h"
#include "adapters/linux/descriptor_watch.h"
#include "adapters/linux/unique_fd.h"
#include "tests/adapters/run_until.h"

#include <ctime>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

namespace tarnex {
namespace {

TEST(AsioLoop, TimeStandsStillInAHandlerAndAStopLeavesWhatIsOwed) {
    AsioLoop loop;
    int runs = 0;
    loop.CallAfter(0ms, [&] {
        const Duration seen = loop.Now();
        timespec pause{.tv_sec = 0, .tv_nsec = 5'000'000};
        nanosleep(&pause, nullptr);
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

TEST(AsioLoop, TheCalendarIsLocalTime) {
    setenv("TZ", "XST-9:30", 1); // east of Greenwich by 9:30 hours
    tzset();
    const long before = std::time(nullptr) + 34'200;
    const CalendarTime now = AsioLoop().Calendar();
    const long passed = (now.hour * 60 + now.minute) * 60 + now.second - before % 86'400;
    EXPECT_LT((passed + 86'400) % 86'400, 3600);
    EXPECT_EQ(now.weekday, ((std::time(nullptr) + 34'200) / 86'400 + 4) % 7);
    unsetenv("TZ");
    tzset();
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

TEST(AsioLoop, TellsOfADescriptorAsLongAsSomethingIsUnread) {
    AsioLoop loop;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const UniqueFd reading(ends[0]), writing(ends[1]);
    std::string seen;
    std::optional<DescriptorWatch> watch;
    watch.emplace(loop, reading.Get(), [&] {
        char c = 0;
        EXPECT_EQ(read(reading.Get(), &c, 1), 1);
        seen += c;
        if (c == '.')
            watch.reset();
    });
    dprintf(writing.Get(), "ab");
    ASSERT_TRUE(RunUntil(loop, [&] { return seen == "ab"; }));
    dprintf(writing.Get(), ".x");
    ASSERT_TRUE(RunUntil(loop, [&] { return !watch; }));
    RunUntil(
        loop, [] { return false; }, 10ms);
    EXPECT_EQ(seen, "ab.");
    char c = 0;
    EXPECT_EQ(read(reading.Get(), &c, 1), 1); // the descriptor is open
}

} // namespace
} // namespace tarnex
