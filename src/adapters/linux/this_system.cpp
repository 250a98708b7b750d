#include "adapters/system/this_system.h"

#include "adapters/system/environment.h"

namespace tarnex {

SystemWords WordsOfThisSystem() {
    return {.start_service = "systemctl start tarnexcomm",
            .stop_service = "systemctl stop tarnexcomm",
            .restart_service = "systemctl restart tarnexcomm",
            .with_all_rights = "sudo ",
            .who_may = "root or as the user of the service",
            .how_to_become_them = " (sudo tarnexctl ...); even root may do no more in a user's "
                                  "folder than that user",
            .settings_folder = "/var/lib/tarnexcomm",
            .data_folder = "/var/lib/tarnexcomm",
            .runtime_folder = "/run/tarnexcomm",
            .close_file = "chmod o-r %1",
            .text_converter = "iconv",
            .serial_device = "/dev/ttyUSB0",
            .log_file = "/srv/tarnex/log.db",
            .metrics_file = "/var/lib/prometheus/node-exporter/tarnexcomm.prom"};
}

// The package and the service manager have made them.
void MakeFoldersOfThisSystem() {}

std::string HistoryPath() {
    const std::string folder = Environment("WINDIR");
    return (folder.empty() ? WordsOfThisSystem().data_folder : folder) + "/history.db";
}

} // namespace tarnex
