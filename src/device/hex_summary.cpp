#include "device/hex_summary.h"

#include "device/firmware_frames.h"

#include <algorithm>
#include <charconv>

namespace tarnex {

namespace {

constexpr int kBitsPerByte = 11; // start, 8 data, parity, stop
constexpr std::size_t kLastAddress = 0xFFFF;

} // namespace

HexSummary HexSummary::Read(LineFile& file) {
    HexSummary summary;
    while (summary.Add(ReadHexItem(file))) {
    }
    return summary;
}

bool HexSummary::Add(const HexItem& item) {
    ++lines_;
    if (std::holds_alternative<HexEnd>(item))
        return false;
    if (const auto* trouble = std::get_if<HexTrouble>(&item)) {
        AddTrouble(*trouble);
        return *trouble != HexTrouble::kNoEndRecord;
    }
    AddRecord(std::get<HexRecord>(item));
    return true;
}

void HexSummary::AddRecord(const HexRecord& record) {
    if (++records_ == kMostRecords + 1)
        AddTrouble(HexTrouble::kTooMany);
    if (!fault_)
        program_.push_back(record);
    bytes_ += long(record.data.size());
    if (!record.checksum_holds)
        AddTrouble(HexTrouble::kWrongChecksum);
    if (record.type != 0)
        AddTrouble(HexTrouble::kOtherType);
    if (record.data.empty())
        return;

    std::size_t first = 0;
    std::from_chars(record.address.data(), record.address.data() + record.address.size(), first,
                    16);
    const std::size_t last = first + record.data.size() - 1;
    if (last > kLastAddress)
        AddTrouble(HexTrouble::kWrapsAround);
    bool overwrites = false;
    for (std::size_t at = first; at <= std::min(last, kLastAddress); ++at) {
        overwrites = overwrites || written_[at];
        written_.set(at);
    }
    if (overwrites)
        AddTrouble(HexTrouble::kOverwrites);
    lowest_ = std::min(lowest_, int(first));
    highest_ = std::max(highest_, int(std::min(last, kLastAddress)));
}

void HexSummary::AddTrouble(HexTrouble trouble) {
    const OddHexLine odd{.line = lines_, .trouble = trouble};
    if (!fault_ && EndsUpdate(trouble)) {
        fault_ = odd;
        program_ = {};
    }
    ++odd_count_;
    if (odd_.size() < kMostListed)
        odd_.push_back(odd);
}

std::chrono::seconds HexSummary::LineTime() const {
    const long frames = records_ * long(kDataFrameOverhead + kWriteAckSize) + bytes_;
    // Three handshakes and an erasure with their answers, and the erasure at the end.
    const long commands = 9 * long(kCommandFrameSize);
    const long bits = (frames + commands) * kBitsPerByte;
    return std::chrono::seconds((bits + kFirmwareBaud - 1) / kFirmwareBaud);
}

} // namespace tarnex
