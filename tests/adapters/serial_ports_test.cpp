#include "adapters/linux/pty_line.h"
#include "adapters/linux/unique_fd.h"
#include "adapters/system/serial_ports.h"
#include "tests/adapters/run_until.h"
#include "tests/temp_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/epoll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

namespace {
bool watches_refused = false;
}

// Takes the place of the system's, which refuses when too much is watched on the whole machine.
extern "C" int epoll_ctl(int epoll, int operation, int descriptor, epoll_event* event) noexcept {
    if (watches_refused && operation == EPOLL_CTL_ADD) {
        errno = ENOSPC;
        return -1;
    }
    return static_cast<int>(syscall(SYS_epoll_ctl, epoll, operation, descriptor, event));
}

namespace tarnex {
namespace {

std::ptrdiff_t OpenFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

// What the port's contract does not tell, on a pseudo terminal: see tests/contracts.
struct TtyPort : testing::Test {
    AsioLoop loop;
    std::string heard;
    PtyLine unit{loop, [this](std::string_view bytes) { heard += bytes; }};
    const std::string problem = unit.Open();
    SystemSerialPorts ports{loop, {unit.DeviceName()}};
    std::unique_ptr<SerialPort> port;
    int losses = 0;

    PortStatus Open(const LineSettings& settings = {}) {
        OpenedPort opened =
            ports.Open(1, settings, {.received = [] {}, .lost = [this] { ++losses; }});
        port = std::move(opened.port);
        return opened.status;
    }
    PortStatus OpenPath(const std::string& path) {
        return SystemSerialPorts(loop, {path}).Open(1, {}, {}).status;
    }
    UniqueFd OpenDevice() {
        return UniqueFd(open(unit.DeviceName().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK));
    }
};

TEST_F(TtyPort, TheLineIsSetUpAndCanBeSetUpAgain) {
    const UniqueFd near_end = OpenDevice();
    ASSERT_EQ(Open(), PortStatus::kOk);
    EXPECT_EQ(unit.Baud(), 19200);
    for (int i = 0; i < 2; ++i) { // a pseudo terminal refuses parity, the second time in words
        port.reset();
        ASSERT_EQ(Open({.baud = 38400, .parity = 'E'}), PortStatus::kOk);
        EXPECT_EQ(unit.Baud(), 38400);
        termios line{};
        tcgetattr(near_end.Get(), &line);
        EXPECT_EQ(line.c_cflag & (CSIZE | CLOCAL | CRTSCTS), static_cast<tcflag_t>(CS8 | CLOCAL));
        EXPECT_FALSE(line.c_iflag & (IXON | IXOFF | ICRNL));
    }
    port.reset();
    EXPECT_EQ(Open({.data_bits = 9}), PortStatus::kUnusable);
    EXPECT_EQ(Open({.baud = 12345}), PortStatus::kUnusable);
    EXPECT_EQ(Open(), PortStatus::kOk);
}

TEST_F(TtyPort, WhatTheDriverDoesNotTakeIsSentLaterUpToALimit) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    std::string sent;
    for (int i = 0; i < 20'000; ++i)
        sent += std::to_string(1000'000'000 + i);
    EXPECT_EQ(port->Write(sent.substr(0, 150'000)), PortStatus::kOk);
    EXPECT_EQ(port->Write(sent.substr(150'000)), PortStatus::kOk);
    EXPECT_GT(port->OutBufferCount(), 0u);
    ASSERT_TRUE(RunUntil(loop, [&] { return heard.size() >= sent.size(); }));
    EXPECT_TRUE(heard == sent);
    EXPECT_EQ(port->OutBufferCount(), 0u);

    EXPECT_EQ(port->Write(std::string(1 << 20, 'x')), PortStatus::kOk);
    EXPECT_EQ(port->Write(std::string(1 << 20, 'x')), PortStatus::kLost);
    EXPECT_TRUE(RunUntil(loop, [&] { return losses == 1; }));
}

TEST_F(TtyPort, ADeviceThatHangsUpIsLetGoAtOnce) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    const auto open_files = OpenFiles();
    unit.Close(); // both ends of its own
    ASSERT_TRUE(RunUntil(loop, [&] { return losses == 1; }));
    EXPECT_EQ(OpenFiles(), open_files - 3);
    EXPECT_EQ(unit.DeviceName(), "");
    unit.Send("nobody");
    EXPECT_EQ(unit.Open(), "");
}

TEST_F(TtyPort, WhatTheSystemWillNotWatchIsUnusableAndFreeAgain) {
    watches_refused = true;
    EXPECT_EQ(Open(), PortStatus::kUnusable);
    watches_refused = false;
    EXPECT_EQ(Open(), PortStatus::kOk);
}

TEST_F(TtyPort, WhatIsNoUsableDeviceSaysWhy) {
    const TempFolder folder;
    const std::string fifo = folder / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const auto& [path, status] :
         {std::pair(std::string(), PortStatus::kAbsent),
          std::pair(fifo + "-not-there", PortStatus::kAbsent),
          std::pair(fifo + "/below", PortStatus::kAbsent),
          std::pair(folder.Path(), PortStatus::kUnusable), std::pair(fifo, PortStatus::kUnusable),
          std::pair(std::string("/dev/null"), PortStatus::kUnusable)})
        EXPECT_EQ(OpenPath(path), status) << path;
    chmod(unit.DeviceName().c_str(), 0600);
    const bool root = geteuid() == 0;
    if (root && seteuid(65534) == 0) {
        EXPECT_EQ(OpenPath(unit.DeviceName()), PortStatus::kForbidden);
        EXPECT_EQ(seteuid(0), 0);
    }
}

TEST(SerialNames, AConfiguredPathReplacesTheDefault) {
    SerialPaths configured;
    configured[1] = "/dev/serial/by-id/unit";
    const SerialPaths paths = SerialDevicePaths(configured);
    EXPECT_EQ(paths[1], "/dev/serial/by-id/unit");
    EXPECT_EQ(paths[3], "/dev/ttyS3");
    EXPECT_EQ(paths[4], "/dev/ttyUSB0");
    EXPECT_EQ(paths[19], "/dev/ttyACM7");
}

} // namespace
} // namespace tarnex
