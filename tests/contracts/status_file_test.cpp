#include "adapters/system/disk_line_files.h"
#include "adapters/system/status_file.h"
#include "tests/temp_folder.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

TEST(StatusFile, IsReplacedWhole) {
    const TempFolder folder;
    const std::string path = folder / "status.json";
    StatusFile file(path);
    EXPECT_TRUE(file.Possible());
    EXPECT_EQ(file.Replace("a longer first text"), "");
    auto reader = DiskLineFiles().Open(path); // keeps what it opened
    WriteFile(folder / "status.json.new", "left over from a crash");
    EXPECT_EQ(file.Replace("second"), "");
    EXPECT_EQ(FileContent(path), "second");
    EXPECT_EQ((*reader)->ReadLine(), "a longer first text");
}

TEST(StatusFile, SaysWhatStandsInTheWay) {
    const TempFolder folder;
    fs::create_directory(ToPath(folder / "status.json")); // cannot be renamed over
    StatusFile file(folder / "status.json");
    EXPECT_NE(file.Replace("x").find("status.json cannot be written ("), std::string::npos);
    EXPECT_FALSE(fs::exists(ToPath(folder / "status.json.new")));
    EXPECT_FALSE(StatusFile(folder / "none/status.json").Possible());
}

} // namespace
} // namespace tarnex
