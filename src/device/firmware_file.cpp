#include "device/firmware_file.h"

namespace tarnex {

FirmwareFile ReadFirmwareFile(LineFiles& files, std::string path) {
    FirmwareFile read{.path = std::move(path)};
    OpenedLineFile opened = files.Open(read.path);
    if (!opened.file) {
        read.verdict.fault = FlashFault::kNoFile;
        read.verdict.file_problem = std::move(opened.problem);
        return read;
    }
    read.summary = HexSummary::Read(*opened.file);
    if (const std::optional<OddHexLine>& fault = read.summary.Fault()) {
        read.verdict.fault = FlashFault::kBadLine;
        read.verdict.line = fault->line;
        read.verdict.trouble = fault->trouble;
    }
    return read;
}

} // namespace tarnex
