#pragma once

#include "adapters/asio/asio_loop.h"
#include "adapters/system/screen_view.h"
#include "adapters/system/view_process.h"
#include "ui/form_feed.h"

#include <map>
#include <set>

namespace tarnex {

// Shows the windows in a process of their own, which has copies of the forms: a display that does
// not read, a crash or an error of the window system cost that process and no more.
//
// The process runs while a form is visible. One packet of changes is on its way at a time, and the
// next one leaves when that one stands on the screen.
class RemoteView : public SystemView {
  public:
    explicit RemoteView(ViewHost host);
    ~RemoteView() override;

    // Starts the process and waits for its screen.
    std::string Open() override;
    std::unique_ptr<FormWindow> Attach(Form& form) override;
    FileDialog& Files() override { return feed_; }

  private:
    class Window;

    // "" when it runs, else the trouble.
    std::string Start();
    void FormShown();
    void FormHidden();
    void Arrived(const std::string& packet);
    void TakeNotice(const std::string& line);
    void Ended(std::uint64_t run, const std::string& how);
    void NoneIsShown(const std::string& trouble);
    void FlushSoon();
    void Flush();
    bool Reads() const;

    ViewHost host_;
    FormFeed feed_;
    std::unique_ptr<ViewProcess> process_;
    std::uint64_t run_ = 0;                                        // counts the processes
    std::map<std::uint64_t, std::unique_ptr<ViewProcess>> ending_; // killed, by their runs
    bool ready_ = false;                                           // it has its screen
    bool owes_ = false; // an answer to the start or a packet
    Duration owes_since_{};
    std::string trouble_;           // in its own words
    std::set<std::string> notices_; // told, each once
    bool said_ = false;             // that no window can be shown
    CallId flush_;
    bool flush_pending_ = false;
};

} // namespace tarnex
