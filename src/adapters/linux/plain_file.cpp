#include "adapters/system/plain_file.h"

#include "adapters/linux/last_error.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnex {

PlainFile::PlainFile(const std::string& path)
    : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
    struct stat status {};
    if (file_ == kNone || fstat(static_cast<int>(file_), &status) != 0)
        problem_ = LastError();
    else if (!S_ISREG(status.st_mode))
        problem_ = std::make_error_code(S_ISDIR(status.st_mode) ? std::errc::is_a_directory
                                                                : std::errc::not_supported);
}

PlainFile::~PlainFile() {
    if (file_ != kNone)
        close(static_cast<int>(file_));
}

std::size_t PlainFile::Read(char* bytes, std::size_t size) {
    if (problem_)
        return 0;
    ssize_t got;
    do
        got = read(static_cast<int>(file_), bytes, size);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        problem_ = LastError();
    return got < 0 ? 0 : static_cast<std::size_t>(got);
}

// The time of the last change of state is used: unlike that of the content, nobody can set it.
FileStamp PlainFile::Stamp() {
    struct stat status {};
    if (problem_)
        return {};
    if (fstat(static_cast<int>(file_), &status) != 0)
        problem_ = LastError();
    return {.file = status.st_ino,
            .size = static_cast<std::uint64_t>(status.st_size),
            .changed = status.st_ctim.tv_sec * 1'000'000'000LL + status.st_ctim.tv_nsec};
}

} // namespace tarnex
