#pragma once

#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/datagram_socket.h"
#include "platform/exit_status.h"
#include "platform/file_owners.h"
#include "platform/file_readers.h"
#include "platform/log_files.h"
#include "platform/machine_look.h"
#include "platform/message_history.h"
#include "platform/result.h"
#include "platform/serial_port.h"
#include "platform/service_answer.h"
#include "platform/settings_store.h"
#include "platform/system_words.h"

#include <iosfwd>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarnex {

// Ends a command: what is wrong, why, and what to do, in one line.
struct Failure : std::runtime_error {
    Failure(ExitStatus exit_status, const std::string& line)
        : std::runtime_error(line), status(exit_status) {}
    ExitStatus status;
};

// The world that tarnexctl works in.
struct OperatorWorld {
    std::ostream& out;
    std::ostream& err;
    const SystemWords& words;
    std::vector<std::string> modules{}; // the program and what it runs with, each with its version
    bool colours = false;               // out shows them
    bool progress = false;              // err is watched by a person
    // Asks a person for a line, without an echo when it is secret; nothing at the end of the input.
    // Empty when nobody is there to answer.
    std::function<std::optional<std::string>(const std::string& prompt, bool secret)> ask;

    std::string settings_path;
    std::string status_path;
    std::string lock_path; // of the service
    std::string history_path{};
    std::string data_folder;  // of the sample settings and the schema that were installed
    SerialPaths serial_paths; // the devices where the settings name none

    FileOwners& owners;
    LogFiles& logs;
    MachineLook& machine;
    std::function<std::unique_ptr<SettingsStore>(const std::string& path)> open_settings;
    // The trouble follows the name of the file.
    std::function<Result<std::unique_ptr<HistoryReader>>(const std::string& path)> open_history{};
    // Its answer to a request.
    std::function<ServiceAnswer(const std::string& request)> ask_service{};
    // nullptr for a name that the system does not know; it knows "GBK" and "UTF-8".
    std::function<std::unique_ptr<CodePage>(const std::string& name)> make_code_page;
    // Puts a new file with that content in the place of path in one step for readers.
    std::function<std::error_code(const std::string& path, std::string_view content, Readers)>
        replace_file;

    // What a server says first; the trouble where it says nothing.
    std::function<Result<std::string>(const std::string& host, std::uint16_t port)> greeting_of;
    // One datagram; "", or what stands in the way.
    std::function<std::string(const Endpoint& to, std::string_view bytes)> send_datagram;

    std::function<std::chrono::system_clock::time_point()> now;
    std::function<CalendarTime(std::chrono::system_clock::time_point)> local_time;
    // Waits; false when the command is to end instead.
    std::function<bool(Duration)> pause;
    // Whether the process lives and is the service.
    std::function<bool(long process)> is_service;
};

} // namespace tarnex
