#include "adapters/sqlite/sqlite_history.h"
#include "simulator/simulated_stores.h"
#include "tests/temp_folder.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

std::unique_ptr<MessageHistory> Simulated(const std::string&) {
    return std::make_unique<SimulatedHistory>();
}
std::unique_ptr<MessageHistory> InFile(const std::string& path) {
    return std::make_unique<SqliteHistory>(path);
}

HistoryRow Sms(std::int64_t id, std::int64_t again_of = 0) {
    return {.id = id,
            .at = 1000 * id,
            .kind = "SMS",
            .recipient = "139",
            .number = "1",
            .text = "设备1",
            .record = "1031010",
            .again_of = again_of,
            .maybe_sent = 1};
}

std::vector<std::int64_t> Ids(MessageHistory& history, const HistoryQuery& query) {
    std::vector<std::int64_t> ids;
    auto rows = history.Rows(query);
    EXPECT_EQ(rows.TroubleText(), "");
    if (rows)
        for (const HistoryRow& row : *rows)
            ids.push_back(row.id);
    return ids;
}

struct History : testing::TestWithParam<std::unique_ptr<MessageHistory> (*)(const std::string&)> {
    TempFolder folder;
    const std::string path = folder / "历史.db";
    std::unique_ptr<MessageHistory> history = GetParam()(path);
};

TEST_P(History, KeepsWhatHappenedAndFindsIt) {
    using IdList = std::vector<std::int64_t>;
    EXPECT_EQ(Ids(*history, {}), IdList{});
    EXPECT_EQ(history->Store({Sms(1), Sms(2), HistoryRow{.id = 3, .at = 3000, .kind = "unit"},
                              HistoryAttempt{1, "1500 "}, HistoryAttempt{1, "Failed\n"},
                              HistoryEnd{1, "dropped", 2500}}),
              "");
    EXPECT_EQ(history->Store({Sms(4, 1), Sms(5), HistoryEnd{5, "lost", 6000}}), "");
    HistoryRow first = Sms(1);
    first.attempts = "1500 Failed\n";
    first.fate = "dropped";
    first.ended = 2500;
    first.again_as = 4;
    EXPECT_EQ(*history->Rows({.id = 1}), std::vector{first});
    EXPECT_EQ(Ids(*history, {.waiting = true}), (IdList{2, 4}));
    EXPECT_EQ(Ids(*history, {.not_sent = true}), (IdList{5}));
    EXPECT_EQ(Ids(*history, {.last = 2}), (IdList{4, 5}));
    EXPECT_EQ(Ids(*history, {.after = 2, .since = 4000}), (IdList{4, 5}));
}

INSTANTIATE_TEST_SUITE_P(Adapters, History, testing::Values(Simulated, InFile),
                         [](const auto& suite) {
                             return suite.param == &Simulated ? "Simulated" : "InFile";
                         });

// ---- what only a file can show

struct HistoryFile : testing::Test {
    TempFolder folder;
    const std::string path = folder / "history.db";
    SqliteHistory history{path};
};

TEST_F(HistoryFile, ADamagedOrNewerOneIsToldAndAnotherIsMadeWhenItIsGone) {
    WriteFile(path, std::string(5000, 'x'));
    EXPECT_EQ(history.Store({Sms(1)}),
              "The history " + path +
                  " is damaged: move it away, and the service makes a new one.");
    std::filesystem::remove(ToPath(path));
    EXPECT_EQ(history.Store({Sms(1)}), "");
#ifndef _WIN32 // where nobody can remove a file that is open, and files have no modes
    std::filesystem::remove(path);
    EXPECT_EQ(history.Store({Sms(2)}), "");
    EXPECT_EQ(Ids(history, {}), std::vector<std::int64_t>{2});
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(path + "-wal").permissions() & perms::all, perms(0640));
#endif
    auto reader = OpenSqliteHistory(path); // beside the writer
    ASSERT_TRUE(reader);
    EXPECT_EQ((*(*reader)->Rows({})).size(), 1u);
}

TEST_F(HistoryFile, KeepsToItsSize) {
    history.KeepTo(1);
    HistoryRow row = Sms(1);
    row.record = std::string(1000, 'r');
    for (int turn = 0; turn < 100; ++turn) {
        std::vector<HistoryChange> changes;
        for (int i = 0; i < 64; ++i, ++row.id) {
            changes.emplace_back(row);
            if (row.id != 1)
                changes.emplace_back(HistoryEnd{row.id, "sent", 1});
        }
        ASSERT_EQ(history.Store(changes), "");
    }
    EXPECT_LT(std::filesystem::file_size(ToPath(path)), 1'600'000u);
    EXPECT_EQ(Ids(history, {.waiting = true}), std::vector<std::int64_t>{1}); // it stays
    EXPECT_EQ(Ids(history, {.last = 1}), std::vector<std::int64_t>{row.id - 1});
}

} // namespace
} // namespace tarnex
