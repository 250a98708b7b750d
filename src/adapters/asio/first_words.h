#pragma once

#include "platform/clock.h"

#include <cstdint>
#include <string>

namespace tarnex {

struct FirstWords {
    std::string heard;   // as the server sent it
    std::string trouble; // why nothing was heard, in words for an operator; "" when it was
};

// Connects to a server, waits at most limit for what it says first, and hangs up.
FirstWords HearFirstWords(const std::string& host, std::uint16_t port, Duration limit);

} // namespace tarnex
