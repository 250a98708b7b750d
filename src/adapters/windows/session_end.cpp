#include "adapters/windows/session_end.h"

#include "adapters/asio/asio_loop.h"
#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

#include <future>
#include <thread>

namespace tarnex {

namespace {

constexpr const wchar_t* kWindowClass = L"TarnexComm.SessionEnd";
constexpr std::chrono::seconds kTimeToEndSession(30); // the system loses patience earlier
constexpr std::chrono::seconds kTimeToAnswer(3);      // before it takes the window for hung
// Before the programs that have said nothing (0x280), the process of the windows among them.
constexpr DWORD kAskedFirst = 0x300;

} // namespace

struct SessionEnd::Watch {
    AsioLoop& loop;
    std::function<std::string()> why_not; // called from the loop, as is the next one
    std::function<void()> ended;
    std::promise<void> over;   // nobody waits for the end of the process any more
    std::promise<DWORD> begun; // the thread's number
    std::shared_future<void> is_over = over.get_future().share(); // may be told more than once
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
    // Whether the session may end. What the system shows of a program without a window in sight is
    // this reason alone; without one it would end the program all the same.
    bool MayEnd(HWND window) {
        const auto answer = std::make_shared<std::promise<std::string>>();
        loop.Post([call = why_not, answer] { answer->set_value(call()); });
        auto coming = answer->get_future();
        if (coming.wait_for(kTimeToAnswer) != std::future_status::ready)
            return true;
        const std::string reason = coming.get();
        ShutdownBlockReasonDestroy(window);
        if (!reason.empty())
            ShutdownBlockReasonCreate(window, ToWide(reason).c_str());
        return reason.empty();
    }
    void Tell() {
        loop.Post([call = ended] { call(); });
        is_over.wait_for(kTimeToEndSession); // once this returns, the process is ended
    }
    static LRESULT CALLBACK TakeMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
        if (message == WM_CREATE) {
            const auto* created = reinterpret_cast<const CREATESTRUCTW*>(second);
            SetWindowLongPtrW(window, GWLP_USERDATA,
                              reinterpret_cast<LONG_PTR>(created->lpCreateParams));
        }
        auto* watch = reinterpret_cast<Watch*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message == WM_QUERYENDSESSION)
            return watch->MayEnd(window);
        if (message == WM_ENDSESSION && first != FALSE) {
            watch->Tell();
            return 0;
        }
        return DefWindowProcW(window, message, first, second);
    }
};

SessionEnd::SessionEnd(AsioLoop& loop, std::function<std::string()> why_not,
                       std::function<void()> ended)
    : watch_(new Watch{.loop = loop,
                       .why_not = std::move(why_not),
                       .ended = std::move(ended),
                       .over = {},
                       .begun = {}}) {
    SetProcessShutdownParameters(kAskedFirst, 0);
    watch_->thread = std::thread([this] { watch_->Run(); });
}

SessionEnd::~SessionEnd() {
    watch_->over.set_value();
    PostThreadMessageW(watch_->begun.get_future().get(), WM_QUIT, 0, 0);
    watch_->thread.join();
}

} // namespace tarnex
