#include "adapters/system/status_file.h"
#include "tests/temp_folder.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(StatusFile, IsWhereTheEnvironmentSaysAndReadableByAll) {
    unsetenv("TARNEXCOMM_STATUS");
    unsetenv("RUNTIME_DIRECTORY");
    EXPECT_EQ(StatusFilePath(), "/run/tarnexcomm/status.json");
    setenv("RUNTIME_DIRECTORY", "/run/a:/run/b", 1);
    EXPECT_EQ(StatusFilePath(), "/run/a/status.json");
    const TempFolder folder;
    setenv("TARNEXCOMM_STATUS", (folder / "x.json").c_str(), 1);
    EXPECT_EQ(StatusFile(StatusFilePath()).Replace("x"), "");
    EXPECT_EQ(std::filesystem::status(folder / "x.json").permissions(),
              std::filesystem::perms(0644));
}

} // namespace
} // namespace tarnex
