#pragma once

#include "adapters/sqlite/sqlite_log_files.h"
#include "adapters/system/file_settings_store.h"
#include "adapters/system/folder_owner.h"
#include "adapters/system/replace_file.h"
#include "adapters/system/serial_names.h"
#include "adapters/system/system_code_page.h"
#include "adapters/system/this_system.h"
#include "operator/command_line.h"
#include "operator/moment.h"
#include "tests/temp_folder.h"

#include <algorithm>
#include <chrono>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json_fwd.hpp>

namespace tarnex {

using nlohmann::json;

// A machine whose devices a test names.
struct FakeMachine : MachineLook {
    PortLook Port(const std::string& device) override {
        const auto found = devices.find(device);
        return found == devices.end() ? PortLook{.device = device} : found->second;
    }
    std::vector<std::string> Ports() override { return ports; }
    Holder LockHolder(const std::string&) override { return lock_holder; }
    std::string KeptFromService(const std::string&) override { return kept_from_service; }
    std::string PortHolder(const std::string& address, std::uint16_t port) override {
        return address == "127.0.0.1" && port == 7842 ? "process 812 (nc)" : "";
    }
    std::string ClockTrouble() override { return ""; }

    std::map<std::string, PortLook> devices;
    std::vector<std::string> ports;
    Holder lock_holder;
    std::string kept_from_service;
};

// tarnexctl on files of the test's own, with nobody at the terminal.
class OperatorTest : public testing::Test {
  protected:
    OperatorTest() { WriteFile(settings, FileContent(TARNEX_PACKAGING "/Tarnex.ini.sample")); }

    int Run(std::vector<std::string> arguments) {
        out.str("");
        err.str("");
        return RunTarnexctl(std::move(arguments), world, start);
    }
    // What it prints when all is well.
    std::string Output(std::vector<std::string> arguments) {
        EXPECT_EQ(Run(std::move(arguments)), 0) << err.str();
        return out.str();
    }
    // What a command says to programs, of those that say it in lines the last one. All of it must
    // be as the schema of that command wants it.
    json Answer(std::vector<std::string> arguments);
    // It ends so and says why in one line, and nothing else.
    void Fails(int status, std::vector<std::string> arguments, const std::string& why) {
        EXPECT_EQ(Run(std::move(arguments)), status) << why << err.str();
        EXPECT_NE(Error().find(why), std::string::npos) << err.str();
    }
    // The line on standard error, which must be the only one, without the program's name.
    std::string Error() const {
        const std::string text = err.str();
        EXPECT_EQ(std::ranges::count(text, '\n'), 1) << text;
        EXPECT_TRUE(text.starts_with("tarnexctl: ")) << text;
        return text.substr(std::min<std::size_t>(11, text.size()));
    }
    bool Says(const std::string& part) const { return out.str().find(part) != std::string::npos; }
    bool Warns(const std::string& part) const { return err.str().find(part) != std::string::npos; }

    const std::string root = ToPath("/").is_absolute() ? "/" : "C:/";
    const TempFolder folder;
    const std::string settings = folder / "Tarnex.ini";
    std::ostringstream out;
    std::ostringstream err;
    long service_process = 4711;
    int pauses_left = 0; // then a command that follows something ends
    std::function<void()> on_pause = [] {};
    std::chrono::system_clock::time_point now{std::chrono::seconds(1'714'982'400)};
    std::chrono::hours ahead_of_utc{0};
    SystemFileOwners owners;
    const SystemWords words = WordsOfThisSystem();
    SqliteLogFiles logs;
    FakeMachine machine;
    Result<std::string> mail_greeting{"220 ready\r\n"};
    ServiceStart start;
    std::vector<std::string> datagrams; // sent to the service
    OperatorWorld world{
        .out = out,
        .err = err,
        .words = words,
        .colours = false,
        .progress = false,
        .ask = nullptr,
        .settings_path = settings,
        .status_path = folder / "status.json",
        .lock_path = folder / "lock",
        .data_folder = TARNEX_PACKAGING,
        .serial_paths = SerialDevicePaths({}),
        .owners = owners,
        .logs = logs,
        .machine = machine,
        .open_settings =
            [](const std::string& path) { return std::make_unique<FileSettingsStore>(path); },
        .make_code_page = [](const std::string& name) -> std::unique_ptr<CodePage> {
            if (!SystemCodePage::Supported(name))
                return nullptr;
            return std::make_unique<SystemCodePage>(name);
        },
        .replace_file = ReplaceFile,
        .greeting_of = [this](const std::string&, std::uint16_t) { return mail_greeting; },
        .send_datagram =
            [this](const Endpoint&, std::string_view bytes) {
                datagrams.emplace_back(bytes);
                return std::string();
            },
        .now = [this] { return now; },
        .local_time =
            [this](std::chrono::system_clock::time_point time) {
                return CalendarOf(std::chrono::floor<std::chrono::seconds>(time) + ahead_of_utc);
            },
        .pause =
            [this](Duration) {
                on_pause();
                return pauses_left-- > 0;
            },
        .is_service = [this](long process) { return process == service_process; }};
};

} // namespace tarnex
