#include "adapters/system/status_file.h"
#include "tests/temp_folder.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

TEST(StatusFile, IsReplacedWholeAndReadableByAll) {
    const TempFolder folder;
    const std::string path = folder / "status.json";
    StatusFile file(path);
    EXPECT_TRUE(file.Possible());
    EXPECT_EQ(file.Replace("a longer first text"), "");
    std::ifstream reader(path); // keeps what it opened
    WriteFile(folder / "status.json.new", "left over from a crash");
    EXPECT_EQ(file.Replace("second"), "");
    EXPECT_EQ(FileContent(path), "second");
    EXPECT_EQ((std::string{std::istreambuf_iterator<char>(reader), {}}), "a longer first text");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0644));
    file.Remove();
    EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST(StatusFile, SaysWhatStandsInTheWay) {
    const TempFolder folder;
    fs::create_directory(folder / "status.json"); // cannot be renamed over
    StatusFile file(folder / "status.json");
    EXPECT_NE(file.Replace("x").find("status.json cannot be written (Is a directory)"),
              std::string::npos);
    EXPECT_FALSE(fs::exists(folder / "status.json.new"));
    EXPECT_FALSE(StatusFile(folder / "none/status.json").Possible());
}

TEST(StatusFile, IsWhereTheEnvironmentSays) {
    unsetenv("TARNEXCOMM_STATUS");
    unsetenv("RUNTIME_DIRECTORY");
    EXPECT_EQ(StatusFilePath(), "/run/tarnexcomm/status.json");
    setenv("RUNTIME_DIRECTORY", "/run/a:/run/b", 1);
    EXPECT_EQ(StatusFilePath(), "/run/a/status.json");
    setenv("TARNEXCOMM_STATUS", "/tmp/x.json", 1);
    EXPECT_EQ(StatusFilePath(), "/tmp/x.json");
}

} // namespace
} // namespace tarnex
