#include "adapters/system/file_lock.h"
#include "tests/temp_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnex {
namespace {

struct InstanceLockFile : testing::Test {
    TempFolder folder;
    FileInstanceLock lock{folder.Path("lock")};
    const std::string own_record = std::to_string(getpid()) + "\n";
};

TEST_F(InstanceLockFile, HasOneHolderUntilThatIsGone) {
    auto first = std::make_unique<FileInstanceLock>(folder.Path("lock"));
    folder.Write("lock", "4711\n"); // of one who died
    ASSERT_TRUE(first->Acquire());
    EXPECT_EQ(folder.Read("lock"), own_record);
    EXPECT_FALSE(lock.Acquire());
    first.reset();
    EXPECT_TRUE(lock.Acquire());
}

TEST_F(InstanceLockFile, AFileThatStrangersMayLockIsReplaced) {
    folder.Write("lock", "");
    ASSERT_EQ(chmod(folder.Path("lock").c_str(), 0644), 0);
    const int stranger = open(folder.Path("lock").c_str(), O_RDONLY);
    ASSERT_EQ(flock(stranger, LOCK_EX), 0);
    EXPECT_TRUE(lock.Acquire());
    struct stat file {};
    ASSERT_EQ(stat(folder.Path("lock").c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 07777, 0640u);
    EXPECT_FALSE(FileInstanceLock(folder.Path("lock")).Acquire());
    close(stranger);

    ASSERT_EQ(chmod(folder.Path("lock").c_str(), 0644), 0); // by an administrator
    EXPECT_FALSE(FileInstanceLock(folder.Path("lock")).Acquire());
    EXPECT_EQ(folder.Read("lock"), own_record);
}

TEST_F(InstanceLockFile, AFileOfAnotherUserLocksAllTheSame) {
    if (geteuid() != 0)
        GTEST_SKIP() << "needs the superuser to become somebody else";
    folder.Write("lock", "1\n");
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(folder.Path("lock").c_str(), 0640), 0);
    ASSERT_EQ(seteuid(65534), 0);
    EXPECT_TRUE(lock.Acquire());
    EXPECT_FALSE(FileInstanceLock(folder.Path("lock")).Acquire());
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_FALSE(FileInstanceLock(folder.Path("lock")).Acquire());
    EXPECT_EQ(folder.Read("lock"), "1\n");
}

TEST_F(InstanceLockFile, AnUnusableFileKeepsNobodyFromRunningButIsTold) {
    std::filesystem::create_symlink(folder.Path("victim"), folder.Path("link"));
    std::filesystem::create_directory(folder.Path("folder"));
    for (const auto& [name, problem] :
         {std::pair{"no/such/folder", "no such file or folder"},
          std::pair{"link", "it is a symbolic link"}, std::pair{"folder", "it is a folder"}}) {
        std::string told;
        FileInstanceLock unusable(folder.Path(name));
        unusable.SetNotice([&](const std::string& line) { told += line; });
        EXPECT_TRUE(unusable.Acquire());
        EXPECT_NE(told.find(folder.Path(name) + ": " + problem), std::string::npos) << told;
    }
    EXPECT_FALSE(folder.Has("victim"));
}

} // namespace
} // namespace tarnex
