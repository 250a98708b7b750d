#include "tests/notify/notify_rig.h"

namespace tarnex {
namespace {

struct SMSQueueTest : NotifyRig {
    SMSQueueTest() {
        state.UnitConnected = true;
        lists.DebugOn = true;
        queue.Reset();
        queue.mSMSSendTimer.Enable(); // the unit is ready
    }
};

TEST_F(SMSQueueTest, SendsOneAfterTheOtherAtExactInstants) {
    modem.send_time = 500ms;
    queue.QueueSMS(u"1甲");
    queue.QueueSMS(u"2乙");
    clock.RunTo(3200ms);
    EXPECT_TRUE(state.UnitBusy());
    clock.RunTo(3500ms);
    EXPECT_FALSE(state.UnitBusy());
    EXPECT_EQ(queue.HeldEntry(), u"1甲");
    modem.check_answer = u"Busy";
    clock.RunTo(11s);
    modem.check_answer = u"SendOK";
    clock.RunTo(1min);
    EXPECT_EQ(modem.asked, (Texts{u"3000 send 1甲", u"6500 check", u"9500 check", u"12500 check",
                                  u"20500 send 2乙", u"24000 check"}));
    EXPECT_EQ(queue.HeldEntry(), u"");
    EXPECT_EQ(window.totals[Total::kSMSSent], 2u);
    EXPECT_EQ(window.lines[List::kSMSLog],
              (Texts{u"发送到 Tarnex,等待返回", u"Tarnex 在发送中", u"Tarnex 在发送中", u"发送成功",
                     u"发送到 Tarnex,等待返回", u"发送成功"}));
}

TEST_F(SMSQueueTest, ARefusedEntryIsTriedFourTimes) {
    modem.send_answer = u"Failed";
    queue.QueueSMS(u"1x");
    queue.QueueSMS(u"2y");
    clock.RunTo(26999ms);
    EXPECT_EQ(queue.HeldEntry(), u"1x");
    EXPECT_EQ(queue.Attempt(), 4);
    clock.RunTo(27s);
    EXPECT_EQ(queue.Totals(), (SMSQueue::Counts{.Refused = 4, .GivenUp = 1}));
    EXPECT_EQ(queue.HeldEntry(), u"");
    const auto& log = window.lines[List::kSMSLog];
    EXPECT_EQ(Texts(log.end() - 4, log.end()),
              (Texts{u"发送到 Tarnex失败", u"系统返回:Failed", u"发送错误次数:4",
                     u"已达到最大发送错误次数，算了吧"}));
    clock.RunTo(35s);
    EXPECT_EQ(modem.asked, (Texts{u"3000 send 1x", u"11000 send 1x", u"19000 send 1x",
                                  u"27000 send 1x", u"35000 send 2y"}));
}

TEST_F(SMSQueueTest, AReportedFailureCountsAndSuccessForgetsIt) {
    queue.QueueSMS(u"1x");
    queue.QueueSMS(u"1y");
    modem.check_answer = u"SendFail";
    clock.RunTo(10s);
    modem.check_answer = u"SendLost";
    clock.RunTo(20s); // second attempt at 14 s
    EXPECT_EQ(window.lines[List::kSMSLog][1], u"错误原因\u3000\u3000:SendFail");
    EXPECT_EQ(queue.Attempt(), 3);
    EXPECT_EQ(queue.LastResult(), u"SendLost");
    modem.check_answer = u"SendOK";
    clock.RunTo(30s);
    modem.check_answer = u"SendFail";
    clock.RunTo(71s); // y has four attempts of its own: 36, 47, 58 and 69 s
    EXPECT_EQ(queue.Totals().GivenUp, 0u);
    clock.RunTo(72s);
    EXPECT_EQ(queue.Totals().GivenUp, 1u);
    EXPECT_EQ(queue.Totals().Failed, 5u);
    EXPECT_EQ(window.totals[Total::kSMSFailed], 5u);
    EXPECT_EQ(window.totals[Total::kSMSLost], 1u);
}

TEST_F(SMSQueueTest, WaitsForTheUnitAndForTheOperator) {
    queue.QueueSMS(u"1x");
    may_send = false;
    clock.RunTo(10s);
    may_send = true;
    std::optional<UnitGuard> other(state);
    clock.RunTo(18s);
    EXPECT_TRUE(state.UnitBusy());
    other.reset();
    state.UnitConnected = false;
    clock.RunTo(26s);
    state.UnitConnected = true;
    clock.RunTo(27s);
    other.emplace(state); // nor is the unit asked while another handler works on it
    clock.RunTo(31s);
    other.reset();
    clock.RunTo(33s);
    EXPECT_EQ(modem.asked, (Texts{u"27000 send 1x", u"33000 check"}));
}

TEST_F(SMSQueueTest, ALossDuringTheHandOverLeavesEverythingToTheNewSearch) {
    modem.send_time = 2s;
    queue.QueueSMS(u"1x");
    queue.QueueSMS(u"1y");
    clock.RunTo(4s);
    state.BeginAnew();
    queue.Reset();
    std::optional<UnitGuard> search(state); // the new search works on the unit
    clock.RunTo(1min);
    EXPECT_TRUE(state.UnitBusy());
    EXPECT_FALSE(queue.mSMSSendTimer.Enabled() || queue.mSMSSendChkTimer.Enabled());
    EXPECT_EQ(queue.Totals().DroppedByReset, 2u);

    search.reset();
    state.UnitConnected = true;
    queue.mSMSSendTimer.Enable();
    queue.QueueSMS(u"2z");
    clock.RunFor(3s);
    EXPECT_EQ(modem.asked, (Texts{u"3000 send 1x", u"63000 send 2z"}));
    queue.mSMSSendTimer.CancelHandler(); // half-way
    EXPECT_FALSE(state.UnitBusy());
}

TEST_F(SMSQueueTest, AFullQueuePushesItsOldestOutAndAnUnexpectedAnswerEmptiesIt) {
    for (int i = 0; i < 201; ++i)
        queue.QueueSMS(u"1" + ToText(i));
    EXPECT_EQ(queue.Totals().PushedOut, 1u);
    EXPECT_EQ(queue.Length(), 200u);
    modem.check_answer = u"Free";
    clock.RunTo(1min);
    EXPECT_EQ(resets, 1);
    EXPECT_EQ(modem.asked.front(), u"3000 send 11");
    EXPECT_EQ(messages.Count(Fate::kDropped), 200u);
}

} // namespace
} // namespace tarnex
