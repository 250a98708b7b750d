#include "device/intel_hex.h"

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

} // namespace

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

} // namespace tarnex
