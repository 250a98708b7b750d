#include "adapters/system/folder_owner.h"

#include <cerrno>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnex {

namespace {

namespace fs = std::filesystem;

constexpr uid_t kSuperuser = 0;
constexpr int kMostLinks = 40; // as the kernel follows

fs::path FolderHolding(const std::string& path) {
    const fs::path folder = fs::path(path).parent_path();
    return folder.empty() ? "." : folder;
}

struct Owner {
    uid_t user;
    gid_t group;
    std::string of;
};

// The first owner other than the superuser on the way to path: of a folder or link, and of the file
// at its end where file_counts says so.
std::optional<Owner> FirstOwner(const std::string& path, bool file_counts) {
    const fs::path whole = fs::absolute(path);
    std::deque<fs::path> rest(whole.begin(), whole.end());
    fs::path current;
    for (int links = 0; !rest.empty() && links < kMostLinks;) {
        const fs::path name = rest.front();
        rest.pop_front();
        if (name == "..") {
            current = current.parent_path();
            continue;
        }
        struct stat status {};
        const fs::path next = current / name;
        if (lstat(next.c_str(), &status) != 0)
            return std::nullopt; // the rest has no owner yet
        if (status.st_uid != kSuperuser && (file_counts || !S_ISREG(status.st_mode)))
            return Owner{status.st_uid, status.st_gid, next.string()};
        if (!S_ISLNK(status.st_mode)) {
            current = next;
            continue;
        }
        ++links;
        std::error_code error;
        const fs::path target = fs::read_symlink(next, error);
        rest.insert(rest.begin(), target.begin(), target.end());
    }
    return std::nullopt;
}

class ActingForOwner : public FileOwners::Acting {
  public:
    ActingForOwner() = default;
    ActingForOwner(const ActingForOwner&) = delete;
    ActingForOwner& operator=(const ActingForOwner&) = delete;
    // Goes back as far as it came.
    ~ActingForOwner() override {
        if ((has_user_ && seteuid(kSuperuser) != 0) || (has_group_ && setegid(group_) != 0) ||
            (has_groups_ && setgroups(groups_.size(), groups_.data()) != 0))
            std::abort();
    }

    // False when that may not be, with the reason in errno.
    bool Begin(const Owner& owner) {
        group_ = getegid();
        groups_.resize(std::size_t(getgroups(0, nullptr)));
        if (getgroups(int(groups_.size()), groups_.data()) < 0)
            return false;
        has_groups_ = setgroups(0, nullptr) == 0;
        has_group_ = has_groups_ && setegid(owner.group) == 0;
        has_user_ = has_group_ && seteuid(owner.user) == 0;
        return has_user_;
    }

  private:
    gid_t group_ = 0; // before
    std::vector<gid_t> groups_;
    bool has_groups_ = false; // the owner's: none
    bool has_group_ = false;
    bool has_user_ = false;
};

} // namespace

Result<std::unique_ptr<FileOwners::Acting>> SystemFileOwners::ActFor(const std::string& path,
                                                                     const std::string& named_in) {
    std::optional<Owner> owner;
    if (geteuid() == kSuperuser) {
        if (!named_in.empty())
            owner = FirstOwner(named_in, true);
        if (!owner)
            owner = FirstOwner(path, false);
    }
    auto acting = std::make_unique<ActingForOwner>();
    if (owner && !acting->Begin(*owner)) {
        const std::string why = std::generic_category().message(errno);
        return Trouble{"root may not act as the owner of " + owner->of + " (" + why +
                       "): run this as that owner, or where root may change its user and groups"};
    }
    return std::unique_ptr<Acting>(std::move(acting));
}

bool SystemFileOwners::BelongsToFolderOwner(const std::string& path) const {
    struct stat folder {};
    struct stat file {};
    return stat(FolderHolding(path).c_str(), &folder) == 0 && stat(path.c_str(), &file) == 0 &&
           folder.st_uid == file.st_uid && folder.st_gid == file.st_gid;
}

bool SystemFileOwners::AllMayRead(const std::string& path) const {
    struct stat file {};
    return stat(path.c_str(), &file) == 0 && (file.st_mode & S_IROTH) != 0;
}

} // namespace tarnex
