#pragma once

#include "platform/linux/iconv_code_page.h"
#include "service/tarnex_comm.h"
#include "simulator/simulated_clock.h"
#include "simulator/simulated_mail_server.h"
#include "simulator/simulated_monitor.h"
#include "simulator/simulated_network.h"
#include "simulator/simulated_serial.h"
#include "simulator/simulated_stores.h"
#include "simulator/simulated_unit.h"

#include <map>
#include <optional>

namespace tarnex {

// The settings file of a test, by section and key.
class SettingsText {
  public:
    SettingsText() {
        Set("Check", "Check1(13)", "1");
        for (int key = 8; key <= 12; ++key)
            Set("Check", "Check1(" + std::to_string(key) + ")", "1");
        Set("Check", "Check1(42)", "1");
        Set("Text", "Text1(34)", "13900000001");
        Set("Text", "Text1(35)", "13900000002");
        Set("Text", "Text1(36)", "+8613800100500");
        Set("Text", "Text1(32)", "TX-7");
        Set("Text", "Text1(37)", "log.db");
        Set("Combo", "Combo1(5)", "3");
        Set("Combo", "Combo1(6)", "1");
        Set("Check", "Check1(44)", "1");
        Set("Check", "Check1(45)", "0");
        Set("Check", "Check1(57)", "1");
    }
    SettingsText& Set(const std::string& section, const std::string& key, std::string value) {
        sections_[section][key] = std::move(value);
        return *this;
    }
    SettingsText& Remove(const std::string& section, const std::string& key) {
        sections_[section].erase(key);
        return *this;
    }
    std::string Content() const {
        std::string content;
        for (const auto& [section, keys] : sections_) {
            content += "[" + section + "]\r\n";
            for (const auto& [key, value] : keys)
                content += key + "=" + value + "\r\n";
        }
        return content;
    }

  private:
    std::map<std::string, std::map<std::string, std::string>> sections_;
};

// The whole system in memory: the real service, a unit on COM3, a monitoring program on link 1 and
// a mail network.
struct SimulatedSystem {
    SimulatedSystem() {
        store.SetContent(settings.Content());
        ports.Plug(3, unit);
    }
    void StartService(const std::string& command_line = "") {
        service.emplace(
            TarnexComm::World{.clock = clock,
                              .serial_ports = ports,
                              .sockets = network,
                              .tcp = tcp,
                              .log_table = *log_table,
                              .settings_store = store,
                              .code_page = gbk,
                              .controller = controller,
                              .instance_lock = lock,
                              .view = nullptr,
                              .notice = [this](const std::string& line) { said.push_back(line); },
                              .echo = nullptr,
                              .end_process = [this] { ended_at = clock.Now(); }});
        service->Form_Load(command_line);
    }

    SimulatedClock clock;
    SimulatedSerialPorts ports{clock};
    SimulatedUnit unit{clock};
    SimulatedNetwork network{clock};
    SimulatedTcpNetwork tcp{clock};
    SimulatedLogTable log;
    LogTable* log_table = &log; // or another one, before the service starts
    SimulatedSettingsStore store;
    IconvCodePage gbk{"GBK"};
    SimulatedServiceController controller;
    SimulatedInstanceLock lock;
    SettingsText settings;
    std::vector<std::string> said;    // to the operator
    std::optional<Duration> ended_at; // when the process ended
    Monitor monitor{clock, network, gbk, {.name = u"WebMon"}};
    std::optional<TarnexComm> service;
};

} // namespace tarnex
