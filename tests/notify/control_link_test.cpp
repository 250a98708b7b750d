#include "notify/control_link.h"
#include "simulator/simulated_monitor.h"
#include "tests/notify/notify_rig.h"

namespace tarnex {
namespace {

using State = ControlLink::Link::State;

// Monitoring programs on links 1 and 3 that do nothing by themselves but greet when they start.
struct ControlLinkTest : NotifyRig {
    ControlLinkTest() {
        settings.LinkEnabled.fill(true);
        settings.SMSNotifyOn = true;
        settings.NotifyMode = u"SMS";
        link.Open();
        link.Reset();
    }
    static MonitorOptions Silent(int link, const Text& name) {
        return {.link = link, .name = name, .heartbeat = 0ms, .greet_again = 0ms};
    }
    void Greet(Monitor& monitor) {
        monitor.Start();
        clock.RunFor(0ms);
    }
    // What came since the last call.
    static Texts Take(Monitor& monitor) {
        Texts texts;
        for (const MonitorMessage& message : monitor.Messages())
            texts.push_back(message.text);
        monitor.ForgetMessages();
        return texts;
    }
    State ThirdState() { return link.Links()[2].LinkState; }

    ControlLink link{{.clock = clock,
                      .sockets = network,
                      .code_page = code_page,
                      .settings = settings,
                      .unit = state,
                      .dispatcher = dispatcher,
                      .lists = lists,
                      .notices = notices,
                      .main_job = main_job}};
    Monitor first{clock, network, code_page, Silent(0, u"")};
    Monitor third{clock, network, code_page, Silent(2, u"监控")};
};

TEST_F(ControlLinkTest, AGreetingIsAnsweredAndAnnounced) {
    Greet(third);
    EXPECT_EQ(Take(third), (Texts{u"txYesRigh"}));
    EXPECT_EQ(ThirdState(), State::C);
    EXPECT_EQ(QueuedSMS(), (Texts{u"1设备3\"监控\"的通讯正常。"}));
    EXPECT_TRUE(mails.empty());

    // A second greeting counts like the first, and its sender is the peer from then on.
    state.UnitReady = true;
    state.UnitVersion = u"V2.1";
    state.UnitSerial = u"S77";
    Monitor newer(clock, network, code_page, Silent(2, u""));
    Greet(newer);
    EXPECT_EQ(Take(newer), (Texts{u"txYesRigh", u"tx--Ready", u"txVersionV2.1", u"tx-SerialS77"}));
    EXPECT_EQ(QueuedSMS(), (Texts{u"1设备3的通讯正常。"}));
    lists.DebugOn = true;
    newer.Send(u"txSendSMS1302010{[b^k^]}");
    link.SendToMonitors(u"txControl1301");
    clock.RunFor(0ms);
    EXPECT_EQ(Take(newer), (Texts{u"txControl1301"}));
    EXPECT_EQ(Take(third), Texts{});
    EXPECT_EQ(QueuedSMS(), (Texts{u"1设备1的web服务正常。"}));
    EXPECT_EQ(window.lines[List::kEvents].at(1), u"服务发出:txSendSMS1302010{[b^k^]}");
}

TEST_F(ControlLinkTest, TheHeartbeatTellsTheStatesEveryTenSeconds) {
    Greet(third);
    state.UnitSignalLevel = u"4";
    clock.RunTo(9999ms);
    EXPECT_EQ(Take(third), (Texts{u"txYesRigh"}));
    clock.RunTo(10s);
    state.UnitOnline = true;
    Greet(first);
    clock.RunTo(20s);
    EXPECT_EQ(Take(third), (Texts{u"tx-States4000100", u"tx-States4110100"}));
}

TEST_F(ControlLinkTest, TheSwitchesSilenceLinksButNotGreetings) {
    const Texts all{u"txYesRigh", u"tx-NoCard", u"tx-States1010100"}, greeted{u"txYesRigh"};
    for (const auto& [off, first_hears, third_hears] :
         {std::tuple{4, all, all}, {2, all, greeted}, {0, greeted, greeted}}) {
        settings.LinkEnabled.fill(true);
        settings.LinkEnabled[off] = false;
        Greet(first);
        Greet(third);
        link.SendToMonitors(u"tx-NoCard");
        clock.RunFor(10s);
        EXPECT_EQ(Take(first), first_hears);
        EXPECT_EQ(Take(third), third_hears);
    }
}

TEST_F(ControlLinkTest, FourLossChecksWithoutAHeartbeatLoseTheLink) {
    clock.RunTo(15s); // loss checks come at 20 s, 30 s, ...
    Greet(third);
    clock.RunTo(45s);
    third.SendHeartbeat();
    clock.RunTo(55s);
    third.Send(u"txHeartSv "); // no heartbeat
    QueuedSMS();
    clock.RunTo(79999ms);
    EXPECT_TRUE(link.LinkCheck());
    clock.RunTo(80s);
    EXPECT_FALSE(link.LinkCheck());
    Take(third); // the heartbeat of that instant still went out

    third.SendHeartbeat(); // does not bring the link back
    clock.RunTo(3min);
    EXPECT_EQ(Take(third), Texts{});
    EXPECT_EQ(QueuedSMS(), (Texts{u"1设备3\"监控\"的通讯丢失。"})); // lost once
    Greet(third);
    clock.RunFor(30s);
    EXPECT_EQ(ThirdState(), State::C);
}

TEST_F(ControlLinkTest, StrangeDatagramsAreHarmless) {
    const auto socket = network.Create({[](const Datagram&) {}});
    ASSERT_EQ(socket->Bind(0), "");
    std::string binary = "txHelloN";
    for (int i = 0; i < 256; ++i)
        binary += char(i);
    const std::string longest(65507, '\xFF');
    for (const std::string& bytes : {std::string(), std::string("   "), std::string("tx-SMSEnd"),
                                     std::string("txhelloNxMon"), binary, longest})
        socket->Send({"127.0.0.1", 7840}, bytes);
    clock.RunFor(0ms);
    EXPECT_FALSE(link.LinkCheck());
    EXPECT_EQ(table.Rows.size(), 0u);
    EXPECT_EQ(window.lines[List::kControlLink], Texts{}); // debug mode is off

    lists.DebugOn = true;
    socket->Send({"127.0.0.1", 7840}, "txHelloNx" + longest.substr(9));
    clock.RunFor(0ms);
    link.SendToMonitors(u"tx-NoCard");
    clock.RunTo(10s);
    ASSERT_EQ(window.lines[List::kControlLink].size(), 3u);
    EXPECT_EQ(window.lines[List::kControlLink][0].size(), 6u + 65507);
    EXPECT_EQ(window.lines[List::kControlLink][1], u"Send0:tx-NoCard");
    EXPECT_EQ(window.lines[List::kControlLink][2], u"HeartSend: 0:tx-States1010000");
}

TEST_F(ControlLinkTest, TakenPortsAreReportedOnceAndOpenedWhenTheyAreFree) {
    link.Close();
    network.OccupyPort(7842);
    network.OccupyPort(7844);
    link.Open();
    Greet(first);
    clock.RunTo(35s);
    EXPECT_TRUE(link.LinkCheck());
    EXPECT_NE(said.at(0).find("port 7842, 7844 (address already in use):"), std::string::npos);
    EXPECT_EQ(said.size(), 1u);
    network.FreePort(7842);
    clock.RunTo(40s);
    EXPECT_NE(said.at(1).find("port 7844 ("), std::string::npos);
    network.FreePort(7844);
    clock.RunTo(50s);
    EXPECT_EQ(said.at(2), "The control link is open at all ports now.");
}

TEST_F(ControlLinkTest, LossesAreToldForAnHourAndRefusedSendsDoNotCount) {
    Greet(first);
    clock.RunTo(5s);
    network.Drop(7840, 3);
    clock.RunFor(0ms);
    EXPECT_EQ(link.Links()[0].Dropped, 3u);
    EXPECT_TRUE(said.at(0).starts_with("Datagrams to UDP port 7840 were lost:"));
    network.Refusing = true;
    clock.RunTo(1h);
    EXPECT_EQ(link.Links()[0].Sent, 1u);
    EXPECT_EQ(said.size(), 2u); // and that the monitoring program is lost
    clock.RunTo(1h + 10s);
    EXPECT_EQ(said.size(), 3u);
}

TEST_F(ControlLinkTest, AResetDisconnectsAndBeginsTheCountAnew) {
    Greet(first);
    clock.RunTo(15s);
    link.Reset();
    EXPECT_FALSE(link.LinkCheck());
    EXPECT_FALSE(link.ConnectServiceLost.Enabled());
    Take(first);
    Greet(first);
    clock.RunTo(24999ms);
    EXPECT_EQ(Take(first), (Texts{u"txYesRigh"}));
    clock.RunTo(25s);
    link.SendEnd();
    clock.RunFor(0ms);
    EXPECT_EQ(Take(first), (Texts{u"tx-States1010000", u"tx-SMSEnd"}));

    link.Close();
    link.SendToMonitors(u"tx-NoCard");
    Greet(third);
    clock.RunTo(2min); // the heartbeat does not open the ports again
    EXPECT_EQ(Take(first), Texts{});
    EXPECT_EQ(Take(third), Texts{});
}

} // namespace
} // namespace tarnex
