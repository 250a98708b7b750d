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

std::optional<std::string> AppendX(const std::string& content) {
    return content + "x";
}

struct FileSettingsStoreTest : testing::Test {
    TempFolder folder;
    const std::string path = folder / "Tarnex.ini";
    int pauses = 0;
    std::function<void()> on_pause = [] {};
    FileSettingsStore store{path, [this](Duration) {
                                ++pauses;
                                on_pause();
                            }};

    std::size_t Files() const {
        const std::filesystem::directory_iterator files(folder.Path());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
};

TEST_F(FileSettingsStoreTest, NothingIsReadFromWhatIsNoFile) {
    EXPECT_FALSE(store.Stamp());
    EXPECT_EQ(store.Read().problem, std::errc::no_such_file_or_directory);

    std::filesystem::create_directory(path);
    EXPECT_FALSE(store.Stamp());
    EXPECT_EQ(store.Read().problem, std::errc::is_a_directory);
    EXPECT_FALSE(store.Update(AppendX));
    EXPECT_EQ(store.Problem(), std::errc::is_a_directory);
    std::filesystem::remove(path);

    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
    EXPECT_TRUE(store.Read().Unreadable());
    EXPECT_FALSE(store.Update(AppendX));
    std::filesystem::remove(path);

    WriteFile(path, "secret");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    EXPECT_TRUE(InChild(true, [&] { return !store.Stamp() && store.Read().Unreadable(); }));
    // What cannot be read must not count as empty.
    EXPECT_TRUE(InChild(true, [&] { return !store.Update(AppendX); }));
    EXPECT_EQ(FileContent(path), "secret");
}

TEST_F(FileSettingsStoreTest, AReplacementKeepsOwnerAndMode) {
    const mode_t narrow = umask(0077); // of an administrator, say
    EXPECT_TRUE(store.Update(AppendX));
    umask(narrow);
    struct stat made;
    ASSERT_EQ(stat(path.c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 07777, 0640u);
    ASSERT_EQ(stat((path + ".lock").c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 07777, 0644u); // the service's user takes part
    ASSERT_EQ(chmod(path.c_str(), 0604), 0);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(path.c_str(), 1234, 2345), 0);
    }
    struct stat before, after;
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    EXPECT_TRUE(store.Update(AppendX));
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(FileContent(path), "xx");
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_NE(after.st_ino, before.st_ino);
    EXPECT_EQ(Files(), 2u); // and the lock
}

TEST_F(FileSettingsStoreTest, StampsTellChangesApart) {
    WriteFile(path, "a");
    const auto first = store.Stamp();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->size, 1u);
    EXPECT_FALSE(first->settled);
    ASSERT_TRUE(store.Update([](const std::string&) { return "b"; }));
    EXPECT_NE(store.Stamp()->file, first->file);
    EXPECT_TRUE(FileSettingsStore("/etc/passwd").Stamp()->settled);
}

TEST_F(FileSettingsStoreTest, ALinkStaysAndItsTargetIsReplaced) {
    std::filesystem::create_directory(folder / "real");
    std::filesystem::create_symlink("real/file", path);
    EXPECT_TRUE(store.Update(AppendX)); // no such file yet
    EXPECT_TRUE(store.Update(AppendX));
    EXPECT_TRUE(std::filesystem::is_symlink(path));
    EXPECT_EQ(FileContent(folder / "real/file"), "xx");
    std::filesystem::remove(path);
    std::filesystem::create_symlink(path, path);
    EXPECT_FALSE(store.Update(AppendX));
}

TEST_F(FileSettingsStoreTest, AChangeInPlaceMeanwhileIsEditedAgain) {
    WriteFile(path, "a");
    int edits = 0;
    EXPECT_TRUE(store.Update([&](const std::string& content) -> std::optional<std::string> {
        if (++edits == 1)
            WriteFile(path, "b"); // same size, perhaps the same time
        return content + "x";
    }));
    EXPECT_EQ(edits, 2);
    EXPECT_EQ(FileContent(path), "bx");

    EXPECT_FALSE(store.Update([&](const std::string& content) -> std::optional<std::string> {
        WriteFile(path, "c", std::ios::app);
        return content + "x";
    }));
    EXPECT_EQ(FileContent(path).substr(0, 3), "bxc");
    EXPECT_EQ(FileContent(path).rfind('x'), 1u); // the other program's change was not undone
    EXPECT_EQ(Files(), 2u);
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
        EXPECT_TRUE(store.Update(AppendX));
    });
    EXPECT_EQ(FileContent(path), "first half, second halfx");
    pauses = 0;
    EXPECT_TRUE(store.Update(AppendX)); // what it wrote itself is whole
    EXPECT_EQ(pauses, 0);
}

TEST_F(FileSettingsStoreTest, ContentBeyondTheLimitIsNeitherReadNorLost) {
    const std::string most(1 << 20, 'a');
    WriteFile(path, most);
    EXPECT_TRUE(store.Update([](const std::string& content) { return content; }));
    WriteFile(path, most + "b");
    EXPECT_EQ(store.Read().problem, std::errc::file_too_large);
    EXPECT_TRUE(store.Read().content.empty());
    EXPECT_FALSE(store.Update(AppendX));
    EXPECT_EQ(store.Problem(), std::errc::file_too_large);
    EXPECT_EQ(FileContent(path), most + "b");
}

TEST_F(FileSettingsStoreTest, AFailingWriteLeavesTheFileAsItWas) {
    WriteFile(path, "a");
    EXPECT_TRUE(InChild(false, [&] { // a full disk
        const rlimit limit{1000, 1000};
        signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
               !store.Update([](const std::string&) { return std::string(2000, 'b'); });
    }));
    EXPECT_EQ(FileContent(path), "a");
    EXPECT_EQ(Files(), 2u);
    EXPECT_TRUE(store.Update([](const std::string&) { return std::nullopt; }));
    EXPECT_EQ(FileContent(path), "a");

    ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
    ASSERT_EQ(chmod(path.c_str(), 0666), 0);
    EXPECT_TRUE(InChild(true, [&] {
        return !store.Update(AppendX) && store.Problem() == std::errc::permission_denied;
    }));
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    EXPECT_EQ(FileContent(path), "a");
}

TEST_F(FileSettingsStoreTest, ALockThatAnotherProgramKeepsStopsTheWrite) {
    const int lock = open((path + ".lock").c_str(), O_RDONLY | O_CREAT, 0644);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    EXPECT_FALSE(store.Update(AppendX));
    EXPECT_EQ(store.Problem(), std::errc::operation_would_block);
    on_pause = [&] { close(lock); };
    EXPECT_TRUE(store.Update(AppendX));
    EXPECT_FALSE(store.Problem());
    EXPECT_EQ(FileContent(path), "x");
}

TEST_F(FileSettingsStoreTest, TwoProgramsLoseNoUpdate) {
    constexpr int kUpdates = 100;
    const auto add_all = [&] {
        FileSettingsStore own(path);
        for (int done = 0; done < kUpdates;)
            done += own.Update(AppendX);
        return true;
    };
    const pid_t other = fork();
    if (other == 0)
        _exit(add_all() ? 0 : 1);
    add_all();
    waitpid(other, nullptr, 0);
    EXPECT_EQ(FileContent(path), std::string(2 * kUpdates, 'x'));
}

} // namespace
} // namespace tarnex
