#include "notify/sms_queue.h"
#include "simulator/simulated_clock.h"
#include "tests/notify/debug_window.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

// A unit that takes SMS and reports on them as it is told to.
struct FakeUnit : SMSSender {
    struct Attempt {
        long at; // ms
        Text text;
        int target;
        friend bool operator==(const Attempt&, const Attempt&) = default;
    };

    explicit FakeUnit(Clock& clock) : clock(clock) {}

    Task<Text> SendSMS(Text text, int target) override {
        attempts.push_back({clock.Now().count(), text, target});
        co_await Sleep(clock, send_time);
        co_return send_answer;
    }
    Text SMSSendChk() override {
        checks.push_back(clock.Now().count());
        return check_answer;
    }
    void SetSMSLostTime(int seconds) override { lost_time = seconds; }

    std::vector<long> AttemptTimes() const {
        std::vector<long> times;
        for (const Attempt& attempt : attempts)
            times.push_back(attempt.at);
        return times;
    }

    Clock& clock;
    Duration send_time = 0ms;
    Text send_answer = u"OK";
    Text check_answer = u"SendOK";
    std::vector<Attempt> attempts;
    std::vector<long> checks; // ms
    int lost_time = 0;
};

struct SMSQueueTest : testing::Test {
    SMSQueueTest() {
        state.UnitConnected = true;
        queue.Reset();
        queue.mSMSSendTimer.Enable(); // the unit is ready
    }

    SimulatedClock clock;
    DebugWindow window;
    UnitState state;
    FakeUnit unit{clock};
    int resets = 0;
    SMSQueue queue{
        {.clock = clock,
         .unit = state,
         .sender = unit,
         .lists = window.lists,
         .controls = {window.mChkSMSSendEnable, window.mText2, window.mText3, window.mText5},
         .reset_unit_state = [this] {
             ++resets;
             queue.Reset();
         }}};
};

using Times = std::vector<long>;

TEST_F(SMSQueueTest, SendsOneAfterTheOtherAtExactInstants) {
    window.lists.DebugOn = true;
    unit.send_time = 500ms;
    queue.QueueSMS(u"1甲");
    queue.QueueSMS(u"2乙");
    clock.RunTo(3200ms);
    EXPECT_TRUE(state.UnitBusy);
    clock.RunTo(3500ms);
    EXPECT_FALSE(state.UnitBusy);
    EXPECT_EQ(queue.HeldEntry(), u"1甲");
    EXPECT_EQ(queue.Length(), 1u);
    clock.RunTo(1min);
    EXPECT_EQ(unit.attempts, (std::vector<FakeUnit::Attempt>{{3000, u"甲", 1}, {14500, u"乙", 2}}));
    EXPECT_EQ(unit.checks, (Times{6500, 18000}));
    EXPECT_EQ(unit.lost_time, 35);
    EXPECT_EQ(queue.Totals().Sent, 2u);
    EXPECT_EQ(queue.HeldEntry(), u"");
    EXPECT_EQ(window.mText5.Value(), u"2");
    const std::vector<Text> log{u"发送到 Tarnex,等待返回", u"发送成功", u"发送到 Tarnex,等待返回",
                                u"发送成功"};
    EXPECT_EQ(window.mList4.Lines(), log);
}

TEST_F(SMSQueueTest, AsksAgainEveryThreeSecondsWhileTheUnitSends) {
    unit.check_answer = u"Busy";
    queue.QueueSMS(u"1x");
    clock.RunTo(13s);
    EXPECT_EQ(unit.checks, (Times{6000, 9000, 12000}));
    unit.check_answer = u"SendOK";
    clock.RunTo(15s);
    queue.QueueSMS(u"1y");
    clock.RunTo(1min);
    EXPECT_EQ(unit.AttemptTimes(), (Times{3000, 23000}));
    EXPECT_EQ(queue.Totals().Sent, 2u);
}

TEST_F(SMSQueueTest, ARefusedEntryIsTriedFourTimes) {
    window.lists.DebugOn = true;
    unit.send_answer = u"Failed";
    queue.QueueSMS(u"1x");
    queue.QueueSMS(u"2y");
    clock.RunTo(26999ms);
    EXPECT_EQ(queue.HeldEntry(), u"1x");
    EXPECT_EQ(queue.Attempt(), 4);
    clock.RunTo(27s);
    EXPECT_EQ(queue.HeldEntry(), u"");
    EXPECT_EQ(queue.Totals().GivenUp, 1u);
    EXPECT_EQ(queue.Totals().Refused, 4u);
    EXPECT_EQ(queue.LastResult(), u"Failed");
    const auto& log = window.mList4.Lines();
    ASSERT_EQ(log.size(), 13u);
    EXPECT_EQ(log[0], u"发送到 Tarnex失败");
    EXPECT_EQ(log[1], u"系统返回:Failed");
    EXPECT_EQ(log[11], u"发送错误次数:4");
    EXPECT_EQ(log[12], u"已达到最大发送错误次数，算了吧");
    unit.send_answer = u"OK";
    clock.RunTo(40s);
    EXPECT_EQ(unit.AttemptTimes(), (Times{3000, 11000, 19000, 27000, 35000}));
    EXPECT_EQ(unit.attempts.back().text, u"y");
}

