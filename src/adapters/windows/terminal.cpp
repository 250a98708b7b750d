#include "adapters/system/terminal.h"

#include "adapters/system/environment.h"
#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <streambuf>

namespace tarnex {

namespace {

constexpr std::size_t kUsualColumns = 80;
constexpr std::size_t kConsoleBlock = 8192; // UTF-16 units, or bytes, at a time

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

// How many bytes at the end of a text begin a character of which the rest is still missing.
std::size_t HalfCharacter(std::string_view utf8) {
    for (std::size_t back = 1; back <= 3 && back <= utf8.size(); ++back) {
        const auto byte = static_cast<unsigned char>(utf8[utf8.size() - back]);
        if ((byte & 0xC0) == 0x80)
            continue;
        const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return length > back ? back : 0;
    }
    return 0;
}

void ShowOnConsole(DWORD stream, std::string_view utf8) {
    const std::wstring wide = ToWide(utf8);
    for (std::size_t at = 0; at < wide.size();) {
        const auto size = static_cast<DWORD>(std::min(wide.size() - at, kConsoleBlock));
        DWORD written = 0;
        if (!WriteConsoleW(GetStdHandle(stream), &wide[at], size, &written, nullptr) ||
            written == 0)
            return; // the console has gone
        at += written;
    }
}

// What a stream of C++ writes to a console. As bytes it would need the console's code page, which
// belongs to the prompt, too.
class ConsoleBuffer : public std::streambuf {
  public:
    explicit ConsoleBuffer(DWORD stream) : stream_(stream) {}

  protected:
    int_type overflow(int_type character) override {
        if (character != traits_type::eof())
            Take(std::string(1, traits_type::to_char_type(character)));
        return traits_type::not_eof(character);
    }
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        Take({text, static_cast<std::size_t>(size)});
        return size;
    }
    int sync() override {
        const std::size_t whole = waiting_.size() - HalfCharacter(waiting_);
        ShowOnConsole(stream_, std::string_view(waiting_).substr(0, whole));
        waiting_.erase(0, whole);
        return 0;
    }

  private:
    void Take(const std::string& text) {
        waiting_ += text;
        if (text.find('\n') != std::string::npos || waiting_.size() > kConsoleBlock)
            sync();
    }

    const DWORD stream_;
    std::string waiting_; // until a line is whole
};

bool Write(DWORD stream, std::FILE* file, std::string_view utf8) {
    if (ConsoleMode(stream)) {
        ShowOnConsole(stream, utf8);
        return true;
    }
    std::fwrite(utf8.data(), 1, utf8.size(), file);
    return std::fflush(file) == 0 || errno != EPIPE;
}

} // namespace

bool PrintOut(std::string_view utf8) {
    return Write(STD_OUTPUT_HANDLE, stdout, utf8);
}
bool PrintError(std::string_view utf8) {
    return Write(STD_ERROR_HANDLE, stderr, utf8);
}

// Windows gives the place of a missing stream to nobody else. The buffers stay: the streams are
// written out after everything else has gone.
void OccupyStandardStreams() {
    if (ConsoleMode(STD_OUTPUT_HANDLE))
        std::cout.rdbuf(new ConsoleBuffer(STD_OUTPUT_HANDLE));
    if (ConsoleMode(STD_ERROR_HANDLE))
        std::cerr.rdbuf(new ConsoleBuffer(STD_ERROR_HANDLE));
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
