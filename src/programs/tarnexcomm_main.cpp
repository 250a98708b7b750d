// One executable, three programs: the name under which it is started says which.

#include "programs/programs.h"

#include <csignal>
#include <string_view>

namespace {

struct Program {
    std::string_view name;
    int (*run)(int argc, char** argv);
};
constexpr Program kTools[] = {
    {"tarnex-flasher", tarnex::RunFlasherProgram},
    {"tarnex-console", tarnex::RunConsoleProgram},
};

} // namespace

int main(int argc, char** argv) {
    // Messages that nobody reads and files that may not grow fail to be written; work goes on.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::string_view name = argc > 0 ? argv[0] : "";
    name.remove_prefix(name.rfind('/') + 1); // npos + 1 is 0
    for (const Program& tool : kTools)
        if (tool.name == name)
            return tool.run(argc, argv);
    return tarnex::RunServiceProgram(argc, argv);
}
