#include "device/tarnex_core.h"

namespace tarnex {

TarnexCore::TarnexCore(Parts parts)
    : parts_(std::move(parts)), trace_(parts_.lists),
      port_(parts_.clock, parts_.ports, parts_.code_page,
            {.receive = [this] { reader_.MSComm1_OnComm(); },
             .arrived = [this] { firmware.BytesArrived(); },
             .lost = [this] { HardwareLost(); }}),
      firmware({.clock = parts_.clock, .port = port_, .trace = trace_}), answer_(parts_.clock),
      reader_({.clock = parts_.clock,
               .port = port_,
               .firmware = firmware,
               .rx_buffer = rx_buffer_,
               .answer = answer_,
               .trace = trace_,
               .lists = parts_.lists,
               .sms_result = [this](TextView result) { sms.ReportResult(result); }}),
      sender_({.clock = parts_.clock,
               .port = port_,
               .rx_buffer = rx_buffer_,
               .answer = answer_,
               .trace = trace_,
               .lists = parts_.lists,
               .hardware_lost = [this] { HardwareLost(); }}),
      commands(parts_.clock, sender_, reader_, trace_, parts_.lists),
      sms(parts_.clock, commands, reader_, trace_), discovery({.port = port_,
                                                               .sender = sender_,
                                                               .answer = answer_,
                                                               .trace = trace_,
                                                               .ports = parts_.ports,
                                                               .ini = parts_.ini,
                                                               .notices = parts_.notices,
                                                               .init = [this] { Init(); }}) {
    for (Timer* timer : {&answer_.ComTimer, &reader_.ComBadTimer, &reader_.TarnexLostTimer,
                         &commands.CSQTimer, &sms.SMSTimer, &firmware.FirmComTimer})
        timers.Add(*timer);
    Init();
}

void TarnexCore::Init() {
    firmware.Init();
    reader_.Init();
    sms.Init();
    discovery.Init();
    sender_.AnswerWaitTime = CommandSender::kHelloWait;
}

bool TarnexCore::OCXDebug(TextView mode) {
    if (mode == u"On")
        trace_.DebugOn = true;
    else if (mode == u"Off")
        trace_.DebugOn = false;
    return trace_.DebugOn;
}

void TarnexCore::HardwareLost() {
    answer_.EndWaits();
    if (firmware.FirmMode())
        firmware.HardwareLost();
    else if (!discovery.Scanning())
        parts_.hardware_lost();
}

} // namespace tarnex
