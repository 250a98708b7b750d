#pragma once

#include "device/intel_hex.h"

#include <array>
#include <cstdint>
#include <string>

namespace tarnex {

// The unit's loader works at kFirmwareBaud, even parity, 8 data bits, 1 stop bit.
inline constexpr int kFirmwareBaud = 38400;

enum class FirmwareCommand {
    kHandshake,
    kB1, // of the protocol, and sent by no step of an update
    kErase,
};

// 5A A5, length, command, parameter, check byte, 16.
inline constexpr std::size_t kCommandFrameSize = 8;
std::string CommandFrame(FirmwareCommand command);

// What a write frame holds besides the record's data.
inline constexpr std::size_t kDataFrameOverhead = 14;
// The frame that writes a record: N + 14 bytes for N data bytes.
std::string DataFrame(const HexRecord& record);
// The sum of the data bytes, with which the unit acknowledges their frame.
std::uint16_t DataSum(std::string_view data);

// What the unit is to answer, byte for byte; -1: any byte.
inline constexpr std::size_t kWriteAckSize = 10;
inline constexpr std::array<int, kCommandFrameSize> kAckPattern = {0x5A, 0xA5, 0x00, 0x08,
                                                                   0xB0, 0x01, 0xB7, 0x16};
inline constexpr std::array<int, kWriteAckSize> kWriteAckPattern = {0x5A, 0xA5, 0x00, 0x0A, 0xB3,
                                                                    -1,   -1,   -1,   -1,   0x16};
// The sum in a whole answer that fits kWriteAckPattern.
std::uint16_t SumInWriteAck(std::string_view answer);

} // namespace tarnex
