#include "notify/control_link.h"

#include "events/notification_plan.h"
#include "settings/setting_table.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr Duration kHeartbeatPeriod = 10s;
constexpr Duration kLossCheckPeriod = 10s;
constexpr int kLossLimit = 4;         // loss checks without a sign of life
constexpr Duration kDroppedTold = 1h; // after the last one

// Digits 2 to 5 of an event record: service, state and action.
constexpr TextView kGreetedEvent = u"8020";
constexpr TextView kLostEvent = u"8030";

std::uint16_t PortOf(int index) {
    return std::uint16_t(ControlLink::kFirstPort + index);
}

} // namespace

// What monitoring programs send. Everything else, their "tx-SMSEnd" included, is only listed.
struct ControlLink::Reaction {
    TextView code;
    bool whole; // the code is the whole message
    void (ControlLink::*take)(int index, const Endpoint& from, TextView payload);
};

// clang-format off
const ControlLink::Reaction ControlLink::kReactions[] = {
    {u"txHeartSv", true,  &ControlLink::TakeHeartbeat},
    {u"txHelloNx", false, &ControlLink::TakeGreeting},
    {kRequestCode, false, &ControlLink::TakeRequest},
};
// clang-format on

ControlLink::ControlLink(Parts parts)
    : HandShake(parts.clock, kHeartbeatPeriod, [this] { HandShake_Timer(); }),
      ConnectServiceLost(parts.clock, kLossCheckPeriod, [this] { ConnectServiceLost_Timer(); }),
      parts_(parts) {
    for (int i = 0; i < kLinks; ++i)
        sockets_[i] = parts_.sockets.Create(
            {.received =
                 [this, i](const Datagram& datagram) { WinsockforClient_DataArrival(i, datagram); },
             .dropped = [this, i](unsigned long count) { CountDropped(i, count); }});
}

void ControlLink::Open() {
    open_ = true;
    OpenClosedPorts();
}

void ControlLink::Close() {
    open_ = false;
    for (const auto& socket : sockets_)
        socket->Close();
}

void ControlLink::Reset() {
    for (int i = 0; i < kLinks; ++i) {
        if (MaySendTo(i)) // a silenced program cannot know
            parts_.main_job.LinkForgotten(i, links_[i].LinkName);
        links_[i].LinkState = Link::State::N;
    }
    ConnectServiceLost.Reset(kLossCheckPeriod);
    HandShake.Reset(kHeartbeatPeriod);
    HandShake.Enable();
}

void ControlLink::Bind(int index) {
    if (open_)
        troubles_[index] = sockets_[index]->Bind(PortOf(index));
}

void ControlLink::OpenClosedPorts() {
    for (int i = 0; i < kLinks; ++i)
        if (!sockets_[i]->Bound())
            Bind(i);
    TellClosedPorts();
}

// All in one line: what is wrong with one port is mostly wrong with the others too.
void ControlLink::TellClosedPorts() {
    std::string ports;
    std::string troubles;
    for (int i = 0; i < kLinks; ++i) {
        if (troubles_[i].empty())
            continue;
        ports += (ports.empty() ? "" : ", ") + std::to_string(PortOf(i));
        if (troubles.find(troubles_[i]) == std::string::npos)
            troubles += (troubles.empty() ? "" : ", ") + troubles_[i];
    }
    const std::string trouble =
        "The control link cannot be opened at UDP port " + ports + " (" + troubles +
        "): no monitoring program is heard there. End the program that holds the port (\"tarnexctl "
        "doctor\" names it), or correct the address (setting " +
        NameOf("bind-address"_setting) +
        ") and restart the service. Opening is tried again every 10 seconds.";
    parts_.notices.Report("control link", ports.empty() ? "" : trouble,
                          "The control link is open at all ports now.");
}

// ---- receiving

void ControlLink::CountDropped(int index, unsigned long count) {
    links_[index].Dropped += count;
    links_[index].LastDropped = parts_.clock.Now();
    TellDropped();
}

void ControlLink::TellDropped() {
    std::string ports;
    for (int i = 0; i < kLinks; ++i)
        if (links_[i].LastDropped && parts_.clock.Now() < *links_[i].LastDropped + kDroppedTold)
            ports += (ports.empty() ? "" : ", ") + std::to_string(PortOf(i));
    const std::string trouble =
        "Datagrams to UDP port " + ports +
        " were lost: more came at once than the system has room for, and events may have been "
        "among them. Let the monitoring program there send less at once; find out which program "
        "sends them if it is not that one. \"tarnexctl status --long\" counts them.";
    parts_.notices.Report("control link losses", ports.empty() ? "" : trouble,
                          "No datagram to the control link was lost for an hour.");
}

