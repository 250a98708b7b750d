#pragma once

#include <cstdint>

namespace tarnex {

// How the process that shows the windows is started and spoken to: this program once more, with
// these arguments.
//     --show-windows VERSION HANDLE
// HANDLE: the number of its end of a pipe for overlapped use, on which each packet follows its size
// in bytes.
inline constexpr char kShowWindows[] = "--show-windows";
using PacketSize = std::uint32_t;

} // namespace tarnex
