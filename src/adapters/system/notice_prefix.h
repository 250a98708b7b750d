#pragma once

#include "platform/notice_level.h"

#include <string>

namespace tarnex {

// What stands in front of a line on standard error so that its reader knows how much it matters:
// "" for people at a terminal or a file, and where the system's log is told otherwise.
std::string NoticePrefix(NoticeLevel level);

} // namespace tarnex
