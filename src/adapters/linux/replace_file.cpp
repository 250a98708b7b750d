#include "adapters/system/replace_file.h"

#include "adapters/linux/last_error.h"
#include "adapters/linux/unique_fd.h"
#include "adapters/linux/write_all.h"

#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnex {

namespace {

constexpr mode_t kNewFileMode = 0640;

bool WriteNew(const std::string& path, std::string_view content, mode_t mode) {
    unlink(path.c_str());
    const UniqueFd file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    return file && WriteAll(file.Get(), content) && fchmod(file.Get(), mode) == 0;
}

} // namespace

std::error_code ReplaceFile(const std::string& path, std::string_view content, Readers readers) {
    const std::string successor = path + ".new";
    const mode_t mode = readers == Readers::kAll ? 0644 : 0600;
    if (WriteNew(successor, content, mode) && std::rename(successor.c_str(), path.c_str()) == 0)
        return {};
    const std::error_code problem = LastError();
    unlink(successor.c_str());
    return problem;
}

// link() takes nobody's place, as rename() would.
std::error_code PlaceNewFile(const std::string& file, const std::string& path) {
    if (chmod(file.c_str(), kNewFileMode) != 0 || link(file.c_str(), path.c_str()) != 0)
        return LastError();
    unlink(file.c_str());
    return {};
}

void RemoveFile(const std::string& path) {
    unlink(path.c_str());
}

bool FolderIsWritable(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path();
    return access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0;
}

} // namespace tarnex
