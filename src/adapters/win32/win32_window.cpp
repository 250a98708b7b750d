#include "adapters/win32/win32_window.h"

#include <algorithm>
#include <utility>

#include <commctrl.h>

namespace tarnex {

namespace {

constexpr wchar_t kType[] = L"TarnexWindow";
constexpr int kIcon = 1; // among the program's resources
constexpr DWORD kWindowStyle = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
constexpr int kFocusFrame = 2;     // width in pixels at 96 dpi
constexpr int kSeenMargin = 10;    // the same, around what is scrolled to
constexpr int kHintEms = 30;       // width of a hint of several lines
constexpr UINT kHintTime = 32'000; // ms; the system takes no more

Win32Window* WindowOf(HWND window) {
    return reinterpret_cast<Win32Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

RECT WorkArea(HWND window) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
    return monitor.rcWork;
}

std::wstring HintText(const LayoutNode& leaf) {
    std::wstring hint = Wide(leaf.hint);
    if (leaf.key != 0)
        hint += std::wstring(L"（Alt+") + wchar_t(leaf.key) + L"）";
    return hint;
}

} // namespace

void Win32Window::RegisterType() {
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_STANDARD_CLASSES | ICC_WIN95_CLASSES};
    InitCommonControlsEx(&controls);
    WNDCLASSEXW type{};
    type.cbSize = sizeof type;
    type.lpfnWndProc = Procedure;
    type.hInstance = GetModuleHandleW(nullptr);
    type.hIcon = LoadIconW(type.hInstance, MAKEINTRESOURCEW(kIcon));
    type.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    type.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    type.lpszClassName = kType;
    RegisterClassExW(&type);
}

Win32Window::Win32Window(Form& form, Layout layout)
    : form_(form), layout_(std::move(layout)), form_width_(form.Width()) {
    CreateWindowExW(WS_EX_CONTROLPARENT, kType, L"", kWindowStyle | WS_HSCROLL | WS_VSCROLL,
                    CW_USEDEFAULT, CW_USEDEFAULT, 0, 0, nullptr, nullptr, GetModuleHandleW(nullptr),
                    this);
    MakeLeaves(layout_.root);
    MakeHints();
    // The blue frame shows where the focus is.
    SendMessageW(window_, WM_CHANGEUISTATE, MAKEWPARAM(UIS_SET, UISF_HIDEFOCUS), 0);
    SetDpi(GetDpiForWindow(window_));
    const int width =
        form_width_ ? Metrics().FromTwips(form_width_) : Metrics().Pixels(layout_.width);
    ShowControls();
    ShowForm();
    SetSize({width, Metrics().Pixels(layout_.height)});
    Arrange();
    ShowWindow(window_, SW_SHOWNORMAL);
    SetForegroundWindow(window_);
}

Win32Window::~Win32Window() {
    leaves_.clear();
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
}

void Win32Window::ControlChanged(Control& control) {
    if (const auto leaf = leaf_of_.find(&control); leaf != leaf_of_.end())
        leaf->second->changed = true;
}

// In the order of the layout, in which Tab leads from one to the next.
void Win32Window::MakeLeaves(const LayoutNode& node) {
    for (const LayoutNode& child : node.children)
        MakeLeaves(child);
    if (!node.children.empty() || node.kind == LayoutNode::Kind::kSpace)
        return;
    Control* const control = node.control.empty() ? nullptr : form_.Find(node.control);
    Leaf& leaf = leaves_[&node];
    leaf = {.window = MakeLeafWindow(window_, node, form_), .control = control, .shape = {}};
    if (control)
        leaf_of_[control] = &leaf;
}

void Win32Window::MakeHints() {
    hints_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                             WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0, 0, window_, nullptr,
                             GetModuleHandleW(nullptr), nullptr);
    SendMessageW(hints_, TTM_SETDELAYTIME, TTDT_AUTOPOP, kHintTime);
    for (const auto& [node, leaf] : leaves_) {
        std::wstring hint = HintText(*node);
        if (hint.empty())
            continue;
        TTTOOLINFOW tool{};
        tool.cbSize = sizeof tool;
        tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
        tool.hwnd = window_;
        tool.uId = reinterpret_cast<UINT_PTR>(leaf.window->Window());
        tool.lpszText = hint.data();
        SendMessageW(hints_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }
}

void Win32Window::SetDpi(UINT dpi) {
    auto style = std::make_unique<Style>(dpi);
    for (auto& [node, leaf] : leaves_)
        leaf.window->SetStyle(*style);
    SendMessageW(hints_, WM_SETFONT, reinterpret_cast<WPARAM>(style->Plain()), TRUE);
    SendMessageW(hints_, TTM_SETMAXTIPWIDTH, 0, kHintEms * style->Metrics().em);
    style_ = std::move(style); // nobody has the fonts of the one before any more
}

