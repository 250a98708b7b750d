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

TEST_F(InstanceLockFile, ALinkIsNotFollowed) {
    std::filesystem::create_symlink(folder.Path("victim"), folder.Path("lock"));
    std::string told;
    lock.SetNotice([&](const std::string& line) { told += line; });
    EXPECT_TRUE(lock.Acquire());
    EXPECT_NE(told.find(folder.Path("lock") + ": it is a symbolic link"), std::string::npos);
    EXPECT_FALSE(folder.Has("victim"));
}

} // namespace
} // namespace tarnex
