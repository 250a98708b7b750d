#pragma once

#include "operator/first_start.h"

namespace tarnex {

// tarnexctl: carries out the command that the arguments (without the program's name) ask for and
// returns the exit status. What goes wrong is said in one line.
int RunTarnexctl(std::vector<std::string> arguments, OperatorWorld& world,
                 const ServiceStart& start = {});

} // namespace tarnex
