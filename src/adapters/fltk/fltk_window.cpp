#include "adapters/fltk/fltk_window.h"

#include "adapters/fltk/style.h"

#include <algorithm>
#include <utility>

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Scroll.H>

namespace tarnex {

class FltkWindow::LaidOutWindow : public Fl_Double_Window {
  public:
    LaidOutWindow(FltkWindow& owner, Size size) : Fl_Double_Window(size.w, size.h), owner_(owner) {
        callback([](Fl_Widget* widget, void*) {
            // FLTK takes the Escape key for the wish to close a window.
            if (Fl::event() != FL_SHORTCUT)
                static_cast<LaidOutWindow&>(*widget).owner_.form_.Close();
        });
    }
    void resize(int x, int y, int w, int h) override {
        const bool other_size = w != this->w() || h != this->h();
        Fl_Double_Window::resize(x, y, w, h);
        if (other_size)
            owner_.Arrange();
    }
    int handle(int event) override {
        // FLTK would give the focus to the first widget whenever one is shown, hidden, enabled or
        // disabled, and when the operator comes back to the window.
        if (event == FL_FOCUS && owner_.focus_) {
            owner_.GiveFocusBack();
            return 1;
        }
        const int handled = Fl_Double_Window::handle(event);
        if (event != FL_UNFOCUS && Fl::focus() && Fl::focus() != this && contains(Fl::focus()))
            owner_.focus_ = nullptr; // the operator has moved it
        return handled;
    }

  private:
    FltkWindow& owner_;
};

// Everything stands on it. Where that is more than the window has room for, it scrolls.
class FltkWindow::ScrolledSheet : public Fl_Scroll {
  public:
    explicit ScrolledSheet(Size size) : Fl_Scroll(0, 0, size.w, size.h), whole_(0, 0, 0, 0) {
        scrollbar.linesize(3 * FL_NORMAL_SIZE); // of a turn of the wheel
    }
    // What was in sight stays there.
    void SetSize(Size window, const Sheet& sheet) {
        resize(0, 0, window.w, window.h);
        seen_ = sheet.seen;
        whole_.resize(-std::clamp(-whole_.x(), 0, sheet.whole.w - seen_.w),
                      -std::clamp(-whole_.y(), 0, sheet.whole.h - seen_.h), sheet.whole.w,
                      sheet.whole.h);
    }
    const Fl_Widget& Whole() const { return whole_; }
    int handle(int event) override {
        int handled = Fl_Scroll::handle(event);
        if (!handled && event == FL_KEYBOARD && Fl::event_key() == FL_Tab)
            handled = Fl_Scroll::handle(FL_FOCUS); // from the last one to the first, or back
        if (handled && (event == FL_KEYBOARD || event == FL_SHORTCUT))
            RevealFocus();
        return handled;
    }

  private:
    void RevealFocus() {
        const Fl_Widget* const focus = Fl::focus();
        if (!focus || focus == this || !contains(focus))
            return;
        const int margin = FL_NORMAL_SIZE / 2;
        scroll_to(
            xposition() + ScrollTo(focus->x() - margin, focus->x() + focus->w() + margin, seen_.w),
            yposition() + ScrollTo(focus->y() - margin, focus->y() + focus->h() + margin, seen_.h));
    }

