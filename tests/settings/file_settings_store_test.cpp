#include "adapters/system/file_settings_store.h"
#include "tests/in_child.h"
#include "tests/temp_folder.h"

#include <csignal>

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

struct FileSettingsStoreTest : testing::Test {
    bool AppendX() {
        return store.Update([](const std::string& content) { return content + "x"; });
    }
    std::error_code Refusal() { return AppendX() ? std::error_code() : store.Problem(); }
    static struct stat Status(const std::string& file) {
        struct stat status {};
        EXPECT_EQ(stat(file.c_str(), &status), 0);
        return status;
    }
    long Files() const { return std::distance(fs::directory_iterator(folder.Path()), {}); }

    TempFolder folder;
    const std::string path = folder / "Tarnex.ini";
    int pauses = 0;
    std::function<void()> on_pause = [] {};
    FileSettingsStore store{path, [this](Duration) {
                                ++pauses;
                                on_pause();
                            }};
};

TEST_F(FileSettingsStoreTest, WhatCannotBeReadCountsAsUnknownAndNotAsEmpty) {
    EXPECT_EQ(store.Read().problem, std::errc::no_such_file_or_directory);
    fs::create_directory(path);
    EXPECT_FALSE(store.Stamp());
    EXPECT_EQ(store.Read().problem, std::errc::is_a_directory);
    EXPECT_EQ(Refusal(), std::errc::is_a_directory);
    fs::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
    EXPECT_EQ(Refusal(), std::errc::is_a_directory);
    fs::remove(path);
    fs::create_symlink(path, path);
    EXPECT_EQ(Refusal(), std::errc::too_many_symbolic_link_levels);
    fs::remove(path);

    const std::string most(1 << 20, 'a');
    WriteFile(path, most);
    EXPECT_EQ(store.Read().content, most);
    WriteFile(path, most + "b");
    EXPECT_TRUE(store.Read().content.empty());
    EXPECT_EQ(Refusal(), std::errc::file_too_large);
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    EXPECT_TRUE(InChild(true, [&] {
        return !store.Stamp() && store.Read().Unreadable() &&
               Refusal() == std::errc::permission_denied;
    }));
    EXPECT_EQ(FileContent(path), most + "b");
}

TEST_F(FileSettingsStoreTest, AReplacementIsAnotherFileWithItsOwnerAndMode) {
    const mode_t usual = umask(0077); // of an administrator, say
    EXPECT_TRUE(AppendX());
    umask(usual);
    EXPECT_EQ(Status(path).st_mode & 07777, 0640u);
    EXPECT_EQ(Status(path + ".lock").st_mode & 07777, 0644u); // the service's user takes part
    ASSERT_EQ(chmod(path.c_str(), 0604), 0);
    ASSERT_TRUE(geteuid() != 0 || chown(path.c_str(), 1234, 2345) == 0);
    const auto before = Status(path);
    const FileStamp first = store.Stamp().value();
    EXPECT_TRUE(AppendX());
    const auto after = Status(path);
    EXPECT_EQ(std::tie(after.st_mode, after.st_uid, after.st_gid),
              std::tie(before.st_mode, before.st_uid, before.st_gid));
    EXPECT_NE(store.Stamp()->file, first.file);
    EXPECT_EQ(store.Stamp()->size, 2u);
    EXPECT_EQ(Files(), 2); // and the lock
    EXPECT_FALSE(first.settled);
    EXPECT_TRUE(FileSettingsStore("/etc/passwd").Stamp()->settled);
}

TEST_F(FileSettingsStoreTest, ALinkStaysAndItsTargetIsReplaced) {
    fs::create_directory(folder / "real");
    fs::create_symlink("real/file", path);
    EXPECT_TRUE(AppendX() && AppendX()); // the first makes the file
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(FileContent(folder / "real/file"), "xx");
}

TEST_F(FileSettingsStoreTest, AChangeInPlaceMeanwhileIsEditedAgain) {
    WriteFile(path, "a");
    int edits = 0;
    const auto while_it_changes = [&](int changes) {
        return store.Update([&, changes](const std::string& content) {
            if (++edits <= changes)
                WriteFile(path, std::string(1, char('a' + edits))); // same size, perhaps same time
            return content + "x";
        });
    };
    EXPECT_TRUE(while_it_changes(1));
    EXPECT_EQ(FileContent(path), "bx");
    EXPECT_FALSE(while_it_changes(100));
    EXPECT_EQ(FileContent(path), "f"); // the other program's, after three attempts
    EXPECT_EQ(Files(), 2);
}

TEST_F(FileSettingsStoreTest, AHalfWrittenFileIsGivenTimeToBecomeWhole) {
    // Again where this machine was so slow that the file looked finished.
    const auto until_paused = [&](const std::function<void()>& act) {
        pauses = 0;
        for (int i = 0; i < 100 && pauses == 0; ++i)
            act();
    };
    on_pause = [&] { WriteFile(path, "whole"); };
    until_paused([&] {
        WriteFile(path, "");
        const std::string content = store.Read().content;
        EXPECT_EQ(content, pauses ? "whole" : "");
    });
    EXPECT_EQ(pauses, 1);
    on_pause = [&] {
        if (pauses == 1)
            WriteFile(path, "second half", std::ios::app);
    };
    until_paused([&] {
        WriteFile(path, "first half, ");
        EXPECT_TRUE(AppendX());
    });
    EXPECT_EQ(FileContent(path), "first half, second halfx");
    pauses = 0;
    EXPECT_TRUE(AppendX()); // what it wrote itself is whole
    EXPECT_EQ(pauses, 0);
}

TEST_F(FileSettingsStoreTest, AFailingWriteLeavesTheFileAsItWas) {
    WriteFile(path, "a");
    EXPECT_TRUE(InChild(false, [&] { // a full disk
        const rlimit limit{1000, 1000};
        signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
               !store.Update([](const std::string&) { return std::string(2000, 'b'); });
    }));
    EXPECT_EQ(Files(), 2);
    EXPECT_TRUE(store.Update([](const std::string&) { return std::nullopt; }));
    ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
    EXPECT_TRUE(InChild(true, [&] { return Refusal() == std::errc::permission_denied; }));
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    EXPECT_EQ(FileContent(path), "a");
}

TEST_F(FileSettingsStoreTest, ALockThatAnotherProgramKeepsStopsTheWrite) {
    const int lock = open((path + ".lock").c_str(), O_RDONLY | O_CREAT, 0644);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    EXPECT_EQ(Refusal(), std::errc::operation_would_block);
    on_pause = [&] { close(lock); };
    EXPECT_EQ(Refusal(), std::error_code());
    EXPECT_FALSE(store.Problem());
}

TEST_F(FileSettingsStoreTest, TwoProgramsLoseNoUpdate) {
    const pid_t other = fork();
    FileSettingsStore own(path);
    for (int done = 0; done < 100;)
        done += own.Update([](const std::string& content) { return content + "x"; });
    if (other == 0)
        _exit(0);
    waitpid(other, nullptr, 0);
    EXPECT_EQ(FileContent(path), std::string(200, 'x'));
}

} // namespace
} // namespace tarnex
