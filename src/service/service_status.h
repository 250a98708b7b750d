#pragma once

#include "mail/mail_sender.h"
#include "notify/control_link.h"
#include "notify/dispatcher.h"
#include "notify/sms_queue.h"

namespace tarnex {

// How far the service has come with the unit.
enum class UnitPhase {
    kOff,       // switched off by the settings, and not connected
    kSearching, // no port open
    kGreeting,  // found, but its greeting is not answered "OK" yet
    kSettingUp, // connected: the settings are being written into it
    kReady,     // SMS can be sent
};
// Its words in the status text, in that order.
inline constexpr const char* kPhaseWords[] = {"off", "searching", "greeting", "setting-up",
                                              "ready"};
constexpr const char* PhaseWord(UnitPhase phase) {
    return kPhaseWords[static_cast<std::size_t>(phase)];
}

// What the status file tells: the state of the service at one moment. All times are the clock's.
struct ServiceStatus {
    struct Unit {
        UnitPhase phase = UnitPhase::kSearching;
        Duration since{};      // when the phase began
        int port = 0;          // of the unit, 1 to 20; 0 for none
        std::string device;    // behind that port; "" for none
        int signal = -1;       // last valid reading of a connected unit, -1 for none
        Text level;            // "1" to "5"
        Text version;          // empty until it was read for the first time
        Text serial;           // the same
        Text steps;            // a "0" or "1" for each of the 11 start-up steps
        unsigned restarts = 0; // how often the service began anew with the unit
        friend bool operator==(const Unit&, const Unit&) = default;
    };
    struct Link {
        bool listening = false;
        bool connected = false;
        bool sent_to = false; // connected, and the settings let messages through
        Text name;
        std::optional<Endpoint> peer;
        friend bool operator==(const Link&, const Link&) = default;
    };
    struct Sms {
        std::size_t queued = 0; // without the held entry
        std::size_t again = 0;  // not queued yet, but to be sent again
        Text held;              // as SMSQueue::HeldEntry
        int attempt = 1;        // of the held entry, to kSendErrorLimit
        Text last_result;
        SMSQueue::Counts counts;
        friend bool operator==(const Sms&, const Sms&) = default;
    };
    // What changes all the time while nothing happens.
    struct Traffic {
        std::optional<Duration> last_sign; // the last greeting or heartbeat
        unsigned long received = 0;        // datagrams
        unsigned long sent = 0;            // the same
        unsigned long dropped = 0;         // the same
        friend bool operator==(const Traffic&, const Traffic&) = default;
    };
    struct State {
        bool debug = false;
        Unit unit;
        std::array<Link, ControlLink::kLinks> links;
        Sms sms;
        MailStatus mail;
        Dispatcher::Counts events;
        Text log_path; // "" for none
        unsigned long lost_rows = 0;
        std::vector<NoticedTrouble> troubles; // what an operator must act on, a line each
        friend bool operator==(const State&, const State&) = default;
    };

    State state;
    std::array<Traffic, ControlLink::kLinks> traffic;
};

// What the status text tells besides the state itself.
struct StatusFrame {
    long process_id = 0;
    std::string settings_file{};
    Duration now{};
    std::chrono::system_clock::time_point wall_now;
    bool ended = false; // in order: this is the last text of the service
};

// The status as JSON, format 2. Times are whole seconds since 1970, UTC.
std::string StatusText(const ServiceStatus& status, const StatusFrame& frame);

} // namespace tarnex
