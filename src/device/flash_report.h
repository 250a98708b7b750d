#pragma once

#include "device/firmware_link.h"

#include <string>
#include <vector>

namespace tarnex {

// What an operator is told of an update and its file: Chinese in the windows, English on the
// terminal.

inline constexpr TextView kCloseWarning =
    u"正在写入，现在退出会使设备程序不完整。再次关闭窗口将强行退出。";
// The same for who ends the session of Windows.
inline constexpr TextView kSystemEndWarning = u"正在写入设备程序，中断后设备不能工作。请等待写完。";

// The update has begun to erase and is not done: the unit may have no whole program.
bool ProgramTouched(const FlashProgress& progress);

// The command that updates the unit on that port, for a shell: "tarnex-flasher --port COM3 --file
// unit.hex". It needs no unit that answers a greeting. quote: the shell's, for names that hold more
// than letters and digits.
std::string UpdateCommand(const std::string& port, const std::string& file, char quote = '\'');

// Where a failed update stood, what ended it, how the unit is now and what to do; line by line.
// command: what brings back a unit without its program.
std::vector<Text> FailureInChinese(const FlashProgress& progress, const std::string& command);
std::vector<std::string> FailureInEnglish(const FlashProgress& progress,
                                          const std::string& command);

// What is said behind "line 7 of the file": "does not begin with \":\"".
std::string TroubleInEnglish(HexTrouble trouble);

// Why a port cannot be opened: "another program holds it".
std::string PortTroubleInEnglish(PortStatus status);

} // namespace tarnex
