#include "adapters/system/this_system.h"

#include "adapters/system/operator_output.h"
#include "adapters/windows/nt_service.h"
#include "adapters/windows/private_access.h"
#include "adapters/windows/windows_text.h"

#include <shlobj.h>

namespace tarnex {

namespace {

// Where the service looks, whatever WINDIR is here.
std::wstring FolderOfWindows() {
    wchar_t folder[MAX_PATH]{};
    GetSystemWindowsDirectoryW(folder, MAX_PATH);
    return folder;
}

// A whole path. Any other would be taken from whatever folder the program is in.
bool NamesFolder(const std::wstring& path) {
    return path.find(L'%') == std::wstring::npos &&
           (path.find(L":\\") == 1 || path.starts_with(L"\\\\"));
}

// Not by the environment, which somebody may have changed; Wine gives its services another one.
// SHELL32 takes long to load: it is asked only where anything unusual stands in the registry.
std::wstring DataOfAllUsers() {
    constexpr std::wstring_view kDrive = L"%SystemDrive%";
    const std::wstring drive = FolderOfWindows().substr(0, 2);
    wchar_t folder[MAX_PATH]{};
    DWORD size = sizeof folder;
    // Of a value that is no text it fails, and fills the folder all the same.
    const bool found =
        RegGetValueW(HKEY_LOCAL_MACHINE,
                     L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList",
                     L"ProgramData", RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND, nullptr,
                     folder, &size) == ERROR_SUCCESS;
    std::wstring path = found ? folder : L"";
    if (path.starts_with(kDrive))
        path.replace(0, kDrive.size(), drive);
    if (NamesFolder(path))
        return path;
    SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder);
    return NamesFolder(folder) ? folder : drive + L"\\ProgramData";
}

} // namespace

SystemWords WordsOfThisSystem() {
    const std::string folder = FromWide(DataOfAllUsers() + L"\\TarnexComm");
    return {.start_service = "net start TarnexComm",
            .stop_service = "net stop TarnexComm",
            .restart_service = "net stop TarnexComm & net start TarnexComm",
            .with_all_rights = "",
            .who_may = "an administrator",
            .how_to_become_them = " (in a command prompt that is run as administrator)",
            .settings_folder = FromWide(FolderOfWindows()),
            .data_folder = folder,
            .runtime_folder = folder,
            .close_file = "icacls %1 /inheritance:r /grant:r *S-1-5-18:F *S-1-5-32-544:F",
            .quote = '"',
            .text_converter = "an editor",
            .serial_device = "\\\\.\\COM25",
            .log_file = "D:\\Tarnex\\log.db",
            .metrics_file =
                "C:\\Program Files\\windows_exporter\\textfile_inputs\\tarnexcomm.prom"};
}

// Everybody may make folders there. One that somebody else has made before the service came must
// not stay his.
void MakeFoldersOfThisSystem() {
    const std::string folder = WordsOfThisSystem().data_folder;
    const std::wstring wide = ToWide(folder);
    PrivateAccess access;
    if (CreateDirectoryW(wide.c_str(), access.Get()))
        return;
    const Owner owner = OwnerOf(wide);
    if (owner == Owner::kSystem && RunsAsService())
        SetFileSecurityW(wide.c_str(), DACL_SECURITY_INFORMATION,
                         access.Get()->lpSecurityDescriptor);
    if (owner == Owner::kSomebodyElse && !MakePrivate(wide) && RunsAsService())
        TellOperator(NoticeLevel::kWarning,
                     "tarnexcomm: The folder " + folder +
                         " belongs to somebody else, who can read and change what the service "
                         "keeps there. Stop the service, move the folder away and start it again.");
}

std::string HistoryPath() {
    return WordsOfThisSystem().data_folder + "\\history.db";
}

} // namespace tarnex
