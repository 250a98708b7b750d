#pragma once

#include "logging/operator_notices.h"
#include "platform/clock.h"
#include "platform/serial_port.h"
#include "platform/text.h"

#include <array>
#include <optional>

namespace tarnex {

// Why the service begins anew with the unit.
enum class UnitLoss {
    kOther,      // somebody asked for it
    kDeviceGone, // the hardware behind the port went away
    kSilent,     // the unit does not answer any more
    kRestarted,  // it says that it has restarted
    kForgotSms,  // it does not know the SMS any more that it was given
};

// A name as a monitoring program gives it, as much of it as an operator needs: whoever can send a
// datagram chooses up to 64 KB, which would fill the system's log and the status file.
Text ShortName(TextView name);

// Tells the operator what keeps alarms from getting out. The parts of the service tell it what
// happens to them, and it decides what of that needs somebody, and when. Telephone numbers are
// masked. Nothing here waits: what holds for long enough is noticed when the next fact comes.
class MainJobNotices {
  public:
    // Both must outlive it.
    MainJobNotices(Clock& clock, OperatorNotices& notices)
        : clock_(clock), notices_(notices), not_ready_since_(clock.Now()) {}

    // ---- the unit

    struct Port {
        int number = 0; // of COM<number>
        std::string device;
    };
    // A port was opened, or not, and greeted. found: the unit is there.
    void PortTried(const Port& port, PortStatus status, bool found);
    // All of them were tried, and the unit is at none.
    void NotFound();
    // The unit that was found answers that it is starting up.
    void StartingUp() { why_not_ready_ = "it answers that it is starting up"; }
    // The connected unit does not take a setting: what it is called, and the unit's answer.
    void SettingRefused(std::string_view setting, TextView answer);
    void Ready();
    // Is followed by BegunAnew().
    void Lost(UnitLoss why) { loss_ = why; }
    // dropped: the SMS that waited.
    void BegunAnew(unsigned long dropped);
    // A state word of the unit.
    void Said(TextView word);
    // A valid reading.
    void Signal(int value);

    // ---- messages

    // attempts: what was heard of each. recipient: "1" or "2".
    void SmsGivenUp(TextView recipient, const std::vector<Text>& attempts);
    void SmsSent();
    // An SMS that would have been a command, from neither number.
    void CommandRefused(TextView sender);

    // ---- the links

    void LinkLost(int link, TextView program);
    // The service has begun anew with the unit: who is on the link must greet it again.
    void LinkForgotten(int link, TextView program);
    void LinkGreeted(int link);

    // ---- every few seconds

    struct Queue {
        std::size_t waiting = 0;
        std::size_t room = 0;
        unsigned long pushed_out = 0; // since the start of the program
    };
    struct State {
        bool searching = true; // the settings let the unit be searched for
        std::array<Text, 2> numbers{};
        Queue sms{};
        Queue mail{};
    };
    void Look(const State& state);

  private:
    // A state of the unit that it tells by words; said, and not heard again since the unit began
    // anew, it counts as over a while after the unit is ready.
    struct Condition {
        const char* topic;
        std::optional<Duration> told{};
    };

    void Tell(Condition& condition, const std::string& trouble, NoticeLevel level);
    void EndOld(const Condition& condition, const std::string& over);
    void MainsLost();
    void LookAtUnit(const State& state);
    void LookAtMains();
    void LookAtQueue(const std::string& name, const Queue& queue, unsigned long& pushed_out);
    void LookAtNumbers();
    void LookAtLinks();
    std::string Place() const;
    std::string PortsTried() const;

    Clock& clock_;
    OperatorNotices& notices_;
    std::optional<Port> port_;
    std::map<int, std::pair<std::string, PortStatus>> tried_; // device and answer by number
    std::string why_not_ready_ = "it is being searched for";
    UnitLoss loss_ = UnitLoss::kOther;
    bool ready_ = false;
    Duration not_ready_since_;
    Duration ready_since_{};
    Duration begun_anew_{};
    Condition card_{"card"};
    Condition mains_{"mains"};
    Duration mains_lost_{};
    int mains_losses_ = 0; // since then
    std::optional<Duration> mains_back_;
    std::optional<Duration> weak_since_;
    unsigned long given_up_ = 0; // since an SMS was sent last
    std::optional<Duration> refused_;
    struct Link {
        Duration gone; // lost or forgotten
        std::string program;
        bool forgotten; // and not told
    };
    std::map<int, Link> links_gone_;
    std::array<Text, 2> numbers_{};
    unsigned long sms_pushed_out_ = 0;
    unsigned long mails_pushed_out_ = 0;
};

// A telephone number of which so much is left that its owner knows it.
std::string Masked(TextView number);

} // namespace tarnex
