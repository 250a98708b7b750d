#include "operator/command_line.h"

#include "operator/arguments.h"
#include "operator/commands.h"
#include "operator/json_output.h"
#include "operator/setup_questions.h"
#include "operator/text_output.h"

#include <ostream>

namespace tarnex {

namespace {

// The command line and the options that it fills.
class CommandLine {
  public:
    CommandLine(OperatorWorld& world, const ServiceStart& start) : world_(world), start_(start) {
        line_.Value("--settings-file", "FILE", "the settings file", world_.settings_path);
        line_.Value("--status-file", "FILE", "the status file of the service", world_.status_path);
        line_.Footer(
            "\"tarnexctl COMMAND --help\" shows the options and examples of a command.\n"
            "\n"
            "Exit status: 0 done; settings check, doctor: 1 warnings, 2 errors; test: 1 the\n"
            "alarm did not arrive; status --check: 1 warning, 2 critical, 3 unknown; 64 wrong\n"
            "usage, 65 impossible value, 66 missing file, 69 the service does not run, 73 a file\n"
            "cannot be written, 74 input or output failed, 77 no rights.");
        line_.RequireCommand();
        AddSettings();
        AddStatus();
        AddDryRuns();
        AddLog();
        AddHistory();
        AddSetup();
    }

    int Run(std::vector<std::string> arguments) {
        const auto status = line_.Read(std::move(arguments), world_.out, world_.err);
        return status ? *status : run_();
    }

  private:
    using Work = std::function<ExitStatus()>;

    Arguments Command(Arguments& parent, const std::string& name, const std::string& what,
                      const std::string& examples, Work work) {
        Arguments command = parent.Command(name, what);
        command.Footer("Examples:\n" + examples);
        if (work)
            command.OnGiven([this, work = std::move(work)] {
                run_ = work;
                return "";
            });
        return command;
    }

    void AddSettings();
    void AddStatus();
    void AddDryRuns();
    void AddLog();
    void AddHistory();
    void AddSetup();

    OperatorWorld& world_;
    const ServiceStart& start_;
    Arguments line_{
        "tarnexctl",
        "Sets up, watches and tries out TarnexComm, the service beside a GSM alarm unit."};
    Work run_;

