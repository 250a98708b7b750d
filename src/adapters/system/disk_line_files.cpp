#include "adapters/system/disk_line_files.h"

#include "adapters/system/plain_file.h"
#include "platform/error_words.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tarnex {

namespace {

class DiskLineFile : public LineFile {
  public:
    explicit DiskLineFile(std::unique_ptr<PlainFile> file) : file_(std::move(file)) {}

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
        waiting_ = {buffer_.data(), file_->Read(buffer_.data(), buffer_.size())};
        return !waiting_.empty();
    }

    std::unique_ptr<PlainFile> file_;
    std::array<char, 4096> buffer_;
    std::string_view waiting_; // in the buffer
};

} // namespace

Result<std::unique_ptr<LineFile>> DiskLineFiles::Open(const std::string& path) {
    auto file = std::make_unique<PlainFile>(path);
    if (file->Problem() == std::errc::not_supported)
        return Trouble{"it is no plain file"};
    if (file->Problem())
        return Trouble{WordsFor(file->Problem())};
    return std::unique_ptr<LineFile>(std::make_unique<DiskLineFile>(std::move(file)));
}

} // namespace tarnex
