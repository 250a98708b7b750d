#pragma once

#include "platform/line_files.h"

#include <cstdint>
#include <string>
#include <string_view>
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
};
using HexProgram = std::vector<HexRecord>; // what an update sends, in this order
struct HexEnd {};
using HexItem = std::variant<HexRecord, HexEnd, HexTrouble>;

// A line without its line feed; one carriage return at its end is dropped. HexEnd for
// kHexEndRecord in exactly these letters; every other well-formed line is a record.
HexItem ParseHexLine(std::string_view line);

// The next line of the file, parsed; kNoEndRecord when there is none.
HexItem ReadHexItem(LineFile& file);

} // namespace tarnex
