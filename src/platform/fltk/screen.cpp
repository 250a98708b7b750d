#include "platform/fltk/screen.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>

#include <FL/Fl.H>
#include <FL/x.H>
#include <langinfo.h>
#include <sys/socket.h>

namespace tarnex {

namespace {

constexpr double kPlainDpi = 96;

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

int IgnoreLoss(Display*) {
    return 0;
}

} // namespace

std::unique_ptr<Screen> Screen::Open(std::string& trouble) {
    UseUtf8();
    Display* const display = XOpenDisplay(nullptr);
    if (!display) {
        trouble = std::string("the display \"") + XDisplayName(nullptr) + "\" does not let us in";
        return nullptr;
    }
    std::unique_ptr<Screen> screen(new Screen);
    XSetErrorHandler(IgnoreError);
    XSetIOErrorHandler(IgnoreLoss);
    const auto note_loss = [](Display*, void* lost) { *static_cast<bool*>(lost) = true; };
    XSetIOErrorExitHandler(display, note_loss, &screen->lost_); // the default ends the program
    fl_open_display(display);
    Fl::add_check(EndLoops, screen.get());
    return screen;
}

Screen::~Screen() {
    Fl::remove_check(EndLoops, this);
}

// Called in each turn of a loop of FLTK's own. Menus and messages of the file dialog run such
// loops, and without a display they never end. Nothing is at work while a file is chosen.
void Screen::EndLoops(void* screen) {
    Screen& self = *static_cast<Screen*>(screen);
    if (self.lost_ && ++self.turns_after_loss_ > 1) // one may be the end of a Check()
        std::_Exit(EXIT_FAILURE);
}

int Screen::Descriptor() const {
    return ConnectionNumber(fl_display);
}

double Screen::Scale() const {
    const char* const dpi = XGetDefault(fl_display, "Xft", "dpi");
    return dpi ? std::clamp(std::atof(dpi) / kPlainDpi, 0.75, 4.0) : 1;
}

void Screen::Check() {
    // A server that went away is noticed before FLTK reads from it.
    char byte = 0;
    if (recv(Descriptor(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0)
        lost_ = true;
    // What FLTK read while it waited for an answer makes the descriptor readable no more.
    do {
        if (lost_)
            return;
        Fl::check();
    } while (XQLength(fl_display) > 0);
}

} // namespace tarnex
