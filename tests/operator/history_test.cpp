#include "adapters/sqlite/sqlite_history.h"
#include "tests/operator/operator_fixture.h"

#include <nlohmann/json.hpp>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kMinute = 60'000;
constexpr std::int64_t kNow = 1'714'982'400'000; // 2024-05-06 08:00 UTC

struct HistoryCommands : OperatorTest {
    HistoryCommands() {
        world.history_path = folder / "history.db";
        world.open_history = OpenSqliteHistory;
        ahead_of_utc = 8h;
    }
    // minutes: before now
    HistoryRow& Add(std::int64_t minutes, const std::string& kind, const std::string& text) {
        rows.push_back({.id = std::int64_t(rows.size()) + 1,
                        .at = kNow - minutes * kMinute,
                        .kind = kind,
                        .text = text});
        return rows.back();
    }
    HistoryRow& AddSms(std::int64_t minutes, const std::string& fate, const std::string& text) {
        HistoryRow& row = Add(minutes, "SMS", text);
        row.recipient = "13900000001";
        row.record = text;
        row.fate = fate;
        row.ended = fate.empty() ? 0 : row.at + 12'000;
        return row;
    }
    void Store(const std::vector<HistoryChange>& changes) {
        EXPECT_EQ(SqliteHistory(world.history_path).Store(changes), "");
    }
    void Store() { Store({rows.begin(), rows.end()}); }
    std::vector<HistoryRow> rows;
};

TEST_F(HistoryCommands, ShowsWhatBecameOfMessages) {
    WriteFile(world.history_path, "");
    Fails(66, {"history"}, "the service makes it with its first message");
    Add(100, "unit", "ready");
    Add(90, "signal", "22");
    AddSms(80, "lost", "消息\x1b").attempts = "1714977600000";
    AddSms(70, "sent", "消息").again_of = 3;
    AddSms(60, "held back", "3").reason = "quiet time";
    AddSms(50, "given up", "4").attempts = "1714979400000 ERROR\n1714979401000";
    AddSms(40, "", "5");
    Store();
    EXPECT_EQ(Output({"history"}),
              "1       2024-05-06 14:20:00  unit                               ready\n"
              "3       2024-05-06 14:40:00  SMS   13900000001     again 4      消息\\x1B\n"
              "4       2024-05-06 14:50:00  SMS   13900000001     sent         消息\n"
              "5       2024-05-06 15:00:00  SMS   13900000001     held back    3 (quiet time)\n"
              "6       2024-05-06 15:10:00  SMS   13900000001     given up?    4\n"
              "7       2024-05-06 15:20:00  SMS   13900000001     waits        5\n");
    EXPECT_EQ(Answer({"history", "--unsent"})["attempts"][0]["at"], "2024-05-06T15:10:00+08:00");
    EXPECT_EQ(Answer({"history", "--since", "2h"})["fate"], "waits");

    on_pause = [this] { Store({HistoryEnd{7, "lost", kNow}}); };
    pauses_left = 1;
    EXPECT_TRUE(Output({"history", "--unsent", "--follow"}).ends_with("  lost         5\n"));
    on_pause = [this] { Store({HistoryRow{.id = 8, .kind = "SMS", .text = "5", .again_of = 7}}); };
    pauses_left = 1;
    Output({"history", "--lines", "1", "--follow"});
    EXPECT_TRUE(Says("  again 8      5\n8 ")) << out.str();
    world.ask_service = [](const std::string&) {
        return ServiceAnswer{.trouble = "permission denied", .forbidden = true};
    };
    Fails(77, {"resend", "7"}, "permission denied");
    for (const char* id : {"9999999999999999999", "0", "x"})
        Fails(64, {"resend", id}, std::string("\"") + id + "\" is no id as \"tarnexctl history\"");
}

TEST_F(HistoryCommands, AReportTellsWhatSomeDaysBrought) {
    Add(3000, "unit", "ready");
    Add(400, "unit", "searching");
    Add(300, "unit", "ready");
    for (const auto& [minutes, signal] : {std::pair(290, "3"), {280, "20"}, {270, "22"}})
        Add(minutes, "signal", signal);
    AddSms(265, "sent", "one");
    rows.back().attempts = "1 ERROR\n2 OK\n";
    AddSms(264, "dropped", "<script>&设备\"");
    AddSms(263, "lost", "two");
    AddSms(262, "sent", "two").again_of = 9;
    AddSms(261, "held back", "three").reason = "quiet time";
    Add(3, "signal", "20");
    Store();
    EXPECT_EQ(
        Output({"report", "--days", "1"}),
        "2024-05-06\n"
        "  alarms         4\n"
        "  messages sent  2\n"
        "  held back      1\n"
        "  not sent       1\n"
        "  SMS took       median 1 min, at most 1 min\n"
        "  unit ready     24.8 %\n"
        "  signal         average 16, 3 to 22\n"
        "What went wrong:\n"
        "  1 message was not sent: 1 SMS dropped.\n"
        "  1 message had to be queued again, after the unit or the service was lost or on "
        "request.\n"
        "  Attempts failed with the answers 1 × ERROR.\n"
        "  The unit was not ready for 1 h 40 min from 2024-05-06 09:20.\n"
        "  Nothing is known of the unit 2 times, 13 h 47 min in all; the longest time was 9 h "
        "20 min from 2024-05-06 00:00: the service did not run, or read no signal.\n"
        "  The signal was below 5 in 1 of 4 readings.\n"
        "  1 message was held back on purpose: 1 × quiet time.\n");

    const std::string file = folder / "report.html";
    EXPECT_EQ(Output({"report", "--html", file}), "");
    const std::string page = FileContent(file);
    EXPECT_EQ(page, Output({"report", "--html", "-"}));
    EXPECT_TRUE(Says("&lt;script&gt;&amp;设备&quot;") && Says("*******0001"));
    EXPECT_TRUE(Says("2024-05-06: ready 3.4 %, not ready 10.4 %<")); // the rest is not known
    EXPECT_FALSE(Says("<script") || Says("1390000"));
#ifndef _WIN32
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
#endif
    Fails(73, {"report", "--html", folder / ""}, "is no ordinary file");
    now += 400 * 24h;
    Output({"report", "--html", "-"});
    EXPECT_TRUE(Says("There was no alarm.") && Says("No signal was read."));
}

} // namespace
} // namespace tarnex
