#pragma once

#include "platform/text.h"

#include <vector>

namespace tarnex {

// The SMS that carry a notification: the text as it is when it has fewer than 70 characters, else
// pieces "{k/n}" + 65 characters, the last with all that is left.
std::vector<Text> CutIntoPieces(TextView text);

} // namespace tarnex
