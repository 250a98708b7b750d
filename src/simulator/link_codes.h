#pragma once

#include "platform/text.h"

namespace tarnex {

// What a message of the control link, in either direction, tells in plain English; "unknown code"
// for what is none.
std::string DescribeCode(TextView message);

} // namespace tarnex
