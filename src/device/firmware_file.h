#pragma once

#include "device/firmware_link.h"
#include "device/hex_summary.h"

namespace tarnex {

// A HEX file, read to its end and judged before anything is sent to a unit.
struct FirmwareFile {
    std::string path{}; // in the system's own bytes
    HexSummary summary{};
    // Where an update with this file would stand: fault is kNone, kNoFile, or kBadLine with the
    // first line that cannot be sent.
    FlashProgress verdict{};

    bool Sendable() const { return verdict.fault == FlashFault::kNone; }
};

FirmwareFile ReadFirmwareFile(LineFiles& files, std::string path);

} // namespace tarnex
