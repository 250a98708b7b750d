#pragma once

#include "service/tarnex_comm.h"
#include "simulator/simulated_clock.h"
#include "simulator/simulated_mail_server.h"
#include "simulator/simulated_network.h"
#include "simulator/simulated_serial.h"
#include "simulator/simulated_stores.h"
#include "simulator/simulated_unit.h"

#include <optional>

namespace tarnex {

// The whole system in memory: the real service, a unit on COM3 and a mail network. Nothing happens
// before StartService(), nor without the clock.
struct SystemInMemory {
    // settings: the content of the settings file, in that code page, which outlives the system.
    SystemInMemory(std::string settings, const CodePage& encoding,
                   const CalendarTime& start = SimulatedClock().Calendar())
        : clock(start), code_page(encoding) {
        store.SetContent(std::move(settings));
        ports.Plug(3, unit);
    }
    void StartService(const std::string& command_line = "") {
        service.emplace(TarnexComm::World{
            .clock = clock,
            .serial_ports = ports,
            .sockets = network,
            .tcp = tcp,
            .log_table = *log_table,
            .history = *message_history,
            .settings_store = store,
            .files = files,
            .code_page = code_page,
            .controller = controller,
            .instance_lock = lock,
            .words = words,
            .view = view,
            .notice =
                [this](NoticeLevel level, const std::string& line) {
                    said.push_back(line);
                    if (level <= NoticeLevel::kWarning)
                        needs_somebody.push_back(line);
                },
            .echo = [this](const std::string& list, const Text&) { echoed.push_back(list); },
            .take_start_settings = [this]() -> std::optional<StartSettings> {
                const SettingsReading reading = store.Read();
                if (reading.Unreadable())
                    return std::nullopt;
                return ReadSettings(IniDocument(reading.content, code_page)).start;
            },
            .end_process = [this] { ended_at = clock.Now(); },
            .status = status,
            .process_id = 4711});
        service->Form_Load(command_line);
    }

    SimulatedClock clock;
    SimulatedSerialPorts ports{clock};
    SimulatedUnit unit{clock};
    SimulatedNetwork network{clock};
    SimulatedTcpNetwork tcp{clock};
    SimulatedLogTable log;
    SimulatedHistory history;
    LogTable* log_table = &log;                 // or another one, before the service starts
    MessageHistory* message_history = &history; // the same
    StatusSink* status = nullptr; // where the service tells of its state; before it starts
    SimulatedSettingsStore store;
    SimulatedLineFiles files;
    const CodePage& code_page;
    SimulatedServiceController controller;
    SimulatedInstanceLock lock;
    const SystemWords words{};               // no system's
    View* view = nullptr;                    // or one, before the service starts; it outlives it
    std::vector<std::string> said;           // to the operator
    std::vector<std::string> needs_somebody; // of that, what asks for action
    std::vector<std::string> echoed;         // the lists of lines that stand on no screen
    std::optional<Duration> ended_at;        // when the process ended
    std::optional<TarnexComm> service;
};

} // namespace tarnex
