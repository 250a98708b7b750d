#include "device/intel_hex.h"

#include "device/firmware_frames.h"

#include <algorithm>
#include <charconv>

namespace tarnex {

namespace {

// :10246200464C5549442050524F46494C4500464C33
//  count, address, type, data, checksum
constexpr std::size_t kAddressAt = 3;
constexpr std::size_t kTypeAt = 7;
constexpr std::size_t kDataAt = 9;
constexpr std::size_t kChecksumDigits = 2;

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

std::uint8_t ByteAt(std::string_view line, std::size_t position) {
    std::uint8_t byte = 0;
    std::from_chars(line.data() + position, line.data() + position + 2, byte, 16);
    return byte;
}

bool ChecksumHolds(std::string_view line) {
    std::uint8_t sum = 0;
    for (std::size_t at = 1; at < line.size(); at += 2)
        sum = std::uint8_t(sum + ByteAt(line, at));
    return sum == 0;
}

constexpr int kBitsPerByte = 11; // start, 8 data, parity, stop
constexpr std::size_t kLastAddress = 0xFFFF;

} // namespace

// ---- one line

bool EndsUpdate(HexTrouble trouble) {
    return trouble < HexTrouble::kWrongChecksum;
}

HexItem ParseHexLine(std::string_view line) {
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    if (line == kHexEndRecord)
        return HexEnd();
    if (line.empty())
        return HexTrouble::kTooShort;
    if (!line.starts_with(':'))
        return HexTrouble::kNoColon;
    if (!std::all_of(line.begin() + 1, line.end(), IsHexDigit))
        return HexTrouble::kNotHex;
    if (line.size() < kDataAt + kChecksumDigits)
        return HexTrouble::kTooShort;
    const std::size_t count = ByteAt(line, 1);
    const std::size_t digits = line.size() - kDataAt - kChecksumDigits;
    if (count > kMostHexData || digits > 2 * kMostHexData)
        return HexTrouble::kTooMuchData;
    if (digits % 2 != 0)
        return HexTrouble::kOddLength;
    if (digits != 2 * count)
        return digits < 2 * count ? HexTrouble::kTruncated : HexTrouble::kSurplus;

    HexRecord record{.address = std::string(line.substr(kAddressAt, kTypeAt - kAddressAt)),
                     .type = ByteAt(line, kTypeAt),
                     .data = {},
                     .checksum_holds = ChecksumHolds(line)};
    for (std::size_t at = kDataAt; record.data.size() < count; at += 2)
        record.data += char(ByteAt(line, at));
    return record;
}

HexItem ReadHexItem(LineFile& file) {
    const std::optional<std::string> line = file.ReadLine();
    return line ? ParseHexLine(*line) : HexTrouble::kNoEndRecord;
}

unsigned HexRecord::FirstAddress() const {
    unsigned first = 0;
    std::from_chars(address.data(), address.data() + address.size(), first, 16);
    return first;
}

// ---- the whole file

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

    const std::size_t first = record.FirstAddress();
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
