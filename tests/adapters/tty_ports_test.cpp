#include "adapters/asio/tty_ports.h"
#include "tests/adapters/run_until.h"

#include <cstdlib>
#include <filesystem>
#include <numeric>

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

// The far end of a pseudo terminal whose near end is the device.
class FarEnd {
  public:
    FarEnd() : fd_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        grantpt(fd_);
        unlockpt(fd_);
    }
    ~FarEnd() { HangUp(); }

    std::string Device() const { return ptsname(fd_); }
    // False when the line does not take all of it.
    bool Send(std::string_view bytes) const {
        return write(fd_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    }
    std::string Receive() const {
        char bytes[4096];
        const ssize_t size = read(fd_, bytes, sizeof bytes);
        return {bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
    }
    termios Line() const { // of the near end
        termios line{};
        tcgetattr(fd_, &line);
        return line;
    }
    void HangUp() {
        if (fd_ >= 0)
            close(std::exchange(fd_, -1));
    }

  private:
    int fd_;
};

std::string EveryByte() {
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    return bytes;
}

bool HoldsOpen(const std::string& device) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry, gone) == device)
            return true;
    }
    return false;
}

struct TtyPort : testing::Test {
    AsioLoop loop;
    FarEnd unit;
    TtyPorts ports{loop, {unit.Device()}};
    std::unique_ptr<SerialPort> port;
    int events = 0;
    int losses = 0;

    PortStatus Open(const LineSettings& settings = {}) {
        OpenedPort opened = ports.Open(
            1, settings, {.received = [this] { ++events; }, .lost = [this] { ++losses; }});
        port = std::move(opened.port);
        return opened.status;
    }
    PortStatus OpenPath(const std::string& path) {
        return TtyPorts(loop, {path}).Open(1, {}, {}).status;
    }
};

TEST_F(TtyPort, EveryByteCrossesUnchangedBothWays) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    EXPECT_EQ(port->Write(EveryByte()), PortStatus::kOk);
    ASSERT_TRUE(unit.Send(EveryByte()));
    std::string sent;
    std::string received;
    EXPECT_TRUE(RunUntil(loop, [&] {
        sent += unit.Receive();
        received += port->Read(100);
        return sent == EveryByte() && received == EveryByte();
    }));
    EXPECT_GT(events, 0);
    EXPECT_EQ(port->OutBufferCount(), 0u);
}

TEST_F(TtyPort, TheLineIsSetUpAndCanBeSetUpAgain) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    const termios first = unit.Line();
    EXPECT_EQ(cfgetospeed(&first), static_cast<speed_t>(B19200));
    for (int i = 0; i < 2; ++i) { // a pseudo terminal refuses parity, the second time in words
        port.reset();
        ASSERT_EQ(Open({.baud = 38400, .parity = 'E'}), PortStatus::kOk);
        const termios line = unit.Line();
        EXPECT_EQ(cfgetospeed(&line), static_cast<speed_t>(B38400));
        EXPECT_EQ(line.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
        EXPECT_TRUE(line.c_cflag & CLOCAL);
        EXPECT_FALSE(line.c_cflag & CRTSCTS);
        EXPECT_FALSE(line.c_iflag & (IXON | IXOFF | ICRNL));
    }
    port.reset();
    EXPECT_EQ(Open({.data_bits = 9}), PortStatus::kUnusable);
    EXPECT_EQ(Open({.baud = 12345}), PortStatus::kUnusable);
    EXPECT_EQ(Open(), PortStatus::kOk);
}

TEST_F(TtyPort, AtMost1024BytesAreTakenAheadAndNoneIsLost) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    std::string sent;
    for (int i = 0; i < 300; ++i)
        sent += std::to_string(1000'000'000 + i);
    ASSERT_TRUE(unit.Send(sent));
    ASSERT_TRUE(RunUntil(loop, [&] { return port->InBufferCount() == 1024; }));
    EXPECT_FALSE(RunUntil(
        loop, [&] { return port->InBufferCount() != 1024; }, 20ms));
    const int events_before = events;
    std::string received = port->Read(700);
    ASSERT_TRUE(RunUntil(loop, [&] { return events > events_before; })); // the rest follows
    while (received.size() < sent.size()) {
        ASSERT_TRUE(RunUntil(loop, [&] { return port->InBufferCount() > 0; }));
        ASSERT_LE(port->InBufferCount(), 1024u);
        received += port->Read(700);
    }
    EXPECT_EQ(received, sent);
}

