#pragma once

#include <functional>
#include <string>

namespace tarnex {

// Connects FLTK to the X server, which may wait for as long as the server does not read. "", or the
// trouble when there is none that lets us in. lost is called when the connection breaks, in the
// middle of whatever FLTK does: it must end the process.
std::string OpenScreen(std::function<void()> lost);

// 1 at 96 dpi, from the resource Xft.dpi that desktops set.
double ScreenScale();

} // namespace tarnex
