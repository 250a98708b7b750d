#pragma once

#include "platform/line_files.h"

#include <bitset>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tarnex {

// The most data bytes of a record that fit the unit's write frame.
inline constexpr std::size_t kMostHexData = 115;

inline constexpr std::string_view kHexEndRecord = ":00000001FF";

// What can be odd about a line of a HEX file.
enum class HexTrouble {
    // The update ends in failure at these.
    kNoColon,     // it does not begin with ":"
    kNotHex,      // a character that is no hexadecimal digit
    kTooShort,    // no room for count, address, type and checksum
    kOddLength,   // half a byte at the end
    kTooMuchData, // more than kMostHexData bytes
    kTruncated,   // less data than its count says
    kSurplus,     // more data than its count says
    kTooMany,     // records: HexSummary::kMostRecords are before it
    kNoEndRecord, // the file ends before it
    // These are sent to the unit all the same.
    kWrongChecksum,
    kOtherType,   // a record of another type than 00
    kOverwrites,  // an address that an earlier line has written
    kWrapsAround, // data beyond address FFFF
};
bool EndsUpdate(HexTrouble trouble);

struct HexRecord {
    std::string address; // four hexadecimal digits, as the line has them
    std::uint8_t type = 0;
    std::string data; // at most kMostHexData bytes
    bool checksum_holds = true;

    unsigned FirstAddress() const; // the address as a number
};
using HexProgram = std::vector<HexRecord>; // what an update sends, in this order
struct HexEnd {};
using HexItem = std::variant<HexRecord, HexEnd, HexTrouble>;

// A line without its line feed; one carriage return at its end is dropped. HexEnd for
// kHexEndRecord in exactly these letters; every other well-formed line is a record.
HexItem ParseHexLine(std::string_view line);

// The next line of the file, parsed; kNoEndRecord when there is none.
HexItem ReadHexItem(LineFile& file);

struct OddHexLine {
    long line; // 1 for the first
    HexTrouble trouble;
};

// A whole HEX file as an update would send it.
class HexSummary {
  public:
    // Of more odd lines than this, the further ones are counted only.
    static constexpr std::size_t kMostListed = 1000;
    // One for each address of a unit. They are held, and a file of any length must cost no memory.
    static constexpr long kMostRecords = 0x10000;

    // Takes the next line; false once nothing behind it counts.
    bool Add(const HexItem& item);
    // Reads the file to its end record, or to its end, faults or not.
    static HexSummary Read(LineFile& file);

    // The first line that cannot be sent, in a file that was read to its end; without one an
    // update with this file can succeed.
    const std::optional<OddHexLine>& Fault() const { return fault_; }

    // Hands over the records, so that an update sends what was judged here, whatever has become of
    // the file; none where there is a fault.
    HexProgram TakeProgram() { return std::exchange(program_, {}); }

    long Records() const { return records_; }
    long Bytes() const { return bytes_; }
    int LowestAddress() const { return lowest_; }   // Bytes() must not be 0
    int HighestAddress() const { return highest_; } // of the last byte, at most FFFF
    const std::vector<OddHexLine>& OddLines() const { return odd_; }
    long OddCount() const { return odd_count_; }

    // Time that the bytes of the update and of its answers take on the line; what the unit needs
    // to erase and to write comes on top.
    std::chrono::seconds LineTime() const;

  private:
    void AddRecord(const HexRecord& record);
    void AddTrouble(HexTrouble trouble);

    HexProgram program_;
    long lines_ = 0;
    long records_ = 0;
    long bytes_ = 0;
    int lowest_ = 0xFFFF;
    int highest_ = 0;
    std::optional<OddHexLine> fault_;
    std::vector<OddHexLine> odd_;
    long odd_count_ = 0;
    std::bitset<0x10000> written_;
};

} // namespace tarnex
