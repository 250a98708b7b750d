#pragma once

#include "operator/operator_world.h"

#include <cstdint>
#include <map>

namespace tarnex {

// The commands of tarnexctl. Each does its work and returns the exit status, or throws Failure.

struct ListOptions {
    std::vector<std::string> names; // settings, or parts of names; none: all
    bool long_form = false;
    bool json = false;
};
ExitStatus SettingsList(OperatorWorld& world, const ListOptions& options);
ExitStatus SettingsGet(OperatorWorld& world, const std::string& name);
// A missing value is asked for.
ExitStatus SettingsSet(OperatorWorld& world, const std::string& name,
                       const std::optional<std::string>& value);
ExitStatus SettingsUnset(OperatorWorld& world, const std::string& name);
ExitStatus SettingsCheck(OperatorWorld& world, bool json);

struct StatusOptions {
    bool watch = false;
    bool json = false;
    bool long_form = false;
    bool check = false; // one line and the exit status of a monitoring plugin
};
ExitStatus ShowStatus(OperatorWorld& world, const StatusOptions& options);
// output: the file to be replaced; "" for standard output.
ExitStatus ShowMetrics(OperatorWorld& world, const std::string& output);

// Looks at everything once: kExitWarnings or kExitErrors when there is something to do.
ExitStatus Examine(OperatorWorld& world);
// Raises one harmless alarm and follows it for so long at most: kExitFailed when it does not
// arrive.
ExitStatus TryAlarm(OperatorWorld& world, int seconds);

struct WhyOptions {
    std::string record;
    std::string at; // "yyyy-mm-dd hh:mm"; "" for now
    bool json = false;
};
ExitStatus ExplainRecord(OperatorWorld& world, const WhyOptions& options);

struct SimulateOptions {
    int days = 7;
    int seed = 1;
    std::string start; // "yyyy-mm-dd"; "" for today
    bool json = false;
};
ExitStatus Simulate(OperatorWorld& world, const SimulateOptions& options);

// path: of the database; "" for the one that the settings name. schema: "" for the installed one.
ExitStatus LogCreate(OperatorWorld& world, const std::string& path, const std::string& schema);
struct TailOptions {
    std::string path; // "" for the one that the settings name
    int lines = 10;
    bool once = false; // ends after the present rows
    bool json = false;
};
ExitStatus LogTail(OperatorWorld& world, const TailOptions& options);

struct HistoryOptions {
    bool not_sent = false; // only what was not sent
    std::string since;     // a moment, or an age such as "2h"; "" for all
    int lines = 0;         // the last so many; 0: the usual number, or all that since means
    bool follow = false;
    bool json = false;
};
ExitStatus ShowHistory(OperatorWorld& world, const HistoryOptions& options);
struct ReportOptions {
    int days = 30;    // the last ones, today among them
    std::string html; // the page's file, "-" for standard output; "" for a text there
};
ExitStatus Report(OperatorWorld& world, const ReportOptions& options);
// not_sent: all that were not sent, instead of ids.
ExitStatus Resend(OperatorWorld& world, const std::vector<std::string>& ids, bool not_sent);

struct SetupOptions {
    std::map<std::string, std::string> answers; // by question; of a secret one a file
    std::string log_path;                       // "" for log.db above the folder of the settings
    bool force = false;                         // write over existing settings
};
ExitStatus Setup(OperatorWorld& world, const SetupOptions& options);

} // namespace tarnex
