#include "adapters/win32/ui_queue.h"

namespace tarnex {

namespace {

constexpr wchar_t kClass[] = L"TarnexQueue";
constexpr UINT kPosted = WM_APP;

} // namespace

UiQueue::UiQueue() {
    WNDCLASSW type{};
    type.lpfnWndProc = Procedure;
    type.hInstance = GetModuleHandleW(nullptr);
    type.lpszClassName = kClass;
    RegisterClassW(&type);
    window_ = CreateWindowExW(0, kClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              type.hInstance, nullptr);
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

UiQueue::~UiQueue() {
    DestroyWindow(window_);
}

void UiQueue::Post(std::function<void()> fn) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(fn));
    PostMessageW(window_, kPosted, 0, 0);
}

LRESULT CALLBACK UiQueue::Procedure(HWND window, UINT message, WPARAM w, LPARAM l) {
    auto* const self = reinterpret_cast<UiQueue*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message != kPosted || !self)
        return DefWindowProcW(window, message, w, l);
    self->RunNext();
    return 0;
}

void UiQueue::RunNext() {
    std::function<void()> fn;
    {
        const std::lock_guard lock(mutex_);
        if (posted_.empty())
            return;
        fn = std::move(posted_.front());
        posted_.pop_front();
    }
    fn();
}

} // namespace tarnex
