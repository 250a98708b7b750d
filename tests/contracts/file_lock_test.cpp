#include "adapters/system/file_lock.h"
#include "adapters/system/process.h"
#include "tests/temp_folder.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(InstanceLock, HasOneHolderUntilThatIsGone) {
    const TempFolder folder;
    FileInstanceLock lock(folder.Path("lock"));
    auto first = std::make_unique<FileInstanceLock>(folder.Path("lock"));
    folder.Write("lock", "4711\n"); // of one who died
    ASSERT_TRUE(first->Acquire());
    EXPECT_EQ(folder.Read("lock"), std::to_string(ThisProcess()) + "\n");
    EXPECT_FALSE(lock.Acquire());
    first.reset();
    EXPECT_TRUE(lock.Acquire());
}

TEST(InstanceLock, AnUnusableFileKeepsNobodyFromRunningButIsTold) {
    const TempFolder folder;
    std::filesystem::create_directory(ToPath(folder.Path("folder")));
    for (const auto& [name, problem] : {std::pair{"no/such/folder", "no such file or folder"},
                                        std::pair{"folder", "it is a folder"}}) {
        std::string told;
        FileInstanceLock unusable(folder.Path(name));
        unusable.SetNotice([&](const std::string& line) { told += line; });
        EXPECT_TRUE(unusable.Acquire());
        EXPECT_NE(told.find(folder.Path(name) + ": " + problem), std::string::npos) << told;
    }
}

TEST(Process, IsKnownByNumberAndProgram) {
    const std::string name = ToPath(ThisProgram()).stem().string();
    EXPECT_TRUE(ProcessRuns(ThisProcess(), name));
    EXPECT_FALSE(ProcessRuns(ThisProcess(), "another"));
    EXPECT_FALSE(ProcessRuns(0, name));
}

} // namespace
} // namespace tarnex
