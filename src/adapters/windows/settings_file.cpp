#include "adapters/system/settings_file.h"

#include "adapters/system/replace_file.h"
#include "adapters/windows/private_access.h"
#include "adapters/windows/windows_handle.h"
#include "adapters/windows/windows_text.h"
#include "adapters/windows/write_new_file.h"

#include <aclapi.h>

namespace tarnex {

namespace {

// Gives the list of who may do what with one file to another.
bool PassAccessOn(const std::wstring& from, const std::wstring& to) {
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR holder = nullptr;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    if (GetNamedSecurityInfoW(from.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, &list, nullptr, &holder) != ERROR_SUCCESS)
        return false;
    GetSecurityDescriptorControl(holder, &control, &revision);
    const DWORD kind = (control & SE_DACL_PROTECTED) ? PROTECTED_DACL_SECURITY_INFORMATION
                                                     : UNPROTECTED_DACL_SECURITY_INFORMATION;
    std::wstring name = to;
    const DWORD result =
        SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | kind,
                              nullptr, nullptr, list, nullptr);
    LocalFree(holder);
    return result == ERROR_SUCCESS;
}

} // namespace

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

// The new file gets the access list of the old one.
std::error_code TakePlace(const std::string& successor, const std::string& target) {
    const std::wstring from = ToWide(successor);
    const std::wstring to = ToWide(target);
    // Wine would replace a folder, too.
    const DWORD attributes = GetFileAttributesW(to.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
        return std::make_error_code(std::errc::is_a_directory);
    // The system would say that rights are missing, which nobody can be given.
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        return std::make_error_code(std::errc::read_only_file_system);
    // In one step: whatever ends this process, one of the two files stands there. Where somebody
    // has the old one open only the other way is left, which takes it away first.
    if (attributes != INVALID_FILE_ATTRIBUTES && PassAccessOn(to, from) &&
        MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return {};
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

// Nobody else can open the file meanwhile, and who may not write the settings not at all.
std::error_code SettingsLock::TryTake(const std::string& path) {
    PrivateAccess access;
    file_ = reinterpret_cast<std::intptr_t>(CreateFileW(ToWide(path).c_str(),
                                                        GENERIC_READ | GENERIC_WRITE, 0,
                                                        access.Get(), OPEN_ALWAYS, 0, nullptr));
    if (file_ != kNone)
        return {};
    const std::error_code problem = LastError();
    return problem == std::errc::device_or_resource_busy
               ? std::make_error_code(std::errc::operation_would_block)
               : problem;
}

} // namespace tarnex
