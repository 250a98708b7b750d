#include "adapters/system/disk_line_files.h"
#include "tests/in_child.h"
#include "tests/temp_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tarnex {
namespace {

TEST(DiskLineFiles, SaysWhyAFileCannotBeRead) {
    TempFolder folder;
    DiskLineFiles files;
    mkfifo((folder / "pipe").c_str(), 0600);
    WriteFile(folder / "secret", "x");
    chmod((folder / "secret").c_str(), 0);
    EXPECT_EQ(files.Open(folder / "none").problem.english, "no such file or folder");
    EXPECT_EQ(files.Open(folder.Path()).problem.chinese, u"这是一个文件夹");
    EXPECT_EQ(files.Open(folder / "pipe").problem.english, "it is no plain file");
    EXPECT_TRUE(InChild(
        true, [&] { return files.Open(folder / "secret").problem.chinese == u"没有权限"; }));
}

} // namespace
} // namespace tarnex
