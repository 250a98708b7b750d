#pragma once

#include "device/firmware_link.h"
#include "device/intel_hex.h"

#include <optional>
#include <string>

namespace tarnex {

// What an operator is shown of a running update: English on a terminal, Chinese in a window.

// "1 min 5 s"; "45 s".
std::string DurationText(std::chrono::seconds time);

// How a running update stands after step_time in its present step:
// " 45 %  [#######         ]  12345/27400 bytes  address 3A40  1 min 5 s left".
std::string ProgressBar(const FlashProgress& progress, long total_bytes, Duration step_time);

// The same as a line of a log, without the bar.
std::string ProgressLine(const FlashProgress& progress, long total_bytes, Duration step_time);

// What stands beside the address in a window: "45 %  12345/27400字节  剩余1分5秒".
Text FiguresInChinese(const FlashProgress& progress, long total_bytes, Duration step_time);

// Whole percents of the data bytes, 0 to 100.
int Percent(const FlashProgress& progress, long total_bytes);

// What is in a HEX file, line by line; what is odd about it comes last.
std::vector<std::string> SummaryLines(const std::string& file, const HexSummary& summary);

} // namespace tarnex
