#include "adapters/win32/leaf_window.h"

#include <algorithm>

namespace tarnex {

namespace {

using Look = LayoutNode::Look;

constexpr COLORREF kCareful = RGB(0xF5, 0xCF, 0x8E);
constexpr COLORREF kCarefulPressed = RGB(0xE3, 0xB2, 0x5F);
constexpr COLORREF kCarefulEdge = RGB(0x9A, 0x76, 0x35);
constexpr COLORREF kCarefulLetters = RGB(0x1F, 0x24, 0x2B); // on amber, whatever the colours are

constexpr int kTitleGap = 3; // pixels at 96 dpi between a title and its box
constexpr DWORD kTextStyle = SS_NOPREFIX | SS_CENTERIMAGE;

// "&" before a letter would underline it.
Text Caption(const Text& text) {
    Text caption;
    for (const char16_t c : text)
        caption.append(c == u'&' ? 2 : 1, c);
    return caption;
}

class HeadingWindow : public LeafWindow {
  public:
    HeadingWindow(HWND parent, const Text& title)
        : LeafWindow(parent, L"STATIC", title, SS_LEFTNOWORDWRAP | kTextStyle) {}
    void SetStyle(const Style& style) override {
        Send(WM_SETFONT, reinterpret_cast<WPARAM>(style.Bold()), TRUE);
    }
};

class LabelWindow : public LeafWindow {
  public:
    LabelWindow(HWND parent, Control& model, Look look)
        : LeafWindow(parent, L"STATIC", u"", SS_LEFTNOWORDWRAP | kTextStyle), model_(model),
          look_(look) {}
    void Show() override { SetText(model_.Caption()); }
    void SetStyle(const Style& style) override {
        const HFONT font = look_ == Look::kStrong ? style.Strong() : style.Plain();
        Send(WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    }

  private:
    Control& model_;
    Look look_;
};

class ButtonWindow : public LeafWindow {
  public:
    ButtonWindow(HWND parent, Button& model, DWORD kind = BS_PUSHBUTTON)
        : LeafWindow(parent, L"BUTTON", Caption(model.Caption()), kind | WS_TABSTOP),
          model_(model) {}
    void Show() override { SetText(Caption(model_.Caption())); }
    void Notify(WORD code) override {
        if (code == BN_CLICKED)
            model_.Click();
    }
    void Press() override { model_.Click(); }

  private:
    Button& model_;
};

// In amber, which the system's buttons do not know.
class CarefulButtonWindow : public ButtonWindow {
  public:
    CarefulButtonWindow(HWND parent, Button& model) : ButtonWindow(parent, model, BS_OWNERDRAW) {}
    void Draw(const DRAWITEMSTRUCT& drawn) override;

