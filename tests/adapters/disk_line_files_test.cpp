#include "adapters/system/disk_line_files.h"
#include "tests/temp_folder.h"

#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace tarnex {
namespace {

struct DiskLineFilesTest : testing::Test {
    std::vector<std::string> Lines(const std::string& content) {
        WriteFile(folder / "file", content);
        const OpenedLineFile opened = files.Open(folder / "file");
        std::vector<std::string> lines;
        while (const auto line = opened.file->ReadLine())
            lines.push_back(*line);
        return lines;
    }

    TempFolder folder;
    DiskLineFiles files;
};

TEST_F(DiskLineFilesTest, ReadsLinesOfEveryLength) {
    using Texts = std::vector<std::string>;
    EXPECT_EQ(Lines(""), Texts());
    EXPECT_EQ(Lines("a\r\n\nb"), (Texts{"a\r", "", "b"}));
    EXPECT_EQ(Lines("\n"), (Texts{""}));
    const std::string limit(1024, 'x');
    EXPECT_EQ(Lines(limit + "\n" + limit + "y\n" + std::string(20000, 'x') + "\nz"),
              (Texts{limit, limit, limit, "z"}));
    Texts many;
    std::string content;
    for (int i = 0; i < 2000; ++i) { // over the borders of what is read at once
        many.push_back(std::string(std::size_t(i % 50), 'a'));
        content += many.back() + "\n";
    }
    EXPECT_EQ(Lines(content), many);
}

TEST_F(DiskLineFilesTest, SaysWhyAFileCannotBeRead) {
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
