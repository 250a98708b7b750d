#pragma once

#include "operator/operator_world.h"

#include <system_error>

namespace tarnex {

// Acts for the owner of what leads to path, as FileOwners says, until that goes. Throws Failure.
[[nodiscard]] std::unique_ptr<FileOwners::Acting>
ActForOwner(const OperatorWorld& world, const std::string& path, const std::string& named_in = "");

// Why the file at path cannot be read; nothing when it can.
std::error_code ReadingProblem(const std::string& path);
// The whole content of a file that can be read.
std::string ReadWholeFile(const std::string& path);

// Puts a new file in the place of an ordinary one, or where there is none. instead: what to do
// where something else stands there. Throws Failure.
void WriteOutput(const OperatorWorld& world, const std::string& path, std::string_view content,
                 Readers readers, const std::string& instead);

// The program that keeps the file open, if that is why and the system tells it; else "".
std::string HolderOf(const OperatorWorld& world, const std::string& path, std::error_code why);

// The failures of a file, with what to do. what names it for people: "settings file /x/y".
// if_missing: what to do when there is none. holder: see above.
Failure CannotRead(const SystemWords& words, const std::string& what, std::error_code why,
                   const std::string& if_missing, const std::string& holder = "");
Failure CannotWrite(const SystemWords& words, const std::string& what, std::error_code why,
                    const std::string& holder = "");

} // namespace tarnex
