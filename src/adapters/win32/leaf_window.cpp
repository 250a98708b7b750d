#include "adapters/win32/leaf_window.h"

#include <commctrl.h>

namespace tarnex {

LeafWindow::LeafWindow(HWND parent, const wchar_t* type, const Text& text, DWORD style,
                       DWORD ex_style)
    : window_(CreateWindowExW(ex_style, type, Wide(text).c_str(), WS_CHILD | style, 0, 0, 0, 0,
                              parent, nullptr, GetModuleHandleW(nullptr), nullptr)) {
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetWindowSubclass(window_, Procedure, 0, reinterpret_cast<DWORD_PTR>(this));
}

LeafWindow::~LeafWindow() {
    RemoveWindowSubclass(window_, Procedure, 0);
    DestroyWindow(window_);
}

LeafWindow* LeafWindow::Of(HWND window) {
    return reinterpret_cast<LeafWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

LRESULT CALLBACK LeafWindow::Procedure(HWND window, UINT message, WPARAM w, LPARAM l, UINT_PTR,
                                       DWORD_PTR self) {
    if (message == WM_SETFOCUS || message == WM_KILLFOCUS)
        PostMessageW(GetParent(window), kFocusMoved, 0, 0);
    if (const auto result = reinterpret_cast<LeafWindow*>(self)->Take(message, w, l))
        return *result;
    return DefSubclassProc(window, message, w, l);
}

LRESULT LeafWindow::Default(UINT message, WPARAM w, LPARAM l) const {
    return DefSubclassProc(window_, message, w, l);
}

void LeafWindow::SetStyle(const Style& style) {
    Send(WM_SETFONT, reinterpret_cast<WPARAM>(style.Plain()), TRUE);
}

void LeafWindow::Place(const Rect& rect, const Style&) {
    SetWindowPos(window_, nullptr, rect.x, rect.y, rect.w, rect.h,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

void LeafWindow::SetVisible(bool visible) {
    ShowWindow(window_, visible ? SW_SHOWNA : SW_HIDE);
}

void LeafWindow::SetText(const Text& text) {
    const std::wstring wanted = Wide(text);
    std::wstring shown(std::size_t(GetWindowTextLengthW(window_)) + 1, L'\0');
    shown.resize(std::size_t(GetWindowTextW(window_, shown.data(), int(shown.size()))));
    if (shown != wanted)
        SetWindowTextW(window_, wanted.c_str());
}

} // namespace tarnex
