#include "adapters/windows/windows_headers.h"

#include <filesystem>

#include <gtest/gtest.h>

// What only Windows has.
namespace tarnex {
namespace {

// What the viewer of events shows of one of that number.
TEST(EventLog, HasATextForEachNumber) {
    wchar_t test[MAX_PATH]{};
    GetModuleFileNameW(nullptr, test, MAX_PATH);
    const auto program =
        std::filesystem::path(test).parent_path().parent_path() / "bin/tarnexcomm.exe";
    const HMODULE texts = LoadLibraryExW(program.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    DWORD_PTR inserted[] = {reinterpret_cast<DWORD_PTR>(L"the text")};
    for (const DWORD number : {100, 109, 110}) {
        wchar_t text[100]{};
        FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, texts, number,
                       0, text, 100, reinterpret_cast<va_list*>(inserted));
        EXPECT_STREQ(text, L"the text\r\n") << number;
    }
    FreeLibrary(texts);
}

} // namespace
} // namespace tarnex
