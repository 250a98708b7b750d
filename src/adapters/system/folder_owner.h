#pragma once

#include "platform/file_owners.h"

namespace tarnex {

// The users of this machine.
class SystemFileOwners : public FileOwners {
  public:
    Result<std::unique_ptr<Acting>> ActFor(const std::string& path,
                                           const std::string& named_in) override;
    bool BelongsToFolderOwner(const std::string& path) const override;
    bool AllMayRead(const std::string& path) const override;
};

} // namespace tarnex