TEST_F(SMSQueueTest, AReportedFailureCountsAndSuccessForgetsIt) {
    window.lists.DebugOn = true;
    queue.QueueSMS(u"1x");
    queue.QueueSMS(u"1y");
    unit.check_answer = u"SendFail";
    clock.RunTo(10s);
    unit.check_answer = u"SendLost";
    clock.RunTo(20s); // second attempt at 14 s
    EXPECT_EQ(window.mList4.Lines()[1], u"错误原因\u3000\u3000:SendFail");
    EXPECT_EQ(window.mText3.Value() + window.mText2.Value(), u"11");
    EXPECT_EQ(queue.Attempt(), 3);
    unit.check_answer = u"SendOK";
    clock.RunTo(30s); // third attempt at 25 s
    EXPECT_EQ(queue.Totals().Sent, 1u);
    unit.check_answer = u"SendFail";
    clock.RunTo(2min); // y has four attempts of its own: 36, 47, 58 and 69 s
    EXPECT_EQ(unit.AttemptTimes(), (Times{3000, 14000, 25000, 36000, 47000, 58000, 69000}));
    EXPECT_EQ(queue.Totals().Failed, 5u);
    EXPECT_EQ(queue.Totals().Lost, 1u);
    EXPECT_EQ(queue.Totals().GivenUp, 1u);
}

TEST_F(SMSQueueTest, WaitsForTheUnitAndForTheOperator) {
    queue.QueueSMS(u"1x");
    window.mChkSMSSendEnable.SetChecked(false);
    clock.RunTo(10s);
    window.mChkSMSSendEnable.SetChecked(true);
    state.UnitBusy = true;
    clock.RunTo(18s);
    EXPECT_TRUE(state.UnitBusy);
    state.UnitBusy = false;
    state.UnitConnected = false;
    clock.RunTo(26s);
    EXPECT_EQ(unit.attempts.size(), 0u);
    EXPECT_EQ(queue.Length(), 1u);
    state.UnitConnected = true;
    clock.RunTo(27s);
    EXPECT_EQ(unit.AttemptTimes(), (Times{27000}));
    state.UnitBusy = true; // nor is the unit asked while another handler works on it
    clock.RunTo(31s);
    EXPECT_EQ(unit.checks.size(), 0u);
    state.UnitBusy = false;
    clock.RunTo(33s);
    EXPECT_EQ(unit.checks, (Times{33000}));
}

TEST_F(SMSQueueTest, ALossDuringTheHandOverLeavesEverythingToTheNewSearch) {
    unit.send_time = 2s;
    queue.QueueSMS(u"1x");
    queue.QueueSMS(u"1y");
    clock.RunTo(4s);
    ++state.Losses;
    queue.Reset();
    state.UnitBusy = true; // the new search works on the unit
    clock.RunTo(1min);
    EXPECT_TRUE(state.UnitBusy);
    EXPECT_FALSE(queue.mSMSSendTimer.Enabled());
    EXPECT_FALSE(queue.mSMSSendChkTimer.Enabled());
    EXPECT_EQ(queue.Totals().DroppedByReset, 2u);
    EXPECT_EQ(queue.Length(), 0u);

    state.UnitBusy = false;
    queue.mSMSSendTimer.Enable();
    queue.QueueSMS(u"2z");
    clock.RunFor(3s);
    EXPECT_EQ(unit.AttemptTimes(), (Times{3000, 63000}));
}

TEST_F(SMSQueueTest, AnUnexpectedAnswerStartsOverInsteadOfStalling) {
    unit.check_answer = u"Free";
    queue.QueueSMS(u"1x");
    clock.RunTo(6s);
    EXPECT_EQ(resets, 1);
    clock.RunTo(1min);
    EXPECT_EQ(resets, 1);
    queue.mSMSSendTimer.Enable();
    unit.check_answer = u"SendOK";
    queue.QueueSMS(u"1y");
    clock.RunTo(70s);
    EXPECT_EQ(queue.Totals().Sent, 1u);
}

TEST_F(SMSQueueTest, AFullQueuePushesItsOldestOut) {
    queue.mSMSSendTimer.Disable();
    for (int i = 0; i < 201; ++i)
        queue.QueueSMS(u"1" + ToText(i));
    EXPECT_EQ(queue.Length(), 200u);
    EXPECT_EQ(queue.Totals().PushedOut, 1u);
    for (int i = 1; i < 201; ++i)
        ASSERT_EQ(queue.mGetSMSFifo(), u"1" + ToText(i));
    EXPECT_EQ(queue.mGetSMSFifo(), u"NoData");
}

} // namespace
} // namespace tarnex
