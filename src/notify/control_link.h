#pragma once

#include "logging/debug_lists.h"
#include "logging/main_job_notices.h"
#include "notify/dispatcher.h"
#include "notify/unit_state.h"
#include "platform/code_page.h"
#include "platform/datagram_socket.h"
#include "platform/timer.h"
#include "settings/settings.h"

#include <array>
#include <memory>
#include <optional>

namespace tarnex {

// The links to up to five local monitoring programs: link i, 0 to 4, is UDP port kFirstPort + i. A
// monitoring program greets its link and then sends heartbeats; it is told the state of the unit,
// and has notifications sent. One datagram is one message: a nine-character code and what follows.
class ControlLink {
  public:
    static constexpr int kLinks = 5;
    static constexpr std::uint16_t kFirstPort = 7840; // of link 0
    // In front of an event record that is to be notified.
    static constexpr TextView kRequestCode = u"txSendSMS";

    struct Parts {
        Clock& clock;
        DatagramSockets& sockets;
        const CodePage& code_page;
        const Settings& settings;
        const UnitState& unit;
        Dispatcher& dispatcher;
        DebugLists& lists;
        OperatorNotices& notices;
        MainJobNotices& main_job;
    };
    struct Link {
        enum class State {
            N, // nobody to send to: from the start, after a loss, after a reset
            C, // a monitoring program has greeted, and was not lost since
        };
        State LinkState = State::N;
        int LostCount = 0;                // loss checks since the last sign of life, at most 4
        Text LinkName;                    // what the monitoring program calls itself
        std::optional<Endpoint> Peer;     // where the last greeting came from
        std::optional<Duration> LastSign; // when the last greeting or heartbeat came
        unsigned long Received = 0;       // datagrams since the start of the program
        unsigned long Sent = 0;           // the same; what the system did not take is not counted
        unsigned long Dropped = 0;        // the same: the system had no room for them
        std::optional<Duration> LastDropped; // when the last of those became known
    };

    // The parts must outlive the link. No port is open before Open().
    explicit ControlLink(Parts parts);

    // Opens the ports. One that is taken is reported, and tried again at every heartbeat; the
    // others work.
    void Open();
    // Closes all ports for good: nothing is received or sent any more.
    void Close();
    // What starting over with the unit does: nobody is connected, and the heartbeat starts anew.
    void Reset();

    // Sends to every connected monitoring program that the settings let through.
    void SendToMonitors(TextView message);
    // Tells them that the service ends.
    void SendEnd();

    // The port of the link is open.
    bool Listening(int link) const { return sockets_[link]->Bound(); }
    // What is sent to all goes to this link too: it is connected, and the settings let it through.
    bool MaySendTo(int link) const;
    // Whether any monitoring program is connected.
    bool LinkCheck() const;
    // The links as they are, by number.
    const std::array<Link, kLinks>& Links() const { return links_; }

    // 10 s, the heartbeat.
    Timer HandShake;
    // 10 s, the loss check; enabled by the heartbeat.
    Timer ConnectServiceLost;

  private:
    struct Reaction;
    static const Reaction kReactions[];

    void WinsockforClient_DataArrival(int index, const Datagram& datagram);
    void TakeHeartbeat(int index, const Endpoint& from, TextView payload);
    void TakeGreeting(int index, const Endpoint& from, TextView name);
    void TakeRequest(int index, const Endpoint& from, TextView record);

    void HandShake_Timer();
    void ConnectServiceLost_Timer();

    void Bind(int index);
    void OpenClosedPorts();
    void TellClosedPorts();
    void CountDropped(int index, unsigned long count);
    void TellDropped();
    void Broadcast(TextView label, TextView message);
    void Send(int index, TextView message);
    void DispatchLinkEvent(int index, TextView event);
    Text StatesMessage() const;

    Parts parts_;
    bool open_ = false;
    std::array<Link, kLinks> links_;
    std::array<std::unique_ptr<DatagramSocket>, kLinks> sockets_;
    std::array<std::string, kLinks> troubles_; // of the last opening of each port, or ""
};

} // namespace tarnex
