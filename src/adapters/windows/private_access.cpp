#include "adapters/windows/private_access.h"

#include "adapters/windows/windows_handle.h"

#include <aclapi.h>
#include <sddl.h>

namespace tarnex {

namespace {

// Nothing comes from the folder above (P); everything is allowed (FA) to the system, as which the
// service runs (SY), to administrators (BA) and to the owner (OW), also of what will lie inside
// (OICI).
constexpr const wchar_t* kList = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FA;;;OW)";

struct Sid {
    explicit Sid(WELL_KNOWN_SID_TYPE type) {
        DWORD size = sizeof bytes;
        CreateWellKnownSid(type, nullptr, bytes, &size);
    }
    alignas(void*) char bytes[SECURITY_MAX_SID_SIZE];
};

WindowsHandle Token(DWORD access) {
    HANDLE token = INVALID_HANDLE_VALUE;
    OpenProcessToken(GetCurrentProcess(), access, &token);
    return WindowsHandle(token);
}

bool IsThisUser(PSID sid) {
    const WindowsHandle token = Token(TOKEN_QUERY);
    alignas(TOKEN_USER) char user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    DWORD size = 0;
    return GetTokenInformation(token.Get(), TokenUser, user, sizeof user, &size) &&
           EqualSid(sid, reinterpret_cast<TOKEN_USER*>(user)->User.Sid);
}

// Administrators have it, but not in force.
void MayTakeOwnership() {
    const WindowsHandle token = Token(TOKEN_ADJUST_PRIVILEGES);
    TOKEN_PRIVILEGES one{};
    one.PrivilegeCount = 1;
    one.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (LookupPrivilegeValueW(nullptr, L"SeTakeOwnershipPrivilege", &one.Privileges[0].Luid))
        AdjustTokenPrivileges(token.Get(), FALSE, &one, 0, nullptr, nullptr);
}

bool Set(std::wstring path, SECURITY_INFORMATION what, PSID owner, ACL* list) {
    return SetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, what, owner, nullptr, list,
                                 nullptr) == ERROR_SUCCESS;
}

// The owner first: he may set the list. What links lead to is none of ours.
bool GiveToAdministrators(const std::wstring& path, ACL* list, SECURITY_INFORMATION inheritance) {
    bool done =
        Set(path, OWNER_SECURITY_INFORMATION, Sid(WinBuiltinAdministratorsSid).bytes, nullptr) &&
        Set(path, DACL_SECURITY_INFORMATION | inheritance, nullptr, list);
    WIN32_FIND_DATAW entry{};
    const HANDLE search = FindFirstFileW((path + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) // it is no folder
        return done;
    ACL none{}; // but what comes from the folder
    InitializeAcl(&none, sizeof none, ACL_REVISION);
    do {
        const std::wstring name = entry.cFileName;
        if (name != L"." && name != L".." &&
            !(entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
            done = GiveToAdministrators(path + L"\\" + name, &none,
                                        UNPROTECTED_DACL_SECURITY_INFORMATION) &&
                   done;
    } while (FindNextFileW(search, &entry));
    FindClose(search);
    return done;
}

} // namespace

PrivateAccess::PrivateAccess() {
    attributes_.nLength = sizeof attributes_;
    ConvertStringSecurityDescriptorToSecurityDescriptorW(
        kList, SDDL_REVISION_1, &attributes_.lpSecurityDescriptor, nullptr);
}

PrivateAccess::~PrivateAccess() {
    LocalFree(attributes_.lpSecurityDescriptor);
}

Owner OwnerOf(const std::wstring& path) {
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR holder = nullptr;
    if (GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner,
                              nullptr, nullptr, nullptr, &holder) != ERROR_SUCCESS)
        return Owner::kSomebodyElse;
    const bool system = IsWellKnownSid(owner, WinBuiltinAdministratorsSid) ||
                        IsWellKnownSid(owner, WinLocalSystemSid);
    const bool user = IsThisUser(owner);
    LocalFree(holder);
    return system ? Owner::kSystem : user ? Owner::kThisUser : Owner::kSomebodyElse;
}

bool MakePrivate(const std::wstring& folder) {
    PrivateAccess access;
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* list = nullptr;
    GetSecurityDescriptorDacl(access.Get()->lpSecurityDescriptor, &present, &list, &defaulted);
    MayTakeOwnership();
    return GiveToAdministrators(folder, list, PROTECTED_DACL_SECURITY_INFORMATION);
}

} // namespace tarnex
