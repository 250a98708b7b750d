#include "adapters/system/folder_owner.h"

#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

#include <algorithm>

#include <aclapi.h>

namespace tarnex {

namespace {

// Groups to which everybody belongs who may log in.
constexpr WELL_KNOWN_SID_TYPE kAll[] = {WinWorldSid, WinBuiltinUsersSid, WinAuthenticatedUserSid,
                                        WinInteractiveSid};

bool LetsAllRead(ACL& list, DWORD index) {
    void* entry = nullptr;
    if (!GetAce(&list, index, &entry))
        return false;
    auto& allowed = *static_cast<ACCESS_ALLOWED_ACE*>(entry);
    return allowed.Header.AceType == ACCESS_ALLOWED_ACE_TYPE &&
           !(allowed.Header.AceFlags & INHERIT_ONLY_ACE) &&
           (allowed.Mask & (FILE_READ_DATA | GENERIC_READ | GENERIC_ALL)) != 0 &&
           std::ranges::any_of(
               kAll, [&](auto group) { return IsWellKnownSid(&allowed.SidStart, group); });
}

} // namespace

// Who may do what with a file comes with the folder that it is made in, whoever makes it.
Result<std::unique_ptr<FileOwners::Acting>> SystemFileOwners::ActFor(const std::string&,
                                                                     const std::string&) {
    return std::make_unique<Acting>();
}

bool SystemFileOwners::BelongsToFolderOwner(const std::string&) const {
    return true;
}

bool SystemFileOwners::AllMayRead(const std::string& path) const {
    std::wstring wide = ToWide(path);
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR holder = nullptr;
    if (GetNamedSecurityInfoW(wide.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, &list, nullptr, &holder) != ERROR_SUCCESS)
        return false;
    bool all = !list; // none: nothing is forbidden
    for (WORD i = 0; list && i < list->AceCount; ++i)
        all = all || LetsAllRead(*list, i);
    LocalFree(holder);
    return all;
}

} // namespace tarnex