TEST_F(TtyPort, WhatTheDriverDoesNotTakeIsSentLaterUpToALimit) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    std::string sent;
    for (int i = 0; i < 20'000; ++i)
        sent += std::to_string(1000'000'000 + i);
    EXPECT_EQ(port->Write(sent.substr(0, 150'000)), PortStatus::kOk);
    EXPECT_EQ(port->Write(sent.substr(150'000)), PortStatus::kOk);
    EXPECT_GT(port->OutBufferCount(), 0u);
    std::string received;
    ASSERT_TRUE(RunUntil(loop, [&] {
        for (std::string part; !(part = unit.Receive()).empty();)
            received += part;
        return received.size() >= sent.size();
    }));
    EXPECT_TRUE(received == sent);
    EXPECT_EQ(port->OutBufferCount(), 0u);

    EXPECT_EQ(port->Write(sent), PortStatus::kOk);
    port->DiscardOutput();
    EXPECT_EQ(port->OutBufferCount(), 0u);
    EXPECT_EQ(port->Write(sent), PortStatus::kOk);
    port.reset(); // does not wait for the rest
    EXPECT_FALSE(HoldsOpen(unit.Device()));

    ASSERT_EQ(Open(), PortStatus::kOk);
    EXPECT_EQ(port->Write(std::string(1 << 20, 'x')), PortStatus::kOk);
    EXPECT_EQ(port->Write(std::string(1 << 20, 'x')), PortStatus::kLost);
}

TEST_F(TtyPort, DiscardedInputIsGoneAndLaterInputArrives) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    ASSERT_TRUE(unit.Send(std::string(2000, 'x')));
    ASSERT_TRUE(RunUntil(loop, [&] { return port->InBufferCount() == 1024; }));
    port->DiscardInput();
    EXPECT_EQ(port->InBufferCount(), 0u);
    ASSERT_TRUE(unit.Send("new"));
    ASSERT_TRUE(RunUntil(loop, [&] { return port->InBufferCount() > 0; }));
    EXPECT_EQ(port->Read(1024), "new");
}

TEST_F(TtyPort, AHangUpIsToldOnceAndTheDeviceIsLetGo) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    const std::string device = unit.Device();
    ASSERT_TRUE(HoldsOpen(device));
    unit.HangUp();
    ASSERT_TRUE(RunUntil(loop, [&] { return losses == 1; }));
    EXPECT_FALSE(HoldsOpen(device));
    EXPECT_FALSE(HoldsOpen(device + " (deleted)"));
    EXPECT_EQ(port->Write("x"), PortStatus::kLost);
    port->DiscardInput();
    EXPECT_EQ(port->OutBufferCount(), 0u);
    EXPECT_FALSE(RunUntil(
        loop, [&] { return losses > 1; }, 20ms));
}

TEST_F(TtyPort, AHandlerMayDestroyItsPortAndIsNeverCalledFromAWrite) {
    SerialEvents both;
    both.received = both.lost = [this] {
        ++events;
        port.reset();
    };
    port = ports.Open(1, {}, both).port;
    ASSERT_TRUE(unit.Send("x"));
    ASSERT_TRUE(RunUntil(loop, [&] { return events == 1; }));
    port = ports.Open(1, {}, both).port;
    unit.HangUp();
    EXPECT_EQ(port->Write("x"), PortStatus::kLost);
    EXPECT_EQ(events, 1);
    ASSERT_TRUE(RunUntil(loop, [&] { return events == 2; }));
}

TEST_F(TtyPort, ADeviceHasOneUserWhomTheSystemLetsWatchIt) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    EXPECT_EQ(OpenPath(unit.Device()), PortStatus::kBusy);
    port.reset();
    watches_refused = true;
    EXPECT_EQ(Open(), PortStatus::kUnusable);
    watches_refused = false;
    EXPECT_EQ(OpenPath(unit.Device()), PortStatus::kOk);
}

TEST_F(TtyPort, WhatIsNoUsableDeviceSaysWhy) {
    char folder[] = "/tmp/tarnex-tty-XXXXXX";
    ASSERT_TRUE(mkdtemp(folder));
    const std::string fifo = std::string(folder) + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);

    EXPECT_EQ(OpenPath(""), PortStatus::kAbsent);
    EXPECT_EQ(OpenPath(fifo + "-not-there"), PortStatus::kAbsent);
    EXPECT_EQ(OpenPath(fifo + "/below"), PortStatus::kAbsent);
    EXPECT_EQ(OpenPath(folder), PortStatus::kUnusable);
    EXPECT_EQ(OpenPath(fifo), PortStatus::kUnusable);
    EXPECT_EQ(OpenPath("/dev/null"), PortStatus::kUnusable);
    EXPECT_EQ(ports.Open(21, {}, {}).status, PortStatus::kAbsent);
    if (geteuid() == 0) {
        chmod(unit.Device().c_str(), 0600);
        ASSERT_EQ(seteuid(65534), 0);
        EXPECT_EQ(OpenPath(unit.Device()), PortStatus::kForbidden);
        ASSERT_EQ(seteuid(0), 0);
    }
    std::filesystem::remove_all(folder);
}

TEST(SerialNames, AConfiguredPathReplacesTheDefault) {
    SerialPaths configured;
    configured[1] = "/dev/serial/by-id/unit";
    const SerialPaths paths = SerialDevicePaths(configured);
    EXPECT_EQ(paths[0], "/dev/ttyS0");
    EXPECT_EQ(paths[1], "/dev/serial/by-id/unit");
    EXPECT_EQ(paths[3], "/dev/ttyS3");
    EXPECT_EQ(paths[4], "/dev/ttyUSB0");
    EXPECT_EQ(paths[11], "/dev/ttyUSB7");
    EXPECT_EQ(paths[12], "/dev/ttyACM0");
    EXPECT_EQ(paths[19], "/dev/ttyACM7");
}

} // namespace
} // namespace tarnex
