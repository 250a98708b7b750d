#pragma once

#include "adapters/windows/windows_headers.h"

#include <memory>

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

} // namespace tarnex
