#pragma once

#include "device/intel_hex.h"

#include <bitset>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

namespace tarnex {

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
