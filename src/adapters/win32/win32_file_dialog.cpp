#include "adapters/win32/win32_file_dialog.h"

#include "adapters/win32/style.h"
#include "adapters/windows/windows_text.h"

#include <thread>
#include <utility>

#include <commdlg.h>
#include <objbase.h>

namespace tarnex {

namespace {

constexpr std::size_t kLongestPath = 32'768; // characters

// Names and patterns in turn, each with an end of its own. Names match in any case, so that of
// several patterns the first is enough.
std::wstring Kinds(const Text& filter) {
    const std::wstring pattern = Wide(filter.substr(0, filter.find(u'|')));
    std::wstring kinds = L"固件文件 (" + pattern + L")";
    for (const std::wstring& part :
         {pattern, std::wstring(L"所有文件 (*.*)"), std::wstring(L"*.*")})
        (kinds += L'\0') += part;
    return kinds += L'\0';
}

// Waits for the operator. "": none was chosen.
std::string Ask(HWND owner, const std::wstring& kinds) {
    std::wstring path(kLongestPath, L'\0');
    OPENFILENAMEW question{};
    question.lStructSize = sizeof question;
    question.hwndOwner = owner;
    question.lpstrFilter = kinds.c_str();
    question.lpstrFile = path.data();
    question.nMaxFile = DWORD(path.size());
    question.lpstrTitle = L"打开固件文件";
    question.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY |
                     OFN_NOCHANGEDIR | OFN_DONTADDTORECENT;
    return GetOpenFileNameW(&question) ? FromWide(path.c_str()) : "";
}

} // namespace

void Win32FileDialog::Show(const Text& filter,
                           std::function<void(const std::string& path)> chosen) {
    chosen_ = std::move(chosen);
    const std::uint64_t question = ++question_;
    std::thread([this, question, owner = GetActiveWindow(), kinds = Kinds(filter)] {
        thread_ = GetCurrentThreadId();
        SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
        const std::string path = Ask(owner, kinds);
        CoUninitialize();
        queue_.Post([this, question, path] { Answer(question, path); });
    }).detach();
}

void Win32FileDialog::Answer(std::uint64_t question, const std::string& path) {
    if (question != question_)
        return;
    if (const auto chosen = std::exchange(chosen_, nullptr))
        chosen(path);
}

void Win32FileDialog::Withdraw() {
    if (!std::exchange(chosen_, nullptr))
        return;
    const auto cancel = [](HWND window, LPARAM) -> BOOL {
        PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
        return TRUE;
    };
    EnumThreadWindows(thread_, cancel, 0);
}

} // namespace tarnex
