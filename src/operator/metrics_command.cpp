#include "operator/commands.h"
#include "operator/file_access.h"
#include "operator/status_reading.h"
#include "operator/text_output.h"

#include <algorithm>
#include <ostream>
#include <sstream>

namespace tarnex {

namespace {

// A value of the status as a metric.
struct Metric {
    const char* name; // without "tarnexcomm_"
    const char* type;
    const char* help;
    const char* where;  // in the status, or in each link's part of it
    const char* labels; // "" for none
};

// Rows of one name stand together.
// clang-format off
constexpr Metric kMetrics[] = {
    {"start_time_seconds",              "gauge",   "When the service started, in seconds since 1970.",                  "/started_at",  ""},
    {"status_written_time_seconds",     "gauge",   "When the service last wrote its state, in seconds since 1970.",     "/written_at",  ""},
    {"debug_mode",                      "gauge",   "1 while debug mode is on.",                                         "/debug_mode",  ""},
    {"unit_state_since_time_seconds",   "gauge",   "When the state of the unit last changed, in seconds since 1970.",   "/unit/state_since", ""},
    {"unit_signal",                     "gauge",   "Last signal reading of the connected unit.",                        "/unit/signal", ""},
    {"unit_restarts_total",             "counter", "How often the service began anew with the unit.",                   "/unit/restarts", ""},
    {"sms_queued",                      "gauge",   "SMS that wait.",                                                    "/sms/queued", ""},
    {"sms_to_send_again",               "gauge",   "SMS that were dropped or lost and are to be queued again.",         "/sms/to_send_again", ""},
    {"sms_sent_total",                  "counter", "SMS that the unit reported as sent.",                               "/sms/sent", ""},
    {"sms_attempts_failed_total",       "counter", "Attempts to send an SMS that failed.",                              "/sms/attempts_refused", "result=\"refused\""},
    {"sms_attempts_failed_total",       "counter", "",                                                                  "/sms/attempts_failed", "result=\"failed\""},
    {"sms_attempts_failed_total",       "counter", "",                                                                  "/sms/attempts_lost", "result=\"lost\""},
    {"sms_given_up_total",              "counter", "SMS that were given up after too many attempts.",                   "/sms/given_up", ""},
    {"sms_dropped_total",               "counter", "SMS that were dropped before they were tried to the end.",          "/sms/dropped_by_full_queue", "by=\"full_queue\""},
    {"sms_dropped_total",               "counter", "",                                                                  "/sms/dropped_by_reset", "by=\"reset\""},
    {"mail_queued",                     "gauge",   "Mails that wait.",                                                  "/mail/queued", ""},
    {"mail_sent_total",                 "counter", "Mails handed over to the mail server.",                             "/mail/sent", ""},
    {"mail_attempts_failed_total",      "counter", "Attempts to send a mail that failed.",                              "/mail/attempts_failed", ""},
    {"mail_dropped_total",              "counter", "Mails dropped by a full queue.",                                    "/mail/dropped_by_full_queue", ""},
    {"mail_failing",                    "gauge",   "1 while no mail was taken since the last failed attempt.",          "/mail/failing", ""},
    {"events_total",                    "counter", "Events dispatched.",                                                "/events/dispatched", ""},
    {"events_held_by_quiet_time_total", "counter", "Events not sent by SMS since it was quiet time.",                   "/events/held_by_quiet_time", ""},
    {"log_lost_rows_total",             "counter", "Rows that could not be stored in the log.",                         "/log/lost_rows", ""},
};
constexpr Metric kLinkMetrics[] = {
    {"link_listening",                  "gauge",   "1 when the port of the link is open.",                              "/listening", ""},
    {"link_connected",                  "gauge",   "1 while a monitoring program is connected.",                        "/connected", ""},
    {"link_last_heartbeat_time_seconds","gauge",   "When the monitoring program was last heard, in seconds since 1970.","/last_heartbeat_at", ""},
    {"link_datagrams_received_total",   "counter", "Datagrams received.",                                               "/datagrams_received", ""},
    {"link_datagrams_sent_total",       "counter", "Datagrams sent.",                                                   "/datagrams_sent", ""},
    {"link_datagrams_dropped_total",    "counter", "Datagrams that the system had no room for.",                        "/datagrams_dropped", ""},
};
// clang-format on

std::string Label(const std::string& name, const Json& value) {
    const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    std::string escaped;
    for (const char c : value.is_null() ? "" : Printable(text)) {
        if (c == '\\' || c == '"')
            escaped += '\\';
        escaped += c;
    }
    return name + "=\"" + escaped + "\"";
}

class MetricsText {
  public:
    std::string Of(const StatusReading& state) {
        Head("up", "gauge", "1 while the service runs.");
        Value("up", "", state.running);
        if (state.running)
            All(state.status);
        return text_.str();
    }

  private:
    void All(const Json& status) {
        Head("info", "gauge", "The program.");
        Value("info", Label("version", status.at("program_version")), true);
        Unit(status.at("unit"));
        for (const Metric& metric : kMetrics) {
            Head(metric.name, metric.type, metric.help);
            Value(metric.name, metric.labels, status.at(Json::json_pointer(metric.where)));
        }
        for (const Metric& metric : kLinkMetrics) {
            Head(metric.name, metric.type, metric.help);
            for (const Json& link : status.at("links"))
                Value(metric.name, Label("link", link.at("link")),
                      link.at(Json::json_pointer(metric.where)));
        }
        Head("troubles", "gauge", "How many things need an operator's attention.");
        Value("troubles", "", status.at("troubles").size());
        Head("trouble", "gauge", "1 for each of these.");
        for (const Json& trouble : status.at("troubles"))
            Value("trouble",
                  Label("topic", trouble.at("topic")) + "," + Label("level", trouble.at("level")),
                  true);
    }

    void Unit(const Json& unit) {
        Head("unit_state", "gauge", "1 for the state that the unit is in.");
        for (const char* state : kPhaseWords)
            Value("unit_state", Label("state", state), unit.at("state") == state);
        Head("unit_info", "gauge", "The unit.");
        Value("unit_info",
              Label("port", unit.at("port")) + "," + Label("device", unit.at("device")) + "," +
                  Label("version", unit.at("version")) + "," + Label("serial", unit.at("serial")),
              true);
        const auto steps = unit.at("steps").get<std::string>();
        Head("unit_steps_done", "gauge",
             "Start-up steps done with the unit, of " + std::to_string(steps.size()) + ".");
        Value("unit_steps_done", "", std::ranges::count(steps, '1'));
    }

    // help "": the further rows of a name.
    void Head(const std::string& name, const char* type, const std::string& help) {
        if (help.empty())
            return;
        text_ << "# HELP tarnexcomm_" << name << ' ' << help << '\n';
        text_ << "# TYPE tarnexcomm_" << name << ' ' << type << '\n';
    }

    // A value that is not known has no line.
    void Value(const std::string& name, const std::string& labels, const Json& value) {
        if (value.is_null())
            return;
        text_ << "tarnexcomm_" << name << (labels.empty() ? "" : "{" + labels + "}") << ' '
              << (value.is_boolean() ? int(value.get<bool>()) : value.get<long long>()) << '\n';
    }

    std::ostringstream text_;
};

} // namespace

ExitStatus ShowMetrics(OperatorWorld& world, const std::string& output) {
    const std::string text = MetricsText().Of(ReadStatusFile(world));
    if (output.empty()) {
        world.out << text;
        return kExitDone;
    }
    WriteOutput(world, output, text, Readers::kAll, "leave --output out for standard output");
    return kExitDone;
}

} // namespace tarnex
