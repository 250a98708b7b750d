#include "service/service_status.h"

#include "platform/json_writer.h"

namespace tarnex {

namespace {

constexpr int kFormat = 2;

class StatusWriter {
  public:
    explicit StatusWriter(const StatusFrame& frame) : frame_(frame) {}

    std::string Write(const ServiceStatus& status) {
        const ServiceStatus::State& state = status.state;
        json_.BeginObject();
        Program(state);
        Unit(state.unit);
        json_.BeginArray("links");
        for (std::size_t i = 0; i < state.links.size(); ++i)
            Link(int(i), state.links[i], status.traffic[i]);
        json_.End();
        Sms(state.sms);
        Mail(state.mail);
        Events(state);
        json_.BeginArray("troubles");
        for (const NoticedTrouble& trouble : state.troubles) {
            json_.BeginObject();
            json_.String("topic", trouble.topic);
            json_.String("level", trouble.level == NoticeLevel::kError ? "error" : "warning");
            json_.String("text", trouble.text);
            json_.End();
        }
        json_.End();
        json_.End();
        return json_.Written();
    }

  private:
    void Program(const ServiceStatus::State& state) {
        json_.Number("format", kFormat);
        json_.String("program_version", TARNEX_VERSION);
        json_.Number("pid", frame_.process_id);
        Time("started_at", Duration::zero());
        Time("written_at", frame_.now);
        if (frame_.ended)
            Time("ended_at", frame_.now);
        else
            json_.Null("ended_at");
        json_.String("settings_file", frame_.settings_file);
        json_.Bool("debug_mode", state.debug);
    }

    void Unit(const ServiceStatus::Unit& unit) {
        json_.BeginObject("unit");
        json_.String("state", PhaseWord(unit.phase));
        Time("state_since", unit.since);
        NumberUnless(unit.port == 0, "port", unit.port);
        StringOrNull("device", unit.device);
        NumberUnless(unit.signal < 0, "signal", unit.signal);
        NumberUnless(unit.signal < 0, "signal_level", LeadingInt16(unit.level).value_or(0));
        StringOrNull("version", ToUtf8(unit.version));
        StringOrNull("serial", ToUtf8(unit.serial));
        String("steps", unit.steps);
        json_.Number("restarts", unit.restarts);
        json_.End();
    }

    void Link(int number, const ServiceStatus::Link& link, const ServiceStatus::Traffic& traffic) {
        json_.BeginObject();
        json_.Number("link", number);
        json_.Number("port", ControlLink::kFirstPort + number);
        json_.Bool("listening", link.listening);
        json_.Bool("connected", link.connected);
        json_.Bool("sent_to", link.sent_to);
        StringOrNull("name", ToUtf8(link.name));
        StringOrNull("peer",
                     link.peer ? link.peer->address + ":" + std::to_string(link.peer->port) : "");
        if (traffic.last_sign)
            Time("last_heartbeat_at", *traffic.last_sign);
        else
            json_.Null("last_heartbeat_at");
        Count("datagrams_received", traffic.received);
        Count("datagrams_sent", traffic.sent);
        Count("datagrams_dropped", traffic.dropped);
        json_.End();
    }

    void Sms(const ServiceStatus::Sms& sms) {
        json_.BeginObject("sms");
        Count("queued", sms.queued);
        Count("queue_size", kSMSFifoSize);
        Count("to_send_again", sms.again);
        if (sms.held.empty()) {
            json_.Null("held");
        } else {
            json_.BeginObject("held");
            json_.Number("to_number", LeadingInt16(sms.held.substr(0, 1)).value_or(0));
            String("text", sms.held.substr(1));
            json_.Number("attempt", sms.attempt);
            json_.Number("attempts_allowed", kSendErrorLimit);
            json_.End();
        }
        StringOrNull("last_result", ToUtf8(sms.last_result));
        Count("sent", sms.counts.Sent);
        Count("attempts_refused", sms.counts.Refused);
        Count("attempts_failed", sms.counts.Failed);
        Count("attempts_lost", sms.counts.Lost);
        Count("given_up", sms.counts.GivenUp);
        Count("dropped_by_full_queue", sms.counts.PushedOut);
        Count("dropped_by_reset", sms.counts.DroppedByReset);
        json_.End();
    }

    void Mail(const MailStatus& mail) {
        json_.BeginObject("mail");
        Count("queued", mail.queued);
        json_.Bool("in_flight", mail.in_flight);
        json_.Number("step", mail.step);
        json_.String("step_waits_for", RuleOf(static_cast<SmtpStep>(mail.step)).waits_for);
        Count("sent", mail.sent);
        Count("attempts_failed", mail.failed_attempts);
        Count("dropped_by_full_queue", mail.dropped);
        json_.Bool("failing", mail.failing);
        StringOrNull("last_problem", mail.last_problem);
        json_.End();
    }

    void Events(const ServiceStatus::State& state) {
        json_.BeginObject("events");
        Count("dispatched", state.events.Events);
        Count("held_by_quiet_time", state.events.HeldByQuiet);
        json_.End();
        json_.BeginObject("log");
        StringOrNull("path", ToUtf8(state.log_path));
        Count("lost_rows", state.lost_rows);
        json_.End();
    }

    void Time(std::string_view name, Duration instant) {
        const auto wall = frame_.wall_now - (frame_.now - instant);
        json_.Number(name,
                     std::chrono::floor<std::chrono::seconds>(wall.time_since_epoch()).count());
    }
    void Count(std::string_view name, unsigned long count) {
        json_.Number(name, static_cast<long long>(count));
    }
    void String(std::string_view name, TextView text) { json_.String(name, ToUtf8(text)); }
    void StringOrNull(std::string_view name, const std::string& utf8) {
        utf8.empty() ? json_.Null(name) : json_.String(name, utf8);
    }
    void NumberUnless(bool none, std::string_view name, int number) {
        none ? json_.Null(name) : json_.Number(name, number);
    }

    const StatusFrame& frame_;
    JsonWriter json_;
};

} // namespace

std::string StatusText(const ServiceStatus& status, const StatusFrame& frame) {
    return StatusWriter(frame).Write(status);
}

} // namespace tarnex
