#include "adapters/linux/descriptor_watch.h"
#include "adapters/linux/line_input.h"
#include "adapters/linux/unique_fd.h"
#include "tests/adapters/run_until.h"

#include <cstdio>
#include <ctime>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tarnex {
namespace {

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

std::vector<std::string> LinesFrom(int descriptor) {
    AsioLoop loop;
    std::vector<std::string> lines;
    bool ended = false;
    const LineInput input(
        loop, descriptor,
        {[&](const std::string& line) { lines.push_back(line); }, [&] { ended = true; }});
    EXPECT_TRUE(RunUntil(loop, [&] { return ended; }));
    return lines;
}

TEST(LineInput, CutsPipesAndFilesIntoLinesAndLeavesTheirModeAlone) {
    using Lines = std::vector<std::string>;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    dprintf(ends[1], "one\n\ntwo\nthe rest");
    close(ends[1]);
    EXPECT_EQ(LinesFrom(ends[0]), (Lines{"one", "", "two", "the rest"}));
    EXPECT_FALSE(fcntl(ends[0], F_GETFL) & O_NONBLOCK);
    close(ends[0]);

    std::FILE* const file = std::tmpfile();
    const std::string long_line(10'000, 'x');
    dprintf(fileno(file), "read before\n%s\n", long_line.c_str());
    lseek(fileno(file), 12, SEEK_SET);
    EXPECT_EQ(LinesFrom(fileno(file)), Lines{long_line});
    std::fclose(file);
    EXPECT_EQ(LinesFrom(-1), Lines()); // nothing is open: the end at once
}

} // namespace
} // namespace tarnex
