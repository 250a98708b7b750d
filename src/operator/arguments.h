#pragma once

#include "platform/exit_status.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tarnex {

// Reads the arguments of a program (without its name) by the options of app, whose name is that of
// the program. Nothing when there is something to do; else the exit status: help or version were
// asked for and stand in out, or the line is wrong and err says why.
std::optional<ExitStatus> ReadArguments(CLI::App& app, std::vector<std::string> arguments,
                                        std::ostream& out, std::ostream& err);

// An option with a value, which may be given several times. read is called for each one: it stores
// the value and returns "", or returns what is wrong with it. type: what the help calls the value.
CLI::Option* AddValue(CLI::App& app, const std::string& name, const std::string& type,
                      const std::string& meaning,
                      std::function<std::string(const std::string& value)> read);

} // namespace tarnex
