#pragma once

#include "adapters/win32/style.h"
#include "ui/layout.h"

#include <optional>

namespace tarnex {

// What a leaf posts to its parent after the input focus has come or gone.
inline constexpr UINT kFocusMoved = WM_APP;

// One leaf of a layout as a window of the system: shows the control's state and sends back what the
// operator does.
class LeafWindow {
  public:
    virtual ~LeafWindow();
    LeafWindow(const LeafWindow&) = delete;
    LeafWindow& operator=(const LeafWindow&) = delete;

    // The leaf that has made the window; nullptr for others.
    static LeafWindow* Of(HWND window);

    HWND Window() const { return window_; }
    // Takes over what the control holds; whether it is visible and enabled is the caller's.
    virtual void Show() {}
    virtual void SetStyle(const Style& style);
    virtual void Place(const Rect& rect, const Style& style);
    virtual void SetVisible(bool visible);
    // A code of a WM_COMMAND from it.
    virtual void Notify(WORD) {}
    // A WM_DRAWITEM of it.
    virtual void Draw(const DRAWITEMSTRUCT&) {}
    // By the key of its layout, or by Enter.
    virtual void Press() {}

  protected:
    // Made invisible, without size.
    LeafWindow(HWND parent, const wchar_t* type, const Text& text, DWORD style, DWORD ex_style = 0);
    // A message to it before the system's own treatment, which then is left out if there is a
    // result.
    virtual std::optional<LRESULT> Take(UINT, WPARAM, LPARAM) { return std::nullopt; }
    LRESULT Default(UINT message, WPARAM w, LPARAM l) const;
    void SetText(const Text& text);
    LRESULT Send(UINT message, WPARAM w = 0, LPARAM l = 0) const {
        return SendMessageW(window_, message, w, l);
    }

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l, UINT_PTR,
                                      DWORD_PTR self);

    HWND window_;
};

// form has the control that the leaf names.
std::unique_ptr<LeafWindow> MakeLeafWindow(HWND parent, const LayoutNode& leaf, const Form& form);

// The same with a list of lines.
std::unique_ptr<LeafWindow> MakeListWindow(HWND parent, ListBox& list);

} // namespace tarnex
