#pragma once

#include "tests/world.h"
#include "tools/tool_form.h"
#include "ui/file_dialog.h"

namespace tarnex {

// A file dialog that a test answers.
struct TestFileDialog : FileDialog {
    void Show(const Text&, std::function<void(const std::string&)> chosen) override {
        Choose = std::move(chosen);
    }
    void Withdraw() override { Choose = nullptr; }

    std::function<void(const std::string&)> Choose; // nullptr: no dialog is open
};

// A unit on COM3, which "new.hex" brings to version "NEWER 1.0", and the world of a tool around it.
struct ToolTest : WorldTest {
    ToolTest() {
        ports.Plug(3, unit);
        files.Files["new.hex"] = ":1100000056455253494F4E3D4E4557455220312E305C\n:00000001FF\n";
        for (int record = 0; record < 2000; ++record) { // of 16 bytes
            char line[64];
            std::snprintf(line, sizeof line, ":10%04X00%032d00\n", unsigned(record * 16), 0);
            files.Files["long.hex"] += line;
        }
        files.Files["long.hex"] += ":00000001FF\n";
        unit.Memory.Name = "673A0031"; // 机1
        unit.OnCommand([this](std::string_view line) { heard.emplace_back(line); });
    }
    ~ToolTest() override { ports.Unplug(3); }

    SimulatedInstanceLock lock;
    const SystemWords words{};
    TestFileDialog dialog;
    std::vector<std::string> heard; // by the unit
    std::optional<Duration> ended;  // when the program ended
    ToolWorld world{.clock = clock,
                    .serial_ports = ports,
                    .files = files,
                    .settings_store = store,
                    .code_page = code_page,
                    .instance_lock = lock,
                    .words = words,
                    .notice = [](NoticeLevel, const std::string&) {},
                    .end_process = [this] { ended = clock.Now(); }};
};

} // namespace tarnex
