#include "platform/asio/asio_datagram.h"
#include "tests/process/child_process.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

// A loopback address of this process alone, so that tests can run side by side.
std::string OwnAddress() {
    const int pid = getpid();
    return "127.77." + std::to_string(pid / 250 % 250) + "." + std::to_string(1 + pid % 250);
}

struct TarnexMonitor : testing::Test {
    int Run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--address", address, "--link", "2"});
        ChildProcess monitor("tarnex-monitor", arguments, folder / "output");
        const int status = monitor.Wait(loop);
        output = monitor.Output();
        return status;
    }

    TempFolder folder;
    AsioLoop loop;
    const std::string address = OwnAddress();
    AsioDatagramSockets sockets{loop, address};
    std::vector<std::string> heard;
    std::string answer;
    std::unique_ptr<DatagramSocket> service = sockets.Create([this](const Datagram& datagram) {
        heard.push_back(datagram.bytes);
        if (!answer.empty())
            service->Send(datagram.from, answer);
    });
    std::string output;
};

TEST_F(TarnexMonitor, ListensUntilItSeesACode) {
    ASSERT_EQ(service->Bind(7841), "");
    answer = "txControl1301";
    EXPECT_EQ(Run({"listen", "--name", "门卫", "--until", "txControl"}), 0);
    EXPECT_EQ(heard, std::vector<std::string>{"txHelloNx\xC3\xC5\xCE\xC0"});
    EXPECT_NE(output.find("txControl1301  (command by SMS: restart or start web service"),
              std::string::npos);
    answer = "txYesRigh";
    EXPECT_EQ(Run({"listen", "--until", "tx--Ready", "--for", "0.5"}), 1);
    EXPECT_EQ(Run({"listen", "--for", "0.5"}), 0);
}

TEST_F(TarnexMonitor, SaysWhenThereIsNoService) {
    EXPECT_EQ(Run({"listen", "--for", "0.1"}), 69);
    EXPECT_EQ(Run({"raw", "txHeartSv"}), 69);
    EXPECT_NE(output.find("nobody listens there"), std::string::npos);
}

TEST_F(TarnexMonitor, ReportsAnEvent) {
    ASSERT_EQ(service->Bind(7841), "");
    EXPECT_EQ(Run({"notify", "--service", "cpu", "--state=abnormal", "--action", "recover",
                   "--machine", "2", "--machine-name", "srv", "--memo", "负荷", "--mail", "no"}),
              0);
    EXPECT_EQ(heard, std::vector<std::string>{"txSendSMS2031410srv{[b^k^]}\xB8\xBA\xBA\xC9"});
}

TEST_F(TarnexMonitor, RefusesWrongUsage) {
    const std::vector<std::string> lines[] = {
        {"listen", "now"},
        {"raw"},
        {"notify", "--service", "cpu"},
        {"notify", "--service", "cpu", "--state", "10"},
        {"notify", "--service", "cpu", "--state", "1", "--for", "3"},
        {"listen", "--link", "6"},
        {"listen", "--address", "1.2.3"},
        {"listen", "--encoding", "latin1"},
        {"listen", "--loudly"},
    };
    for (const auto& line : lines)
        EXPECT_EQ(Run(line), 64) << output;
}

} // namespace
} // namespace tarnex
