#pragma once

#include "platform/fltk/fltk_file_dialog.h"
#include "platform/fltk/fltk_window.h"
#include "platform/fltk/screen.h"
#include "platform/view_module.h"

#include <vector>

namespace tarnex {

// Shows forms with FLTK, driven by the program's own loop: what arrives from the X server wakes
// it, and while windows are shown a tick gives FLTK its time-outs.
class FltkView : public ScreenView {
  public:
    FltkView(ViewHost host, std::unique_ptr<Screen> screen);
    ~FltkView() override;
    std::unique_ptr<FormWindow> Attach(Form& form) override;
    FileDialog& Files() override { return file_dialog_; }

  private:
    class Attached;

    void CheckScreen();
    void Tick();
    void RefreshSoon();
    void Refresh();
    bool AnyShown() const;

    ViewHost host_;
    std::unique_ptr<Screen> screen_;
    WindowScreen window_screen_;
    FltkFileDialog file_dialog_;
    std::vector<FltkWindow*> windows_; // as long as they are attached
    std::unique_ptr<DescriptorSource::Watch> watch_;
    CallId tick_;
    bool ticking_ = false;
    CallId refresh_;
    bool refresh_pending_ = false;
};

} // namespace tarnex
