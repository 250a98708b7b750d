#pragma once

#include "adapters/windows/windows_headers.h"
#include "ui/layout.h"

namespace tarnex {

// The scroll bars of a window and what they do to its children. Pixels everywhere.
class Scroller {
  public:
    // The bars that a sheet needs come, others go; so the window gets a WM_SIZE within the call.
    void SetUp(HWND window, const Sheet& sheet);
    // Where what is placed on the sheet stands in the window.
    Rect InWindow(Rect rect) const {
        return {rect.x - corner_.w, rect.y - corner_.h, rect.w, rect.h};
    }
    // Of a bar or the wheel. line: what one step moves; false: another message.
    bool Take(UINT message, WPARAM w, int line);
    // Scrolls as little as it can for that child to be seen, with a margin around it.
    void Reveal(HWND child, int margin);

  private:
    void TakeBar(int bar, WPARAM w, int line);
    void Scroll(int bar, int by);

    HWND window_ = nullptr;
    Sheet sheet_;
    Size corner_; // of the window, on the sheet
};

} // namespace tarnex
