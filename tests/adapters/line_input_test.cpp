#include "adapters/asio/line_input.h"
#include "adapters/linux/unique_fd.h"
#include "tests/adapters/run_until.h"

#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct LineInputTest : testing::Test {
    void ReadAll(int descriptor) {
        const LineInput input(
            loop, descriptor,
            {[this](const std::string& line) { lines.push_back(line); }, [this] { ended = true; }});
        EXPECT_TRUE(RunUntil(loop, [this] { return ended; }));
    }

    AsioLoop loop;
    std::vector<std::string> lines;
    bool ended = false;
};

TEST_F(LineInputTest, CutsAPipeIntoLinesAndLeavesItsModeAlone) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const UniqueFd reading(ends[0]);
    {
        const UniqueFd writing(ends[1]);
        constexpr std::string_view bytes = "one\n\ntwo\nthe rest";
        ASSERT_EQ(write(writing.Get(), bytes.data(), bytes.size()), ssize_t(bytes.size()));
    }
    ReadAll(reading.Get());
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "", "two", "the rest"}));
    EXPECT_FALSE(fcntl(reading.Get(), F_GETFL) & O_NONBLOCK);
}

TEST_F(LineInputTest, ReadsAFileFromWhereItStands) {
    std::FILE* const file = std::tmpfile();
    ASSERT_TRUE(file);
    const std::string long_line(10'000, 'x');
    std::fputs(("read before\n" + long_line + "\n").c_str(), file);
    std::fflush(file);
    lseek(fileno(file), 12, SEEK_SET);
    ReadAll(fileno(file));
    EXPECT_EQ(lines, std::vector<std::string>{long_line});
    std::fclose(file);
}

TEST_F(LineInputTest, AClosedDescriptorEndsAtOnce) {
    ReadAll(-1);
    EXPECT_TRUE(lines.empty());
}

} // namespace
} // namespace tarnex
