#pragma once

#include "adapters/asio/asio_loop.h"
#include "adapters/system/disk_line_files.h"
#include "adapters/system/file_lock.h"
#include "adapters/system/file_settings_store.h"
#include "adapters/system/serial_ports.h"
#include "adapters/system/system_code_page.h"
#include "platform/exit_status.h"
#include "platform/notice_level.h"
#include "settings/load_settings.h"

namespace tarnex {

// What the service and the service tools take from the machine.
struct Machine {
    // program: the name under which it speaks to its operator.
    explicit Machine(const char* program);
    Machine(const Machine&) = delete;

    // Reads what holds from the start on; until then it has its defaults. kExitDone, or, when the
    // settings file is there and cannot be read, the status with which the program ends: it must
    // not go on with the defaults, which may name somebody else's devices. The operator is told.
    ExitStatus TakeSettings();

    // A line for the operator, with the program's name in front.
    void Say(const std::string& line) const { Say(NoticeLevel::kWarning, line); }
    void Say(NoticeLevel level, const std::string& line) const;

    const char* program;
    const SystemWords words;
    AsioLoop loop;
    FileSettingsStore store;
    StartSettings settings; // as the file says, without what is not supported
    SystemCodePage code_page;
    SystemSerialPorts ports;
    DiskLineFiles files;
    FileInstanceLock lock;
};

} // namespace tarnex
