#include "device/tarnex_core.h"

namespace tarnex {

UnitLine::UnitLine(const TarnexCoreParts& parts, FirmwareLink& firmware,
                   std::function<void(TextView)> sms, std::function<void()> lost)
    : trace(parts.lists), port(parts.clock, parts.ports, parts.code_page,
                               {.receive = [this] { reader.MSComm1_OnComm(); },
                                .arrived = [&firmware] { firmware.BytesArrived(); },
                                .lost = lost}),
      answer(parts.clock), reader({.clock = parts.clock,
                                   .port = port,
                                   .firmware = firmware,
                                   .rx_buffer = rx_buffer,
                                   .answer = answer,
                                   .trace = trace,
                                   .lists = parts.lists,
                                   .sms_result = std::move(sms)}),
      sender({.clock = parts.clock,
              .port = port,
              .rx_buffer = rx_buffer,
              .answer = answer,
              .trace = trace,
              .lists = parts.lists,
              .hardware_lost = std::move(lost)}) {}

TarnexCore::TarnexCore(TarnexCoreParts parts)
    : UnitLine(
          parts, firmware, [this](TextView result) { sms.ReportResult(result); },
          [this] { HardwareLost(); }),
      firmware({.clock = parts.clock, .port = port, .trace = trace}),
      commands(parts.clock, sender, reader, trace, parts.lists),
      sms(parts.clock, commands, reader, trace), discovery({.port = port,
                                                            .sender = sender,
                                                            .answer = answer,
                                                            .trace = trace,
                                                            .ports = parts.ports,
                                                            .ini = parts.ini,
                                                            .notices = parts.notices,
                                                            .main_job = parts.main_job,
                                                            .init = [this] { Init(); }}),
      hardware_lost_(std::move(parts.hardware_lost)) {
    for (Timer* timer : {&answer.ComTimer, &reader.ComBadTimer, &reader.TarnexLostTimer,
                         &commands.CSQTimer, &sms.SMSTimer, &firmware.FirmComTimer})
        timers.Add(*timer);
    Init();
}

void TarnexCore::Init() {
    firmware.Init();
    reader.Init();
    sms.Init();
    discovery.Init();
    sender.AnswerWaitTime = CommandSender::kHelloWait;
}

bool TarnexCore::OCXDebug(TextView mode) {
    if (mode == u"On")
        trace.DebugOn = true;
    else if (mode == u"Off")
        trace.DebugOn = false;
    return trace.DebugOn;
}

void TarnexCore::HardwareLost() {
    answer.EndWaits();
    if (firmware.FirmMode())
        firmware.HardwareLost();
    else if (!discovery.Scanning())
        hardware_lost_();
}

} // namespace tarnex
