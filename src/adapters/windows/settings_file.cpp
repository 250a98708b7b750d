#include "adapters/system/settings_file.h"

#include "adapters/system/replace_file.h"
#include "adapters/windows/private_access.h"
#include "adapters/windows/windows_handle.h"
#include "adapters/windows/windows_text.h"
#include "adapters/windows/write_new_file.h"

namespace tarnex {

std::string FollowLinks(const std::string& path) {
    const std::wstring wide = ToWide(path);
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
        return path;
    const WindowsHandle file(
        CreateFileW(wide.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    std::wstring followed(32'768, L'\0'); // longer than any path
    const DWORD length = file ? GetFinalPathNameByHandleW(file.Get(), followed.data(),
                                                          static_cast<DWORD>(followed.size()), 0)
                              : 0;
    return length > 0 && length < followed.size() ? FromWide(followed.substr(0, length)) : path;
}

// A password may stand in it.
std::error_code WriteSuccessor(const std::string& path, const std::string& content,
                               const std::string&) {
    PrivateAccess access;
    return WriteNewFile(path, content, access.Get(), true);
}

// Windows gives the access list of the old file to the new one.
std::error_code TakePlace(const std::string& successor, const std::string& target) {
    const std::wstring from = ToWide(successor);
    const std::wstring to = ToWide(target);
    // Wine would replace a folder, too.
    const DWORD attributes = GetFileAttributesW(to.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
        return std::make_error_code(std::errc::is_a_directory);
    if (ReplaceFileW(to.c_str(), from.c_str(), nullptr, 0, nullptr, nullptr))
        return {};
    const std::error_code problem = LastError();
    if (problem != std::errc::no_such_file_or_directory)
        return problem;
    return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) ? std::error_code()
                                                                         : LastError();
}

SettingsLock::~SettingsLock() {
    if (file_ != kNone)
        CloseHandle(reinterpret_cast<HANDLE>(file_));
}

// Nobody else can open the file meanwhile.
std::error_code SettingsLock::TryTake(const std::string& path) {
    file_ = reinterpret_cast<std::intptr_t>(CreateFileW(
        ToWide(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, 0, nullptr));
    if (file_ != kNone)
        return {};
    const std::error_code problem = LastError();
    return problem == std::errc::device_or_resource_busy
               ? std::make_error_code(std::errc::operation_would_block)
               : problem;
}

} // namespace tarnex
