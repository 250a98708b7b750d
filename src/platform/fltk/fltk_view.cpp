#include "platform/fltk/fltk_view.h"

#include "platform/fltk/style.h"

#include <algorithm>

#include <FL/Fl.H>

namespace tarnex {

namespace {

constexpr Duration kTick = 250ms;
// While a mouse button is held down, so that arrows of scroll bars repeat.
constexpr Duration kHeldTick = 50ms;
// What changes within that time is drawn at once.
constexpr Duration kFrame = 30ms;

} // namespace

class FltkView::Attached : public FltkWindow {
  public:
    Attached(FltkView& view, Form& form) : FltkWindow(form, view.window_screen_), view_(view) {
        view_.windows_.push_back(this);
    }
    ~Attached() override { std::erase(view_.windows_, this); }

  private:
    FltkView& view_;
};

FltkView::FltkView(ViewHost host, std::unique_ptr<Screen> screen)
    : host_(std::move(host)),
      screen_(std::move(screen)), window_screen_{.metrics = Metrics(screen_->Scale()),
                                                 .lost = [this] { return screen_->Lost(); },
                                                 .need_refresh = [this] { RefreshSoon(); }},
      file_dialog_(*screen_),
      watch_(host_.descriptors.WatchReadable(screen_->Descriptor(), [this] { CheckScreen(); })) {}

FltkView::~FltkView() {
    host_.clock.Cancel(tick_);
    host_.clock.Cancel(refresh_);
}

std::unique_ptr<FormWindow> FltkView::Attach(Form& form) {
    return std::make_unique<Attached>(*this, form);
}

bool FltkView::AnyShown() const {
    return std::ranges::any_of(windows_, [](const FltkWindow* window) { return window->Shown(); });
}

void FltkView::CheckScreen() {
    screen_->Check();
    if (screen_->Lost() && watch_) {
        watch_.reset();
        host_.lost();
    }
    file_dialog_.TakeAnswer();
}

void FltkView::Tick() {
    ticking_ = AnyShown();
    if (!ticking_)
        return;
    CheckScreen();
    tick_ = host_.clock.CallAfter(Fl::pushed() ? kHeldTick : kTick, [this] { Tick(); });
}

void FltkView::RefreshSoon() {
    if (refresh_pending_)
        return;
    refresh_pending_ = true;
    refresh_ = host_.clock.CallAfter(kFrame, [this] { Refresh(); });
}

void FltkView::Refresh() {
    refresh_pending_ = false;
    if (screen_->Lost())
        return;
    for (FltkWindow* window : windows_)
        window->Refresh();
    CheckScreen();
    if (!ticking_)
        Tick();
}

} // namespace tarnex
