#include "adapters/windows/session_end.h"

#include "adapters/asio/asio_loop.h"
#include "adapters/windows/windows_headers.h"

#include <future>
#include <thread>

namespace tarnex {

namespace {

constexpr const wchar_t* kWindowClass = L"TarnexComm.SessionEnd";
constexpr std::chrono::seconds kTimeToEnd(30); // the system loses patience earlier

} // namespace

struct SessionEnd::Watch {
    AsioLoop& loop;
    std::function<void()> ended; // called from the loop
    std::promise<void> over;     // nobody waits for the end of the process any more
    std::promise<DWORD> begun;   // the thread's number
    std::thread thread{};

    // A window that nobody sees: those for messages alone are not told.
    void Run() {
        const HINSTANCE program = GetModuleHandleW(nullptr);
        WNDCLASSW kind{};
        kind.lpfnWndProc = TakeMessage;
        kind.hInstance = program;
        kind.lpszClassName = kWindowClass;
        RegisterClassW(&kind);
        MSG message; // its queue is there before anybody posts to it
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        begun.set_value(GetCurrentThreadId());
        const HWND window = CreateWindowExW(0, kWindowClass, L"TarnexComm", WS_OVERLAPPED, 0, 0, 0,
                                            0, nullptr, nullptr, program, this);
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
        if (window)
            DestroyWindow(window);
    }
    void Tell() {
        loop.Post([call = ended] { call(); });
        over.get_future().wait_for(kTimeToEnd); // once this returns, the process is ended
    }
    static LRESULT CALLBACK TakeMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
        if (message == WM_CREATE) {
            const auto* created = reinterpret_cast<const CREATESTRUCTW*>(second);
            SetWindowLongPtrW(window, GWLP_USERDATA,
                              reinterpret_cast<LONG_PTR>(created->lpCreateParams));
        } else if (message == WM_ENDSESSION && first != FALSE) {
            reinterpret_cast<Watch*>(GetWindowLongPtrW(window, GWLP_USERDATA))->Tell();
            return 0;
        }
        return DefWindowProcW(window, message, first, second);
    }
};

SessionEnd::SessionEnd(AsioLoop& loop, std::function<void()> ended)
    : watch_(new Watch{.loop = loop, .ended = std::move(ended), .over = {}, .begun = {}}) {
    watch_->thread = std::thread([this] { watch_->Run(); });
}

SessionEnd::~SessionEnd() {
    watch_->over.set_value();
    PostThreadMessageW(watch_->begun.get_future().get(), WM_QUIT, 0, 0);
    watch_->thread.join();
}

} // namespace tarnex
