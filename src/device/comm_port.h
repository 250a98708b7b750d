#pragma once

#include "logging/debug_lists.h"
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/serial_port.h"
#include "platform/task.h"

#include <cstdint>
#include <optional>

namespace tarnex {

// The device link's own trace, which staff can switch by itself.
class DeviceTrace {
  public:
    explicit DeviceTrace(DebugLists& lists) : lists_(lists) {}

    bool DebugOn = false;

    // Adds the joined parts as one line to the debug list; they are joined only when it is shown.
    template <class... Parts>
    void DebugAdd(const Parts&... parts) {
        if (!DebugOn)
            return;
        Text line;
        (line.append(parts), ...);
        lists_.List1Additem(line);
    }

  private:
    DebugLists& lists_;
};

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

// The serial port of the device link: one port at a time, text or single bytes in and out, and a
// threshold that holds the receive event back.
class CommPort {
  public:
    struct Events {
        std::function<void()> receive; // characters wait, and RThreshold is 1
        std::function<void()> arrived; // further characters wait, whatever RThreshold is
        std::function<void()> lost;    // the hardware behind the open port went away
    };
    // The references must outlive the port.
    CommPort(Clock& clock, SerialPorts& ports, const CodePage& code_page, Events events);
    ~CommPort() { clock_.Cancel(event_); }
    CommPort(const CommPort&) = delete;
    CommPort& operator=(const CommPort&) = delete;

    // Opens COM<number>, closing the port that was open; RThreshold becomes 1.
    PortStatus Open(int number, const LineSettings& settings);
    // No event comes from the port any more.
    void Close();
    bool IsOpen() const { return port_ != nullptr; }

    // kOk, kClosed or kLost.
    PortStatus Output(TextView text);
    PortStatus OutputBytes(std::string_view bytes);
    // Waits until everything written has left the machine; false when it does not within 2 s.
    Task<bool> OutputLeft();
    // Received bytes that wait, without the first half of a character that Input() left; 0 on a
    // closed port.
    std::size_t InBufferCount() const;
    // Everything that waits. The first half of a character stays until its other half comes.
    Text Input();
    // Drops the first half of a character at the end of all that has arrived: it will have no other
    // half. What is whole waits on.
    void DropHalfCharacter();
    // The first byte that waits, if any. Not on a port whose text was read since it was opened.
    std::optional<std::uint8_t> InputByte();

    // 0 holds the receive event back, 1 raises it, at once when characters wait already.
    void SetRThreshold(int threshold);
    // Raises the receive event when characters wait and the threshold allows it: for a handler
    // that turned an event away while it was busy.
    void RaiseIfWaiting();

  private:
    // Written bytes that have not left yet; 0 on a closed port.
    std::size_t OutBufferCount() const;
    void TakeAll();

    Clock& clock_;
    SerialPorts& ports_;
    const CodePage& code_page_;
    Events events_;
    std::unique_ptr<SerialPort> port_;
    int threshold_ = 1;
    std::string taken_; // from the port, and not yet handed on
    CallId event_;
};

} // namespace tarnex
