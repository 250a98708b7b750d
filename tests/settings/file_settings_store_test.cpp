#include "adapters/system/file_settings_store.h"
#include "tests/temp_folder.h"

#include <thread>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

struct FileSettingsStoreTest : testing::Test {
    bool AppendX() {
        return store.Update([](const std::string& content) { return content + "x"; });
    }
    std::error_code Refusal() { return AppendX() ? std::error_code() : store.Problem(); }
    long Files() const { return std::distance(fs::directory_iterator(ToPath(folder.Path())), {}); }

    TempFolder folder;
    const std::string path = folder / "Tarnex.ini";
    int pauses = 0;
    std::function<void()> on_pause = [] {};
    FileSettingsStore store{path, [this](Duration) {
                                ++pauses;
                                on_pause();
                            }};
};

TEST_F(FileSettingsStoreTest, WhatIsTooLongIsNotRead) {
    const std::string most(1 << 20, 'a');
    WriteFile(path, most);
    EXPECT_EQ(store.Read().content, most);
    WriteFile(path, most + "b");
    EXPECT_TRUE(store.Read().content.empty());
    EXPECT_EQ(Refusal(), std::errc::file_too_large);
    EXPECT_EQ(FileContent(path), most + "b");
}

TEST_F(FileSettingsStoreTest, ANewFileIsNotSettled) {
    EXPECT_TRUE(AppendX());
    const FileStamp stamp = store.Stamp().value();
    EXPECT_FALSE(stamp.settled);
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_LT(now - std::chrono::nanoseconds(stamp.changed), 1h);
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
    EXPECT_EQ(store.Problem(), std::errc::operation_in_progress);
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

TEST_F(FileSettingsStoreTest, ALockThatAnotherProgramKeepsStopsTheWrite) {
    EXPECT_TRUE(FileSettingsStore(path).Update([&](const std::string&) {
        EXPECT_EQ(Refusal(), std::errc::operation_would_block);
        return std::nullopt;
    }));
    EXPECT_EQ(Refusal(), std::error_code());
    EXPECT_FALSE(store.Problem());
}

TEST_F(FileSettingsStoreTest, TwoProgramsLoseNoUpdate) {
    const auto append = [this] {
        FileSettingsStore own(path);
        for (int done = 0; done < 100;)
            done += own.Update([](const std::string& content) { return content + "x"; });
    };
    std::thread other(append);
    append();
    other.join();
    EXPECT_EQ(FileContent(path), std::string(200, 'x'));
}

} // namespace
} // namespace tarnex
