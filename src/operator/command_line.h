#pragma once

#include "operator/operator_world.h"

namespace tarnex {

// tarnexctl: carries out the command that the arguments (without the program's name) ask for and
// returns the exit status. What goes wrong is said in one line.
int RunTarnexctl(std::vector<std::string> arguments, OperatorWorld& world);

} // namespace tarnex
