#include "adapters/system/file_settings_store.h"
#include "tests/in_child.h"
#include "tests/temp_folder.h"

#include <csignal>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

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

} // namespace
} // namespace tarnex
