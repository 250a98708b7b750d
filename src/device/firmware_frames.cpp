#include "device/firmware_frames.h"

#include <limits>
#include <numeric>

namespace tarnex {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kHandshakeFrame = "\x5A\xA5\x00\x08\xB0\x01\xB7\x16"sv;
constexpr std::string_view kB1Frame = "\x5A\xA5\x00\x08\xB1\x01\xB8\x16"sv;
constexpr std::string_view kEraseFrame = "\x5A\xA5\x00\x08\xB2\x01\xB9\x16"sv;

constexpr char kFrameEnd = 0x16;
constexpr std::size_t kSumAt = 5; // in a write acknowledgement

// The unit's sums are signed 16-bit numbers. No frame may exceed them: not even the longest, full
// of FF at address FFFF.
constexpr int kLongestFrame = int(kMostHexData + kDataFrameOverhead);
constexpr int kHighestFrameSum =
    0x5A + 0xA5 + kLongestFrame + 0xB3 + 2 * 0xFF + int(kMostHexData) + int(kMostHexData) * 0xFF;
static_assert(kHighestFrameSum <= std::numeric_limits<std::int16_t>::max());
static_assert(kLongestFrame == 129);

std::uint16_t Sum(std::string_view bytes) {
    const auto add = [](unsigned sum, char byte) { return sum + std::uint8_t(byte); };
    return std::uint16_t(std::accumulate(bytes.begin(), bytes.end(), 0u, add));
}

void AppendHighFirst(std::string& frame, unsigned number) {
    frame += char(number >> 8);
    frame += char(number);
}

} // namespace

std::string CommandFrame(FirmwareCommand command) {
    switch (command) {
    case FirmwareCommand::kHandshake:
        return std::string(kHandshakeFrame);
    case FirmwareCommand::kB1:
        return std::string(kB1Frame);
    case FirmwareCommand::kErase:
        break;
    }
    return std::string(kEraseFrame);
}

std::string DataFrame(const HexRecord& record) {
    std::string frame = "\x5A\xA5";
    AppendHighFirst(frame, unsigned(record.data.size() + kDataFrameOverhead));
    frame += "\xB3\x00\x00"sv;
    AppendHighFirst(frame, record.FirstAddress());
    AppendHighFirst(frame, unsigned(record.data.size()));
    frame += record.data;
    AppendHighFirst(frame, Sum(frame));
    frame += kFrameEnd;
    return frame;
}

std::uint16_t DataSum(std::string_view data) {
    return Sum(data);
}

std::uint16_t SumInWriteAck(std::string_view answer) {
    return std::uint16_t(std::uint8_t(answer[kSumAt]) * 256 + std::uint8_t(answer[kSumAt + 1]));
}

} // namespace tarnex
