#pragma once

#include <string>
#include <vector>

namespace tarnex {

// The words behind the program's name, in UTF-8. argc, argv: those of main().
std::vector<std::string> ProgramArguments(int argc, char** argv);

} // namespace tarnex
