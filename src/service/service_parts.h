#pragma once

#include "history/send_again.h"
#include "mail/mail_sender.h"
#include "platform/service_controller.h"
#include "platform/status_sink.h"
#include "service/main_window.h"
#include "settings/load_settings.h"
#include "settings/setting_table.h"
#include "supervision/connection_supervision.h"
#include "supervision/supervision_cycle.h"
#include "ui/view.h"

namespace tarnex {

// The world that the service works in; everything must outlive the service.
struct ServiceWorld {
    Clock& clock;
    SerialPorts& serial_ports;
    DatagramSockets& sockets;
    TcpClients& tcp;
    LogTable& log_table;
    MessageHistory& history;
    SettingsStore& settings_store;
    LineFiles& files;
    const CodePage& code_page;
    ServiceController& controller;
    InstanceLock& instance_lock;
    const SystemWords& words;
    View* view;                   // nullptr: no windows
    OperatorNotices::Sink notice; // for what an operator must act on
    MainWindow::Echo echo;        // for list lines on no screen; may be empty
    // Called before the settings are first used, by an instance that may use them: what it
    // goes on with until its end. Nothing: they cannot be read, and the process must end.
    std::function<std::optional<StartSettings>()> take_start_settings;
    std::function<void()> end_process; // ends the loop, and with it the process
    StatusSink* status = nullptr;      // nullptr: nobody is told of the state
    long process_id = 0;               // told with it
};

// The parts of the service, each with what it is built from. They stand in the order in which they
// use each other; what is handed in works when somebody calls it, not while they are built.
struct ServiceParts {
    struct Hooks {
        std::function<void()> reset_unit_state;
        std::function<void()> take_number_switches; // from the settings file, now
        std::function<bool()> window_shown;         // the main window
    };

    ServiceWorld world;
    Hooks hooks;

    MainWindow window{world.echo, hooks.window_shown};
    OperatorNotices notices{world.notice};
    MainJobNotices main_job{world.clock, notices};
    DebugLists lists{&window};
    MyIniFile ini{world.settings_store, world.code_page};
    Settings settings{};
    UnitState unit{};
    HistoryWriter history{world.clock, world.history, notices};
    MessageLedger messages{history, [this](MessageWay way, TextView number) {
                               return ini.GetIniStr(way == MessageWay::kMail ? "mail-to"_setting
                                                    : number == u"1" ? "alarm-number-1"_setting
                                                                     : "alarm-number-2"_setting);
                           }};
    LogWriter log{world.clock, world.log_table, notices};
    TarnexCore core{{.clock = world.clock,
                     .ports = world.serial_ports,
                     .code_page = world.code_page,
                     .ini = ini,
                     .lists = lists,
                     .notices = notices,
                     .hardware_lost = [this] { connection.SetToResearch(UnitLoss::kDeviceGone); },
                     .main_job = &main_job}};
    MailSender mail{world.clock, world.tcp, ini, world.code_page, notices, messages};
    SMSQueue queue{{.clock = world.clock,
                    .unit = unit,
                    .sender = core.sms,
                    .lists = lists,
                    .messages = messages,
                    .may_send = [this] { return window.mChkSMSSendEnable.Checked(); },
                    .reset_unit_state =
                        [this] {
                            main_job.Lost(UnitLoss::kForgotSms);
                            hooks.reset_unit_state();
                        },
                    .before_next = [this] { again.FillQueue(); }}};
    SendAgain again{{.ledger = messages,
                     .writer = history,
                     .history = world.history,
                     .settings = settings,
                     .unit = unit,
                     .queue = queue,
                     .mail = mail,
                     .say = world.notice}};
    SMSMsgCodec codec{world.clock, ini};
    Dispatcher dispatcher{{.clock = world.clock,
                           .settings = settings,
                           .queue = queue,
                           .mail = mail,
                           .log = log,
                           .lists = lists,
                           .messages = messages}};
    ControlLink link{{.clock = world.clock,
                      .sockets = world.sockets,
                      .code_page = world.code_page,
                      .settings = settings,
                      .unit = unit,
                      .dispatcher = dispatcher,
                      .lists = lists,
                      .notices = notices,
                      .main_job = main_job}};
    SupervisionCycle cycle{
        {.clock = world.clock,
         .core = core,
         .ini = ini,
         .settings = settings,
         .unit = unit,
         .lists = lists,
         .log = log,
         .main_job = main_job,
         .link = link,
         .codec = codec,
         .queue = queue,
         .take_number_switches = hooks.take_number_switches,
         .set_to_research = [this](UnitLoss why) { connection.SetToResearch(why); }}};
    ConnectionSupervision connection{{.clock = world.clock,
                                      .core = core,
                                      .ini = ini,
                                      .settings = settings,
                                      .unit = unit,
                                      .lists = lists,
                                      .link = link,
                                      .main_job = main_job,
                                      .mCheckTimer = cycle.mCheckTimer,
                                      .reset_unit_state = hooks.reset_unit_state}};

    ServiceParts(ServiceWorld the_world, Hooks the_hooks)
        : world(std::move(the_world)), hooks(std::move(the_hooks)) {}
    ServiceParts(const ServiceParts&) = delete;
    ServiceParts& operator=(const ServiceParts&) = delete;
};

} // namespace tarnex
