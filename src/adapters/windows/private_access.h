#pragma once

#include "adapters/windows/windows_headers.h"

#include <string>

namespace tarnex {

// The access list of what only administrators, the service and its maker may read, for a new file
// or folder.
class PrivateAccess {
  public:
    PrivateAccess();
    PrivateAccess(const PrivateAccess&) = delete;
    PrivateAccess& operator=(const PrivateAccess&) = delete;
    ~PrivateAccess();

    SECURITY_ATTRIBUTES* Get() { return &attributes_; }

  private:
    SECURITY_ATTRIBUTES attributes_{};
};

// Who owns a file may read and write it, whatever its access list says.
enum class Owner { kSystem, kThisUser, kSomebodyElse };
// kSystem: administrators too. kSomebodyElse where this user may not ask.
Owner OwnerOf(const std::wstring& path);
// Gives a folder and all that lies in it to the administrators, with the list above. Only they and
// the system can. False when something there stays as it was.
bool MakePrivate(const std::wstring& folder);

} // namespace tarnex
