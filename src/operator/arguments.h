#pragma once

#include "platform/exit_status.h"

#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace tarnex {

// What a program takes on its command line, or one of its commands. A copy means the same command
// line. What is filled must live until Read() has returned. Only arguments.cpp includes the library
// behind it, which costs a compiler more than most of our files do.
class Arguments {
  public:
    // Stores a value and returns "", or returns what is wrong with it.
    using ReadValue = std::function<std::string(const std::string& value)>;
    // Returns "", or what is wrong with everything that was given together.
    using Check = std::function<std::string()>;

    // what: the first lines of its help.
    Arguments(const std::string& program, const std::string& what);

    // One of its commands. Its options may stand behind the options of the program, and among them.
    Arguments Command(const std::string& name, const std::string& what);
    // One of the commands must be given.
    void RequireCommand();
    // The last lines of its help.
    void Footer(const std::string& text);
    // Called when all was read, of the commands for the one that was given.
    void OnGiven(Check check);

    // An option without a value.
    void Flag(const std::string& name, bool& given, const std::string& meaning);
    // Options "--name" with a value, or words without a name where name has no hyphens. type: what
    // the help calls the value. What stands in value already shows as the default, unless it is
    // empty or out of the range.
    void Value(const std::string& name, const std::string& type, const std::string& meaning,
               std::string& value);
    void Value(const std::string& name, const std::string& type, const std::string& meaning,
               std::optional<std::string>& value);
    void Number(const std::string& name, const std::string& type, const std::string& meaning,
                int& value, int lowest, int highest);
    // May be given several times: read is called for each one. heading: of the group in the help.
    void EachValue(const std::string& name, const std::string& type, const std::string& meaning,
                   ReadValue read, const std::string& heading = "");
    // A word without a name that must be there, and any number of them.
    void RequiredWord(const std::string& name, const std::string& meaning, std::string& word);
    void Words(const std::string& name, const std::string& meaning,
               std::vector<std::string>& words);

    // Reads the arguments of a program (without its name). Nothing when there is something to do;
    // else the exit status: help or version were asked for and stand in out, or the line is wrong
    // and err says why.
    std::optional<ExitStatus> Read(std::vector<std::string> arguments, std::ostream& out,
                                   std::ostream& err);

  private:
    explicit Arguments(std::shared_ptr<CLI::App> app);

    std::shared_ptr<CLI::App> app_;
};

} // namespace tarnex
