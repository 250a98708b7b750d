#pragma once

#include "ui/layout.h"

#include <string>

#include <FL/Fl_Widget.H>

namespace tarnex {

// How everything looks: fonts, colours and frames, for a screen of that scale. Once, before the
// first window. "", or what an operator should know: no font with Chinese characters.
std::string SetUpStyle(double scale);

// What layouts need to know of the screen.
ScreenMetrics Metrics(double scale);

// The largest size of a window that is seen whole, its frame of the desktop included.
Size LargestWindow(double scale);

// What a button is filled with, by its look.
Fl_Color ButtonColor(LayoutNode::Look look);

// Shows that a widget has the input focus, if that is so; drawn over the widget.
void DrawFocus(const Fl_Widget& widget);

// A text for an FLTK label, in which "@" and "&" have meanings of their own.
std::string LabelText(TextView text);

} // namespace tarnex
