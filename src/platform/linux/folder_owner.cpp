#include "platform/linux/folder_owner.h"

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace tarnex {

bool GiveToFolderOwner(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path();
    struct stat wanted {};
    struct stat present {};
    if (stat(folder.empty() ? "." : folder.c_str(), &wanted) != 0 ||
        stat(path.c_str(), &present) != 0)
        return false;
    if (present.st_uid == wanted.st_uid && present.st_gid == wanted.st_gid)
        return true;
    return lchown(path.c_str(), wanted.st_uid, wanted.st_gid) == 0;
}

} // namespace tarnex
