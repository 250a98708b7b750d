#include "simulator/simulated_clock.h"
#include "simulator/simulated_serial.h"
#include "simulator/simulated_unit.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

class SimulatedUnitTest : public testing::Test {
  protected:
    void SetUp() override {
        unit.Times = {.Answer = 5ms, .Signal = 20ms, .Sms = 4s, .Boot = 10s};
        ports.Plug(3, unit);
        port = ports.Open(3, {}, {[&] { Note(); }, [] {}}).port;
    }
    // "instant:bytes" for every chunk that comes.
    void Note() { chunks.push_back(std::to_string(clock.Now().count()) + ":" + port->Read(1024)); }
    // What the unit says within a second of the command.
    std::string Ask(std::string_view command) {
        port->Write("~TX:" + std::string(command) + "\r\n");
        return Hear(1s);
    }
    std::string Hear(Duration duration) {
        chunks.clear();
        clock.RunFor(duration);
        std::string all;
        for (const std::string& chunk : chunks)
            all += chunk.substr(chunk.find(':') + 1);
        return all;
    }

    SimulatedClock clock;
    SimulatedSerialPorts ports{clock};
    SimulatedUnit unit{clock};
    std::unique_ptr<SerialPort> port;
    std::vector<std::string> chunks;
};

TEST_F(SimulatedUnitTest, AnswersEveryKindOfCommandAndKeepsWhatItIsTold) {
    struct Row {
        std::string command, answer;
    };
    const Row rows[] = {
        {"Hello,tarnex", "TX:Hello,sever\r\n"},
        {"WRNO1(12345)", "TX:OK\r\n"},
        {"WRNO2()", "TX:OK\r\n"},
        {"RDNO1", "TX:NO1(12345)\r\n"},
        {"RDNO2", "TX:NO2()\r\n"},
        {"WRDT(24-05-06 (1))", "TX:OK\r\n"},
        {"RDDT", "TX:DT(24-05-06 (1))\r\n"},
        {"WRCSCA(00310032)", "TX:OK\r\n"},
        {"RDCSCA", "TX:TXCSCA(00310032)\r\n"},
        {"EnName", "TX:OK\r\n"},
        {"RDNAMESt", "TX:NameSt(1)\r\n"},
        {"QorvexWsr(A1)", "TX:OK\r\n"},
        {"RDSerial", "TX:Serial(A1)\r\n"},
        {"ChkVer", "TX:TARNEX-SIM 1.0\r\n"},
        {"RDCSQ", "TX:TXCSQ(20,0)\r\n"},
        {"RDALARM", "TX:ALARM(0)\r\n"},
        {"RDNO1(x)", "TX:ERROR\r\n"},
        {"WRNO1", "TX:ERROR\r\n"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Ask(row.command), row.answer) << row.command;
    EXPECT_EQ(unit.Count("RDNO1"), 1);
    EXPECT_THROW(unit.Count("RDNO3"), std::out_of_range);
}

TEST_F(SimulatedUnitTest, CommandsMayComeInPiecesOrTogether) {
    port->Write("\xFFnoise\r\n~TX:RDN");
    port->Write("O1\r");
    EXPECT_EQ(Hear(1s), "");
    port->Write("\n~TX:RDNO2\r\n");
    EXPECT_EQ(Hear(1s), "TX:NO1(13900000001)\r\nTX:NO2(13900000002)\r\n");
}

TEST_F(SimulatedUnitTest, ReportsAnSmsWithTheOutcomeThatHeldWhenItWasAccepted) {
    std::vector<std::string> told;
    unit.OnSent([&](const SentSms& sms) {
        told.push_back(std::to_string(sms.number_index) + sms.telephone_number + ToUtf8(sms.text));
    });
    EXPECT_EQ(Ask("SENDSMS1(4E2D0041)"), "TX:OK\r\n");
    unit.Outcome = SmsOutcome::kFailed;
    EXPECT_EQ(Hear(2999ms), "");
    EXPECT_EQ(Hear(1ms), "TX:SENDOK\r\n");
    EXPECT_EQ(Ask("SENDSMS2(0041)"), "TX:OK\r\n");
    EXPECT_EQ(Hear(1min), "TX:SENDFAIL\r\n");
    unit.Outcome = SmsOutcome::kLost;
    EXPECT_EQ(Ask("SENDSMS2(0041)"), "TX:OK\r\n");
    EXPECT_EQ(Hear(10min), "");
    unit.Outcome = SmsOutcome::kSent;
    EXPECT_EQ(Ask("WRNO2()"), "TX:OK\r\n");
    EXPECT_EQ(Ask("SENDSMS2(0041)"), "TX:OK\r\n");
    EXPECT_EQ(Hear(1min), "TX:SENDFAIL\r\n"); // there is no number to send it to
    EXPECT_EQ(told, (std::vector<std::string>{"113900000001中A", "213900000002A", "213900000002A",
                                              "2A"}));
    EXPECT_EQ(unit.Sent().size(), 4u);
}

TEST_F(SimulatedUnitTest, RestartsOnResetAndAnswersTheGreetingOnlyUntilItIsUp) {
    Ask("WRNO1(1)");
    Ask("LCD1(hello)");
    port->Write("~TX:RESET\r\n");
    EXPECT_EQ(Hear(5ms), "TX:RESET OK\r\n");
    EXPECT_EQ(Ask("Hello,tarnex"), "TX:Init\r\n");
    EXPECT_EQ(Ask("RDNO1"), "");
    EXPECT_EQ(Ask("RDCSQ"), "");
    EXPECT_FALSE(unit.ReceiveSms(u"1", u"x"));
    EXPECT_EQ(Hear(5999ms), "");
    EXPECT_EQ(Hear(1ms), "TX:InitSysOk\r\n");
    EXPECT_EQ(Hear(999ms), "");
    EXPECT_EQ(Hear(1ms), "TX:InitGsmOk\r\n");
    EXPECT_EQ(Ask("RDNO1"), "TX:NO1(1)\r\n");
    EXPECT_EQ(unit.Memory.Lcd1, "");
}

TEST_F(SimulatedUnitTest, FaultsShowOnTheLine) {
    unit.Faults.Instead["WRNO1"] = "ERROR";
    EXPECT_EQ(Ask("WRNO1(77)"), "TX:ERROR\r\n");
    EXPECT_EQ(unit.Memory.Number1, "13900000001");
    unit.Faults = {.LinesBefore = {"TX:SENDOK"}, .LinesBehind = {"TX:NOSimCard"}};
    EXPECT_EQ(Ask("TXPWRON"), "TX:SENDOK\r\nTX:OK\r\nTX:NOSimCard\r\n");
    EXPECT_EQ(chunks.size(), 1u);
    unit.Faults = {.TwoChunks = true};
    EXPECT_EQ(Ask("TXPWRON"), "TX:OK\r\n");
    EXPECT_EQ(chunks.size(), 2u);
    unit.Faults = {.NoLineEnd = true};
    EXPECT_EQ(Ask("TXPWRON"), "TX:OK");
    unit.Faults = {.Echo = true};
    EXPECT_EQ(Ask("TXPWRON"), "~TX:TXPWRON\r\nTX:OK\r\n");
    unit.Faults = {.Noise = true};
    EXPECT_EQ(Ask("TXPWRON").find("TX:"), std::string::npos);
    unit.Faults = {.Silent = true};
    unit.LosePower();
    EXPECT_EQ(Ask("RDCSQ"), "");
    EXPECT_EQ(unit.Count("TXPWRON"), 5);
}

TEST_F(SimulatedUnitTest, ReportsItsSignalByItselfWhenToldTo) {
    unit.SetSignalPeriod(30s);
    unit.Signal = 7;
    Hear(1min);
    EXPECT_EQ(chunks,
              (std::vector<std::string>{"30000:TX:TXCSQ(7,0)\r\n", "60000:TX:TXCSQ(7,0)\r\n"}));
    unit.SetSignalPeriod(0s);
    EXPECT_EQ(Hear(1min), "");
}

} // namespace
} // namespace tarnex
