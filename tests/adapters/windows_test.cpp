#include "adapters/asio/asio_loop.h"
#include "adapters/system/end_requests.h"
#include "adapters/windows/windows_headers.h"

#include <filesystem>
#include <thread>

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

TEST(SessionEnd, WaitsAsLongAsTheProgramSaysWhy) {
    RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Wine\\Drivers", L"Graphics", REG_SZ, L"null",
                    sizeof L"null"); // Wine makes no window without a screen, else
    AsioLoop loop;
    EndRequests requests(loop);
    std::string why = "it writes";
    requests.BeforeSystemEnd([&] { return why; });
    requests.OnSystemEnd([&] { loop.Stop(); });
    LRESULT may_end[2]{1, 0};
    std::thread system([&] {
        HWND window = nullptr;
        while (!window)
            window = FindWindowW(L"TarnexComm.SessionEnd", nullptr);
        for (LRESULT& each : may_end) {
            each = SendMessageW(window, WM_QUERYENDSESSION, 0, 0);
            loop.Post([&] { why.clear(); });
        }
        SendNotifyMessageW(window, WM_ENDSESSION, TRUE, 0);
    });
    loop.Run();
    system.join();
    EXPECT_EQ(may_end[0], FALSE);
    EXPECT_EQ(may_end[1], TRUE);
}

} // namespace
} // namespace tarnex
