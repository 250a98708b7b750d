#include "tests/scenarios/system_fixture.h"

namespace tarnex {
namespace {

using Connection = SystemTest;

TEST_F(Connection, FromStartToReadyToTheMillisecond) {
    Set(u"Text", u"Text1(34)", u"13900000009");
    unit.Memory.ConnectionAlarm = "1";
    StartServiceAndMonitor();
    clock.RunTo(15000ms);
    EXPECT_EQ(ReceivedAt(u"tx-NoConn"), 15000ms);
    EXPECT_EQ(Setting(u"Text", u"Text1(33)"), u"*");
    clock.RunTo(15055ms); // COM1 and COM2 are absent: 10 ms each; COM3: 10 + 5 + 20 ms
    EXPECT_EQ(Setting(u"Text", u"Text1(33)"), u"Com3");
    EXPECT_EQ(Setting(u"TarnexComm", u"LastCom"), u"3");
    EXPECT_FALSE(State().UnitConnected); // the greeting is left to the next tick

    clock.RunTo(20089ms);
    EXPECT_FALSE(State().UnitConnected);
    clock.RunTo(20090ms);
    EXPECT_TRUE(State().UnitConnected);
    for (const TextView key :
         {u"TelNo1", u"TelNo2", u"SMSCenter", u"CommAlarmTime", u"SendTimes", u"CommAlarmEnable",
          u"PowrAlarmEnable", u"TarnexName", u"NameEnable"})
        EXPECT_EQ(Setting(u"TarnexComm", key), u"@v@");

    clock.RunTo(30090ms - 1ms);
    EXPECT_EQ(unit.Count("WRNO1"), 0);
    clock.RunTo(30090ms + 9 * 35ms); // nine settings, 35 ms each
    const UnitMemory& in = unit.Memory;
    EXPECT_EQ(
        (std::vector{in.Number1, in.AlarmTime, in.SendTimes, in.PowerAlarm, in.ConnectionAlarm,
                     in.Name, in.NameMode}),
        (std::vector<std::string>{"13900000009", "3", "1", "1", "0", "00540058002D0037", "1"}));
    EXPECT_EQ(Setting(u"TarnexComm", u"NameEnable"), u"1");
    EXPECT_FALSE(State().UnitReady);

    clock.RunTo(30475ms); // version and serial number in the same tick
    EXPECT_TRUE(State().UnitReady);
    EXPECT_EQ(ReceivedAt(u"txVersionTARNEX-SIM 1.0"), 30440ms);
    EXPECT_EQ(ReceivedAt(u"tx-SerialSIM00000001"), 30475ms);
    EXPECT_EQ(ReceivedAt(u"tx--Ready"), 30475ms);
    EXPECT_EQ(Window().mLblTarnexStatus.Caption(), u"硬件状态:就绪");
    EXPECT_EQ(State().UnitInitFlags, u"11111111111*");

    clock.RunTo(40s);
    EXPECT_EQ(ReceivedAt(u"tx-States5110000"), 40s); // signal 20 is level 5
}

TEST_F(Connection, AStartingUnitIsGreetedUntilItIsUp) {
    unit.Times.Boot = 22s;
    StartServiceAndMonitor();
    unit.Boot();
    clock.RunTo(20090ms);
    EXPECT_EQ(ReceivedAt(u"txBooting"), 20090ms);
    EXPECT_EQ(Window().mLblTarnexStatus.Caption(), u"硬件状态:启动中");
    EXPECT_EQ(Setting(u"TarnexComm", u"TelNo1"), u"");
    monitor.ForgetMessages();
    unit.Faults.Instead["Hello,tarnex"] = "ERROR";
    clock.RunTo(31s); // refused at 25 s: the port is closed, and searched again
    EXPECT_TRUE(monitor.Received(u"tx-NoConn"));
    EXPECT_EQ(Setting(u"Text", u"Text1(33)"), u"*"); // not found
    unit.Faults.Instead.clear();
    ASSERT_TRUE(RunUntilReady(3min)); // its own "InitGsmOk" may drop it once more
}

TEST_F(Connection, AUnitThatFallsSilentIsLostAndFoundAgain) {
    Set(u"Debug", u"DebugMode", u"On");
    StartToReady();
    clock.RunFor(11s);
    Window().mList1.Clear();
    monitor.ForgetMessages();
    unit.Faults.Silent = true;
    clock.RunFor(78s); // since 59 s the signal is -1, which is read four times
    unit.Faults.Silent = false;
    clock.RunFor(5s); // one report, a second after the silence
    unit.Faults.Silent = true;
    const Duration silent = clock.Now();
    ASSERT_TRUE(RunUntilReceived(u"txNexLost", 10min));
    // 60 s after the report the signal is -1 again, and the fifth reading of that is the loss.
    EXPECT_EQ(clock.Now() - silent, 81s);
    EXPECT_FALSE(State().UnitConnected);
    EXPECT_EQ(Window().mLblTarnexStatus.Caption(), u"硬件状态:丢失");
    EXPECT_EQ(Window().mText1.Value() + u" " + Window().mText4.Value() + u" " +
                  Window().mTxtTarnexCSQ.Value(),
              u"1 36 20"); // losses, ticks, signal
    const Duration lost = clock.Now();
    unit.Faults.Silent = false;
    const long greetings = unit.Count("Hello,tarnex");
    ASSERT_TRUE(clock.RunUntil([&] { return unit.Count("Hello,tarnex") > greetings; }, 1min));
    EXPECT_EQ(clock.Now() - lost, 15010ms); // the port found last comes first
    ASSERT_TRUE(RunUntilReady(1min));
    EXPECT_EQ(unit.Count("WRNO1"), 2); // every setting was written again
    EXPECT_EQ(Window().mList1.Lines(),
              (std::vector<Text>{u"开始丢失拉", u"Tarnex硬件丢失,重新开始寻找!", u"开始寻找 Tarnex",
                                 u"在 com3 找到 Tarnex", u"Tarnex就绪"}));
    monitor.ForgetMessages();
    unit.Faults.Silent = true;
    EXPECT_TRUE(RunUntilReceived(u"txNexLost", 10min)); // counted anew
}

TEST_F(Connection, AWordOfARestartedUnitOrFullBuffersBeginTheSearchAnew) {
    StartToReady();
    for (const char* word : {"TX:InitSysOk", "TX:InitGsmOk", ""}) {
        monitor.ForgetMessages();
        if (*word)
            unit.Say(word);
        else // one reading is buffered, the next does not leave within 2 s
            ports.HoldOutput(3, true);
        ASSERT_TRUE(RunUntilReceived(u"txNexLost", *word ? 6s : 13s)) << word;
        ports.HoldOutput(3, false);
        ASSERT_TRUE(RunUntilReady(2min));
    }
}

TEST_F(Connection, TheSignalBecomesALevel) {
    StartToReady();
    Text levels;
    for (const int signal : {4, 5, 10, 11, 14, 15, 19, 20}) {
        unit.Signal = signal;
        clock.RunFor(10s);
        levels += State().UnitSignalLevel;
    }
    EXPECT_EQ(levels, u"12233445");
}

TEST_F(Connection, APulledAdapterIsNoticedAtOnceWhateverIsGoingOn) {
    StartToReady();
    // From each instant of a check tick and of the phases of a new connection.
    const Duration steps[] = {0ms, 5ms, 4s, 5001ms, 15010ms, 15030ms, 20070ms, 25s, 30100ms, 31s};
    for (const Duration step : steps) {
        clock.RunFor(step);
        ports.Unplug(3);
        clock.RunFor(1s);
        EXPECT_FALSE(State().UnitConnected);
        EXPECT_EQ(State().UnitSignalLevel, u"1");
        ports.Plug(3, unit);
        ASSERT_TRUE(RunUntilReady(3min)) << step.count();
    }
    ports.Unplug(3);
    ports.Plug(17, unit);
    clock.RunFor(0ms);
    ASSERT_TRUE(RunUntilReady(1min));
    EXPECT_EQ(Setting(u"TarnexComm", u"LastCom"), u"17");
    EXPECT_EQ(Setting(u"Text", u"Text1(33)"), u"Com17");
}

TEST_F(Connection, WhatTheUnitRefusesIsTriedAgain) {
    unit.Faults.Instead["WRCSCA"] = "ERROR";
    Set(u"Combo", u"Combo1(6)", u"40000"); // no number of sends
    StartServiceAndMonitor();
    clock.RunTo(1min);
    EXPECT_EQ(unit.Count("WRNO2"), 1);
    EXPECT_EQ(unit.Count("WRCSCA"), 6); // 30.09 s, then each 5 s and the time the command takes
    EXPECT_EQ(unit.Count("WRDT"), 0);
    EXPECT_EQ(unit.Count("RDCSQ"), 0);         // no signal reading on such a tick
    unit.Faults.Instead = {{"ChkVer", "1.0"}}; // too short for a version
    clock.RunFor(1min);
    EXPECT_FALSE(State().UnitReady);
    EXPECT_GT(unit.Count("RDCSQ"), 2); // the rest of such a tick goes on
    unit.Faults.Instead.clear();
    EXPECT_TRUE(RunUntilReady(6s));
    EXPECT_EQ(unit.Memory.SendTimes, "0");
}

TEST_F(Connection, WithTheLinkSwitchedOffNoPortIsTouched) {
    Set(u"Check", u"Check1(7)", u"0");
    StartServiceAndMonitor();
    clock.RunTo(10min);
    EXPECT_EQ(unit.Count("Hello,tarnex"), 0);
    EXPECT_TRUE(monitor.Received(u"txYesRigh"));
}

TEST_F(Connection, StateWordsBecomeCodesOneATick) {
    StartToReady();
    for (const auto& happens : {&SimulatedUnit::LosePower, &SimulatedUnit::RegainPower,
                                &SimulatedUnit::LoseConnection, &SimulatedUnit::LoseCard}) {
        clock.RunFor(1s);
        (unit.*happens)();
    }
    clock.RunFor(21s);
    Duration tick = 35475ms;
    for (const TextView code : {u"tx-ACLost", u"ACOk", u"txConLost", u"tx-NoCard"}) {
        EXPECT_EQ(ReceivedAt(code), tick);
        tick += 5s;
    }
}

TEST_F(Connection, ASettingsFileThatCannotBeWrittenKeepsNoUnitFromBeingReady) {
    StartToReady(); // the record in the file is complete now
    store.Writable = false;
    service.reset();
    StartService();
    ASSERT_TRUE(RunUntilReady(1min));
    EXPECT_EQ(unit.Count("WRNO1"), 2);
    clock.RunFor(1min);
    EXPECT_EQ(unit.Count("WRNO1"), 2);
    ASSERT_EQ(said.size(), 1u);
    EXPECT_NE(said[0].find("Tarnex.ini cannot be written (permission denied)"), std::string::npos);

    store.Writable = true;
    Set(u"Text", u"Text1(34)", u"13900000009"); // goes to the unit once
    clock.RunFor(6s);
    EXPECT_EQ(unit.Memory.Number1, "13900000009");
    clock.RunFor(1min);
    EXPECT_EQ(unit.Count("WRNO1"), 3);
    EXPECT_EQ(Setting(u"TarnexComm", u"TelNo1"), u"13900000009");
    EXPECT_EQ(said.size(), 2u);
}

} // namespace
} // namespace tarnex
