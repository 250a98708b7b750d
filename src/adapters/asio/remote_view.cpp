#include "adapters/asio/remote_view.h"

#include "adapters/asio/loop_core.h"
#include "platform/text.h"

#include <algorithm>

namespace tarnex {

namespace {

// What changes within that time is drawn at once.
constexpr Duration kFrame = 30ms;
// After that time without an answer nobody sees the windows, whatever the reason.
constexpr Duration kPatience = 5s;

constexpr std::size_t kMostNotices = 20;
constexpr std::size_t kLongestWords = 300; // bytes

// What the process says, so that it cannot pass for anything else in a terminal or a journal.
std::string InItsWords(std::string_view words) {
    const bool cut = words.size() > kLongestWords;
    return EscapeControls(words.substr(0, kLongestWords)) + (cut ? "..." : "");
}

} // namespace

class RemoteView::Window : public FormWindow {
  public:
    Window(RemoteView& view, Form& form) : view_(view), form_(form) { view_.feed_.Watch(form_); }
    ~Window() override { view_.feed_.Unwatch(form_); }
    bool Shown() const override { return form_.Visible() && view_.Reads(); }

  private:
    RemoteView& view_;
    Form& form_;
};

RemoteView::RemoteView(ViewHost host)
    : host_(std::move(host)), feed_({.shown = [this] { FormShown(); },
                                     .hidden = [this] { FormHidden(); },
                                     .changed = [this] { FlushSoon(); }}) {}

RemoteView::~RemoteView() {
    host_.loop.Cancel(flush_);
}

std::unique_ptr<FormWindow> RemoteView::Attach(Form& form) {
    return std::make_unique<Window>(*this, form);
}

std::string RemoteView::Start() {
    const std::uint64_t run = ++run_;
    feed_.Forget();
    trouble_.clear();
    ready_ = false;
    auto started = ViewProcess::Start(
        host_.loop, {.arrived =
                         [this, run](const std::string& packet) {
                             if (run == run_)
                                 Arrived(packet);
                         },
                     .ended = [this, run](const std::string& how) { Ended(run, how); }});
    process_ = started ? std::move(*started) : nullptr;
    owes_ = true;
    owes_since_ = host_.loop.Now();
    return started.TroubleText();
}

std::string RemoteView::Open() {
    if (std::string trouble = Start(); !trouble.empty())
        return trouble;
    while (process_ && !ready_)
        host_.loop.core().io.run_one();
    return process_ ? "" : trouble_;
}

void RemoteView::FormShown() {
    if (process_)
        return;
    if (const std::string trouble = Start(); !trouble.empty())
        NoneIsShown(trouble);
}

void RemoteView::NoneIsShown(const std::string& trouble) {
    feed_.HideAll();
    if (!std::exchange(said_, true))
        host_.notice("no window can be shown: " + trouble + ". Going on without");
}

void RemoteView::FormHidden() {
    if (!process_ || feed_.AnyVisible())
        return;
    process_->Kill();
    ending_[run_++] = std::move(process_);
}

void RemoteView::FlushSoon() {
    if (!process_ || owes_ || flush_pending_ || !feed_.Pending())
        return;
    flush_pending_ = true;
    flush_ = host_.loop.CallAfter(kFrame, [this] {
        flush_pending_ = false;
        Flush();
    });
}

void RemoteView::Flush() {
    if (!process_ || owes_ || !feed_.Pending())
        return;
    owes_ = true;
    owes_since_ = host_.loop.Now();
    if (!process_->Send(feed_.NextPacket()))
        process_->Kill(); // it has ended, or something is wrong with it: that is told then
}

bool RemoteView::Reads() const {
    return process_ && !(owes_ && host_.loop.Now() - owes_since_ > kPatience);
}

void RemoteView::Arrived(const std::string& packet) {
    WireReader reader(packet);
    switch (reader.Begin<ViewRecord>()) {
    case ViewRecord::kReady:
        ready_ = true;
        owes_ = false;
        Flush();
        break;
    case ViewRecord::kSeen:
        owes_ = false;
        FlushSoon();
        break;
    case ViewRecord::kTrouble:
        trouble_ = InItsWords(reader.String());
        break;
    case ViewRecord::kNotice:
        TakeNotice(InItsWords(reader.String()));
        break;
    default:
        feed_.Take(packet);
    }
}

void RemoteView::TakeNotice(const std::string& line) {
    if (notices_.size() < kMostNotices && notices_.insert(line).second)
        host_.notice(line);
}

void RemoteView::Ended(std::uint64_t run, const std::string& how) {
    if (run != run_) {
        ending_.erase(run);
        return;
    }
    const auto ended = std::move(process_);
    const std::string why = trouble_.empty() ? how : trouble_;
    trouble_ = why;
    if (ready_) {
        feed_.HideAll();
        host_.lost(why);
    } else if (feed_.AnyVisible()) {
        NoneIsShown(why);
    }
}

std::unique_ptr<SystemView> MakeView(ViewHost host) {
    return std::make_unique<RemoteView>(std::move(host));
}

} // namespace tarnex
