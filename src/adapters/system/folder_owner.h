#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace tarnex {

// While it lives, the superuser acts as the first owner other than the superuser of what leads to
// path, each folder and link from the root on: whoever owns one could lead it astray, to the files
// of others. What it makes then belongs to that owner, too. Where the path stands in a file,
// named_in, whatever leads to that and the file itself come first. Everybody else acts as before.
// For a process of one thread, one at a time. Throws std::system_error when the superuser may not.
class AsFolderOwner {
  public:
    explicit AsFolderOwner(const std::string& path, const std::string& named_in = "");
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
