#pragma once

#include "platform/text.h"

#include <functional>
#include <string>

namespace tarnex {

// Asks the operator for a file that is there.
class FileDialog {
  public:
    virtual ~FileDialog() = default;
    // filter: patterns that differ in case alone, with "|" between them, as in "*.hex|*.HEX".
    // chosen is called once, within this call or later from the loop, with the path in the system's
    // own bytes; "" when the operator chose none. Not again before chosen was called.
    virtual void Show(const Text& filter, std::function<void(const std::string& path)> chosen) = 0;
    // The question is withdrawn: chosen is not called any more. Harmless when none is open.
    virtual void Withdraw() = 0;
};

} // namespace tarnex
