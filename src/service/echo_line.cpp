#include "service/echo_line.h"

namespace tarnex {

std::string EchoLine(const std::string& list, TextView line) {
    return list + ": " + ToUtf8(EscapeControls(line)) + "\n";
}

} // namespace tarnex
