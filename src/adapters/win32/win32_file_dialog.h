#pragma once

#include "adapters/win32/ui_queue.h"
#include "ui/file_dialog.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace tarnex {

// The system's file dialog, in a thread of its own: the windows go on meanwhile.
class Win32FileDialog : public FileDialog {
  public:
    // Brings the answers; it must outlive the dialog.
    explicit Win32FileDialog(UiQueue& queue) : queue_(queue) {}

    // The path in UTF-8.
    void Show(const Text& filter, std::function<void(const std::string& path)> chosen) override;
    void Withdraw() override;

  private:
    void Answer(std::uint64_t question, const std::string& path);

    UiQueue& queue_;
    std::uint64_t question_ = 0;                          // the last one
    DWORD thread_ = 0;                                    // that asks it
    std::function<void(const std::string& path)> chosen_; // nobody asks any more: none
};

} // namespace tarnex
