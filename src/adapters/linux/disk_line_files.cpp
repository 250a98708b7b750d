#include "adapters/system/disk_line_files.h"

#include "adapters/linux/unique_fd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnex {

namespace {

class DiskLineFile : public LineFile {
  public:
    explicit DiskLineFile(UniqueFd file) : file_(std::move(file)) {}

    std::optional<std::string> ReadLine() override {
        std::string line;
        bool begun = false;
        while (!waiting_.empty() || Refill()) {
            begun = true;
            const std::size_t end = std::min(waiting_.find('\n'), waiting_.size());
            line += waiting_.substr(0, std::min(end, kLongestLine - line.size()));
            const bool complete = end < waiting_.size();
            waiting_.remove_prefix(complete ? end + 1 : end);
            if (complete)
                break;
        }
        return begun ? std::optional(std::move(line)) : std::nullopt;
    }

  private:
    bool Refill() {
        ssize_t size;
        do
            size = read(file_.Get(), buffer_.data(), buffer_.size());
        while (size < 0 && errno == EINTR);
        waiting_ = {buffer_.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
        return size > 0;
    }

    UniqueFd file_;
    std::array<char, 4096> buffer_;
    std::string_view waiting_; // in the buffer
};

} // namespace

OpenedLineFile DiskLineFiles::Open(const std::string& path) {
    // Not to wait for the other end of a pipe.
    UniqueFd file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0)
        return {.file = nullptr, .problem = WordsFor({errno, std::generic_category()})};
    if (S_ISDIR(status.st_mode))
        return {.file = nullptr,
                .problem = WordsFor(std::make_error_code(std::errc::is_a_directory))};
    if (!S_ISREG(status.st_mode))
        return {.file = nullptr, .problem = {"it is no plain file", u"这不是普通文件"}};
    return {.file = std::make_unique<DiskLineFile>(std::move(file))};
}

} // namespace tarnex