void Win32Window::Refresh() {
    ShowControls();
    if (form_changed_)
        ShowForm();
    RedrawWindow(window_, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
}

void Win32Window::ShowControls() {
    bool shapes_changed = false;
    for (auto& [control, leaf] : leaf_of_) {
        if (!std::exchange(leaf->changed, false))
            continue;
        const HWND window = leaf->window->Window();
        leaf->window->Show();
        if (control->Enabled())
            EnableWindow(window, TRUE);
        else
            Withdraw(*leaf->window, [window] { EnableWindow(window, FALSE); });
        Shape shape{control->Visible(), control->Width(), control->Caption()};
        if (shape != leaf->shape) {
            leaf->shape = std::move(shape);
            shapes_changed = true;
        }
    }
    if (shapes_changed && IsWindowVisible(window_))
        Fit();
    if (GetFocus() == window_)
        GiveFocusBack();
}

void Win32Window::ShowForm() {
    form_changed_ = false;
    SetWindowTextW(window_, Wide(form_.Caption()).c_str());
    if (form_.Width() != form_width_) {
        form_width_ = form_.Width();
        SetSize({Metrics().FromTwips(form_width_), ClientSize().h});
    }
}

// Many a procedure disables all buttons while it runs: whoever works by keyboard goes on where he
// was, and meanwhile what he types goes nowhere.
template <class Fn>
void Win32Window::Withdraw(LeafWindow& leaf, Fn withdraw) {
    if (GetFocus() == leaf.Window()) {
        focus_ = nullptr;
        SetFocus(window_);
        focus_ = leaf.Window();
    }
    withdraw();
}

void Win32Window::GiveFocusBack() {
    if (focus_ && IsWindowEnabled(focus_) && IsWindowVisible(focus_))
        SetFocus(std::exchange(focus_, nullptr));
}

Size Win32Window::ClientSize() const {
    RECT rect{};
    GetWindowRect(window_, &rect);
    return Inside(rect);
}

Size Win32Window::Frame() const {
    RECT rect{};
    AdjustWindowRectExForDpi(&rect, kWindowStyle, FALSE, WS_EX_CONTROLPARENT, style_->Dpi());
    return {int(rect.right - rect.left), int(rect.bottom - rect.top)};
}

Size Win32Window::Largest() const {
    return Inside(WorkArea(window_));
}

Size Win32Window::Inside(const RECT& window) const {
    const Size frame = Frame();
    return {int(window.right - window.left) - frame.w, int(window.bottom - window.top) - frame.h};
}

void Win32Window::SetSize(Size size) {
    if (IsZoomed(window_) || IsIconic(window_))
        return;
    const Size largest = Largest();
    const Size least = Least();
    size = {std::clamp(size.w, least.w, largest.w), std::clamp(size.h, least.h, largest.h)};
    if (size == ClientSize())
        return;
    const Size frame = Frame();
    const int width = size.w + frame.w;
    const int height = size.h + frame.h;
    const RECT area = WorkArea(window_);
    RECT now{};
    GetWindowRect(window_, &now);
    const int left = std::max(std::min(int(now.left), int(area.right) - width), int(area.left));
    const int top = std::max(std::min(int(now.top), int(area.bottom) - height), int(area.top));
    SetWindowPos(window_, nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void Win32Window::Arrange() {
    const Sheet sheet = SheetOf(layout_.root, form_, Metrics(), ClientSize());
    scroller_.SetUp(window_, sheet);
    std::map<const LayoutNode*, Rect> rects;
    for (const Placed& placed : Place(layout_.root, form_, Metrics(), sheet.whole))
        rects[placed.node] = scroller_.InWindow(placed.rect);
    for (auto& [node, leaf] : leaves_) {
        LeafWindow& window = *leaf.window;
        if (const auto found = rects.find(node); found != rects.end()) {
            window.Place(found->second, *style_);
            window.SetVisible(true);
        } else {
            Withdraw(window, [&window] { window.SetVisible(false); });
        }
    }
    InvalidateRect(window_, nullptr, TRUE);
}

void Win32Window::FocusOn(HWND leaf) {
    SetFocus(leaf);
    scroller_.Reveal(leaf, Metrics().Pixels(kSeenMargin));
}

// Around the leaf with the focus.
void Win32Window::PaintFocus() {
    PAINTSTRUCT paint{};
    const HDC context = BeginPaint(window_, &paint);
    if (framed_) {
        RECT rect{};
        GetWindowRect(framed_, &rect);
        MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&rect), 2);
        for (int width = Metrics().Pixels(kFocusFrame); width > 0; --width) {
            InflateRect(&rect, 1, 1);
            FrameRect(context, &rect, GetSysColorBrush(COLOR_HIGHLIGHT));
        }
    }
    EndPaint(window_, &paint);
}

void Win32Window::MoveFocusFrame() {
    const HWND focus = GetFocus();
    const HWND framed = IsChild(window_, focus) ? focus : nullptr;
    if (framed)
        focus_ = nullptr; // the operator has moved it
    if (framed == framed_)
        return;
    for (const HWND leaf : {std::exchange(framed_, framed), framed}) {
        if (!leaf)
            continue;
        RECT rect{};
        GetWindowRect(leaf, &rect);
        MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&rect), 2);
        const int width = Metrics().Pixels(kFocusFrame);
        InflateRect(&rect, width, width);
        InvalidateRect(window_, &rect, TRUE);
    }
}

