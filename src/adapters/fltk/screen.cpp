#include "adapters/fltk/screen.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>

#include <FL/Fl.H>
#include <FL/x.H>
#include <langinfo.h>

namespace tarnex {

namespace {

constexpr double kPlainDpi = 96;

std::function<void()> screen_lost; // Xlib calls back without an object

// X input methods hand Chinese over in the character set of the locale.
void UseUtf8() {
    std::setlocale(LC_CTYPE, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
        std::setlocale(LC_CTYPE, "C.UTF-8");
    XSetLocaleModifiers("");
}

int IgnoreError(Display*, XErrorEvent*) {
    return 0; // a request that failed; the default is to end the program
}

int EndWithScreen(Display*) {
    screen_lost();
    return 0;
}

} // namespace

std::string OpenScreen(std::function<void()> lost) {
    UseUtf8();
    Display* const display = XOpenDisplay(nullptr);
    if (!display)
        return std::string("the display \"") + XDisplayName(nullptr) + "\" does not let us in";
    screen_lost = std::move(lost);
    XSetErrorHandler(IgnoreError);
    XSetIOErrorHandler(EndWithScreen);
    fl_open_display(display);
    return "";
}

double ScreenScale() {
    const char* const dpi = XGetDefault(fl_display, "Xft", "dpi");
    return dpi ? std::clamp(std::atof(dpi) / kPlainDpi, 0.75, 4.0) : 1;
}

} // namespace tarnex
