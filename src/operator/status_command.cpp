#include "operator/commands.h"
#include "operator/moment.h"
#include "operator/status_reading.h"
#include "operator/status_summary.h"
#include "operator/text_output.h"
#include "settings/setting_table.h"

#include <algorithm>
#include <ostream>
#include <sstream>

namespace tarnex {

namespace {

constexpr Duration kWatchPeriod = 1s;
constexpr const char* kClearScreen = "\x1b[H\x1b[2J";

std::string Or(const Json& value, const std::string& none) {
    return value.is_null() ? none : value.is_string() ? value.get<std::string>() : value.dump();
}

std::string Digits(const Json& value) {
    return value.dump();
}

// The names of the start-up steps: the settings kept in the unit, then two readings.
std::vector<std::string> StepNames() {
    std::vector<std::string> names;
    for (const Setting& setting : kSettings)
        if (!setting.record.empty())
            names.emplace_back(setting.name);
    names.insert(names.end(), {"version", "serial"});
    return names;
}

std::string MissingSteps(const std::string& steps) {
    const std::vector<std::string> names = StepNames();
    std::vector<std::string> missing;
    for (std::size_t i = 0; i < std::min(names.size(), steps.size()); ++i)
        if (steps[i] != '1')
            missing.push_back(names[i]);
    return Joined(missing, ", ");
}

class StatusPage {
  public:
    explicit StatusPage(const StatusReading& state) : state_(state), s_(state.status) {
        Service();
        Unit();
        Links();
        Sms();
        Mail();
        Counters();
        Troubles();
    }
    void Print(const OperatorWorld& world) const { table_.Print(world); }

  private:
    std::string Age(const Json& time) const { return AgeText(state_.SecondsSince(time)); }

    void Row(const std::string& label, const std::string& text, Colour colour = Colour::kNone) {
        table_.Add({{label, Colour::kBold}, {text, colour}});
    }
    void More(const std::string& text, Colour colour = Colour::kNone) { Row("", text, colour); }

    void Service() {
        Row("Service", "running for " + Age(s_.at("started_at")) + ", process " +
                           Digits(s_.at("pid")) + ", version " + Or(s_.at("program_version"), "?"));
        More("last word " + Age(s_.at("written_at")) + " ago; settings in " +
                 Or(s_.at("settings_file"), "?"),
             Colour::kFaint);
        if (s_.at("debug_mode").get<bool>())
            More("debug mode is on", Colour::kWarning);
    }

    void Unit() {
        struct Phase {
            UnitPhase phase;
            const char* text;
            Colour colour;
        };
        constexpr Phase kPhases[] = {
            {UnitPhase::kOff, "switched off by the settings", Colour::kWarning},
            {UnitPhase::kSearching, "being searched for", Colour::kBad},
            {UnitPhase::kGreeting, "found, its greeting is awaited", Colour::kWarning},
            {UnitPhase::kSettingUp, "connected, its settings are being written", Colour::kWarning},
            {UnitPhase::kReady, "ready", Colour::kGood},
        };
        const Json& unit = s_.at("unit");
        const auto phase =
            std::ranges::find_if(kPhases, [&](const Phase& p) { return UnitIs(p.phase, unit); });
        Row("Unit", phase == std::end(kPhases) ? Or(unit.at("state"), "?") : phase->text,
            phase == std::end(kPhases) ? Colour::kNone : phase->colour);
        More("for " + Age(unit.at("state_since")) + "; began anew with it " +
             Counted(unit.at("restarts").get<long long>(), "time"));
        if (!unit.at("port").is_null())
            More("port COM" + Digits(unit.at("port")) + ", " + Or(unit.at("device"), "?"));
        if (!unit.at("signal").is_null())
            More("signal " + Digits(unit.at("signal")) + ", level " +
                 Or(unit.at("signal_level"), "?") + " of 5");
        if (!unit.at("version").is_null())
            More("version " + Or(unit.at("version"), "") + ", serial number " +
                 Or(unit.at("serial"), "not read"));
        Steps(unit.at("steps").get<std::string>(), UnitIs(UnitPhase::kSettingUp, unit));
    }

    void Steps(const std::string& steps, bool setting_up) {
        const auto done = std::ranges::count(steps, '1');
        const std::string missing = setting_up ? "; missing: " + MissingSteps(steps) : "";
        More(std::to_string(done) + " of " + std::to_string(steps.size()) + " start-up steps done" +
             missing);
    }

    void Links() {
        std::string label = "Links";
        for (const Json& link : s_.at("links")) {
            std::string text = Digits(link.at("link")) + "  port " + Digits(link.at("port")) + "  ";
            Colour colour = Colour::kFaint;
            if (!link.at("listening").get<bool>()) {
                text += "the port is not open";
                colour = Colour::kBad;
            } else if (link.at("connected").get<bool>()) {
                text += Or(link.at("name"), "(no name)") + " at " + Or(link.at("peer"), "?") +
                        ", heard " + Age(link.at("last_heartbeat_at")) + " ago";
                colour = Colour::kGood;
                if (!link.at("sent_to").get<bool>()) {
                    text += ", but not sent to (see link-0 of the settings)";
                    colour = Colour::kWarning;
                }
            } else {
                text += link.at("last_heartbeat_at").is_null()
                            ? "nobody"
                            : Or(link.at("name"), "(no name)") + " is lost, last heard " +
                                  Age(link.at("last_heartbeat_at")) + " ago";
            }
            if (const auto lost = link.at("datagrams_dropped").get<long long>(); lost > 0) {
                text += "; " + Counted(lost, "datagram") + " lost for want of room";
                colour = Colour::kWarning;
            }
            Row(label, text, colour);
            label.clear();
        }
    }

