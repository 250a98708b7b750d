#include "platform/linux/folder_owner.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnex {

namespace {

namespace fs = std::filesystem;

constexpr uid_t kSuperuser = 0;

fs::path FolderOf(const std::string& path) {
    const fs::path folder = fs::path(path).parent_path();
    return folder.empty() ? "." : folder;
}

} // namespace

AsFolderOwner::AsFolderOwner(const std::string& path) {
    struct stat owner {};
    fs::path folder = FolderOf(path);
    while (stat(folder.c_str(), &owner) != 0) {
        if (folder == folder.parent_path())
            return;
        folder = folder.parent_path();
    }
    if (geteuid() != kSuperuser || owner.st_uid == kSuperuser)
        return;
    group_ = getegid();
    groups_.resize(std::size_t(getgroups(0, nullptr)));
    acting_ = getgroups(int(groups_.size()), groups_.data()) >= 0 && setgroups(0, nullptr) == 0 &&
              setegid(owner.st_gid) == 0 && seteuid(owner.st_uid) == 0;
    if (!acting_)
        throw std::system_error(errno, std::generic_category(),
                                "cannot act as the owner of " + folder.string());
}

AsFolderOwner::~AsFolderOwner() {
    if (!acting_)
        return;
    if (seteuid(kSuperuser) != 0 || setegid(group_) != 0 ||
        setgroups(groups_.size(), groups_.data()) != 0)
        std::abort();
}

bool BelongsToFolderOwner(const std::string& path) {
    struct stat folder {};
    struct stat file {};
    return stat(FolderOf(path).c_str(), &folder) == 0 && stat(path.c_str(), &file) == 0 &&
           folder.st_uid == file.st_uid && folder.st_gid == file.st_gid;
}

} // namespace tarnex