void ControlLink::WinsockforClient_DataArrival(int index, const Datagram& datagram) {
    ++links_[index].Received;
    const Text data = parts_.code_page.Decode(datagram.bytes);
    if (parts_.lists.DebugOn)
        parts_.lists.mList5Additem(u"Read" + ToText(index) + u":" + data);
    if (Trim(data).empty())
        return;
    for (const Reaction& reaction : kReactions) {
        if (reaction.whole ? data == reaction.code : StartsWith(data, reaction.code)) {
            const TextView payload = TextView(data).substr(reaction.code.size());
            (this->*reaction.take)(index, datagram.from, payload);
            return;
        }
    }
}

void ControlLink::TakeHeartbeat(int index, const Endpoint&, TextView) {
    links_[index].LostCount = 0;
    links_[index].LastSign = parts_.clock.Now();
}

void ControlLink::TakeGreeting(int index, const Endpoint& from, TextView name) {
    Link& link = links_[index];
    link.LinkName = name;
    link.Peer = from;
    Send(index, u"txYesRigh");
    Bind(index);
    link.LinkState = Link::State::C;
    link.LostCount = 0;
    link.LastSign = parts_.clock.Now();
    DispatchLinkEvent(index, kGreetedEvent);
    parts_.main_job.LinkGreeted(index);
    if (parts_.unit.UnitReady) {
        Send(index, u"tx--Ready");
        Send(index, u"txVersion" + parts_.unit.UnitVersion);
        Send(index, u"tx-Serial" + parts_.unit.UnitSerial);
    }
}

void ControlLink::TakeRequest(int, const Endpoint&, TextView record) {
    if (parts_.lists.DebugOn) {
        parts_.lists.mList1Additem(u"");
        parts_.lists.mList1Additem(u"服务发出:" + Text(kRequestCode) + Text(record));
    }
    parts_.dispatcher.DispatchEvent(record);
}

void ControlLink::DispatchLinkEvent(int index, TextView event) {
    parts_.dispatcher.DispatchEvent(ToText(index + 1) + Text(event) +
                                    NotifyChannels(parts_.settings) + Text(kMemoDelimiter) +
                                    links_[index].LinkName);
}

// ---- sending

void ControlLink::SendToMonitors(TextView message) {
    Broadcast(u"Send", message);
}

void ControlLink::SendEnd() {
    SendToMonitors(u"tx-SMSEnd");
}

bool ControlLink::MaySendTo(int link) const {
    return parts_.settings.LinkEnabled[0] && parts_.settings.LinkEnabled[link] &&
           links_[link].LinkState == Link::State::C;
}

void ControlLink::Broadcast(TextView label, TextView message) {
    for (int i = 0; i < kLinks; ++i) {
        if (!MaySendTo(i))
            continue;
        if (parts_.lists.DebugOn)
            parts_.lists.mList5Additem(Text(label) + ToText(i) + u":" + Text(message));
        Send(i, message);
    }
}

void ControlLink::Send(int index, TextView message) {
    if (!sockets_[index]->Bound())
        return;
    if (sockets_[index]->Send(*links_[index].Peer, parts_.code_page.Encode(message)))
        ++links_[index].Sent;
}

// ---- heartbeat and losses

void ControlLink::HandShake_Timer() {
    OpenClosedPorts();
    TellDropped();
    ConnectServiceLost.Enable();
    Broadcast(u"HeartSend: ", StatesMessage());
}

Text ControlLink::StatesMessage() const {
    Text message = u"tx-States" + parts_.unit.UnitSignalLevel;
    message += parts_.unit.UnitOnline ? u'1' : u'0';
    for (const Link& link : links_)
        message += link.LinkState == Link::State::C ? u'1' : u'0';
    return message;
}

void ControlLink::ConnectServiceLost_Timer() {
    for (int i = 0; i < kLinks; ++i) {
        Link& link = links_[i];
        link.LostCount = std::min(link.LostCount + 1, kLossLimit);
        if (link.LostCount == kLossLimit && link.LinkState == Link::State::C) {
            Bind(i);
            DispatchLinkEvent(i, kLostEvent);
            link.LinkState = Link::State::N;
            parts_.main_job.LinkLost(i, link.LinkName);
        }
    }
}

// ---- status

bool ControlLink::LinkCheck() const {
    return std::ranges::any_of(links_,
                               [](const Link& link) { return link.LinkState == Link::State::C; });
}

} // namespace tarnex
