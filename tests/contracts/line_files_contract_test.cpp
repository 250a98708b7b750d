#include "adapters/system/disk_line_files.h"
#include "simulator/simulated_stores.h"
#include "tests/temp_folder.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct OnDisk : DiskLineFiles {
    void Put(const std::string& path, const std::string& content) { WriteFile(path, content); }
};
struct InMemory : SimulatedLineFiles {
    void Put(const std::string& path, const std::string& content) { Files[path] = content; }
};

template <class Files>
struct LineFilesContract : testing::Test {
    std::vector<std::string> Lines(const std::string& content) {
        files.Put(path, content);
        auto opened = files.Open(path);
        std::vector<std::string> lines;
        while (const auto line = (*opened)->ReadLine())
            lines.push_back(*line);
        return lines;
    }
    TempFolder folder;
    const std::string path = folder / "file";
    Files files;
};
using Adapters = testing::Types<OnDisk, InMemory>;
TYPED_TEST_SUITE(LineFilesContract, Adapters);

TYPED_TEST(LineFilesContract, ReadsLinesOfEveryLength) {
    using Texts = std::vector<std::string>;
    EXPECT_EQ(this->files.Open(this->path).TroubleText(), "no such file or folder");
    EXPECT_EQ(this->Lines(""), Texts());
    EXPECT_EQ(this->Lines("a\r\n\nb"), (Texts{"a\r", "", "b"}));
    EXPECT_EQ(this->Lines("\n"), (Texts{""}));
    const std::string limit(1024, 'x');
    EXPECT_EQ(this->Lines(limit + "\n" + limit + "y\n" + std::string(20000, 'x') + "\nz"),
              (Texts{limit, limit, limit, "z"}));
    Texts many;
    std::string content;
    for (int i = 0; i < 2000; ++i) { // over the borders of what is read at once
        many.push_back(std::string(std::size_t(i % 50), 'a'));
        content += many.back() + "\n";
    }
    EXPECT_EQ(this->Lines(content), many);
}

} // namespace
} // namespace tarnex
