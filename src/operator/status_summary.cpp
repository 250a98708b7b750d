#include "operator/status_summary.h"

#include "operator/text_output.h"

#include <algorithm>
#include <sstream>

namespace tarnex {

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kLabelColumns = 11;

enum PluginStatus { kOK, kWarning, kCritical, kUnknown };
constexpr const char* kPluginWords[] = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};

long long Count(const Json& part, const char* name) {
    return part.at(name).get<long long>();
}

std::string Shown(const Json& value) {
    return value.is_null() ? "?" : value.is_string() ? value.get<std::string>() : value.dump();
}

// Cut between words where that is possible.
std::vector<std::string> Wrapped(const std::string& text, std::size_t columns) {
    std::vector<std::string> lines(1);
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (!lines.back().empty() && DisplayWidth(lines.back() + " " + word) > columns)
            lines.emplace_back();
        lines.back() += (lines.back().empty() ? "" : " ") + word;
    }
    return lines;
}

class ShortStatus {
  public:
    explicit ShortStatus(const StatusReading& state) : state_(state), s_(state.status) {
        Row("Service", "running for " + Age(s_.at("started_at")) + ", version " +
                           Shown(s_.at("program_version")) +
                           (s_.at("debug_mode").get<bool>() ? ", debug mode is on" : ""));
        Unit(s_.at("unit"));
        Row("Links", Links());
        Sms(s_.at("sms"));
        Mail(s_.at("mail"));
        const Json& events = s_.at("events");
        Row("Events", Shown(events.at("dispatched")) + ", of them " +
                          Shown(events.at("held_by_quiet_time")) + " held back by quiet time");
        const Json& log = s_.at("log");
        Row("Log",
            (log.at("path").is_null() ? "none" : Shown(log.at("path"))) + ", rows lost " +
                Shown(log.at("lost_rows")),
            Count(log, "lost_rows") > 0 ? Colour::kWarning : Colour::kNone);
        Attention();
    }
    void Print(const OperatorWorld& world) const { table_.Print(world); }

  private:
    std::string Age(const Json& time) const { return AgeText(state_.SecondsSince(time)); }

    void Row(const std::string& label, const std::string& text, Colour colour = Colour::kNone) {
        table_.Add({{label, Colour::kBold},
                    {Shortened(Printable(text), kColumns - kLabelColumns), colour}});
    }

    void Unit(const Json& unit) {
        std::string text = Shown(unit.at("state")) + " for " + Age(unit.at("state_since"));
        if (!unit.at("signal").is_null())
            text += ", signal " + Shown(unit.at("signal")) + " (" + Shown(unit.at("signal_level")) +
                    " of 5)";
        if (!unit.at("port").is_null()) // last: the name of a device may be too long for the line
            text += ", at COM" + Shown(unit.at("port")) + " (" + Shown(unit.at("device")) + ")";
        Row("Unit", text,
            UnitIs(UnitPhase::kReady, unit)       ? Colour::kGood
            : UnitIs(UnitPhase::kSearching, unit) ? Colour::kBad
                                                  : Colour::kWarning);
    }

    std::string Links() const {
        std::vector<std::string> heard, closed;
        for (const Json& link : s_.at("links")) {
            const std::string number = Shown(link.at("link"));
            if (!link.at("listening").get<bool>())
                closed.push_back(number);
            else if (link.at("connected").get<bool>())
                heard.push_back(number + " " + Shown(link.at("name")) + " (" +
                                Age(link.at("last_heartbeat_at")) + ")");
        }
        return (heard.empty() ? "nobody" : Joined(heard, ", ")) +
               (closed.empty() ? "" : "; not open: " + Joined(closed, ", "));
    }

    void Sms(const Json& sms) {
        const long long dropped =
            Count(sms, "dropped_by_full_queue") + Count(sms, "dropped_by_reset");
        const long long lost = Count(sms, "given_up") + dropped;
        const long long again = Count(sms, "to_send_again");
        Row("SMS",
            std::to_string(Count(sms, "queued") + !sms.at("held").is_null()) + " waiting, " +
                (again > 0 ? std::to_string(again) + " to send again, " : "") +
                Shown(sms.at("sent")) + " sent, " + Shown(sms.at("given_up")) + " given up, " +
                std::to_string(dropped) + " dropped",
            lost > 0 ? Colour::kWarning : Colour::kNone);
    }

    void Mail(const Json& mail) {
        const bool failing = mail.at("failing").get<bool>();
        Row("Mail",
            std::to_string(Count(mail, "queued") + mail.at("in_flight").get<bool>()) +
                " waiting, " + Shown(mail.at("sent")) + " sent, " +
                Shown(mail.at("dropped_by_full_queue")) + " dropped" + (failing ? "; failing" : ""),
            failing ? Colour::kBad : Colour::kNone);
    }

    void Attention() {
        std::string label = "Attention";
        for (const Json& trouble : s_.at("troubles"))
            for (const std::string& line :
                 Wrapped(Printable(Shown(trouble.at("text"))), kColumns - kLabelColumns)) {
                table_.Add(
                    {{label, Colour::kBold},
                     {line, trouble.at("level") == "error" ? Colour::kBad : Colour::kWarning}});
                label.clear();
            }
        if (!label.empty())
            Row(label, "nothing", Colour::kGood);
    }

    const StatusReading& state_;
    const Json& s_;
    TextTable table_;
};

// A bar ends the text of a plugin.
PluginResult Told(PluginStatus status, std::string text, const std::string& data) {
    std::ranges::replace(text, '|', '/');
    return {.status = status,
            .line = std::string(kPluginWords[status]) + ": " + Printable(text) +
                    (data.empty() ? "" : " | " + data)};
}

// name=value;warning;critical;least;most
std::string PerformanceData(const Json& s) {
    const Json& unit = s.at("unit");
    const Json& sms = s.at("sms");
    const Json& mail = s.at("mail");
    return (unit.at("signal").is_null() ? ""
                                        : "signal=" + Shown(unit.at("signal")) + ";5:;;0;31 ") +
           "sms_queued=" + Shown(sms.at("queued")) +
           ";159;199;0;200 sms_sent=" + Shown(sms.at("sent")) +
           "c sms_given_up=" + Shown(sms.at("given_up")) +
           "c mail_queued=" + Shown(mail.at("queued")) +
           ";319;399;0;400 mail_sent=" + Shown(mail.at("sent")) +
           "c log_lost_rows=" + Shown(s.at("log").at("lost_rows")) + "c";
}

} // namespace

void PrintSummary(const OperatorWorld& world, const StatusReading& state) {
    ShortStatus(state).Print(world);
}

PluginResult CheckLine(const StatusReading& state) {
    if (!state.running)
        return Told(kCritical, state.absence, "");
    const Json& unit = state.status.at("unit");
    PluginStatus status = UnitIs(UnitPhase::kReady, unit) ? kOK : kWarning;
    std::string text = "unit " + Shown(unit.at("state"));
    if (!unit.at("signal").is_null())
        text += ", signal " + Shown(unit.at("signal"));
    for (const Json& trouble : state.status.at("troubles")) {
        status = std::max(status, trouble.at("level") == "error" ? kCritical : kWarning);
        text += "; " + Shown(trouble.at("text"));
        if (text.ends_with('.'))
            text.pop_back();
    }
    return Told(status, text, PerformanceData(state.status));
}

PluginResult UnknownLine(const std::string& why) {
    return Told(kUnknown, why, "");
}

} // namespace tarnex
