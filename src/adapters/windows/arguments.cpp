#include "adapters/system/arguments.h"

#include "adapters/windows/windows_text.h"

// How the C library makes the arguments of a wmain(), which has no header of its own. The system's
// CommandLineToArgvW would bring SHELL32, and with it USER32 and GDI32, into every program.
extern "C" {
struct CrtStartInfo {
    int new_mode; // whether malloc() calls what operator new calls when there is no memory
};
// NOLINTNEXTLINE(bugprone-reserved-identifier)
int __wgetmainargs(int* count, wchar_t*** words, wchar_t*** environment, int expand_wildcards,
                   CrtStartInfo* start);
}

namespace tarnex {

// Those of main() have lost what the machine's code page lacks.
std::vector<std::string> ProgramArguments(int, char**) {
    int count = 0;
    wchar_t** words = nullptr; // both are the library's
    wchar_t** environment = nullptr;
    CrtStartInfo start{};
    __wgetmainargs(&count, &words, &environment, 0, &start);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(FromWide(words[i]));
    return arguments;
}

} // namespace tarnex
