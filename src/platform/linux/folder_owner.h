#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace tarnex {

// While it lives, the superuser acts as owner and group of the folder in which path stands, or of
// the nearest one above that exists, so that what it makes there belongs to them. And whoever owns
// a folder could lead it astray, with links to the files of others. Everybody else acts as before.
// For a process of one thread, one at a time. Throws std::system_error when the superuser may not.
class AsFolderOwner {
  public:
    explicit AsFolderOwner(const std::string& path);
    AsFolderOwner(const AsFolderOwner&) = delete;
    AsFolderOwner& operator=(const AsFolderOwner&) = delete;
    ~AsFolderOwner();

  private:
    bool acting_ = false;
    gid_t group_ = 0; // before
    std::vector<gid_t> groups_;
};

// Whether a file belongs to the owner and group of the folder that it stands in.
bool BelongsToFolderOwner(const std::string& path);

} // namespace tarnex
