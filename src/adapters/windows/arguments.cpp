#include "adapters/system/arguments.h"

#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

#include <memory>

#include <shellapi.h>

namespace tarnex {

namespace {

struct FreeLocal {
    void operator()(wchar_t** words) const { LocalFree(words); }
};

} // namespace

// Those of main() have lost what the machine's code page lacks.
std::vector<std::string> ProgramArguments(int, char**) {
    int count = 0;
    const std::unique_ptr<wchar_t*, FreeLocal> words(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int i = 1; words && i < count; ++i)
        arguments.push_back(FromWide(words.get()[i]));
    return arguments;
}

} // namespace tarnex
