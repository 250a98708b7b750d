#include "adapters/linux/systemd_controller.h"
#include "adapters/system/system_machine_look.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include <arpa/inet.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/timex.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tarnex {

namespace {

namespace fs = std::filesystem;

constexpr int kMostGroups = 64;

std::string FirstLine(const fs::path& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

// The numbers of the processes that this user can see.
std::vector<std::string> Processes() {
    std::vector<std::string> processes;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/proc", ignored))
        if (const std::string name = entry.path().filename(); std::isdigit(name[0]))
            processes.push_back(name);
    return processes;
}

std::string NameOf(const std::string& process) {
    return FirstLine("/proc/" + process + "/comm");
}

std::string Described(const std::string& process) {
    const std::string name = NameOf(process); // "": it has ended, and a child keeps what it had
    return "process " + process + (name.empty() ? "" : " (" + name + ")");
}

// file: a path, or what stands for one: "socket:[4711]".
bool HasOpen(const std::string& process, const std::string& file) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/proc/" + process + "/fd", ignored))
        if (fs::read_symlink(entry.path(), ignored) == file)
            return true;
    return false;
}

// As the tables of sockets have it: "0100007F"; eight zeros are all addresses.
std::string HexAddress(const std::string& address) {
    char hex[9] = "00000000";
    if (in_addr number{}; inet_pton(AF_INET, address.c_str(), &number) == 1)
        std::snprintf(hex, sizeof hex, "%08X", number.s_addr);
    return hex;
}

bool AllAddresses(std::string_view hex) {
    return hex.find_first_not_of('0') == hex.npos;
}

struct Socket {
    std::string inode;
    std::string user;
};

// "12: 0100007F:1EA0 00000000:0000 07 00000000:00000000 00:00000000 00000000  998  0 29870 2 ..."
std::optional<Socket> SocketAt(const char* table, const std::string& address, std::uint16_t port) {
    char wanted[6];
    std::snprintf(wanted, sizeof wanted, ":%04X", port);
    std::ifstream sockets(table);
    std::string line;
    std::getline(sockets, line); // the heading
    while (std::getline(sockets, line)) {
        std::istringstream words(line);
        std::string slot, local, remote, state, queues, timer, unanswered, timeout;
        Socket socket;
        words >> slot >> local >> remote >> state >> queues >> timer >> unanswered >> socket.user >>
            timeout >> socket.inode;
        const std::string at = local.substr(0, local.find(':'));
        if (local == at + wanted &&
            (AllAddresses(at) || AllAddresses(address) || at.ends_with(address)))
            return socket;
    }
    return std::nullopt;
}

// One that plays a device at the far end of it.
bool HasPseudoTerminal(const std::string& process) {
    return HasOpen(process, "/dev/ptmx") || HasOpen(process, "/dev/pts/ptmx");
}

// What the hardware calls itself; the device of the port stands somewhere below it.
std::string Hardware(const std::string& device) {
    std::error_code none;
    fs::path folder =
        fs::canonical("/sys/class/tty/" + fs::path(device).filename().string() + "/device", none);
    for (; !none && folder.has_relative_path() && folder != "/sys"; folder = folder.parent_path()) {
        if (!fs::exists(folder / "product", none))
            continue;
        const std::string maker = FirstLine(folder / "manufacturer");
        const std::string serial = FirstLine(folder / "serial");
        return (maker.empty() ? "" : maker + " ") + FirstLine(folder / "product") +
               (serial.empty() ? "" : ", serial number " + serial);
    }
    return fs::path(device).filename().string().starts_with("ttyS") ? "a port of the board" : "";
}

// Why the user of the service may not open it; "" also where there is no such user.
std::string ForbiddenTo(const char* user, const struct stat& device) {
    const passwd* const account = getpwnam(user);
    if (!account || account->pw_uid == 0)
        return "";
    gid_t groups[kMostGroups];
    int count = kMostGroups;
    getgrouplist(user, account->pw_gid, groups, &count);
    bool member = false;
    for (int i = 0; i < count && i < kMostGroups; ++i)
        member = member || groups[i] == device.st_gid;
    const mode_t needed = device.st_uid == account->pw_uid ? S_IRUSR | S_IWUSR
                          : member                         ? S_IRGRP | S_IWGRP
                                                           : S_IROTH | S_IWOTH;
    if ((device.st_mode & needed) == needed)
        return "";
    const group* const owner = getgrgid(device.st_gid);
    return std::string("it is for the group ") + (owner ? owner->gr_name : "of another") +
           ", and the user " + user + (member ? " may not write to it" : " is not in that");
}

// Which of these it is, files behind the folders they stand in, that the user may not read or
// enter; their number when he may. A process of its own tries it as that user: access lists count
// too.
std::size_t FirstForbidden(const passwd& user, const std::vector<std::string>& way) {
    const pid_t trying = fork();
    if (trying == 0) {
        std::size_t allowed = 0;
        if (initgroups(user.pw_name, user.pw_gid) != 0 || setgid(user.pw_gid) != 0 ||
            setuid(user.pw_uid) != 0)
            allowed = way.size();
        while (allowed < way.size() &&
               access(way[allowed].c_str(), allowed + 1 < way.size() ? X_OK : R_OK) == 0)
            ++allowed;
        _exit(int(allowed));
    }
    int status = 0;
    const bool told = trying > 0 && waitpid(trying, &status, 0) == trying && WIFEXITED(status);
    return told ? std::size_t(WEXITSTATUS(status)) : way.size();
}

// Whether the device database tells modem managers to leave it alone.
bool LeftAlone(const struct stat& device) {
    std::ifstream properties("/run/udev/data/c" + std::to_string(major(device.st_rdev)) + ":" +
                             std::to_string(minor(device.st_rdev)));
    for (std::string line; std::getline(properties, line);)
        if (line == "E:ID_MM_PORT_IGNORE=1" || line == "E:ID_MM_DEVICE_IGNORE=1")
            return true;
    return false;
}

bool ModemManagerRuns() {
    for (const std::string& process : Processes())
        if (NameOf(process) == "ModemManager")
            return true;
    return false;
}

} // namespace

