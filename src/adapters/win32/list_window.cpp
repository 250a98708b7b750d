#include "adapters/win32/leaf_window.h"

#include <algorithm>
#include <cstring>

namespace tarnex {

namespace {

constexpr int kTextIndent = 3;  // pixels at 96 dpi left of a line
constexpr UINT kWider = WM_APP; // a line has been drawn that is wider than those before
constexpr WPARAM kControlC = 'C';

void PutOnClipboard(HWND owner, std::wstring_view text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes);
    if (!memory)
        return;
    auto* const place = static_cast<wchar_t*>(GlobalLock(memory));
    text.copy(place, text.size());
    place[text.size()] = L'\0';
    GlobalUnlock(memory);
    if (OpenClipboard(owner)) {
        EmptyClipboard();
        const bool taken = SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
        CloseClipboard();
        if (taken)
            return; // it is the system's now
    }
    GlobalFree(memory);
}

// Shows the lines of a list box where they are: the system's list knows how many there are and asks
// for those that it draws.
class ListWindow : public LeafWindow {
  public:
    ListWindow(HWND parent, ListBox& list)
        : LeafWindow(parent, L"LISTBOX", u"",
                     LBS_NODATA | LBS_OWNERDRAWFIXED | LBS_NOINTEGRALHEIGHT | LBS_NOTIFY |
                         WS_VSCROLL | WS_HSCROLL | WS_TABSTOP,
                     WS_EX_CLIENTEDGE),
          list_(list) {}

    void Show() override;
    void SetStyle(const Style& style) override;
    void Place(const Rect& rect, const Style& style) override {
        LeafWindow::Place(rect, style);
        Reveal();
    }
    void Notify(WORD code) override {
        if (code == LBN_SELCHANGE)
            list_.Select(int(Send(LB_GETCURSEL)));
    }
    void Draw(const DRAWITEMSTRUCT& drawn) override;

  protected:
    std::optional<LRESULT> Take(UINT message, WPARAM w, LPARAM l) override;

  private:
    int Count() const { return int(list_.Lines().size()); }
    void Reveal() { Send(LB_SETCURSEL, WPARAM(list_.Selected())); }
    std::wstring Shown(std::size_t index) const {
        return Wide(EscapeControls(list_.Lines()[index]));
    }
    bool HasBar(LONG bar = WS_HSCROLL) const {
        return (GetWindowLongW(Window(), GWL_STYLE) & bar) != 0;
    }
    void SetWidth(int width) {
        width_ = width;
        Send(LB_SETHORIZONTALEXTENT, WPARAM(width_));
    }
    void Copy(bool every_line) const;

    ListBox& list_;
    int shown_ = 0;           // lines
    std::uint64_t first_ = 0; // number of the first of them
    int indent_ = 0;
    int width_ = 0; // of the widest line that has been drawn
};

// What is in sight stays there, unless the newest line is out of it.
void ListWindow::Show() {
    const std::uint64_t gone = list_.FirstNumber() - first_;
    if (gone != 0 || Count() != shown_) {
        const int top = int(Send(LB_GETTOPINDEX)) - int(std::min<std::uint64_t>(gone, shown_));
        Send(WM_SETREDRAW, FALSE);
        if (Count() != shown_)
            Send(LB_SETCOUNT, WPARAM(Count()));
        Send(LB_SETTOPINDEX, WPARAM(std::max(top, 0)));
        if (Count() == 0)
            SetWidth(0);
        Reveal();
        Send(WM_SETREDRAW, TRUE);
        RedrawWindow(Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
        first_ = list_.FirstNumber();
        shown_ = Count();
    } else if (int(Send(LB_GETCURSEL)) != list_.Selected()) {
        Reveal();
    }
}

void ListWindow::SetStyle(const Style& style) {
    LeafWindow::SetStyle(style);
    indent_ = style.Metrics().Pixels(kTextIndent);
    Send(LB_SETITEMHEIGHT, 0, style.LineHeight());
    SetWidth(0);
}

void ListWindow::Draw(const DRAWITEMSTRUCT& drawn) {
    const bool selected = (drawn.itemState & ODS_SELECTED) != 0;
    const bool enabled = (drawn.itemState & ODS_DISABLED) == 0;
    FillRect(drawn.hDC, &drawn.rcItem, GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
    if (drawn.itemID >= UINT(Count()))
        return; // the place of the focus in an empty list
    const std::wstring line = Shown(drawn.itemID);
    SIZE size{};
    GetTextExtentPoint32W(drawn.hDC, line.data(), int(line.size()), &size);
    if (const int width = int(size.cx) + 2 * indent_; width > width_)
        PostMessageW(Window(), kWider, WPARAM(width), 0);
    SetBkMode(drawn.hDC, TRANSPARENT);
    SetTextColor(drawn.hDC, GetSysColor(!enabled   ? COLOR_GRAYTEXT
                                        : selected ? COLOR_HIGHLIGHTTEXT
                                                   : COLOR_WINDOWTEXT));
    const RECT& rect = drawn.rcItem;
    ExtTextOutW(drawn.hDC, rect.left + indent_, (rect.top + rect.bottom - size.cy) / 2, ETO_CLIPPED,
                &rect, line.data(), UINT(line.size()), nullptr);
}

std::optional<LRESULT> ListWindow::Take(UINT message, WPARAM w, LPARAM l) {
    if (message == WM_MOUSEWHEEL && !HasBar(WS_VSCROLL))
        return SendMessageW(GetParent(Window()), message, w, l);
    if (message == kWider && int(w) > width_) {
        const bool had_bar = HasBar();
        SetWidth(int(w));
        if (HasBar() != had_bar) // it may have come to stand on the newest line
            Reveal();
        return 0;
    }
    if (message == WM_KEYDOWN && w == kControlC && GetKeyState(VK_CONTROL) < 0) {
        Copy(GetKeyState(VK_SHIFT) < 0);
        return 0;
    }
    return std::nullopt;
}

void ListWindow::Copy(bool every_line) const {
    std::wstring copied;
    if (every_line)
        for (std::size_t index = 0; index < list_.Lines().size(); ++index)
            copied += Shown(index) + L"\r\n";
    else if (list_.Selected() >= 0)
        copied = Shown(std::size_t(list_.Selected()));
    PutOnClipboard(Window(), copied);
}

} // namespace

std::unique_ptr<LeafWindow> MakeListWindow(HWND parent, ListBox& list) {
    return std::make_unique<ListWindow>(parent, list);
}

} // namespace tarnex
