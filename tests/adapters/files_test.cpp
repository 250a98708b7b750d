#include "adapters/system/disk_line_files.h"
#include "adapters/system/file_lock.h"
#include "adapters/system/file_settings_store.h"
#include "adapters/system/status_file.h"
#include "tests/in_child.h"
#include "tests/temp_folder.h"

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

struct SettingsFile : testing::Test {
    bool AppendX() {
        return store.Update([](const std::string& content) { return content + "x"; });
    }
    std::error_code Refusal() { return AppendX() ? std::error_code() : store.Problem(); }
    static struct stat Status(const std::string& file) {
        struct stat status {};
        EXPECT_EQ(stat(file.c_str(), &status), 0);
        return status;
    }
    TempFolder folder;
    const std::string path = folder / "Tarnex.ini";
    FileSettingsStore store{path};
};

TEST_F(SettingsFile, WhatIsNoReadableFileCountsAsUnknown) {
    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
    EXPECT_EQ(Refusal(), std::errc::is_a_directory);
    fs::remove(path);
    fs::create_symlink(path, path);
    EXPECT_EQ(Refusal(), std::errc::too_many_symbolic_link_levels);
    fs::remove(path);
    WriteFile(path, "a");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    EXPECT_TRUE(InChild(true, [&] {
        return !store.Stamp() && store.Read().Unreadable() &&
               Refusal() == std::errc::permission_denied;
    }));
    EXPECT_EQ(FileContent(path), "a");
}

TEST_F(SettingsFile, AReplacementKeepsOwnerAndMode) {
    const mode_t usual = umask(0077); // of an administrator, say
    EXPECT_TRUE(AppendX());
    umask(usual);
    EXPECT_EQ(Status(path).st_mode & 07777, 0640u);
    EXPECT_EQ(Status(path + ".lock").st_mode & 07777, 0644u); // the service's user takes part
    ASSERT_EQ(chmod(path.c_str(), 0604), 0);
    ASSERT_TRUE(geteuid() != 0 || chown(path.c_str(), 1234, 2345) == 0);
    const auto before = Status(path);
    EXPECT_TRUE(AppendX());
    const auto after = Status(path);
    EXPECT_EQ(std::tie(after.st_mode, after.st_uid, after.st_gid),
              std::tie(before.st_mode, before.st_uid, before.st_gid));
    EXPECT_TRUE(FileSettingsStore("/etc/passwd").Stamp()->settled);
}

TEST_F(SettingsFile, ALinkStaysAndItsTargetIsReplaced) {
    fs::create_directory(folder / "real");
    fs::create_symlink("real/file", path);
    EXPECT_TRUE(AppendX() && AppendX()); // the first makes the file
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(FileContent(folder / "real/file"), "xx");
}

TEST_F(SettingsFile, AFailingWriteLeavesTheFileAsItWas) {
    WriteFile(path, "a");
    EXPECT_TRUE(InChild(false, [&] { // a full disk
        const rlimit limit{1000, 1000};
        signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
               !store.Update([](const std::string&) { return std::string(2000, 'b'); });
    }));
    EXPECT_FALSE(fs::exists(path + ".new"));
    ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
    EXPECT_TRUE(InChild(true, [&] { return Refusal() == std::errc::permission_denied; }));
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    EXPECT_EQ(FileContent(path), "a");
}

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

TEST(DiskLineFiles, SaysWhyAFileCannotBeRead) {
    TempFolder folder;
    DiskLineFiles files;
    mkfifo((folder / "pipe").c_str(), 0600);
    WriteFile(folder / "secret", "x");
    chmod((folder / "secret").c_str(), 0);
    EXPECT_EQ(files.Open(folder.Path()).TroubleText(), "it is a folder");
    EXPECT_EQ(files.Open(folder / "pipe").TroubleText(), "it is no plain file");
    EXPECT_TRUE(InChild(
        true, [&] { return files.Open(folder / "secret").TroubleText() == "permission denied"; }));
}

} // namespace
} // namespace tarnex
