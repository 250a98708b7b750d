#pragma once

#include "platform/asio/tty_ports.h"
#include "platform/linux/disk_line_files.h"
#include "platform/linux/file_lock.h"
#include "platform/linux/file_settings_store.h"
#include "platform/linux/iconv_code_page.h"
#include "settings/start_settings.h"

namespace tarnex {

// What every program of this executable takes from the machine.
struct Machine {
    // program: the name under which it speaks to its operator.
    explicit Machine(const char* program);

    // A line for the operator, on standard error, with the program's name in front.
    void Say(const std::string& line) const;

    const char* program;
    AsioLoop loop;
    FileSettingsStore store;
    StartSettings settings;
    IconvCodePage code_page;
    TtyPorts ports;
    DiskLineFiles files;
    FileInstanceLock lock;

  private:
    StartSettings ReadFile() const;
};

} // namespace tarnex
