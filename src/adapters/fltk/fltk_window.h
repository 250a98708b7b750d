#pragma once

#include "adapters/fltk/control_widgets.h"
#include "ui/form_copies.h"

#include <map>

#include <FL/Fl_Double_Window.H>

namespace tarnex {

// The window of one form.
class FltkWindow : public CopyWindow {
  public:
    // form and metrics must outlive the window.
    FltkWindow(Form& form, Layout layout, const ScreenMetrics& metrics);
    ~FltkWindow() override;

    void ControlChanged(Control& control) override;
    void FormChanged() override { form_changed_ = true; }
    // Shows what has changed in the form since the last call. Not from within an FLTK callback.
    void Refresh() override;

  private:
    class LaidOutWindow;
    class ScrolledSheet;

    // What a control looked like when it was placed last.
    struct Shape {
        bool visible = false;
        int width = 0;
        Text caption;
        friend bool operator==(const Shape&, const Shape&) = default;
    };
    struct Leaf {
        LeafWidget* widget; // the window's
        Control* control;   // nullptr: a heading
        bool changed = true;
        Shape shape;
    };

    void MakeWidgets(const LayoutNode& node);
    void ShowControls();
    // Disables or hides it. While the operator has not moved the focus, it comes back with it.
    void Withdraw(Fl_Widget& widget, void (Fl_Widget::*withdraw)());
    void GiveFocusBack();
    void ShowForm();
    Size LeastOnScreen() const;
    void SetSize(Size size);
    void Arrange();

    Form& form_;
    const ScreenMetrics& metrics_;
    Layout layout_;
    std::unique_ptr<LaidOutWindow> window_;
    ScrolledSheet* sheet_ = nullptr; // the window's
    std::map<const LayoutNode*, Leaf> leaves_;
    std::map<const Control*, Leaf*> leaf_of_;
    Fl_Widget* focus_ = nullptr; // was withdrawn with the focus; the window has it meanwhile
    int form_width_ = 0;         // as the model had it last
    bool form_changed_ = true;
};

} // namespace tarnex
