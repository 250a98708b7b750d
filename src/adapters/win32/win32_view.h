#pragma once

#include "adapters/win32/ui_queue.h"
#include "adapters/win32/view_pipe.h"
#include "adapters/win32/win32_file_dialog.h"
#include "ui/form_copies.h"
#include "ui/layout.h"

namespace tarnex {

// Shows copies of the forms of the process at the other end of a pipe.
class Win32View {
  public:
    using LayoutOf = std::function<Layout(const Form& form)>;

    // The pipe must outlive the view.
    Win32View(ViewPipe& pipe, LayoutOf layout_of);
    Win32View(const Win32View&) = delete;
    Win32View& operator=(const Win32View&) = delete;

    // Shows windows until the other end is gone, which ends the process.
    void Run();

  private:
    void Apply(const std::string& packet);

    ViewPipe& pipe_;
    const LayoutOf layout_of_;
    UiQueue queue_;
    Win32FileDialog file_dialog_;
    FormCopies copies_;
};

} // namespace tarnex
