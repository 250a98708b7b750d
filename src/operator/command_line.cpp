#include "operator/command_line.h"

#include "operator/arguments.h"
#include "operator/commands.h"
#include "operator/json_output.h"
#include "operator/setup_questions.h"
#include "operator/text_output.h"

#include <charconv>
#include <ostream>

#include <CLI/CLI.hpp>

namespace tarnex {

namespace {

// "", or what is wrong with the id of a message.
std::string WrongId(const std::string& word) {
    std::int64_t id = 0;
    const char* const end = word.data() + word.size();
    const auto [stopped, problem] = std::from_chars(word.data(), end, id);
    const bool is_one = problem == std::errc() && stopped == end && id > 0;
    return is_one ? "" : "\"" + word + "\" is no id as \"tarnexctl history\" shows them";
}

// The command line and the options that it fills.
class CommandLine {
  public:
    CommandLine(OperatorWorld& world, const ServiceStart& start) : world_(world), start_(start) {
        app_.add_option("--settings-file", world_.settings_path, "the settings file")
            ->type_name("FILE")
            ->capture_default_str();
        app_.add_option("--status-file", world_.status_path, "the status file of the service")
            ->type_name("FILE")
            ->capture_default_str();
        app_.footer(
            "\"tarnexctl COMMAND --help\" shows the options and examples of a command.\n"
            "\n"
            "Exit status: 0 done; settings check, doctor: 1 warnings, 2 errors; test: 1 the\n"
            "alarm did not arrive; status --check: 1 warning, 2 critical, 3 unknown; 64 wrong\n"
            "usage, 65 impossible value, 66 missing file, 69 the service does not run, 73 a file\n"
            "cannot be written, 74 input or output failed, 77 no rights.");
        app_.require_subcommand(1);
        app_.fallthrough();
        AddSettings();
        AddStatus();
        AddDryRuns();
        AddLog();
        AddHistory();
        AddSetup();
    }

    int Run(std::vector<std::string> arguments) {
        const auto status = ReadArguments(app_, std::move(arguments), world_.out, world_.err);
        return status ? *status : run_();
    }

  private:
    using Work = std::function<ExitStatus()>;

