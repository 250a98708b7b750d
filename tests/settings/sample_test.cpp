#include "tests/temp_folder.h"

#include <sstream>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(SampleSettings, EveryLineIsWhatItLooksLike) {
    std::istringstream lines(FileContent(TARNEX_PACKAGING "/Tarnex.ini.sample"));
    for (std::string line; std::getline(lines, line);) {
        for (const char c : line)
            ASSERT_TRUE(c >= ' ' && c <= '~') << line;
        if (line.empty() || line[0] == ';' || (line[0] == '[' && line.back() == ']'))
            continue;
        const std::size_t equals = line.find('=');
        ASSERT_NE(equals, std::string::npos) << line;
        // A remark behind a value would be part of it.
        EXPECT_EQ(line.find_first_of("; ", equals), std::string::npos) << line;
    }
}

} // namespace
} // namespace tarnex
