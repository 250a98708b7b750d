#pragma once

#include "history/message_ledger.h"
#include "notify/dispatcher.h"
#include "tests/world.h"

namespace tarnex {

using Texts = std::vector<Text>;

// A modem that answers as it is told to, and notes what it is asked at which millisecond.
struct FakeModem : SMSSender {
    explicit FakeModem(Clock& clock) : clock(clock) {}

    Task<Text> SendSMS(Text text, int target) override {
        Note(u"send " + ToText(target) + text);
        co_await Sleep(clock, send_time);
        co_return send_answer;
    }
    Text SMSSendChk() override {
        Note(u"check");
        return check_answer;
    }
    void SetSMSLostTime(int seconds) override { EXPECT_EQ(seconds, 35); }
    void Note(const Text& what) { asked.push_back(ToText(clock.Now().count()) + u" " + what); }

    Clock& clock;
    Duration send_time = 0ms;
    Text send_answer = u"OK";
    Text check_answer = u"SendOK";
    Texts asked;
};

// A dispatcher with everything that it sends to; the SMS stay in their queue until the unit is
// connected.
struct NotifyRig : WorldTest, EmailFifo {
    NotifyRig() {
        log.Open(u"log.db");
        settings.SendCount = 1;
        settings.SwitchCheck42 = true;
    }
    // Everything that was queued has a fate, or waits.
    ~NotifyRig() override {
        EXPECT_EQ(messages.Waiting().size(), queue.Length() + !queue.HeldEntry().empty());
        EXPECT_EQ(messages.Count(Fate::kSent), queue.Totals().Sent);
        EXPECT_EQ(messages.Count(Fate::kGivenUp), queue.Totals().GivenUp);
    }
    void dSetEmailFifo(const Text& text, const MessageOrigin&) override { mails.push_back(text); }

    // Takes everything out of the SMS queue.
    Texts QueuedSMS() {
        Texts entries;
        for (const auto& [id, message] : messages.Waiting())
            entries.push_back(message.number + message.text);
        queue.Reset();
        return entries;
    }

    Settings settings;
    UnitState state;
    FakeModem modem{clock};
    Texts mails;
    int resets = 0;
    bool may_send = true;
    SimulatedHistory history;
    HistoryWriter writer{clock, history, notices};
    MessageLedger messages{writer, [](MessageWay, TextView number) { return Text(number); }};
    SMSQueue queue{{.clock = clock,
                    .unit = state,
                    .sender = modem,
                    .lists = lists,
                    .messages = messages,
                    .may_send = [this] { return may_send; },
                    .reset_unit_state =
                        [this] {
                            ++resets;
                            queue.Reset();
                        }}};
    Dispatcher dispatcher{{.clock = clock,
                           .settings = settings,
                           .queue = queue,
                           .mail = *this,
                           .log = log,
                           .lists = lists,
                           .messages = messages}};
};

} // namespace tarnex