    CLI::App* Command(CLI::App& parent, const std::string& name, const std::string& what,
                      const std::string& examples, Work work) {
        CLI::App* command = parent.add_subcommand(name, what);
        command->footer("Examples:\n" + examples);
        if (work)
            command->callback([this, work = std::move(work)] { run_ = work; });
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
    CLI::App app_{"Sets up, watches and tries out TarnexComm, the service beside a GSM alarm unit.",
                  "tarnexctl"};
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
    std::vector<std::int64_t> ids_;
    bool not_sent_ = false;
    SetupOptions setup_;
};

void CommandLine::AddSettings() {
    CLI::App& settings = *Command(app_, "settings", "list, read, change and check the settings",
                                  "  tarnexctl settings list quiet\n"
                                  "  tarnexctl settings set send-count 2\n"
                                  "  tarnexctl settings check",
                                  nullptr);
    settings.require_subcommand(1);

    CLI::App* list = Command(settings, "list", "show settings, their values and what these do",
                             "  tarnexctl settings list\n"
                             "  tarnexctl settings list quiet mail\n"
                             "  tarnexctl settings list --long \"Check1(8)\"",
                             [this] { return SettingsList(world_, list_); });
    list->add_option("NAME", list_.names, "names, keys, or parts of names (all settings)")
        ->type_name("");
    list->add_flag("--long", list_.long_form, "everything about each setting");
    list->add_flag("--json", list_.json, "everything, as JSON");

    CLI::App* get = Command(settings, "get", "print the stored value of one setting",
                            "  tarnexctl settings get alarm-number-1\n"
                            "  tarnexctl settings get \"Text1(34)\"",
                            [this] { return SettingsGet(world_, name_); });
    get->add_option("NAME", name_, "plain name or key")->type_name("")->required();

    CLI::App* set = Command(settings, "set", "change one setting, as the service itself writes",
                            "  tarnexctl settings set alarm-number-1 13900000001\n"
                            "  tarnexctl settings set quiet-time on\n"
                            "  tarnexctl settings set \"Text1(38)\" 22:00",
                            [this] { return SettingsSet(world_, name_, value_); });
    set->add_option("NAME", name_, "plain name or key")->type_name("")->required();
    set->add_option("VALUE", value_, "the new value; on or off for switches (it is asked for)")
        ->type_name("");

    CLI::App* unset = Command(settings, "unset", "take the value of one setting away",
                              "  tarnexctl settings unset mail-server",
                              [this] { return SettingsUnset(world_, name_); });
    unset->add_option("NAME", name_, "plain name or key")->type_name("")->required();

    CLI::App* check =
        Command(settings, "check", "say what is wrong or dangerous; exit status 0, 1 or 2",
                "  tarnexctl settings check && echo all is well\n"
                "  tarnexctl settings check --json",
                [this] { return SettingsCheck(world_, json_); });
    check->add_flag("--json", json_, "as JSON");
}

void CommandLine::AddStatus() {
    CLI::App* status =
        Command(app_, "status", "show what the service is doing; exit status 69 if it does not run",
                "  tarnexctl status\n"
                "  tarnexctl status --check\n"
                "  tarnexctl status --watch\n"
                "  tarnexctl status --json | jq .unit.state",
                [this] { return ShowStatus(world_, status_); });
    CLI::Option* watch =
        status->add_flag("--watch", status_.watch, "again and again, until Ctrl-C");
    status->add_flag("--long", status_.long_form, "everything, also what is as it should be");
    status
        ->add_flag("--check", status_.check,
                   "one line for monitoring: OK, WARNING, CRITICAL or UNKNOWN; exit status 0 to "
                   "3; not with --watch")
        ->excludes(watch);
    status->add_flag("--json", status_.json, "as JSON");

    Command(app_, "doctor", "look at everything once and say what to do; exit status 0, 1 or 2",
            "  " + world_.words.with_all_rights + "tarnexctl doctor",
            [this] { return Examine(world_); });

    CLI::App* test = Command(
        app_, "test", "raise one harmless alarm and follow it to its end; exit status 0 or 1",
        "  tarnexctl test\n"
        "  tarnexctl test --for 600",
        [this] { return TryAlarm(world_, seconds_); });
    test->add_option("--for", seconds_, "follow it for so many seconds at most")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 86'400).description(""))
        ->capture_default_str();

    CLI::App* metrics = Command(app_, "metrics", "the state as Prometheus text",
                                "  tarnexctl metrics\n"
                                "  tarnexctl metrics --output " +
                                    world_.words.metrics_file,
                                [this] { return ShowMetrics(world_, output_); });
    metrics->add_option("--output", output_, "replace this file, in one step for readers")
        ->type_name("FILE");
}

void CommandLine::AddDryRuns() {
    CLI::App* why =
        Command(app_, "why", "what would happen to an event now, and why; sends nothing",
                "  tarnexctl why \"1031010srv{[b^k^]}98%\"\n"
                "  tarnexctl why \"1031010{[b^k^]}\" --at \"2024-05-06 22:30\"",
                [this] { return ExplainRecord(world_, why_); });
    why->add_option("RECORD", why_.record, "event record, as monitoring programs send it")
        ->type_name("")
        ->required();
    why->add_option("--at", why_.at, "at that local time instead of now")
        ->type_name("\"YYYY-MM-DD HH:MM\"");
    why->add_flag("--json", why_.json, "as JSON");

    CLI::App* simulate =
        Command(app_, "simulate", "run the service with these settings on simulated days of alarms",
                "  tarnexctl simulate\n"
                "  tarnexctl simulate --days 30 --seed 2 --start 2024-05-06",
                [this] { return Simulate(world_, simulate_); });
    simulate->add_option("--days", simulate_.days, "how many days, 1 to 366")
        ->type_name("N")
        ->check(CLI::Range(1, 366).description(""))
        ->capture_default_str();
    simulate->add_option("--seed", simulate_.seed, "another number gives other alarms")
        ->type_name("S")
        ->check(CLI::Range(0, 1'000'000'000).description(""))
        ->capture_default_str();
    simulate->add_option("--start", simulate_.start, "the first day (today)")
        ->type_name("YYYY-MM-DD");
    simulate->add_flag("--json", simulate_.json, "as JSON");
}

void CommandLine::AddHistory() {
    CLI::App* history =
        Command(app_, "history", "what became of each SMS and mail, and when the unit was there",
                "  tarnexctl history --unsent\n"
                "  tarnexctl history --since 2h --follow\n"
                "  tarnexctl history --since 2024-05-06 --json | jq -r .fate",
                [this] { return ShowHistory(world_, history_); });
    history->add_flag("--unsent", history_.not_sent, "only what was not sent, nor sent again");
    history->add_option("--since", history_.since, "from that moment on, or no older than that")
        ->type_name("TIME");
    history->add_option("--lines", history_.lines, "no more than the last so many")
        ->type_name("N")
        ->check(CLI::Range(1, 1'000'000));
    history->add_flag("--follow", history_.follow,
                      "then new rows, and those whose fate changes, until Ctrl-C");
    history->add_flag("--json", history_.json, "everything, one JSON object a line");

    CLI::App* report = Command(app_, "report", "what some days brought: alarms, messages, the unit",
                               "  tarnexctl report\n"
                               "  tarnexctl report --days 7 --html week.html",
                               [this] { return Report(world_, report_); });
    report->add_option("--days", report_.days, "the last so many days, today among them")
        ->type_name("N")
        ->check(CLI::Range(1, 3660).description(""))
        ->capture_default_str();
    report
        ->add_option("--html", report_.html, "replace this file by a page with plots; - prints it")
        ->type_name("FILE");

    CLI::App* resend = Command(app_, "resend", "have messages sent again by the running service",
                               "  tarnexctl resend 1041 1042\n"
                               "  tarnexctl resend --unsent",
                               [this] { return Resend(world_, ids_, not_sent_); });
    resend->add_option("ID", ids_, "messages, by their ids in the history")
        ->type_name("")
        ->check(WrongId);
    resend->add_flag("--unsent", not_sent_, "all that were not sent, nor sent again");
}

void CommandLine::AddLog() {
    CLI::App& log = *Command(app_, "log", "make the log database, and follow it",
                             "  tarnexctl log create\n"
                             "  tarnexctl log tail",
                             nullptr);
    log.require_subcommand(1);
    CLI::App* create = Command(log, "create", "make a log database; never over an existing file",
                               "  tarnexctl log create\n"
                               "  tarnexctl log create " +
                                   world_.words.log_file,
                               [this] { return LogCreate(world_, path_, schema_); });
    create->add_option("FILE", path_, "the database (the one of the settings)")->type_name("");
    create->add_option("--schema", schema_, "make it by this file (the installed one)")
        ->type_name("FILE");

    CLI::App* tail = Command(log, "tail", "show the last rows and then new ones, until Ctrl-C",
                             "  tarnexctl log tail\n"
                             "  tarnexctl log tail --lines 50 --once\n"
                             "  tarnexctl log tail --json --once | jq -r .message",
                             [this] { return LogTail(world_, tail_); });
    tail->add_option("FILE", tail_.path, "the database (the one of the settings)")->type_name("");
    tail->add_option("--lines", tail_.lines, "how many of the present rows")
        ->type_name("N")
        ->check(CLI::Range(0, 1'000'000).description(""))
        ->capture_default_str();
    tail->add_flag("--once", tail_.once, "end after the present rows");
    tail->add_flag("--json", tail_.json, "a JSON object for each row, one a line");
}

void CommandLine::AddSetup() {
    CLI::App* setup = Command(
        app_, "setup", "first start: ask what is needed, write the settings, make the log",
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
        setup
            ->add_option_function<std::string>(
                FlagOf(question),
                [this, name = question.name](const std::string& value) {
                    setup_.answers[name] = value;
                },
                PromptOf(question, world_.words) +
                    (question.secret ? ", in the first line of a file" : ""))
            ->type_name(question.secret ? "FILE" : "ANSWER");
    setup->add_option("--log-database", setup_.log_path, "log database (log.db beside the history)")
        ->type_name("FILE");
    setup->add_flag("--force", setup_.force, "write over existing settings; they stay as .old");
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