LRESULT CALLBACK Win32Window::Procedure(HWND window, UINT message, WPARAM w, LPARAM l) {
    if (message == WM_NCCREATE) {
        auto* const made =
            static_cast<Win32Window*>(reinterpret_cast<const CREATESTRUCTW*>(l)->lpCreateParams);
        made->window_ = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
    }
    Win32Window* const self = WindowOf(window);
    if (self && self->style_)
        if (const auto result = self->Take(message, w, l))
            return *result;
    return DefWindowProcW(window, message, w, l);
}

std::optional<LRESULT> Win32Window::Take(UINT message, WPARAM w, LPARAM l) {
    switch (message) {
    case WM_CLOSE:
        form_.Close();
        return 0;
    case WM_SIZE:
        if (w != SIZE_MINIMIZED)
            Arrange();
        return 0;
    case WM_GETMINMAXINFO: {
        const Size least = Least();
        const Size frame = Frame();
        reinterpret_cast<MINMAXINFO*>(l)->ptMinTrackSize = {least.w + frame.w, least.h + frame.h};
        return 0;
    }
    case WM_DPICHANGED: {
        const RECT& wanted = *reinterpret_cast<const RECT*>(l);
        SetDpi(HIWORD(w));
        SetWindowPos(window_, nullptr, wanted.left, wanted.top, wanted.right - wanted.left,
                     wanted.bottom - wanted.top, SWP_NOZORDER | SWP_NOACTIVATE);
        Fit();
        return 0;
    }
    case WM_DISPLAYCHANGE:
    case WM_SETTINGCHANGE: // perhaps the size of the system's letters, or the room on the screen
        SetDpi(style_->Dpi());
        Fit();
        return 0;
    case WM_SYSCOMMAND: // Alt alone, or with a letter that the system has not seen: there is no
                        // menu
        if ((w & 0xFFF0) == SC_KEYMENU && l == 0)
            return 0;
        return std::nullopt;
    case WM_ACTIVATE:
        if (LOWORD(w) == WA_INACTIVE && IsChild(window_, GetFocus()))
            focus_ = GetFocus();
        return std::nullopt;
    case WM_SETFOCUS:
        GiveFocusBack();
        return 0;
    case kFocusMoved:
        MoveFocusFrame();
        return 0;
    case WM_COMMAND:
        if (LeafWindow* const leaf = l ? LeafWindow::Of(reinterpret_cast<HWND>(l)) : nullptr)
            leaf->Notify(HIWORD(w));
        return 0;
    case WM_DRAWITEM: {
        const auto& drawn = *reinterpret_cast<const DRAWITEMSTRUCT*>(l);
        if (LeafWindow* const leaf = LeafWindow::Of(drawn.hwndItem))
            leaf->Draw(drawn);
        return TRUE;
    }
    case WM_PAINT:
        PaintFocus();
        return 0;
    default:
        if (scroller_.Take(message, w, style_->LineHeight()))
            return 0;
        return std::nullopt;
    }
}

bool Win32Window::TakeKey(const MSG& message) {
    if (message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN)
        return false;
    const HWND top = GetAncestor(message.hwnd, GA_ROOT);
    Win32Window* const window =
        GetClassLongPtrW(top, GCLP_WNDPROC) == reinterpret_cast<ULONG_PTR>(Procedure)
            ? WindowOf(top)
            : nullptr;
    return window && window->TakeKeyDown(message);
}

bool Win32Window::TakeKeyDown(const MSG& message) {
    constexpr LPARAM kHeld = 1 << 30; // the key was down before
    const HWND focus = GetFocus();
    const bool first = (message.lParam & kHeld) == 0;
    if (message.message == WM_SYSKEYDOWN) {
        const bool named = (message.wParam >= 'A' && message.wParam <= 'Z') ||
                           (message.wParam >= '0' && message.wParam <= '9');
        if (named && first)
            PressByKey(char(message.wParam));
        return named;
    }
    if (message.wParam == VK_TAB && GetKeyState(VK_CONTROL) >= 0) {
        const HWND next = GetNextDlgTabItem(window_, IsChild(window_, focus) ? focus : nullptr,
                                            GetKeyState(VK_SHIFT) < 0);
        if (next)
            FocusOn(next);
        return true;
    }
    if (message.wParam == VK_RETURN && IsChild(window_, focus) &&
        (SendMessageW(focus, WM_GETDLGCODE, 0, 0) & DLGC_BUTTON) != 0) {
        if (LeafWindow* const leaf = LeafWindow::Of(focus); leaf && first)
            leaf->Press();
        return true;
    }
    return false;
}

void Win32Window::PressByKey(char key) {
    for (auto& [node, leaf] : leaves_) {
        const HWND window = leaf.window->Window();
        if (node->key != key || !IsWindowVisible(window) || !IsWindowEnabled(window))
            continue;
        FocusOn(window);
        leaf.window->Press();
        return;
    }
}

} // namespace tarnex
