#include "adapters/asio/asio_loop.h"
#include "adapters/linux/unique_fd.h"
#include "tests/adapters/run_until.h"

#include <csignal>
#include <ctime>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(AsioLoop, CallsRunInTheOrderOfTheirDueTimes) {
    AsioLoop loop;
    std::string order;
    loop.CallAfter(30ms, [&] { order += 'd'; });
    const CallId cancelled = loop.CallAfter(10ms, [&] { order += 'x'; });
    loop.CallAfter(10ms, [&] {
        order += 'b';
        loop.CallAfter(-5ms, [&] { order += 'c'; });
        loop.Cancel(cancelled);
    });
    loop.CallAfter(0ms, [&] { order += 'a'; });
    loop.Cancel(cancelled);
    EXPECT_EQ(order, "");
    ASSERT_TRUE(RunUntil(loop, [&] { return order.size() == 4; }));
    EXPECT_EQ(order, "abcd");
}

TEST(AsioLoop, TimeStandsStillInAHandlerAndIsNeverBeforeTheDueTime) {
    AsioLoop loop;
    const Duration due = loop.Now() + 20ms;
    loop.CallAfter(20ms, [&] {
        const Duration seen = loop.Now();
        EXPECT_GE(seen, due);
        timespec pause{.tv_sec = 0, .tv_nsec = 5'000'000};
        nanosleep(&pause, nullptr);
        EXPECT_EQ(loop.Now(), seen);
        loop.CallAfter(0ms, [&loop, seen] {
            EXPECT_GE(loop.Now(), seen + 5ms);
            loop.Stop();
        });
    });
    loop.Run();
}

TEST(AsioLoop, StopLeavesWhatIsOwed) {
    AsioLoop loop;
    int runs = 0;
    loop.CallAfter(0ms, [&] { loop.Stop(); });
    loop.CallAfter(0ms, [&] { ++runs; });
    loop.Run();
    EXPECT_EQ(runs, 0);
    EXPECT_TRUE(RunUntil(loop, [&] { return runs == 1; }));
}

TEST(AsioLoop, TheCalendarIsLocalTime) {
    setenv("TZ", "XST-9:30", 1); // east of Greenwich by 9:30 hours
    tzset();
    const auto seconds = [](const CalendarTime& t) {
        return (t.hour * 60 + t.minute) * 60 + t.second;
    };
    AsioLoop loop;
    const long before = (std::time(nullptr) + 34'200) % 86'400;
    const CalendarTime now = loop.Calendar();
    const long passed = (seconds(now) - before + 86'400) % 86'400;
    EXPECT_LT(passed, 3600);
    EXPECT_EQ(now.weekday, ((std::time(nullptr) + 34'200) / 86'400 + 4) % 7);
    unsetenv("TZ");
    tzset();
}

TEST(AsioLoop, EverySignalHandlerRunsInTheLoop) {
    AsioLoop loop;
    int paused = 0;
    int resumed = 0;
    loop.OnSignal(SIGUSR1, [&] { ++paused; });
    loop.OnSignal(SIGUSR2, [&] { ++resumed; });
    raise(SIGUSR1);
    EXPECT_EQ(paused, 0);
    ASSERT_TRUE(RunUntil(loop, [&] { return paused == 1; }));
    raise(SIGUSR1);
    raise(SIGUSR2);
    EXPECT_TRUE(RunUntil(loop, [&] { return paused == 2 && resumed == 1; }));
}

TEST(AsioLoop, AnEarlierCallCutsASleepShort) {
    AsioLoop loop;
    loop.CallAfter(24h, [] { FAIL(); });
    const CallId cancelled = loop.CallAfter(0ms, [] { FAIL(); });
    loop.Cancel(cancelled);
    loop.OnSignal(SIGUSR1, [&] { loop.CallAfter(5ms, [&] { loop.Stop(); }); });
    raise(SIGUSR1);
    loop.Run();
}

struct Pipe {
    Pipe() {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        reading = UniqueFd(ends[0]);
        writing = UniqueFd(ends[1]);
    }
    void Write(char c) const { EXPECT_EQ(write(writing.Get(), &c, 1), 1); }
    char Read() const {
        char c = 0;
        EXPECT_EQ(read(reading.Get(), &c, 1), 1);
        return c;
    }
    UniqueFd reading;
    UniqueFd writing;
};

TEST(AsioLoop, TellsOfADescriptorAsLongAsSomethingIsUnread) {
    AsioLoop loop;
    const Pipe pipe;
    std::string seen;
    const auto watch = loop.WatchReadable(pipe.reading.Get(), [&] { seen += pipe.Read(); });
    pipe.Write('a');
    pipe.Write('b');
    EXPECT_TRUE(RunUntil(loop, [&] { return seen == "ab"; }));
    pipe.Write('c');
    EXPECT_TRUE(RunUntil(loop, [&] { return seen == "abc"; }));
}

TEST(AsioLoop, AWatchMayEndItselfAndLeavesTheDescriptorOpen) {
    AsioLoop loop;
    const Pipe pipe;
    int calls = 0;
    std::unique_ptr<DescriptorSource::Watch> watch;
    watch = loop.WatchReadable(pipe.reading.Get(), [&] {
        ++calls;
        watch.reset();
    });
    pipe.Write('a');
    ASSERT_TRUE(RunUntil(loop, [&] { return calls == 1; }));
    int turns = 0;
    EXPECT_TRUE(RunUntil(loop, [&] { return ++turns == 5; }));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(pipe.Read(), 'a');
}

} // namespace
} // namespace tarnex
