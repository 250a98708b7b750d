#pragma once

#include "ui/control_state.h"
#include "ui/file_dialog.h"

#include <map>
#include <memory>

namespace tarnex {

// The window of a copy. It is told of each change at once and shows them in Refresh(); it is gone
// when it is destroyed.
class CopyWindow : public FormObserver {
  public:
    virtual void Refresh() = 0;
};

// Copies of the forms of a FormFeed, and what an operator does to them.
class FormCopies {
  public:
    // Makes the window of a copy; the copy outlives it.
    using MakeWindow = std::function<std::unique_ptr<CopyWindow>(Form& copy)>;
    using Send = std::function<void(const std::string& packet)>;
    // dialog answers the questions of the feed; it must outlive the copies.
    FormCopies(MakeWindow make_window, FileDialog& dialog, Send send);
    ~FormCopies();
    FormCopies(const FormCopies&) = delete;
    FormCopies& operator=(const FormCopies&) = delete;

    // Takes over a packet of the feed and shows it. Not from within a window.
    void Apply(std::string_view packet);

  private:
    class Copy;

    void ApplyRecord(WireReader& packet);
    // nullptr when there is none of the number that comes next in the packet.
    Copy* Find(WireReader& packet);

    MakeWindow make_window_;
    FileDialog& dialog_;
    Send send_;
    std::map<std::uint64_t, std::unique_ptr<Copy>> copies_;
};

} // namespace tarnex