    Fl_Box whole_; // the first child, which by its size says how far to scroll
    Size seen_;
};

FltkWindow::FltkWindow(Form& form, Layout layout, const ScreenMetrics& metrics)
    : form_(form), metrics_(metrics), layout_(std::move(layout)), form_width_(form.Width()) {
    const int width = form_width_ ? metrics.FromTwips(form_width_) : metrics.Pixels(layout_.width);
    const Size largest = LargestWindow(metrics.scale);
    window_ = std::make_unique<LaidOutWindow>(
        *this,
        Size{std::min(width, largest.w), std::min(metrics.Pixels(layout_.height), largest.h)});
    window_->xclass(form_.Name().c_str());
    sheet_ = new ScrolledSheet({window_->w(), window_->h()});
    MakeWidgets(layout_.root);
    sheet_->end();
    window_->resizable(nullptr); // the layout does it
    window_->end();
    FltkWindow::Refresh();
    window_->show();
}

FltkWindow::~FltkWindow() = default;

void FltkWindow::ControlChanged(Control& control) {
    if (const auto leaf = leaf_of_.find(&control); leaf != leaf_of_.end())
        leaf->second->changed = true;
}

void FltkWindow::MakeWidgets(const LayoutNode& node) {
    for (const LayoutNode& child : node.children)
        MakeWidgets(child);
    if (!node.children.empty() || node.kind == LayoutNode::Kind::kSpace)
        return;
    Control* const control = node.control.empty() ? nullptr : form_.Find(node.control);
    Leaf& leaf = leaves_[&node];
    leaf = {.widget = &MakeWidget(node, form_), .control = control, .shape = {}};
    if (control)
        leaf_of_[control] = &leaf;
}

void FltkWindow::Refresh() {
    ShowControls();
    if (form_changed_)
        ShowForm();
}

void FltkWindow::ShowControls() {
    bool shapes_changed = false;
    for (auto& [control, leaf] : leaf_of_) {
        if (!leaf->changed)
            continue;
        leaf->changed = false;
        leaf->widget->Show();
        Fl_Widget& widget = leaf->widget->Widget();
        if (!control->Enabled())
            Withdraw(widget, &Fl_Widget::deactivate);
        else
            widget.activate();
        Shape shape{control->Visible(), control->Width(), control->Caption()};
        if (shape != leaf->shape) {
            leaf->shape = std::move(shape);
            shapes_changed = true;
        }
    }
    if (shapes_changed) {
        SetSize({window_->w(), window_->h()});
        Arrange();
    }
    if (Fl::focus() == window_.get())
        GiveFocusBack();
}

// All that is visible, as far as the screen has room for it.
Size FltkWindow::LeastOnScreen() const {
    return LeastWindow(layout_.root, form_, metrics_, LargestWindow(metrics_.scale));
}

// Never less than what is visible needs. A window that would reach over the right edge of the
// screen by becoming wider is moved to the left.
void FltkWindow::SetSize(Size size) {
    const Size least = LeastOnScreen();
    size = {std::max(size.w, least.w), std::max(size.h, least.h)};
    if (size != Size{window_->w(), window_->h()}) {
        const int over = window_->x() + size.w - LargestWindow(metrics_.scale).w;
        const int left = size.w > window_->w() ? std::clamp(over, 0, std::max(window_->x(), 0)) : 0;
        window_->resize(window_->x() - left, window_->y(), size.w, size.h);
    }
    window_->size_range(least.w, least.h); // FLTK has made the size by the program the only one
}

// Many a procedure disables all buttons while it runs: whoever works by keyboard goes on where he
// was, and meanwhile what he types goes nowhere.
void FltkWindow::Withdraw(Fl_Widget& widget, void (Fl_Widget::*withdraw)()) {
    if (widget.contains(Fl::focus())) {
        focus_ = &widget;
        Fl::focus(window_.get());
    }
    (widget.*withdraw)();
}

void FltkWindow::GiveFocusBack() {
    if (focus_ && focus_->takesevents())
        std::exchange(focus_, nullptr)->take_focus();
}

void FltkWindow::ShowForm() {
    form_changed_ = false;
    window_->copy_label(ToUtf8(form_.Caption()).c_str());
    if (form_.Width() != form_width_) {
        form_width_ = form_.Width();
        const int width = metrics_.FromTwips(form_width_);
        SetSize({std::min(width, LargestWindow(metrics_.scale).w), window_->h()});
    }
}

void FltkWindow::Arrange() {
    const Size window{window_->w(), window_->h()};
    const Sheet sheet = SheetOf(layout_.root, form_, metrics_, window);
    sheet_->SetSize(window, sheet);
    const Fl_Widget& whole = sheet_->Whole();
    std::map<const LayoutNode*, Rect> rects;
    for (const Placed& placed : Place(layout_.root, form_, metrics_, sheet.whole))
        rects[placed.node] = placed.rect;
    for (auto& [node, leaf] : leaves_) {
        Fl_Widget& widget = leaf.widget->Widget();
        if (const auto found = rects.find(node); found != rects.end()) {
            const Rect& rect = found->second;
            widget.resize(whole.x() + rect.x, whole.y() + rect.y, rect.w, rect.h);
            widget.show();
        } else {
            Withdraw(widget, &Fl_Widget::hide);
            widget.Fl_Widget::resize(whole.x(), whole.y(), 0, 0); // else it would count
        }
    }
    window_->redraw();
}

} // namespace tarnex
