#pragma once

#include "adapters/win32/leaf_window.h"
#include "adapters/win32/scroller.h"
#include "ui/form_copies.h"

#include <map>

namespace tarnex {

// The window of one form.
class Win32Window : public CopyWindow {
  public:
    // form must outlive the window.
    Win32Window(Form& form, Layout layout);
    ~Win32Window() override;

    // Once, before the first window.
    static void RegisterType();
    // Does what a key means to the window that has the input focus. False when it means nothing to
    // it, and the system is to have the message.
    static bool TakeKey(const MSG& message);

    void ControlChanged(Control& control) override;
    void FormChanged() override { form_changed_ = true; }
    // Shows what has changed in the form since the last call, and returns when it stands on the
    // screen.
    void Refresh() override;

  private:
    // What a control looked like when it was placed last.
    struct Shape {
        bool visible = false;
        int width = 0;
        Text caption;
        friend bool operator==(const Shape&, const Shape&) = default;
    };
    struct Leaf {
        std::unique_ptr<LeafWindow> window;
        Control* control; // nullptr: a heading
        bool changed = true;
        Shape shape;
    };

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
    // The window's own part of a message; nothing: the system's treatment is enough.
    std::optional<LRESULT> Take(UINT message, WPARAM w, LPARAM l);
    bool TakeKeyDown(const MSG& message);
    void PressByKey(char key);

    void MakeLeaves(const LayoutNode& node);
    void MakeHints();
    void SetDpi(UINT dpi);
    void ShowControls();
    void ShowForm();
    void Arrange();
    // Moves the focus there by keyboard.
    void FocusOn(HWND leaf);
    void PaintFocus();
    void MoveFocusFrame();
    // Disables or hides it. While the operator has not moved the focus, it comes back with it.
    template <class Fn>
    void Withdraw(LeafWindow& leaf, Fn withdraw);
    void GiveFocusBack();

    const ScreenMetrics& Metrics() const { return style_->Metrics(); }
    // With the scroll bars.
    Size ClientSize() const;
    // Around the client area, in pixels.
    Size Frame() const;
    Size Inside(const RECT& window) const;
    // The largest client area that is seen whole, and the smallest that an operator can make.
    Size Largest() const;
    Size Least() const { return LeastWindow(layout_.root, form_, Metrics(), Largest()); }
    // The client area's; never less than what is visible needs, as far as the screen has room, and
    // moved to where it is seen whole.
    void SetSize(Size size);
    void Fit() {
        SetSize(ClientSize());
        Arrange();
    }

    Form& form_;
    const Layout layout_;
    HWND window_ = nullptr;
    HWND hints_ = nullptr;
    std::unique_ptr<Style> style_;
    Scroller scroller_;
    std::map<const LayoutNode*, Leaf> leaves_;
    std::map<const Control*, Leaf*> leaf_of_;
    HWND focus_ = nullptr;  // has lost the focus to the window, and may get it back
    HWND framed_ = nullptr; // the leaf with a frame around it
    int form_width_;        // as the model had it last
    bool form_changed_ = true;
};

} // namespace tarnex
