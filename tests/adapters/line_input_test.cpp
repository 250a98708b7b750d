#include "adapters/linux/line_input.h"
#include "tests/adapters/run_until.h"

#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tarnex {
namespace {

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