  protected:
    std::optional<LRESULT> Take(UINT message, WPARAM w, LPARAM l) override {
        if (message == WM_LBUTTONDBLCLK) // presses twice, as other buttons do
            return Send(WM_LBUTTONDOWN, w, l);
        return std::nullopt;
    }
};

void CarefulButtonWindow::Draw(const DRAWITEMSTRUCT& drawn) {
    const bool enabled = (drawn.itemState & ODS_DISABLED) == 0;
    const bool pressed = (drawn.itemState & ODS_SELECTED) != 0;
    const HDC context = drawn.hDC;
    RECT rect = drawn.rcItem;
    SetDCBrushColor(context, !enabled  ? GetSysColor(COLOR_BTNFACE)
                             : pressed ? kCarefulPressed
                                       : kCareful);
    SetDCPenColor(context, enabled ? kCarefulEdge : GetSysColor(COLOR_BTNSHADOW));
    const HGDIOBJ brush = SelectObject(context, GetStockObject(DC_BRUSH));
    const HGDIOBJ pen = SelectObject(context, GetStockObject(DC_PEN));
    const int corner = (rect.bottom - rect.top) / 6;
    FillRect(context, &rect, GetSysColorBrush(COLOR_BTNFACE)); // what the corners leave
    RoundRect(context, rect.left, rect.top, rect.right, rect.bottom, corner, corner);
    SelectObject(context, brush);
    SelectObject(context, pen);
    std::wstring caption(std::size_t(GetWindowTextLengthW(Window())) + 1, L'\0');
    caption.resize(std::size_t(GetWindowTextW(Window(), caption.data(), int(caption.size()))));
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, enabled ? kCarefulLetters : GetSysColor(COLOR_GRAYTEXT));
    DrawTextW(context, caption.c_str(), -1, &rect, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

class CheckWindow : public LeafWindow {
  public:
    CheckWindow(HWND parent, CheckBox& model)
        : LeafWindow(parent, L"BUTTON", Caption(model.Caption()), BS_AUTOCHECKBOX | WS_TABSTOP),
          model_(model) {}
    void Show() override { Send(BM_SETCHECK, model_.Checked() ? BST_CHECKED : BST_UNCHECKED); }
    void Notify(WORD code) override {
        if (code == BN_CLICKED)
            model_.SetChecked(Send(BM_GETCHECK) == BST_CHECKED);
    }
    void Press() override {
        model_.SetChecked(!model_.Checked());
        Show();
    }

  private:
    CheckBox& model_;
};

DWORD EditStyle(Look look) {
    switch (look) {
    case Look::kSecret:
        return ES_AUTOHSCROLL | ES_PASSWORD;
    case Look::kReadOnly:
        return ES_AUTOHSCROLL | ES_READONLY;
    case Look::kMultiLine:
        return ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN | WS_VSCROLL;
    case Look::kReadOnlyLines:
        return ES_MULTILINE | ES_AUTOVSCROLL | ES_READONLY | WS_VSCROLL;
    case Look::kPlain:
    case Look::kStrong:
    case Look::kCareful:
        break;
    }
    return ES_AUTOHSCROLL;
}

class BoxWindow : public LeafWindow {
  public:
    BoxWindow(HWND parent, TextBox& model, const LayoutNode& leaf)
        : BoxWindow(MakeTitle(parent, leaf.title), parent, model, EditStyle(leaf.look)) {}
    ~BoxWindow() override { DestroyWindow(title_); }

    void Show() override {
        showing_ = true;
        SetText(model_.Value()); // a text that is too long shows its beginning
        showing_ = false;
    }
    void SetStyle(const Style& style) override;
    void Place(const Rect& rect, const Style& style) override;
    void SetVisible(bool visible) override {
        LeafWindow::SetVisible(visible);
        ShowWindow(title_, visible ? SW_SHOWNA : SW_HIDE);
    }
    void Notify(WORD code) override;

  protected:
    std::optional<LRESULT> Take(UINT message, WPARAM w, LPARAM l) override;

  private:
    // The title stands before the box, so that who reads the screen out takes it for its name.
    BoxWindow(HWND title, HWND parent, TextBox& model, DWORD style)
        : LeafWindow(parent, L"EDIT", u"", style | WS_TABSTOP, WS_EX_CLIENTEDGE), title_(title),
          model_(model), lines_((style & ES_MULTILINE) != 0) {
        Send(EM_SETLIMITTEXT, 0); // as much as there is memory
    }
    static HWND MakeTitle(HWND parent, const Text& title) {
        return CreateWindowExW(0, L"STATIC", Wide(title).c_str(), WS_CHILD | SS_RIGHT | kTextStyle,
                               0, 0, 0, 0, parent, nullptr, GetModuleHandleW(nullptr), nullptr);
    }

    void Center(RECT& client) const;
    void PaintAbove();

    HWND title_;
    TextBox& model_;
    const bool lines_;
    int title_width_ = 0;
    int text_height_ = 0;
    bool showing_ = false; // changes are the model's
};

void BoxWindow::SetStyle(const Style& style) {
    LeafWindow::SetStyle(style);
    SendMessageW(title_, WM_SETFONT, reinterpret_cast<WPARAM>(style.Plain()), TRUE);
    Text title(std::size_t(GetWindowTextLengthW(title_)) + 1, u'\0');
    title.resize(std::size_t(
        GetWindowTextW(title_, reinterpret_cast<wchar_t*>(title.data()), int(title.size()))));
    const int lean = 1; // of the last letter over its place
    title_width_ = title.empty() ? 0 : style.Metrics().text_width(title) + lean;
    text_height_ = style.TextHeight();
}

void BoxWindow::Place(const Rect& rect, const Style& style) {
    LeafWindow::Place(rect, style);
    const int gap = style.Metrics().Pixels(kTitleGap);
    const int height = lines_ ? std::min(style.LineHeight() + 2 * gap, rect.h) : rect.h;
    SetWindowPos(title_, nullptr, rect.x - gap - title_width_, rect.y, title_width_, height,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

void BoxWindow::Notify(WORD code) {
    if (code == EN_CHANGE && !showing_) {
        Text value(std::size_t(GetWindowTextLengthW(Window())) + 1, u'\0');
        value.resize(std::size_t(
            GetWindowTextW(Window(), reinterpret_cast<wchar_t*>(value.data()), int(value.size()))));
        model_.SetValue(std::move(value));
    } else if (code == EN_KILLFOCUS) {
        if (!lines_ && GetFocus()) { // gone on to another control, not to another program
            Send(EM_SETSEL, 0, 0);
            Send(EM_SCROLLCARET);
        }
        model_.Leave();
    }
}

// The system writes a single line at the very top, which shows in a box as high as a button. What
// is above the line belongs to the frame, so that it stands in the middle.
void BoxWindow::Center(RECT& client) const {
    client.top += std::max(int(client.bottom - client.top) - text_height_, 0) / 2;
}

void BoxWindow::PaintAbove() {
    RECT window{};
    GetWindowRect(Window(), &window);
    RECT above{};
    GetClientRect(Window(), &above);
    MapWindowPoints(Window(), nullptr, reinterpret_cast<POINT*>(&above), 2);
    OffsetRect(&above, int(-window.left), int(-window.top));
    const LONG edge = above.left;
    above.bottom = above.top;
    above.top = edge;
    const bool plain =
        IsWindowEnabled(Window()) && (GetWindowLongW(Window(), GWL_STYLE) & ES_READONLY) == 0;
    const HDC context = GetWindowDC(Window());
    FillRect(context, &above, GetSysColorBrush(plain ? COLOR_WINDOW : COLOR_BTNFACE));
    ReleaseDC(Window(), context);
}

std::optional<LRESULT> BoxWindow::Take(UINT message, WPARAM w, LPARAM l) {
    constexpr WPARAM kControlA = 1;
    if (message == WM_CHAR && w == kControlA) {
        Send(EM_SETSEL, 0, -1); // older systems only beep
        return 0;
    }
    if (lines_)
        return std::nullopt;
    if (message == WM_NCCALCSIZE) {
        const LRESULT result = Default(message, w, l);
        Center(*reinterpret_cast<RECT*>(l)); // the first of the rectangles, where there are three
        return result;
    }
    if (message == WM_NCPAINT) {
        Default(message, w, l);
        PaintAbove();
        return 0;
    }
    if (message == WM_NCHITTEST)
        return HTCLIENT;
    return std::nullopt;
}

} // namespace

std::unique_ptr<LeafWindow> MakeLeafWindow(HWND parent, const LayoutNode& leaf, const Form& form) {
    if (leaf.control.empty())
        return std::make_unique<HeadingWindow>(parent, leaf.title);
    Control& control = *form.Find(leaf.control);
    if (auto* const button = dynamic_cast<Button*>(&control)) {
        if (leaf.look == Look::kCareful)
            return std::make_unique<CarefulButtonWindow>(parent, *button);
        return std::make_unique<ButtonWindow>(parent, *button);
    }
    if (auto* const check = dynamic_cast<CheckBox*>(&control))
        return std::make_unique<CheckWindow>(parent, *check);
    if (auto* const list = dynamic_cast<ListBox*>(&control))
        return MakeListWindow(parent, *list);
    if (auto* const text = dynamic_cast<TextBox*>(&control))
        return std::make_unique<BoxWindow>(parent, *text, leaf);
    return std::make_unique<LabelWindow>(parent, control, leaf.look);
}

} // namespace tarnex
