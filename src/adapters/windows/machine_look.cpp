#include "adapters/system/system_machine_look.h"
#include "adapters/windows/process_image.h"
#include "adapters/windows/windows_text.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include <winsock2.h>
// Behind the former.
#include <iphlpapi.h>
#include <restartmanager.h>
#include <setupapi.h>

namespace tarnex {

namespace {

constexpr DWORD kNewSockets = 4096; // bytes for those that come between two calls

// Of devices, "Ports (COM & LPT)".
constexpr GUID kPortsClass{
    0x4d36e978, 0xe325, 0x11ce, {0xbf, 0xc1, 0x08, 0x00, 0x2b, 0xe1, 0x03, 0x18}};

constexpr std::size_t kLongestDeviceName = 256;

// Without a name where the system tells nobody, as of itself.
Holder Described(DWORD process, const std::wstring& name) {
    return {.process = static_cast<long>(process),
            .text = "process " + std::to_string(process) +
                    (name.empty() ? "" : " (" + FromWide(name) + ")")};
}

// What the Device Manager calls a device; "" where it has no name.
std::wstring FriendlyName(HDEVINFO devices, SP_DEVINFO_DATA& device) {
    wchar_t name[kLongestDeviceName]{};
    const bool named = SetupDiGetDeviceRegistryPropertyW(devices, &device, SPDRP_FRIENDLYNAME,
                                                         nullptr, reinterpret_cast<BYTE*>(name),
                                                         sizeof name - sizeof(wchar_t), nullptr);
    return named ? name : L"";
}

// "COM5"; "" for what is no serial port.
std::wstring PortName(HDEVINFO devices, SP_DEVINFO_DATA& device) {
    wchar_t name[kLongestDeviceName]{};
    DWORD size = sizeof name - sizeof(wchar_t);
    const HKEY key =
        SetupDiOpenDevRegKey(devices, &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_QUERY_VALUE);
    if (key == INVALID_HANDLE_VALUE)
        return L"";
    RegQueryValueExW(key, L"PortName", nullptr, nullptr, reinterpret_cast<BYTE*>(name), &size);
    RegCloseKey(key);
    return name;
}

// What is plugged in behind a port, such as "USB-SERIAL CH340 (COM5)".
std::string Hardware(const std::wstring& port) {
    const HDEVINFO devices = SetupDiGetClassDevsW(&kPortsClass, nullptr, nullptr, DIGCF_PRESENT);
    if (devices == INVALID_HANDLE_VALUE)
        return "";
    std::wstring found;
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof device;
    for (DWORD i = 0; found.empty() && SetupDiEnumDeviceInfo(devices, i, &device); ++i)
        if (_wcsicmp(PortName(devices, device).c_str(), port.c_str()) == 0)
            found = FriendlyName(devices, device);
    SetupDiDestroyDeviceInfoList(devices);
    return FromWide(found);
}

// The process that has put its number into the file of a lock, if it lives and is one of ours; 0
// for none. Nothing for what is no such file.
std::optional<DWORD> Recorded(const std::string& path) {
    const WindowsHandle file(CreateFileW(ToWide(path).c_str(), GENERIC_READ, kShareAll, nullptr,
                                         OPEN_EXISTING, 0, nullptr));
    char text[32];
    DWORD size = 0;
    DWORD process = 0;
    if (!file || !ReadFile(file.Get(), text, sizeof text, &size, nullptr) ||
        std::from_chars(text, text + size, process).ec != std::errc())
        return std::nullopt;
    return process;
}

std::wstring NameOf(DWORD process) {
    const WindowsHandle target(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
    DWORD status = 0;
    const bool lives =
        target && GetExitCodeProcess(target.Get(), &status) && status == STILL_ACTIVE;
    return lives ? std::filesystem::path(ImageOf(target.Get())).stem().wstring() : L"";
}

// A program that has the file open, as the system tells those that install programs.
Holder OpenedBy(const std::string& path) {
    DWORD session = 0;
    wchar_t key[CCH_RM_SESSION_KEY + 1]{};
    if (RmStartSession(&session, 0, key) != ERROR_SUCCESS)
        return {};
    const std::wstring wide = ToWide(path);
    const wchar_t* files[] = {wide.c_str()};
    RM_PROCESS_INFO first{};
    UINT there = 0;
    UINT given = 1;
    DWORD why_restart = 0;
    DWORD listed = RmRegisterResources(session, 1, files, 0, nullptr, 0, nullptr);
    if (listed == ERROR_SUCCESS)
        listed = RmGetList(session, &there, &given, &first, &why_restart);
    RmEndSession(session);
    const bool found = (listed == ERROR_SUCCESS || listed == ERROR_MORE_DATA) && given > 0;
    return found ? Described(first.Process.dwProcessId, first.strAppName) : Holder();
}

} // namespace

// The names of ports are no files: the system is asked for what stands behind them.
PortLook SystemMachineLook::Port(const std::string& device) {
    const bool full = device.starts_with("\\\\.\\") || device.starts_with("\\\\?\\");
    std::string name = device.substr(full ? 4 : 0);
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
    wchar_t target[512];
    const bool there = QueryDosDeviceW(ToWide(name).c_str(), target, 512) != 0;
    return {.there = there, .device = name, .what = there ? Hardware(ToWide(name)) : ""};
}

std::vector<std::string> SystemMachineLook::Ports() {
    std::vector<std::string> ports;
    for (int number = 1; number <= 20; ++number)
        if (std::string name = "COM" + std::to_string(number); Port(name).there)
            ports.push_back(std::move(name));
    return ports;
}

Holder SystemMachineLook::LockHolder(const std::string& path) {
    const std::optional<DWORD> recorded = Recorded(path);
    if (!recorded)
        return OpenedBy(path);
    const std::wstring name = NameOf(*recorded);
    return name.starts_with(L"tarnex") ? Described(*recorded, name) : Holder();
}

std::string SystemMachineLook::KeptFromService(const std::string&) {
    return "";
}

std::string SystemMachineLook::PortHolder(const std::string& address, std::uint16_t port) {
    const auto fill = [](void* table, DWORD& size) {
        return GetExtendedUdpTable(table, &size, FALSE, AF_INET, UDP_TABLE_OWNER_PID, 0);
    };
    DWORD size = 0;
    fill(nullptr, size);
    std::vector<DWORD> table((size + kNewSockets) / sizeof(DWORD));
    size = static_cast<DWORD>(table.size() * sizeof(DWORD));
    if (fill(table.data(), size) != NO_ERROR)
        return "";
    const DWORD own = inet_addr(address.c_str());
    const auto& sockets = *reinterpret_cast<const MIB_UDPTABLE_OWNER_PID*>(table.data());
    for (const auto& socket : std::span(sockets.table, sockets.dwNumEntries))
        if (ntohs(static_cast<u_short>(socket.dwLocalPort)) == port &&
            (socket.dwLocalAddr == own || socket.dwLocalAddr == INADDR_ANY || own == INADDR_ANY) &&
            socket.dwOwningPid != 0) // of a process that has gone nobody can do anything
            return Described(socket.dwOwningPid, NameOf(socket.dwOwningPid)).text;
    return "";
}

std::string SystemMachineLook::ClockTrouble() {
    return "";
}

} // namespace tarnex
