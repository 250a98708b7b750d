#pragma once

#include "platform/text.h"

namespace tarnex {

// The received characters that are not yet split into lines (RxBuffer). A line ends with CR LF.
class LineBuffer {
  public:
    // Noise without a line end is thrown away beyond this many characters.
    static constexpr std::size_t kLimit = 4096;

    // False when the buffer overflowed without holding a line, and was emptied.
    bool Append(TextView received) {
        text_ += received;
        if (text_.size() <= kLimit || HasLine())
            return true;
        text_.clear();
        return false;
    }
    bool HasLine() const { return text_.find(u"\r\n") != Text::npos; }
    // Lines wait, and so many characters that nothing more should be taken from the port.
    bool Full() const { return text_.size() > kLimit; }
    // The first line without its end; there must be one.
    Text TakeLine() {
        const auto end = text_.find(u"\r\n");
        Text line = text_.substr(0, end);
        text_.erase(0, end + 2);
        return line;
    }
    // 1-based position of the first line end, 0 for none.
    std::size_t LineEnd() const { return text_.find(u"\r\n") + 1; }
    const Text& Waiting() const { return text_; }
    void Clear() { text_.clear(); }

  private:
    Text text_;
};

} // namespace tarnex
