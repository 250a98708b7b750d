#pragma once

#include "device/firmware_link.h"

#include <string>
#include <vector>

namespace tarnex {

// What an operator is told of an update and its file: Chinese in the windows, English on the
// terminal.

inline constexpr TextView kCloseWarning =
    u"正在写入，现在退出会使设备程序不完整。再次关闭窗口将强行退出。";

// Where a failed update stood, what the unit answered, what to do; line by line.
std::vector<Text> FailureInChinese(const FlashProgress& progress);
std::vector<std::string> FailureInEnglish(const FlashProgress& progress);

// "the line begins without \":\"".
std::string TroubleInEnglish(HexTrouble trouble);

// Why a port cannot be opened.
std::string PortTroubleInEnglish(PortStatus status);

// "5A A5 00 08"; "nothing" for none.
std::string BytesText(std::string_view bytes);

} // namespace tarnex
