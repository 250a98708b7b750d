#include "adapters/fltk/list_widget.h"

#include "adapters/fltk/style.h"

#include <algorithm>
#include <cstdint>

#include <FL/Fl.H>
#include <FL/fl_draw.H>

namespace tarnex {

namespace {

constexpr int kTextIndent = 3; // pixels left of a line

std::string Shown(const Text& line) {
    return ToUtf8(EscapeControls(line));
}

} // namespace

ListWidget::ListWidget(ListBox& list) : Fl_Browser_(0, 0, 0, 0), list_(list) {
    type(FL_HOLD_BROWSER);
    end(); // a browser is a group, and would take in the widgets after it
    when(FL_WHEN_CHANGED);
    callback([](Fl_Widget* widget, void*) {
        auto& self = static_cast<ListWidget&>(*widget);
        self.list_.Select(Index(self.selection()));
    });
    Show();
}

void* ListWidget::Item(int index) const {
    if (index < 0 || index >= Count())
        return nullptr;
    // A number that FLTK only hands back. NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<void*>(std::intptr_t(index) + 1);
}

int ListWidget::Index(const void* item) {
    return int(reinterpret_cast<std::intptr_t>(item)) - 1;
}

void ListWidget::Show() {
    if (Count() < shown_) // FLTK may point at lines that are gone
        new_list();
    shown_ = Count();
    if (list_.Selected() != Index(selection()))
        SelectAndReveal(list_.Selected(), 0);
    redraw();
}

std::string ListWidget::TextOf(const void* item) const {
    const int index = Index(item);
    return index >= 0 && index < Count() ? Shown(list_.Lines()[std::size_t(index)]) : "";
}

int ListWidget::item_width(void* item) const {
    fl_font(textfont(), textsize());
    return int(fl_width(TextOf(item).c_str())) + 2 * kTextIndent;
}

void ListWidget::item_draw(void* item, int x, int y, int, int h) const {
    const std::string text = TextOf(item);
    const Fl_Color color =
        item == selection() ? fl_contrast(textcolor(), selection_color()) : textcolor();
    fl_font(textfont(), textsize());
    fl_color(active_r() ? color : fl_inactive(color));
    fl_draw(text.c_str(), int(text.size()), x + kTextIndent,
            y + (h + fl_height()) / 2 - fl_descent());
}

int ListWidget::LinesOnScreen() const {
    int x = 0;
    int y = 0;
    int w = 0;
    int h = 0;
    bbox(x, y, w, h);
    return std::max(h / LineHeight(), 1);
}

void ListWidget::SelectAndReveal(int index, int callbacks) {
    const int before = position();
    select_only(Item(index), callbacks);
    Reveal(index, before);
}

// Scrolls as little as it can; FLTK by itself would put the line into the middle.
void ListWidget::Reveal(int index, int position_before) {
    const int top = std::max(index, 0) * LineHeight();
    position(std::clamp(position_before, top - (LinesOnScreen() - 1) * LineHeight(), top));
}

// What was in sight stays there, and no room is left below the last line.
void ListWidget::resize(int x, int y, int w, int h) {
    Fl_Browser_::resize(x, y, w, h);
    const int highest = std::max(Count() - LinesOnScreen(), 0) * LineHeight();
    Reveal(Index(selection()), std::min(position(), highest));
}

int ListWidget::IndexByKey(int key) const {
    const int selected = Index(selection());
    const int last = Count() - 1;
    switch (key) {
    case FL_Home:
        return std::min(0, last);
    case FL_End:
        return last;
    case FL_Page_Up:
        return std::max(selected - LinesOnScreen(), std::min(0, last));
    case FL_Page_Down:
        return std::min(selected + LinesOnScreen(), last);
    default:
        return -1;
    }
}

void ListWidget::Copy(bool every_line) const {
    std::string copied;
    if (every_line)
        for (const Text& line : list_.Lines())
            copied += Shown(line) + "\n";
    else
        copied = TextOf(selection());
    Fl::copy(copied.c_str(), int(copied.size()), 1);
}

void ListWidget::draw() {
    const int lines_before = LinesOnScreen();
    Fl_Browser_::draw();
    if (LinesOnScreen() < lines_before) { // a scroll bar has come to stand on the newest line
        Reveal(Index(selection()), position());
        Fl_Browser_::draw();
    }
    DrawFocus(*this);
}

int ListWidget::handle(int event) {
    if (event == FL_FOCUS || event == FL_UNFOCUS)
        redraw();
    if (event == FL_KEYBOARD && Fl::focus() == this) {
        if (Fl::event_state(FL_CTRL) && Fl::event_key() == 'c') {
            Copy(Fl::event_state(FL_SHIFT) != 0);
            return 1;
        }
        if (const int index = IndexByKey(Fl::event_key()); index >= 0) {
            SelectAndReveal(index, FL_WHEN_CHANGED);
            return 1;
        }
    }
    return Fl_Browser_::handle(event);
}

} // namespace tarnex
