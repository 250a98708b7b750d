#include "adapters/system/terminal.h"

#include "adapters/system/environment.h"
#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

#include <iostream>

namespace tarnex {

namespace {

constexpr std::size_t kUsualColumns = 80;

std::optional<DWORD> ConsoleMode(DWORD stream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) ? std::optional(mode) : std::nullopt;
}

class WithoutEcho {
  public:
    WithoutEcho() : before_(ConsoleMode(STD_INPUT_HANDLE)) {
        if (before_)
            SetConsoleMode(GetStdHandle(STD_INPUT_HANDLE),
                           *before_ & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    }
    WithoutEcho(const WithoutEcho&) = delete;
    WithoutEcho& operator=(const WithoutEcho&) = delete;
    ~WithoutEcho() {
        if (!before_)
            return;
        SetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), *before_);
        std::cerr << '\n';
    }

  private:
    std::optional<DWORD> before_;
};

// What a person types comes in the code page of the console, which for input knows no UTF-8.
std::optional<std::string> ReadConsoleLine() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    std::wstring line;
    wchar_t unit = 0;
    DWORD got = 0;
    while (ReadConsoleW(input, &unit, 1, &got, nullptr) && got == 1) {
        if (unit == L'\n')
            return FromWide(line);
        if (unit == L'\x1a' && line.empty()) // Ctrl-Z
            break;
        if (unit != L'\r')
            line += unit;
    }
    return line.empty() ? std::nullopt : std::optional(FromWide(line));
}

} // namespace

// Windows gives the place of a missing stream to nobody else. What is written is UTF-8.
void OccupyStandardStreams() {
    SetConsoleOutputCP(CP_UTF8);
}

// They do anyway.
void BrokenStreamsFail() {}

bool StandardOutputIsTerminal() {
    return ConsoleMode(STD_OUTPUT_HANDLE).has_value();
}
bool StandardErrorIsTerminal() {
    return ConsoleMode(STD_ERROR_HANDLE).has_value();
}
bool StandardInputIsTerminal() {
    return ConsoleMode(STD_INPUT_HANDLE).has_value();
}

std::size_t TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    const bool known = GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &screen) &&
                       screen.srWindow.Right > screen.srWindow.Left;
    return known ? static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1)
                 : kUsualColumns;
}

// The console takes the usual sequences once it is told to.
bool TerminalShowsColours() {
    bool shown = Environment("NO_COLOR").empty();
    for (const DWORD stream : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE})
        if (const auto mode = ConsoleMode(stream); shown && mode)
            shown =
                SetConsoleMode(GetStdHandle(stream), *mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    return shown;
}

// A pipe tells only who writes to it.
bool WaitForReader(std::chrono::milliseconds length) {
    Sleep(DWORD(length.count()));
    return true;
}

std::optional<std::string> AskOnTerminal(const std::string& prompt, bool secret) {
    std::cerr << prompt << std::flush;
    std::optional<WithoutEcho> silence;
    if (secret)
        silence.emplace();
    if (StandardInputIsTerminal())
        return ReadConsoleLine();
    std::string line;
    if (!std::getline(std::cin, line))
        return std::nullopt;
    if (line.ends_with('\r'))
        line.pop_back();
    return line;
}

} // namespace tarnex
