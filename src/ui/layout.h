#pragma once

#include "ui/form.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace tarnex {

// How the controls of a form share its window, independent of any toolkit. An em is the width of a
// Chinese character.
struct LayoutNode {
    enum class Kind {
        kRow,    // children side by side
        kColumn, // children one below the other
        kGrid,   // children in cells of one size
        kHeading,
        kSpace,
        kLabel,
        kButton,
        kCheckBox,
        kTextBox,
        kListBox,
    };
    enum class Look {
        kPlain,
        kStrong,    // a label in larger letters
        kSecret,    // a text box that hides what it holds
        kReadOnly,  // a text box that only shows
        kMultiLine, // a text box of several lines
        kReadOnlyLines,
        kCareful, // a button whose press changes much at once, or cannot be taken back
    };

    Kind kind{};
    std::string control{};              // its name in the form
    Text title{};                       // of a heading, or left of a text box
    int title_ems = 0;                  // least width of the title
    std::vector<LayoutNode> children{}; // of a row, column or grid
    int weight = 0;                     // share of what the parent has to spare; 0: none of it
    int ems = 0;                        // least width of what the control holds
    int lines = 1;                      // least height of what the control holds
    int columns = 1;                    // of a grid
    int gap = 6;                        // between children, in pixels at 96 dpi
    Look look = Look::kPlain;
    char key = 0; // together with Alt it clicks the control; 0: no key
    Text hint{};  // shown when the pointer rests on the control
};

struct Layout {
    int width; // of a new window, in pixels at 96 dpi
    int height;
    LayoutNode root;
};

struct Size {
    int w = 0;
    int h = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
    int x = 0;
    int y = 0;
    int w = 0;
    int h = 0;
    friend bool operator==(const Rect&, const Rect&) = default;
};

// The screen that a form is laid out for.
struct ScreenMetrics {
    double scale = 1;                          // 1 at 96 dpi
    int em = 14;                               // in pixels of the screen
    int scroll_bar = 16;                       // its width, the same
    std::function<int(TextView)> text_width{}; // the same, in plain letters

    int Pixels(double at_96_dpi) const { return int(std::lround(at_96_dpi * scale)); }
    int FromTwips(int twips) const { return Pixels(twips / 15.0); }
};

// How much larger strong letters are than plain ones.
inline constexpr double kStrongLetters = 1.25;

// Where a leaf of a layout stands, in pixels of the screen from the sheet's corner.
struct Placed {
    const LayoutNode* node;
    Rect rect; // of a text box without its title, which stands on the left
};

// The smallest window in which everything visible fits.
Size LeastSize(const LayoutNode& root, const Form& form, const ScreenMetrics& screen);

// The same, beside scroll bars where the largest window has no room for that.
Size LeastWindow(const LayoutNode& root, const Form& form, const ScreenMetrics& screen,
                 Size largest);

// What the controls stand on. Where a window is smaller than that, it has scroll bars.
struct Sheet {
    Size whole; // never less than the least size
    Size seen;  // of it at once, beside the scroll bars
};

Sheet SheetOf(const LayoutNode& root, const Form& form, const ScreenMetrics& screen, Size window);

// How far to scroll, at least, for a control to be seen, or where it is too large its beginning.
// It reaches from first to last in the seen part of a sheet.
inline int ScrollTo(int first, int last, int seen) {
    return std::min(std::max(last - seen, 0), first);
}

// Shares a sheet among the headings and visible controls, in the order of the layout. Widths that
// the model sets are kept as far as the others leave room. In less than the least size the right
// and lower parts are cut off. root must outlive the result.
std::vector<Placed> Place(const LayoutNode& root, const Form& form, const ScreenMetrics& screen,
                          Size sheet);

} // namespace tarnex
