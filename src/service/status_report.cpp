#include "service/status_report.h"

namespace tarnex {

namespace {

constexpr Duration kShortestPause = 1s; // between two texts
constexpr Duration kLongestPause = 1min;

} // namespace

void StatusReport::Start() {
    started_ = parts_.world.status != nullptr;
}

void StatusReport::Stop() {
    if (!started_)
        return;
    started_ = false;
    parts_.world.clock.Cancel(call_);
    Write(Collect(), true);
}

void StatusReport::Look() {
    if (!started_ || call_pending_)
        return;
    const ServiceStatus status = Collect();
    const bool changed = !written_ || status.state != written_->state;
    const bool traffic_changed = !written_ || status.traffic != written_->traffic;
    const bool silent = parts_.world.clock.Now() >= next_write_ - kShortestPause + kLongestPause;
    if (silent || (Due() && (changed || traffic_changed))) {
        Write(status);
    } else if (changed) {
        // Traffic alone waits for whatever wakes the loop next.
        call_pending_ = true;
        call_ = parts_.world.clock.CallAfter(next_write_ - parts_.world.clock.Now(), [this] {
            call_pending_ = false;
            Look(); // a busy loop may not sleep soon
        });
    }
}

void StatusReport::Write(const ServiceStatus& status, bool ended) {
    next_write_ = parts_.world.clock.Now() + kShortestPause;
    written_ = status;
    const std::string problem = parts_.world.status->Replace(
        StatusText(status, {.process_id = parts_.world.process_id,
                            .settings_file = parts_.world.settings_store.Name(),
                            .now = parts_.world.clock.Now(),
                            .wall_now = parts_.world.clock.WallNow(),
                            .ended = ended}));
    parts_.notices.Report("status file", problem, "The status file can be written again.");
}

ServiceStatus StatusReport::Collect() const {
    ServiceStatus status{.state = {.debug = parts_.lists.DebugOn,
                                   .unit = CollectUnit(),
                                   .links = {},
                                   .sms = {.queued = parts_.queue.Length(),
                                           .again = parts_.again.ToSend(),
                                           .held = parts_.queue.HeldEntry(),
                                           .attempt = parts_.queue.Attempt(),
                                           .last_result = parts_.queue.LastResult(),
                                           .counts = parts_.queue.Totals()},
                                   .mail = parts_.mail.Status(),
                                   .events = parts_.dispatcher.Totals(),
                                   .log_path = parts_.settings.LogPath,
                                   .lost_rows = parts_.log.LostRows(),
                                   .troubles = parts_.notices.Troubles()},
                         .traffic = {}};
    for (int i = 0; i < ControlLink::kLinks; ++i) {
        const ControlLink::Link& link = parts_.link.Links()[i];
        status.state.links[i] = {.listening = parts_.link.Listening(i),
                                 .connected = link.LinkState == ControlLink::Link::State::C,
                                 .sent_to = parts_.link.MaySendTo(i),
                                 .name = ShortName(link.LinkName),
                                 .peer = link.Peer};
        status.traffic[i] = {.last_sign = link.LastSign,
                             .received = link.Received,
                             .sent = link.Sent,
                             .dropped = link.Dropped};
    }
    return status;
}

ServiceStatus::Unit StatusReport::CollectUnit() const {
    const int port = parts_.core.discovery.ConnectStatus();
    const UnitPhase phase = Phase();
    const bool same_phase = written_ && written_->state.unit.phase == phase;
    const UnitState& unit = parts_.unit;
    return {.phase = phase,
            .since = same_phase ? written_->state.unit.since : parts_.world.clock.Now(),
            .port = port,
            .device = port != 0 ? parts_.world.serial_ports.DeviceName(port) : "",
            .signal = unit.UnitConnected ? unit.UnitSignalValue : -1,
            .level = unit.UnitSignalLevel,
            .version = unit.UnitVersion,
            .serial = unit.UnitSerial,
            .steps = unit.UnitInitFlags.substr(0, kNoUnitInitFlags.size()),
            .restarts = unit.Losses() - 1}; // the start itself is the first
}

UnitPhase StatusReport::Phase() const {
    if (parts_.unit.UnitReady)
        return UnitPhase::kReady;
    if (parts_.unit.UnitConnected)
        return UnitPhase::kSettingUp;
    if (parts_.settings.AutoSearchOff)
        return UnitPhase::kOff;
    return parts_.core.discovery.ConnectStatus() != 0 ? UnitPhase::kGreeting
                                                      : UnitPhase::kSearching;
}

} // namespace tarnex
