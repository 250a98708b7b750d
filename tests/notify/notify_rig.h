#pragma once

#include "notify/dispatcher.h"
#include "platform/linux/iconv_code_page.h"
#include "simulator/simulated_clock.h"
#include "simulator/simulated_stores.h"
#include "tests/notify/debug_window.h"

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

// A dispatcher with everything that it sends to. It is Monday, 6 May 2024, 08:00.
struct NotifyRig {
    NotifyRig() { log.Open(u"log.db"); }

    // Takes everything out of the SMS queue.
    std::vector<Text> QueuedSMS() {
        std::vector<Text> entries;
        for (Text entry; (entry = queue.mGetSMSFifo()) != kNoSMS;)
            entries.push_back(entry);
        return entries;
    }

    SimulatedClock clock;
    SimulatedSettingsStore store;
    SimulatedLogTable table;
    IconvCodePage code_page{"GBK"};
    MyIniFile ini{store, code_page};
    Settings settings;
    UnitState unit;
    DebugWindow window;
    std::vector<std::string> notice_lines;
    OperatorNotices notices{[this](const std::string& line) { notice_lines.push_back(line); }};
    LogWriter log{clock, table, notices};
    AbsentUnit absent_unit;
    CollectedMail mail;
    SMSMsgCodec codec{clock, ini, window.lists};
    SMSQueue queue{
        {.clock = clock,
         .unit = unit,
         .sender = absent_unit,
         .lists = window.lists,
         .controls = {window.mChkSMSSendEnable, window.mText2, window.mText3, window.mText5},
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
