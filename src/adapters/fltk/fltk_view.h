#pragma once

#include "adapters/fltk/fltk_file_dialog.h"
#include "ui/form_copies.h"
#include "ui/layout.h"

#include <deque>

namespace tarnex {

// Shows copies of the forms of the program at the other end of a socket, in FLTK's own loop.
class FltkView {
  public:
    using LayoutOf = std::function<Layout(const Form& form)>;

    // The screen is open. socket: of whole packets; it stays the caller's.
    FltkView(int socket, double scale, LayoutOf layout_of);
    FltkView(const FltkView&) = delete;
    FltkView& operator=(const FltkView&) = delete;

    // Sends one packet. What the other end does not want to know any more is lost.
    static void Send(int socket, const std::string& packet);
    // Shows windows until the other end is gone.
    void Run();

  private:
    void Receive();

    const int socket_;
    const ScreenMetrics metrics_;
    const LayoutOf layout_of_;
    FltkFileDialog file_dialog_;
    FormCopies copies_;
    std::deque<std::string> arrived_;
};

} // namespace tarnex
