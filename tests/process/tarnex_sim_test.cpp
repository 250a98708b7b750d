#include "platform/asio/tty_ports.h"
#include "tests/process/child_process.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct TarnexSim : testing::Test {
    // What the unit says on the port until it has said all of expected.
    bool Hears(SerialPort& port, const std::string& expected) {
        std::string heard;
        return RunUntil(loop, [&] {
            heard += port.Read(1024);
            return heard.find(expected) != std::string::npos;
        });
    }

    TempFolder folder;
    AsioLoop loop;
    const std::string link = folder / "unit";
    const std::string output = folder / "output";
};

TEST_F(TarnexSim, IsAUnitThatFollowsItsScript) {
    // It is told to stop by a signal: the script leaves time for the talk, however slow that is.
    WriteFile(folder / "script", "0 sms 10086 余额\n0 csq 7\n1000 quit\n");
    ChildProcess sim("tarnex-sim", {"--link", link, "--script", folder / "script"}, output);
    ASSERT_TRUE(RunUntil(loop, [&] { return std::filesystem::exists(link); }));
    TtyPorts ports(loop, {link});
    bool lost = false;
    const auto port = ports.Open(1, {}, {[] {}, [&] { lost = true; }}).port;
    ASSERT_TRUE(port);
    port->Write("~TX:Hello,tarnex\r\n");
    EXPECT_TRUE(Hears(*port, "TX:Hello,sever\r\n"));
    port->Write("~TX:RDCSQ\r\n");
    EXPECT_TRUE(Hears(*port, "TX:TXCSQ(7,0)\r\n"));
    port->Write("~TX:SENDSMS1(4F60597D)\r\n");
    EXPECT_TRUE(Hears(*port, "TX:OK\r\n"));
    sim.Signal(SIGTERM);
    EXPECT_EQ(sim.Wait(loop), 0);
    EXPECT_TRUE(RunUntil(loop, [&] { return lost; }));
    EXPECT_FALSE(std::filesystem::is_symlink(link));
    EXPECT_NE(sim.Output().find("script: sms 10086 余额\n"), std::string::npos);
    EXPECT_NE(sim.Output().find("command: RDCSQ\n"), std::string::npos);
    EXPECT_NE(sim.Output().find("SMS to number 1 (13900000001): 你好\n"), std::string::npos);
}

TEST_F(TarnexSim, RefusesABadScriptByLineAndALinkThatIsAFile) {
    WriteFile(folder / "script", "0 con\n1 ac maybe\n");
    ChildProcess with_script("tarnex-sim", {"--script", folder / "script"}, output);
    EXPECT_EQ(with_script.Wait(loop), 64);
    EXPECT_NE(with_script.Output().find("line 2: ac: expected"), std::string::npos);
    ChildProcess with_link("tarnex-sim", {"--link", folder / "script"}, output);
    EXPECT_EQ(with_link.Wait(loop), 1);
    EXPECT_EQ(FileContent(folder / "script").substr(0, 5), "0 con");
}

} // namespace
} // namespace tarnex
