#pragma once

#include "notify/dispatcher.h"
#include "tests/world.h"

namespace tarnex {

// A unit that nobody asks for anything.
struct AbsentUnit : SMSSender {
    Task<Text> SendSMS(Text, int) override { co_return Text(u"Failed"); }
    Text SMSSendChk() override { return u"Free"; }
    void SetSMSLostTime(int) override {}
};

struct CollectedMail : EmailFifo {
    void dSetEmailFifo(const Text& text) override { texts.push_back(text); }
    std::vector<Text> texts;
};

// A dispatcher with everything that it sends to.
struct NotifyRig : World {
    NotifyRig() { log.Open(u"log.db"); }

    // Takes everything out of the SMS queue.
    std::vector<Text> QueuedSMS() {
        std::vector<Text> entries;
        for (Text entry; (entry = queue.mGetSMSFifo()) != kNoSMS;)
            entries.push_back(entry);
        return entries;
    }

    SimulatedLogTable table;
    std::vector<std::string>& notice_lines = said;
    Settings settings;
    UnitState unit;
    LogWriter log{clock, table, notices};
    AbsentUnit absent_unit;
    CollectedMail mail;
    SMSMsgCodec codec{clock, ini, window.lists};
    SMSQueue queue{{.clock = clock,
                    .unit = unit,
                    .sender = absent_unit,
                    .lists = window.lists,
                    .may_send = [] { return true; },
                    .reset_unit_state = [] {}}};
    Dispatcher dispatcher{{.clock = clock,
                           .settings = settings,
                           .codec = codec,
                           .queue = queue,
                           .mail = mail,
                           .log = log,
                           .lists = window.lists}};
};

} // namespace tarnex
