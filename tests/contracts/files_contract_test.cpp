#include "adapters/sqlite/sqlite_log_files.h"
#include "adapters/sqlite/sqlite_log_table.h"
#include "adapters/system/disk_line_files.h"
#include "adapters/system/file_lock.h"
#include "adapters/system/file_settings_store.h"
#include "adapters/system/process.h"
#include "adapters/system/status_file.h"
#include "simulator/simulated_stores.h"
#include "tests/temp_folder.h"

#include <gtest/gtest.h>

// The ports behind which there are files: on disk, and in memory.
namespace tarnex {
namespace {

namespace fs = std::filesystem;

// One path for an adapter, and what stands in its way: a folder there.
struct OnDisk {
    void Spoil() {
        fs::remove(ToPath(path));
        fs::create_directory(ToPath(path));
    }
    void Repair() { fs::remove(ToPath(path)); }
    TempFolder folder;
    const std::string path = folder / "文件";
};

// ---- settings

struct StoreOnDisk : OnDisk {
    FileSettingsStore store{path};
};
struct StoreInMemory {
    void Spoil() { store.Readable = store.Writable = false; }
    void Repair() {
        store.Readable = store.Writable = true;
        store.Delete();
    }
    SimulatedSettingsStore store;
};

template <class Adapter>
struct SettingsStoreContract : testing::Test, Adapter {
    bool AppendX() {
        return this->store.Update([](const std::string& content) { return content + "x"; });
    }
};
using Stores = testing::Types<StoreOnDisk, StoreInMemory>;
TYPED_TEST_SUITE(SettingsStoreContract, Stores);

TYPED_TEST(SettingsStoreContract, AnEditReplacesTheFile) {
    SettingsStore& store = this->store;
    EXPECT_FALSE(store.Stamp());
    EXPECT_EQ(store.Read().problem, std::errc::no_such_file_or_directory);
    EXPECT_FALSE(store.Read().Unreadable());
    EXPECT_TRUE(this->AppendX());
    const FileStamp first = store.Stamp().value();
    EXPECT_EQ(first.size, 1u);
    EXPECT_TRUE(store.Update([](const std::string&) { return std::nullopt; }));
    EXPECT_EQ(store.Stamp()->file, first.file);
    EXPECT_TRUE(this->AppendX());
    EXPECT_NE(store.Stamp()->file, first.file);
    EXPECT_EQ(store.Read().content, "xx");
}

TYPED_TEST(SettingsStoreContract, WhatCannotBeReadCountsAsUnknownAndNotAsEmpty) {
    SettingsStore& store = this->store;
    EXPECT_TRUE(this->AppendX());
    this->Spoil();
    EXPECT_FALSE(store.Problem()); // of the last edit
    EXPECT_FALSE(store.Stamp());
    EXPECT_TRUE(store.Read().Unreadable());
    EXPECT_FALSE(this->AppendX());
    this->Repair();
    EXPECT_TRUE(store.Problem());
    EXPECT_TRUE(this->AppendX());
    EXPECT_FALSE(store.Problem());
    EXPECT_EQ(store.Read().content, "x");
}

// ---- the log

struct TableOnDisk : OnDisk {
    std::string Open() {
        std::string schema = "CREATE TABLE Log (number INTEGER PRIMARY KEY";
        for (std::size_t i = 1; i < log_column::kCount; ++i)
            schema += ", c" + std::to_string(i);
        EXPECT_EQ(SqliteLogFiles().Create(path, schema + ")"), "");
        return table.Open(FromUtf8(path));
    }
    std::string OpenUnusable() { return table.Open(FromUtf8(folder.Path())); }
    std::string Messages() const {
        std::string messages;
        const auto rows = (*SqliteLogFiles().Open(path))->Last(10);
        for (const StoredLogRow& row : rows.value())
            messages += row.columns[log_column::kMessage].value_or("-");
        return messages;
    }
    SqliteLogTable table;
};
struct TableInMemory {
    std::string Open() { return table.Open(u"log.db"); }
    std::string OpenUnusable() {
        table.Problem = "it is a folder";
        std::string trouble = table.Open(u"folder");
        table.Problem.clear();
        return trouble;
    }
    std::string Messages() const {
        std::string messages;
        for (const LogRow& row : table.Rows)
            messages += ToUtf8(std::get<Text>(row[log_column::kMessage]));
        return messages;
    }
    SimulatedLogTable table;
};

template <class Adapter>
struct LogTableContract : testing::Test, Adapter {
    std::string Append(const Text& message) {
        LogRow row;
        row[log_column::kMessage] = message;
        return this->table.Append(row);
    }
};
using Tables = testing::Types<TableOnDisk, TableInMemory>;
TYPED_TEST_SUITE(LogTableContract, Tables);

TYPED_TEST(LogTableContract, AFileThatCannotBeUsedLeavesTheOpenOneAsItIs) {
    EXPECT_NE(this->OpenUnusable(), "");
    EXPECT_NE(this->Append(u"too early"), "");
    EXPECT_EQ(this->Open(), "");
    EXPECT_EQ(this->Append(u"a"), "");
    EXPECT_NE(this->OpenUnusable(), "");
    EXPECT_EQ(this->Append(u"设"), "");
    EXPECT_EQ(this->Messages(), "a设");
}

// ---- the status

struct StatusOnDisk : OnDisk {
    std::string Content() const { return FileContent(path); }
    StatusFile status{path};
};
struct StatusInMemory {
    void Spoil() { status.Problem = "cannot be written"; }
    void Repair() { status.Problem.clear(); }
    std::string Content() const { return status.Text; }
    SimulatedStatusSink status;
};

template <class Adapter>
struct StatusContract : testing::Test, Adapter {};
using Statuses = testing::Types<StatusOnDisk, StatusInMemory>;
TYPED_TEST_SUITE(StatusContract, Statuses);

TYPED_TEST(StatusContract, IsReplacedWholeOrNotAtAll) {
    for (const char* text : {"a longer first text", "second"}) {
        EXPECT_EQ(this->status.Replace(text), "");
        EXPECT_EQ(this->Content(), text);
    }
    this->Spoil();
    EXPECT_NE(this->status.Replace("x").find("cannot be written"), std::string::npos);
    this->Repair();
    EXPECT_EQ(this->status.Replace("x"), "");
}

TEST(StatusFile, LeavesNothingBesideItAndReadersWhatTheyHave) {
    const TempFolder folder;
    StatusFile file(folder / "status.json");
    EXPECT_TRUE(file.Possible());
    EXPECT_EQ(file.Replace("first"), "");
    auto reader = DiskLineFiles().Open(folder / "status.json");
    folder.Write("status.json.new", "left over from a crash");
    EXPECT_EQ(file.Replace("second"), "");
    EXPECT_EQ((*reader)->ReadLine(), "first");
    EXPECT_FALSE(folder.Has("status.json.new"));
    EXPECT_FALSE(StatusFile(folder / "none/status.json").Possible());
}

// ---- the instance lock

struct LockOnDisk : OnDisk {
    void LetAnotherHaveIt(bool has) {
        another = has ? std::make_unique<FileInstanceLock>(path) : nullptr;
        EXPECT_TRUE(!has || another->Acquire());
    }
    FileInstanceLock lock{path};
    std::unique_ptr<FileInstanceLock> another;
};
struct LockInMemory {
    void LetAnotherHaveIt(bool has) { lock.HeldByAnother = has; }
    SimulatedInstanceLock lock;
};

template <class Adapter>
struct InstanceLockContract : testing::Test, Adapter {};
using Locks = testing::Types<LockOnDisk, LockInMemory>;
TYPED_TEST_SUITE(InstanceLockContract, Locks);

TYPED_TEST(InstanceLockContract, HasOneHolderUntilThatIsGone) {
    this->LetAnotherHaveIt(true);
    EXPECT_FALSE(this->lock.Acquire());
    this->LetAnotherHaveIt(false);
    EXPECT_TRUE(this->lock.Acquire());
}

TEST(InstanceLock, RecordsItsHolderInThePlaceOfOneThatDied) {
    const TempFolder folder;
    folder.Write("lock", "4711\n");
    FileInstanceLock lock(folder / "lock");
    EXPECT_TRUE(lock.Acquire());
    EXPECT_EQ(folder.Read("lock"), std::to_string(ThisProcess()) + "\n");
}

TEST(InstanceLock, AnUnusableFileKeepsNobodyFromRunningButIsTold) {
    const TempFolder folder;
    fs::create_directory(ToPath(folder / "folder"));
    for (const auto& [name, problem] : {std::pair{"no/such/folder", "no such file or folder"},
                                        std::pair{"folder", "it is a folder"}}) {
        std::string told;
        FileInstanceLock unusable(folder / name);
        unusable.SetNotice([&](const std::string& line) { told += line; });
        EXPECT_TRUE(unusable.Acquire());
        EXPECT_NE(told.find(folder / name + ": " + problem), std::string::npos) << told;
    }
}

TEST(Process, IsKnownByNumberAndProgram) {
    const std::string name = ToPath(ThisProgram()).stem().string();
    EXPECT_TRUE(ProcessRuns(ThisProcess(), name));
    EXPECT_FALSE(ProcessRuns(ThisProcess(), "another"));
    EXPECT_FALSE(ProcessRuns(0, name));
}

// ---- files read line by line

struct LinesOnDisk : DiskLineFiles {
    void Put(const std::string& path, const std::string& content) { WriteFile(path, content); }
};
struct LinesInMemory : SimulatedLineFiles {
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
using Readers = testing::Types<LinesOnDisk, LinesInMemory>;
TYPED_TEST_SUITE(LineFilesContract, Readers);

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
