#pragma once

#include "ui/file_dialog.h"

#include <memory>

#include <FL/Fl_File_Chooser.H>

namespace tarnex {

// FLTK's file dialog, shown without a loop of its own.
class FltkFileDialog : public FileDialog {
  public:
    // scale: of the screen, 1 at 96 dpi.
    explicit FltkFileDialog(double scale) : scale_(scale) {}
    void Show(const Text& filter, std::function<void(const std::string& path)> chosen) override;
    void Withdraw() override { chooser_.reset(); }
    // Hands over what the operator has chosen, if that is so. Not from within an FLTK callback.
    void TakeAnswer();

  private:
    double scale_;
    std::unique_ptr<Fl_File_Chooser> chooser_; // while the dialog is open
    std::function<void(const std::string& path)> chosen_;
};

} // namespace tarnex
