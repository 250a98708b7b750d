#pragma once

#include "platform/datagram_socket.h"

#include <string>
#include <string_view>

namespace tarnex {

// Sends one UDP datagram and waits a tenth of a second for its refusal. "", or what stands in the
// way in words for an operator. A datagram that is lost on its way counts as sent.
std::string SendDatagram(const Endpoint& to, std::string_view bytes);

} // namespace tarnex
