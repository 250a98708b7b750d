#pragma once

#include "operator/operator_world.h"

#include <system_error>

namespace tarnex {

// Why the file at path cannot be read; nothing when it can.
std::error_code ReadingProblem(const std::string& path);
// The whole content of a file that can be read.
std::string ReadWholeFile(const std::string& path);

// The failures of a file, with what to do. what names it for people: "settings file /x/y".
// if_missing: what to do when there is none.
Failure CannotRead(const SystemWords& words, const std::string& what, std::error_code why,
                   const std::string& if_missing);
Failure CannotWrite(const SystemWords& words, const std::string& what, std::error_code why);

} // namespace tarnex