PortLook SystemMachineLook::Port(const std::string& device) {
    struct stat state;
    if (stat(device.c_str(), &state) != 0 || !S_ISCHR(state.st_mode))
        return {.there = false, .device = device};
    std::error_code ignored;
    PortLook look{.there = true, .device = fs::canonical(device, ignored).string()};
    look.what = Hardware(look.device);
    look.forbidden = ForbiddenTo(kServiceUser, state);
    for (const std::string& process : Processes())
        if (look.held_by.empty() && HasOpen(process, look.device) && !HasPseudoTerminal(process))
            look.held_by = Described(process);
    look.probed = fs::path(look.device).filename().string().starts_with("ttyUSB") ||
                  fs::path(look.device).filename().string().starts_with("ttyACM");
    look.probed = look.probed && !LeftAlone(state) && ModemManagerRuns();
    return look;
}

std::vector<std::string> SystemMachineLook::Ports() {
    std::vector<std::string> ports;
    std::error_code ignored;
    const auto add = [&](const fs::path& path) {
        for (const std::string& port : ports)
            if (fs::equivalent(port, path, ignored))
                return;
        ports.push_back(path.string());
    };
    for (const auto& entry : fs::directory_iterator("/dev/serial/by-id", ignored))
        add(entry.path());
    for (const auto& entry : fs::directory_iterator("/sys/class/tty", ignored)) {
        const std::string name = entry.path().filename();
        const bool adapter = name.starts_with("ttyUSB") || name.starts_with("ttyACM");
        const std::string type = FirstLine(entry.path() / "type"); // of a chip; 0: there is none
        if (adapter || (name.starts_with("ttyS") && !type.empty() && type != "0"))
            add("/dev/" + name);
    }
    return ports;
}

// "1: FLOCK  ADVISORY  WRITE 4711 08:02:131 0 EOF", device numbers in hexadecimal. Those of btrfs
// are not the ones that files tell; files of other devices may well have the same number.
Holder SystemMachineLook::LockHolder(const std::string& path) {
    struct stat file;
    if (stat(path.c_str(), &file) != 0)
        return {};
    char here[64];
    std::snprintf(here, sizeof here, "%02x:%02x:", major(file.st_dev), minor(file.st_dev));
    const std::string inode = std::to_string(file.st_ino);
    std::error_code ignored;
    const std::string whole = fs::canonical(path, ignored).string();
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number, kind, mode, access, process, where;
        words >> number >> kind >> mode >> access >> process >> where;
        if (kind == "FLOCK" && where.ends_with(":" + inode) &&
            (where == here + inode || HasOpen(process, whole)))
            return {std::atol(process.c_str()), Described(process)};
    }
    return {};
}

std::string SystemMachineLook::KeptFromService(const std::string& path) {
    const passwd* const account = geteuid() == 0 ? getpwnam(kServiceUser) : nullptr;
    if (!account || account->pw_uid == 0)
        return "";
    std::vector<std::string> way; // its folders and the file
    std::error_code ignored;
    fs::path whole;
    for (const fs::path& part : fs::absolute(path, ignored))
        way.push_back(whole /= part);
    const std::size_t stopped = FirstForbidden(*account, way);
    if (stopped == way.size())
        return "";
    const std::string who = std::string("its user ") + kServiceUser;
    if (stopped + 1 < way.size())
        return who + " may not enter the folder " + way[stopped];
    struct stat file {};
    const bool owns = stat(path.c_str(), &file) == 0 && file.st_uid == account->pw_uid;
    return who + " may not read " + path + ": " +
           (owns ? "chmod u+rw " : std::string("chown ") + kServiceUser + ": ") + path;
}

std::string SystemMachineLook::PortHolder(const std::string& address, std::uint16_t port) {
    for (const char* table : {"/proc/net/udp", "/proc/net/udp6"}) {
        const auto socket = SocketAt(table, HexAddress(address), port);
        if (!socket)
            continue;
        for (const std::string& process : Processes())
            if (HasOpen(process, "socket:[" + socket->inode + "]"))
                return Described(process);
        const passwd* const user = getpwuid(uid_t(std::strtoul(socket->user.c_str(), nullptr, 10)));
        return "a program of " + (user ? std::string(user->pw_name) : "user " + socket->user);
    }
    return "";
}

std::string SystemMachineLook::ClockTrouble() {
    timex state{};
    return adjtimex(&state) == TIME_ERROR ? "it is not kept by a time server, so quiet times and "
                                            "the log may be wrong: timedatectl set-ntp true"
                                          : "";
}

} // namespace tarnex
