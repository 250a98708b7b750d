#pragma once

#include "ui/form.h"

#include <FL/Fl_Browser_.H>

namespace tarnex {

// Shows the lines of a list box where they are: nothing is copied, and a line that is not on the
// screen costs nothing.
class ListWidget : public Fl_Browser_ {
  public:
    explicit ListWidget(ListBox& list);
    // The lines or the selection of the list changed.
    void Show();
    void resize(int x, int y, int w, int h) override;
    int handle(int event) override;

  protected:
    void draw() override;
    // FLTK's items are the numbers of the lines, from 1.
    void* item_first() const override { return Item(0); }
    void* item_last() const override { return Item(Count() - 1); }
    void* item_next(void* item) const override { return Item(Index(item) + 1); }
    void* item_prev(void* item) const override { return Item(Index(item) - 1); }
    void* item_at(int index) const override { return Item(index - 1); }
    int item_height(void*) const override { return LineHeight(); }
    int item_width(void* item) const override;
    int full_height() const override { return Count() * LineHeight(); }
    int incr_height() const override { return LineHeight(); }
    void item_draw(void* item, int x, int y, int w, int h) const override;

  private:
    // As it is shown; "" for a line that has gone since FLTK last looked.
    std::string TextOf(const void* item) const;
    int Count() const { return int(list_.Lines().size()); }
    void* Item(int index) const;
    static int Index(const void* item);
    int LineHeight() const { return textsize() + textsize() / 3; }
    int LinesOnScreen() const;
    // The index that a key leads to, or -1 for keys that lead nowhere.
    int IndexByKey(int key) const;
    void SelectAndReveal(int index, int callbacks);
    void Reveal(int index, int position_before);
    void Copy(bool every_line) const;

    ListBox& list_;
    int shown_ = 0; // lines
};

} // namespace tarnex
