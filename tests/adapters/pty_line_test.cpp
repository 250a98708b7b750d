#include "adapters/asio/tty_ports.h"
#include "adapters/linux/unique_fd.h"
#include "programs/pty_line.h"
#include "programs/stable_link.h"
#include "tests/adapters/run_until.h"
#include "tests/temp_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

struct PtyLineTest : testing::Test {
    TempFolder folder;
    AsioLoop loop;
    std::string heard;
    PtyLine line{loop, [this](std::string_view bytes) { heard += bytes; }};
};

TEST_F(PtyLineTest, CarriesBytesBothWaysAcrossReopeningAndHangsUpWhenClosed) {
    ASSERT_EQ(line.Open(), "");
    TtyPorts ports(loop, {line.DeviceName()});
    for (const std::string round : {"1", "2"}) {
        bool lost = false;
        const auto port = ports.Open(1, {}, {[] {}, [&] { lost = true; }}).port;
        ASSERT_TRUE(port);
        heard.clear();
        port->Write("~TX:" + round + "\r\n\x11\x13\xFF");
        ASSERT_TRUE(RunUntil(loop, [&] { return heard.size() >= 10; }));
        EXPECT_EQ(heard, "~TX:" + round + "\r\n\x11\x13\xFF");
        line.Send("TX:OK\r\n");
        ASSERT_TRUE(RunUntil(loop, [&] { return port->InBufferCount() >= 7; }));
        EXPECT_EQ(port->Read(100), "TX:OK\r\n");
        if (round == "2") {
            line.Close();
            EXPECT_TRUE(RunUntil(loop, [&] { return lost; }));
        }
    }
    EXPECT_EQ(line.DeviceName(), "");
    line.Send("nobody");
    EXPECT_EQ(line.Open(), "");
}

TEST_F(PtyLineTest, LosesNothingOfMuchThatComesAtOnce) {
    ASSERT_EQ(line.Open(), "");
    TtyPorts ports(loop, {line.DeviceName()});
    const auto port = ports.Open(1, {}, {[] {}, [] {}}).port;
    std::string much;
    for (int i = 0; much.size() < 3000; ++i)
        much += std::to_string(i) + " ";
    port->Write(much);
    ASSERT_TRUE(RunUntil(loop, [&] { return heard.size() >= much.size(); }));
    EXPECT_EQ(heard, much);
}

TEST_F(PtyLineTest, KnowsTheSpeedThatTheProgramHasSet) {
    ASSERT_EQ(line.Open(), "");
    EXPECT_EQ(line.Baud(), 19200);
    TtyPorts ports(loop, {line.DeviceName()});
    const auto port = ports.Open(1, {.baud = 38400, .parity = 'E'}, {[] {}, [] {}}).port;
    EXPECT_TRUE(port);
    EXPECT_EQ(line.Baud(), 38400);
}

TEST_F(PtyLineTest, DropsTheHoldOfAProgramThatDiedAndNoOther) {
    ASSERT_EQ(line.Open(), "");
    const auto open_device = [&] {
        return UniqueFd(open(line.DeviceName().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK));
    };
    const UniqueFd watcher = open_device();
    const auto held = [&] {
        int hold = 0;
        ioctl(watcher.Get(), TIOCGEXCL, &hold);
        return hold != 0;
    };
    UniqueFd program = open_device();
    flock(program.Get(), LOCK_EX | LOCK_NB);
    ioctl(program.Get(), TIOCEXCL);
    EXPECT_FALSE(RunUntil(
        loop, [&] { return !held(); }, 1500ms));
    program = UniqueFd();
    EXPECT_TRUE(RunUntil(loop, [&] { return !held(); }));
}

TEST_F(PtyLineTest, OnlyALinkOfItsOwnOrALeftOverIsTakenAndRemoved) {
    const std::string path = folder / "unit";
    fs::create_symlink("/dev/pts/gone", path);
    {
        StableLink link(path);
        EXPECT_EQ(link.Point("/dev/pts/one"), "");
        EXPECT_EQ(link.Point("/dev/pts/two"), "");
        EXPECT_EQ(fs::read_symlink(path), "/dev/pts/two");
    }
    EXPECT_TRUE(fs::is_empty(folder.Path()));
    for (const char* target : {"/dev/null", "/elsewhere/gone"}) { // in use, of another kind
        fs::create_symlink(target, path);
        EXPECT_NE(StableLink(path).Point("/dev/one"), "");
        EXPECT_EQ(fs::read_symlink(path), target);
        fs::remove(path);
    }
    WriteFile(path, "somebody's file");
    EXPECT_NE(StableLink(path).Point("/dev/one"), "");
    EXPECT_TRUE(fs::is_regular_file(path));
    fs::remove(path);
    const fs::path before = fs::current_path();
    fs::current_path(folder.Path());
    EXPECT_NE(StableLink("").Point("/dev/one"), ""); // can be made, and not be put in its place
    EXPECT_TRUE(fs::is_empty(folder.Path()));
    fs::current_path(before);
}

} // namespace
} // namespace tarnex
