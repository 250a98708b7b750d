#include "adapters/linux/tty_device.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>

namespace tarnex {

namespace {

PortStatus StatusOf(int open_error) {
    switch (open_error) {
    case ENOENT:
    case ENOTDIR:
    case ENXIO:
    case ENODEV:
        return PortStatus::kAbsent;
    case EACCES:
    case EPERM:
        return PortStatus::kForbidden;
    case EBUSY:
    case EWOULDBLOCK:
        return PortStatus::kBusy;
    default:
        return PortStatus::kUnusable;
    }
}

constexpr tcflag_t kDataBits[] = {CS5, CS6, CS7, CS8};

std::optional<tcflag_t> DataBits(int bits) {
    if (bits < 5 || bits > 8)
        return std::nullopt;
    return kDataBits[bits - 5];
}

// false when line has no such settings.
bool Apply(const LineSettings& settings, termios& line) {
    const auto size = DataBits(settings.data_bits);
    if (!size)
        return false;
    cfmakeraw(&line);
    line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB | PARODD | CRTSCTS);
    line.c_cflag |= CLOCAL | CREAD | *size;
    if (settings.parity != 'N')
        line.c_cflag |= PARENB;
    if (settings.parity == 'O')
        line.c_cflag |= PARODD;
    if (settings.stop_bits == 2)
        line.c_cflag |= CSTOPB;
    line.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY | INPCK);
    // The C library takes the plain number for the speeds that it has a constant for.
    return cfsetspeed(&line, static_cast<speed_t>(settings.baud)) == 0;
}

bool SetUp(int descriptor, const LineSettings& settings) {
    termios wanted{};
    if (tcgetattr(descriptor, &wanted) != 0 || !Apply(settings, wanted))
        return false;
    // A pseudo terminal has no parity and says EINVAL; what counts is what can be read back.
    if (tcsetattr(descriptor, TCSANOW, &wanted) != 0 && errno != EINVAL)
        return false;
    termios actual{};
    return tcgetattr(descriptor, &actual) == 0 && tcflush(descriptor, TCIOFLUSH) == 0 &&
           cfgetospeed(&actual) == cfgetospeed(&wanted) &&
           cfgetispeed(&actual) == cfgetispeed(&wanted) &&
           (actual.c_cflag & CSIZE) == (wanted.c_cflag & CSIZE) && !(actual.c_lflag & ICANON);
}

} // namespace

OpenedTty OpenTty(const std::string& path, const LineSettings& settings) {
    struct stat file {};
    if (stat(path.c_str(), &file) != 0)
        return {.status = StatusOf(errno)};
    if (!S_ISCHR(file.st_mode))
        return {.status = PortStatus::kUnusable};

    UniqueFd device(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!device)
        return {.status = StatusOf(errno)};
    if (!isatty(device.Get()))
        return {.status = PortStatus::kUnusable};
    // The exclusive mode keeps other users out, the lock a second process of the superuser.
    if (flock(device.Get(), LOCK_EX | LOCK_NB) != 0)
        return {.status = StatusOf(errno)};
    ioctl(device.Get(), TIOCEXCL);
    if (!SetUp(device.Get(), settings)) {
        ReleaseTty(device.Get());
        return {.status = PortStatus::kUnusable};
    }
    return {.descriptor = std::move(device)};
}

void ReleaseTty(int descriptor) {
    tcflush(descriptor, TCOFLUSH);
    ioctl(descriptor, TIOCNXCL);
}

int TtyBaud(int descriptor) {
    termios line{};
    if (tcgetattr(descriptor, &line) != 0)
        return 0;
    for (const int baud : {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200}) {
        termios usual = line;
        // The C library takes plain numbers and has its own codes for them.
        if (cfsetspeed(&usual, static_cast<speed_t>(baud)) == 0 &&
            cfgetospeed(&usual) == cfgetospeed(&line))
            return baud;
    }
    return 0;
}

std::size_t TtyOutQueue(int descriptor) {
    int waiting = 0;
    return ioctl(descriptor, TIOCOUTQ, &waiting) == 0 ? static_cast<std::size_t>(waiting) : 0;
}

} // namespace tarnex
