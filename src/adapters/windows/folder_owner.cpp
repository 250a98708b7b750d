#include "adapters/system/folder_owner.h"

namespace tarnex {

// Who may do what with a file comes with the folder that it is made in, whoever makes it.
Result<std::unique_ptr<FileOwners::Acting>> SystemFileOwners::ActFor(const std::string&,
                                                                     const std::string&) {
    return std::make_unique<Acting>();
}

bool SystemFileOwners::BelongsToFolderOwner(const std::string&) const {
    return true;
}

} // namespace tarnex