    ListOptions list_;
    std::string name_;
    std::optional<std::string> value_;
    bool json_ = false;
    StatusOptions status_;
    int seconds_ = 300;
    std::string output_;
    WhyOptions why_;
    SimulateOptions simulate_;
    std::string path_;
    std::string schema_;
    TailOptions tail_;
    HistoryOptions history_;
    ReportOptions report_;
    std::vector<std::string> ids_;
    bool not_sent_ = false;
    SetupOptions setup_;
};

void CommandLine::AddSettings() {
    Arguments settings = Command(line_, "settings", "list, read, change and check the settings",
                                 "  tarnexctl settings list quiet\n"
                                 "  tarnexctl settings set send-count 2\n"
                                 "  tarnexctl settings check",
                                 nullptr);
    settings.RequireCommand();

    Arguments list = Command(settings, "list", "show settings, their values and what these do",
                             "  tarnexctl settings list\n"
                             "  tarnexctl settings list quiet mail\n"
                             "  tarnexctl settings list --long \"Check1(8)\"",
                             [this] { return SettingsList(world_, list_); });
    list.Words("NAME", "names, keys, or parts of names (all settings)", list_.names);
    list.Flag("--long", list_.long_form, "everything about each setting");
    list.Flag("--json", list_.json, "everything, as JSON");

    Arguments get = Command(settings, "get", "print the stored value of one setting",
                            "  tarnexctl settings get alarm-number-1\n"
                            "  tarnexctl settings get \"Text1(34)\"",
                            [this] { return SettingsGet(world_, name_); });
    get.RequiredWord("NAME", "plain name or key", name_);

    Arguments set = Command(settings, "set", "change one setting, as the service itself writes",
                            "  tarnexctl settings set alarm-number-1 13900000001\n"
                            "  tarnexctl settings set quiet-time on\n"
                            "  tarnexctl settings set \"Text1(38)\" 22:00",
                            [this] { return SettingsSet(world_, name_, value_); });
    set.RequiredWord("NAME", "plain name or key", name_);
    set.Value("VALUE", "", "the new value; on or off for switches (it is asked for)", value_);

    Arguments unset = Command(settings, "unset", "take the value of one setting away",
                              "  tarnexctl settings unset mail-server",
                              [this] { return SettingsUnset(world_, name_); });
    unset.RequiredWord("NAME", "plain name or key", name_);

    Arguments check =
        Command(settings, "check", "say what is wrong or dangerous; exit status 0, 1 or 2",
                "  tarnexctl settings check && echo all is well\n"
                "  tarnexctl settings check --json",
                [this] { return SettingsCheck(world_, json_); });
    check.Flag("--json", json_, "as JSON");
}

void CommandLine::AddStatus() {
    Arguments status = Command(line_, "status",
                               "show what the service is doing; exit status 69 if it does not run",
                               "  tarnexctl status\n"
                               "  tarnexctl status --check\n"
                               "  tarnexctl status --watch\n"
                               "  tarnexctl status --json | jq .unit.state",
                               [this] { return ShowStatus(world_, status_); });
    status.Flag("--watch", status_.watch, "again and again, until Ctrl-C");
    status.Flag("--long", status_.long_form, "everything, also what is as it should be");
    status.Flag("--check", status_.check,
                "one line for monitoring: OK, WARNING, CRITICAL or UNKNOWN; exit status 0 to "
                "3; goes alone");
    status.Flag("--json", status_.json, "as JSON");

    Command(line_, "doctor", "look at everything once and say what to do; exit status 0, 1 or 2",
            "  " + world_.words.with_all_rights + "tarnexctl doctor",
            [this] { return Examine(world_); });

    Arguments test = Command(
        line_, "test", "raise one harmless alarm and follow it to its end; exit status 0 or 1",
        "  tarnexctl test\n"
        "  tarnexctl test --for 600",
        [this] { return TryAlarm(world_, seconds_); });
    test.Number("--for", "SECONDS", "follow it for so many seconds at most", seconds_, 1, 86'400);

    Arguments metrics = Command(line_, "metrics", "the state as Prometheus text",
                                "  tarnexctl metrics\n"
                                "  tarnexctl metrics --output " +
                                    world_.words.metrics_file,
                                [this] { return ShowMetrics(world_, output_); });
    metrics.Value("--output", "FILE", "replace this file, in one step for readers", output_);
}

void CommandLine::AddDryRuns() {
    Arguments why =
        Command(line_, "why", "what would happen to an event now, and why; sends nothing",
                "  tarnexctl why \"1031010srv{[b^k^]}98%\"\n"
                "  tarnexctl why \"1031010{[b^k^]}\" --at \"2024-05-06 22:30\"",
                [this] { return ExplainRecord(world_, why_); });
    why.RequiredWord("RECORD", "event record, as monitoring programs send it", why_.record);
    why.Value("--at", "\"YYYY-MM-DD HH:MM\"", "at that local time instead of now", why_.at);
    why.Flag("--json", why_.json, "as JSON");

    Arguments simulate = Command(line_, "simulate",
                                 "run the service with these settings on simulated days of alarms",
                                 "  tarnexctl simulate\n"
                                 "  tarnexctl simulate --days 30 --seed 2 --start 2024-05-06",
                                 [this] { return Simulate(world_, simulate_); });
    simulate.Number("--days", "N", "how many days, 1 to 366", simulate_.days, 1, 366);
    simulate.Number("--seed", "S", "another number gives other alarms", simulate_.seed, 0,
                    1'000'000'000);
    simulate.Value("--start", "YYYY-MM-DD", "the first day (today)", simulate_.start);
    simulate.Flag("--json", simulate_.json, "as JSON");
}

void CommandLine::AddHistory() {
    Arguments history =
        Command(line_, "history", "what became of each SMS and mail, and when the unit was there",
                "  tarnexctl history --unsent\n"
                "  tarnexctl history --since 2h --follow\n"
                "  tarnexctl history --since 2024-05-06 --json | jq -r .fate",
                [this] { return ShowHistory(world_, history_); });
    history.Flag("--unsent", history_.not_sent, "only what was not sent, nor sent again");
    history.Value("--since", "TIME", "from that moment on, or no older than that", history_.since);
    history.Number("--lines", "N", "no more than the last so many", history_.lines, 1, 1'000'000);
    history.Flag("--follow", history_.follow,
                 "then new rows, and those whose fate changes, until Ctrl-C");
    history.Flag("--json", history_.json, "everything, one JSON object a line");

    Arguments report =
        Command(line_, "report", "what some days brought: alarms, messages, the unit",
                "  tarnexctl report\n"
                "  tarnexctl report --days 7 --html week.html",
                [this] { return Report(world_, report_); });
    report.Number("--days", "N", "the last so many days, today among them", report_.days, 1, 3660);
    report.Value("--html", "FILE", "replace this file by a page with plots; - prints it",
                 report_.html);

    Arguments resend = Command(line_, "resend", "have messages sent again by the running service",
                               "  tarnexctl resend 1041 1042\n"
                               "  tarnexctl resend --unsent",
                               [this] { return Resend(world_, ids_, not_sent_); });
    resend.Words("ID", "messages, by their ids in the history", ids_);
    resend.Flag("--unsent", not_sent_, "all that were not sent, nor sent again");
}

void CommandLine::AddLog() {
    Arguments log = Command(line_, "log", "make the log database, and follow it",
                            "  tarnexctl log create\n"
                            "  tarnexctl log tail",
                            nullptr);
    log.RequireCommand();
    Arguments create = Command(log, "create", "make a log database; never over an existing file",
                               "  tarnexctl log create\n"
                               "  tarnexctl log create " +
                                   world_.words.log_file,
                               [this] { return LogCreate(world_, path_, schema_); });
    create.Value("FILE", "", "the database (the one of the settings)", path_);
    create.Value("--schema", "FILE", "make it by this file (the installed one)", schema_);

    Arguments tail = Command(log, "tail", "show the last rows and then new ones, until Ctrl-C",
                             "  tarnexctl log tail\n"
                             "  tarnexctl log tail --lines 50 --once\n"
                             "  tarnexctl log tail --json --once | jq -r .message",
                             [this] { return LogTail(world_, tail_); });
    tail.Value("FILE", "", "the database (the one of the settings)", tail_.path);
    tail.Number("--lines", "N", "how many of the present rows", tail_.lines, 0, 1'000'000);
    tail.Flag("--once", tail_.once, "end after the present rows");
    tail.Flag("--json", tail_.json, "a JSON object for each row, one a line");
}

void CommandLine::AddSetup() {
    Arguments setup = Command(
        line_, "setup", "first start: ask what is needed, write the settings, make the log",
        "  " + world_.words.with_all_rights +
            "tarnexctl setup\n"
            "  tarnexctl setup --port search --number-1 13900000001 --number-2 13900000002 \\\n"
            "      --sms-centre +8613800100500 --mail-server none",
        [this, usual = world_.settings_path] {
            const ExitStatus status = Setup(world_, setup_);
            // Other settings than its own do not reach the service.
            return status == kExitDone && world_.settings_path == usual ? OfferStart(world_, start_)
                                                                        : status;
        });
    for (const SetupQuestion& question : SetupQuestions())
        setup.EachValue(FlagOf(question), question.secret ? "FILE" : "ANSWER",
                        PromptOf(question, world_.words) +
                            (question.secret ? ", in the first line of a file" : ""),
                        [this, name = question.name](const std::string& value) {
                            const bool first = setup_.answers.emplace(name, value).second;
                            return first ? "" : "it was given twice";
                        });
    setup.Value("--log-database", "FILE", "log database (log.db beside the history)",
                setup_.log_path);
    setup.Flag("--force", setup_.force, "write over existing settings; they stay as .old");
}

} // namespace

int RunTarnexctl(std::vector<std::string> arguments, OperatorWorld& world,
                 const ServiceStart& start) {
    try {
        const int status = CommandLine(world, start).Run(std::move(arguments));
        if (!world.out.flush())
            throw Failure(kExitIo, "standard output cannot be written: look for a full disk");
        return status;
    } catch (const Failure& failure) {
        world.err << "tarnexctl: " << Printable(failure.what()) << '\n';
        return failure.status;
    } catch (const Json::exception&) {
        world.err << "tarnexctl: " << Printable(world.status_path)
                  << " lacks something: name another file with --status-file, or restart the "
                     "service\n";
        return kExitData;
    } catch (const std::exception& error) {
        world.err << "tarnexctl: " << Printable(error.what()) << " (a fault of this program)\n";
        return kExitSoftware;
    }
}

} // namespace tarnex
