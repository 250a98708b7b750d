#include "adapters/system/file_lock.h"
#include "tests/temp_folder.h"

#include <csignal>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace tarnex {
namespace {

// A copy of this program that runs work in a process of its own and then waits for its end.
class Copy {
  public:
    template <class Work>
    explicit Copy(Work work) {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        process_ = fork();
        if (process_ == 0) {
            const char result = work() ? 'y' : 'n';
            EXPECT_EQ(write(ends[1], &result, 1), 1);
            while (true)
                pause();
        }
        char result = 0;
        EXPECT_EQ(read(ends[0], &result, 1), 1);
        succeeded_ = result == 'y';
        close(ends[0]);
        close(ends[1]);
    }
    ~Copy() { End(SIGKILL); }

    bool Succeeded() const { return succeeded_; }
    pid_t Process() const { return process_; }
    // Ends it; gives the signal that it died of, which is another when it was killed before.
    int End(int signal) {
        int status = 0;
        if (process_ > 0) {
            kill(process_, signal);
            waitpid(std::exchange(process_, 0), &status, 0);
        }
        return WTERMSIG(status);
    }

  private:
    pid_t process_ = 0;
    bool succeeded_ = false;
};

struct InstanceLockFile : testing::Test {
    TempFolder folder;
    FileInstanceLock lock{folder.Path("lock")};
    const std::string own_record = std::to_string(getpid()) + "\n";
};

TEST_F(InstanceLockFile, OneProcessHoldsItUntilItDies) {
    Copy first([this] { return lock.Acquire(); });
    ASSERT_TRUE(first.Succeeded());
    EXPECT_FALSE(lock.Acquire());
    EXPECT_EQ(folder.Read("lock"), std::to_string(first.Process()) + "\n");
    lock.KillLeftOver(); // not by one who does not hold the lock
    EXPECT_EQ(first.End(SIGTERM), SIGTERM);
    EXPECT_TRUE(lock.Acquire());
    EXPECT_EQ(folder.Read("lock"), own_record);
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
    const auto acquire_as_nobody = [this] { return seteuid(65534) == 0 && lock.Acquire(); };
    Copy first(acquire_as_nobody);
    EXPECT_TRUE(first.Succeeded());
    EXPECT_FALSE(Copy(acquire_as_nobody).Succeeded());
    EXPECT_FALSE(lock.Acquire());
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

TEST_F(InstanceLockFile, OnlyARecordedCopyOfThisProgramIsKilled) {
    ASSERT_TRUE(lock.Acquire());
    lock.KillLeftOver(); // itself

    Copy left_over([] { return true; });
    Copy bystander([] { return true; });
    pid_t sleeper = 0;
    char name[] = "sleep";
    char time[] = "300";
    char* arguments[] = {name, time, nullptr};
    ASSERT_EQ(posix_spawnp(&sleeper, name, nullptr, nullptr, arguments, environ), 0);
    for (const std::string& record :
         {std::string("nobody\n"), std::string("-1\n"), std::string("0\n"),
          std::to_string(sleeper) + "\n", std::to_string(left_over.Process()) + "\n"}) {
        folder.Write("lock", record);
        lock.KillLeftOver();
    }
    EXPECT_EQ(left_over.End(SIGTERM), SIGKILL);
    EXPECT_EQ(bystander.End(SIGTERM), SIGTERM);
    kill(sleeper, SIGTERM);
    int status = 0;
    waitpid(sleeper, &status, 0);
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
    lock.KillLeftOver(); // dead by now
}

} // namespace
} // namespace tarnex
