#pragma once

#include "platform/system_words.h"

namespace tarnex {

SystemWords WordsOfThisSystem();

} // namespace tarnex
