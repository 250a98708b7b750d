#pragma once

#include "ui/layout.h"

#include <FL/Fl_Widget.H>

namespace tarnex {

// One leaf of a layout as a widget: shows the control's state and sends back what the operator
// does. The FLTK group that is being built owns it.
class LeafWidget {
  public:
    virtual ~LeafWidget() = default;
    virtual Fl_Widget& Widget() = 0;
    // Takes over what the control holds; whether it is visible and enabled is the caller's.
    virtual void Show() = 0;
};

// form has the control that the leaf names.
LeafWidget& MakeWidget(const LayoutNode& leaf, const Form& form);

} // namespace tarnex
