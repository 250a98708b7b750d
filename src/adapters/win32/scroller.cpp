#include "adapters/win32/scroller.h"

#include <algorithm>

namespace tarnex {

void Scroller::SetUp(HWND window, const Sheet& sheet) {
    window_ = window;
    sheet_ = sheet;
    const auto set_up = [window](int bar, int whole, int seen, int at) {
        const SCROLLINFO info{
            sizeof info, SIF_RANGE | SIF_PAGE | SIF_POS, 0, whole - 1, UINT(seen), at, 0};
        return SetScrollInfo(window, bar, &info, TRUE);
    };
    corner_.w = set_up(SB_HORZ, sheet.whole.w, sheet.seen.w, corner_.w);
    corner_.h = set_up(SB_VERT, sheet.whole.h, sheet.seen.h, corner_.h);
}

bool Scroller::Take(UINT message, WPARAM w, int line) {
    switch (message) {
    case WM_HSCROLL:
        TakeBar(SB_HORZ, w, line);
        return true;
    case WM_VSCROLL:
        TakeBar(SB_VERT, w, line);
        return true;
    case WM_MOUSEWHEEL: // over what does not scroll itself
    case WM_MOUSEHWHEEL: {
        constexpr UINT kMostLines = 10; // somebody may have set whole pages
        UINT lines = 3;
        SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
        const int by =
            GET_WHEEL_DELTA_WPARAM(w) * int(std::min(lines, kMostLines)) * line / WHEEL_DELTA;
        if (message == WM_MOUSEHWHEEL)
            Scroll(SB_HORZ, by);
        else
            Scroll((LOWORD(w) & MK_SHIFT) != 0 ? SB_HORZ : SB_VERT, -by);
        return true;
    }
    default:
        return false;
    }
}

void Scroller::TakeBar(int bar, WPARAM w, int line) {
    const bool across = bar == SB_HORZ;
    const int page = across ? sheet_.seen.w : sheet_.seen.h;
    const int whole = across ? sheet_.whole.w : sheet_.whole.h;
    switch (LOWORD(w)) {
    case SB_LINEUP:
        return Scroll(bar, -line);
    case SB_LINEDOWN:
        return Scroll(bar, line);
    case SB_PAGEUP:
        return Scroll(bar, -page);
    case SB_PAGEDOWN:
        return Scroll(bar, page);
    case SB_TOP:
        return Scroll(bar, -whole);
    case SB_BOTTOM:
        return Scroll(bar, whole);
    case SB_THUMBTRACK:
        return Scroll(bar, HIWORD(w) - (across ? corner_.w : corner_.h));
    default:
        return;
    }
}

void Scroller::Scroll(int bar, int by) {
    const Size limit{sheet_.whole.w - sheet_.seen.w, sheet_.whole.h - sheet_.seen.h};
    const Size before = corner_;
    if (bar == SB_HORZ)
        corner_.w = std::clamp(corner_.w + by, 0, limit.w);
    else
        corner_.h = std::clamp(corner_.h + by, 0, limit.h);
    if (corner_ == before)
        return;
    SetScrollPos(window_, bar, bar == SB_HORZ ? corner_.w : corner_.h, TRUE);
    ScrollWindowEx(window_, before.w - corner_.w, before.h - corner_.h, nullptr, nullptr, nullptr,
                   nullptr, SW_SCROLLCHILDREN | SW_INVALIDATE | SW_ERASE);
}

void Scroller::Reveal(HWND child, int margin) {
    RECT rect{};
    GetWindowRect(child, &rect);
    MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&rect), 2);
    InflateRect(&rect, margin, margin);
    Scroll(SB_HORZ, ScrollTo(int(rect.left), int(rect.right), sheet_.seen.w));
    Scroll(SB_VERT, ScrollTo(int(rect.top), int(rect.bottom), sheet_.seen.h));
}

} // namespace tarnex
