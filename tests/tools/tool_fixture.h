#pragma once

#include "adapters/system/system_code_page.h"
#include "settings/my_ini_file.h"
#include "simulator/simulated_clock.h"
#include "simulator/simulated_serial.h"
#include "simulator/simulated_stores.h"
#include "simulator/simulated_unit.h"
#include "tools/tool_form.h"
#include "ui/file_dialog.h"

#include <gtest/gtest.h>

namespace tarnex {

// A file dialog that a test answers.
class TestFileDialog : public FileDialog {
  public:
    void Show(const Text& filter, std::function<void(const std::string&)> chosen) override {
        Filter = filter;
        Choose = std::move(chosen);
    }
    void Withdraw() override { Choose = nullptr; }

    Text Filter;
    std::function<void(const std::string&)> Choose; // nullptr: no dialog is open
};

// A data record of a HEX file, with its line end.
inline std::string HexLine(unsigned address, const std::string& data) {
    std::string bytes{char(data.size()), char(address >> 8), char(address), '\0'};
    bytes += data;
    unsigned sum = 0;
    for (const char byte : bytes)
        sum += std::uint8_t(byte);
    bytes += char(-sum);
    std::string line = ":";
    for (const char byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", unsigned(std::uint8_t(byte)));
        line += digits;
    }
    return line + "\n";
}

// A unit on COM3 that is to be updated from "new.hex" to version "NEWER 1.0", and the world of a
// tool around it.
class ToolTest : public testing::Test {
  protected:
    ToolTest() {
        ports.Plug(3, unit);
        files.Files["new.hex"] = HexLine(0, "VERSION=NEWER 1.0") + ":00000001FF\n";
        unit.Memory.Name = "673A0031"; // 机1
        unit.OnCommand([this](std::string_view line) { heard.emplace_back(line); });
    }
    ~ToolTest() override { ports.Unplug(3); }

    SimulatedClock clock;
    SimulatedSerialPorts ports{clock};
    SimulatedUnit unit{clock};
    SimulatedLineFiles files;
    SimulatedSettingsStore store;
    SystemCodePage gbk{"GBK"};
    SimulatedInstanceLock lock;
    TestFileDialog dialog;
    std::vector<std::string> heard; // by the unit
    std::optional<Duration> ended;  // when the program ended
    ToolWorld world{.clock = clock,
                    .serial_ports = ports,
                    .files = files,
                    .settings_store = store,
                    .code_page = gbk,
                    .instance_lock = lock,
                    .notice = [](const std::string&) {},
                    .end_process = [this] { ended = clock.Now(); }};
};

} // namespace tarnex
