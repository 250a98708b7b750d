#pragma once

#include "platform/service_controller.h"

#include <string_view>

namespace tarnex {

// An entry of the log "Application". number: one of event_messages.mc. text: UTF-8.
void WriteEventLog(EventType type, int number, std::string_view text);

} // namespace tarnex
