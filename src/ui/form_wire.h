#pragma once

#include "platform/text.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnex {

// What a FormFeed and the FormCopies at the other end say to each other: packets of values, in the
// machine's own byte order, since both ends are of one version and on one machine.

// No packet is longer, in bytes.
inline constexpr std::size_t kLongestPacket = 400'000;

// What a record in a packet of the feed begins with. Forms and questions have numbers that are
// never used again, controls the place in their form.
enum class FeedRecord : std::uint8_t {
    kOpen,    // form, name, caption, width, how many controls; of each kind, name, caption
    kForm,    // form, caption, width
    kClose,   // form
    kControl, // form, control; revision of its look, look; revision of what it holds, that
    kLines,   // form, list, first, from, how many lines, the lines (see ListBox::Follow); revision
              // (0: more lines follow) and number + 1 of the selected one, 0 for none
    kAsk,     // question, pattern of file names
    kWithdraw,
};

enum class ControlKind : std::uint8_t { kLabel, kButton, kTextBox, kCheckBox, kListBox };

// The one thing that a packet back to the feed holds.
enum class ViewRecord : std::uint8_t {
    kReady,   // the screen is there
    kTrouble, // text: why there will be no window any more
    kNotice,  // text: for the operator
    kSeen,    // all of the last packet stands on the screen
    kClick,   // form, button, revision of its look
    kEnter,   // form, control, revision of what it holds, what it holds now
    kLeave,   // form, text box
    kClose,   // form
    kChosen,  // question, path
};

class WireWriter {
  public:
    template <class Record>
    explicit WireWriter(Record first) {
        Begin(first);
    }
    WireWriter() = default;

    template <class Record>
    void Begin(Record record) {
        bytes_ += char(record);
    }
    void Number(std::uint64_t number);
    void Flag(bool flag) { bytes_ += char(flag); }
    void String(std::string_view bytes);
    // At most the first 65,536 characters.
    void Letters(TextView text);
    const std::string& Bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

// Reads what a WireWriter has written. Of what is too short or damaged it makes 0 and "".
class WireReader {
  public:
    // bytes must outlive the reader.
    explicit WireReader(std::string_view bytes) : rest_(bytes) {}

    bool AtEnd() const { return rest_.empty(); }
    template <class Record>
    Record Begin() {
        return Record(Byte());
    }
    std::uint64_t Number();
    bool Flag() { return Byte() != 0; }
    std::string String();
    Text Letters();

  private:
    std::uint8_t Byte();
    // Of that many bytes; all that is left when there are not as many.
    std::string_view Take(std::size_t size);

    std::string_view rest_;
};

} // namespace tarnex