    void Sms() {
        const Json& sms = s_.at("sms");
        Row("SMS", Digits(sms.at("queued")) + " queued, " + Digits(sms.at("to_send_again")) +
                       " to be sent again; last result " + Or(sms.at("last_result"), "none yet"));
        if (const Json& held = sms.at("held"); !held.is_null())
            More("attempt " + Digits(held.at("attempt")) + " of " +
                     Digits(held.at("attempts_allowed")) + " to number " +
                     Or(held.at("to_number"), "?") + ": " + Or(held.at("text"), ""),
                 held.at("attempt") > 1 ? Colour::kWarning : Colour::kNone);
        More("sent " + Digits(sms.at("sent")) + ", given up " + Digits(sms.at("given_up")) +
             "; attempts refused " + Digits(sms.at("attempts_refused")) + ", failed " +
             Digits(sms.at("attempts_failed")) + ", lost " + Digits(sms.at("attempts_lost")));
        More("dropped by a full queue " + Digits(sms.at("dropped_by_full_queue")) +
             ", by a new start with the unit " + Digits(sms.at("dropped_by_reset")));
    }

    void Mail() {
        const Json& mail = s_.at("mail");
        const bool in_flight = mail.at("in_flight").get<bool>();
        Row("Mail", Digits(mail.at("queued")) + " queued" +
                        (in_flight ? "; one on its way, waiting for the reply to " +
                                         Or(mail.at("step_waits_for"), "?")
                                   : ""));
        More("sent " + Digits(mail.at("sent")) + ", failed attempts " +
             Digits(mail.at("attempts_failed")) + ", dropped by a full queue " +
             Digits(mail.at("dropped_by_full_queue")));
        if (mail.at("failing").get<bool>())
            More("failing: " + Or(mail.at("last_problem"), "?"), Colour::kBad);
    }

    void Counters() {
        const Json& events = s_.at("events");
        Row("Events", "dispatched " + Digits(events.at("dispatched")) +
                          ", held back by quiet time " + Digits(events.at("held_by_quiet_time")));
        const Json& log = s_.at("log");
        Row("Log", Or(log.at("path"), "none") + ", rows lost " + Digits(log.at("lost_rows")),
            log.at("lost_rows") > 0 ? Colour::kWarning : Colour::kNone);
    }

    void Troubles() {
        std::string label = "Attention";
        for (const Json& trouble : s_.at("troubles")) {
            Row(label, Or(trouble.at("text"), ""), Colour::kBad);
            label.clear();
        }
    }

    const StatusReading& state_;
    const Json& s_;
    TextTable table_;
};

// The moments of the status file, which are seconds since 1970.
Json WithIsoTimes(const OperatorWorld& world, Json json) {
    for (auto& [name, value] : json.items()) {
        if (value.is_structured())
            value = WithIsoTimes(world, value);
        else if (value.is_number() && (name.ends_with("_at") || name == "state_since"))
            value = IsoTime(world,
                            std::chrono::sys_seconds(std::chrono::seconds(value.get<long long>())));
    }
    return json;
}

// What is no longer true stands apart, so that nobody takes it for the present state.
Json AsJson(const OperatorWorld& world, const StatusReading& state) {
    Json json{{"running", state.running}};
    if (!state.running)
        json["absence"] = state.absence;
    if (state.status.is_null())
        return json;
    json["seconds_since_change"] = state.SecondsSince(state.status.at("written_at"));
    if (state.running)
        json.update(WithIsoTimes(world, state.status));
    else
        json["last_status"] = WithIsoTimes(world, state.status);
    return json;
}

void Show(const OperatorWorld& world, const StatusReading& state, const StatusOptions& options) {
    if (options.json)
        world.out << JsonText(AsJson(world, state), options.watch ? -1 : 2);
    else if (state.running && options.long_form)
        StatusPage(state).Print(world);
    else if (state.running)
        PrintSummary(world, state);
    else if (options.watch)
        world.out << state.absence << '\n';
}

ExitStatus Watch(const OperatorWorld& world, const StatusOptions& options) {
    const bool redraw = world.colours && !options.json;
    std::optional<std::pair<bool, Json>> shown;
    do {
        const StatusReading state = ReadStatusFile(world);
        const std::pair now(state.running, state.status);
        if (!redraw && now == shown)
            continue;
        if (redraw)
            world.out << kClearScreen;
        else if (shown && !options.json)
            world.out << '\n';
        Show(world, state, options);
        world.out.flush();
        shown = now;
    } while (world.out && world.pause(kWatchPeriod));
    return kExitDone;
}

// Prints its line whatever happens: that is all that a plugin's caller sees.
ExitStatus ShowCheck(const OperatorWorld& world) {
    PluginResult result;
    try {
        result = CheckLine(ReadStatusFile(world));
    } catch (const Failure& failure) {
        result = UnknownLine(failure.what());
    } catch (const Json::exception&) {
        result = UnknownLine(world.status_path + " lacks something: restart the service");
    }
    world.out << result.line << '\n';
    return static_cast<ExitStatus>(result.status);
}

} // namespace

ExitStatus ShowStatus(OperatorWorld& world, const StatusOptions& options) {
    if (options.check && (options.watch || options.long_form || options.json))
        throw Failure(kExitUsage, "--check looks once and prints one line: it goes without "
                                  "--watch, --long and --json");
    if (options.check)
        return ShowCheck(world);
    if (options.watch)
        return Watch(world, options);
    const StatusReading state = ReadStatusFile(world);
    Show(world, state, options);
    if (!state.running && !options.json)
        throw Failure(kExitUnavailable, state.absence);
    return state.running ? kExitDone : kExitUnavailable;
}

} // namespace tarnex
