#include "adapters/fltk/style.h"

#include <cmath>

#include <FL/Fl.H>
#include <FL/Fl_Tooltip.H>
#include <FL/fl_draw.H>
#include <fontconfig/fontconfig.h>

namespace tarnex {

namespace {

constexpr double kLetters = 15; // pixels at 96 dpi
constexpr double kScrollBar = 15;

constexpr Fl_Color Rgb(unsigned value) {
    return Fl_Color(value << 8);
}
constexpr Fl_Color kEdge = Rgb(0xA9B1BB);
constexpr Fl_Color kButtonEdge = Rgb(0x76828F);
constexpr Fl_Color kButton = Rgb(0xD3DCE6);
constexpr Fl_Color kCarefulButton = Rgb(0xF5CF8E);
constexpr double kTitleBar = 32; // height of the desktop's title bar, about

int edge_width = 1; // FLTK calls back without an object

void DrawFrame(int x, int y, int w, int h) {
    fl_color(Fl::draw_box_active() ? kEdge : fl_color_average(kEdge, FL_BACKGROUND_COLOR, 0.5F));
    for (int i = 0; i < edge_width; ++i)
        fl_rect(x + i, y + i, w - 2 * i, h - 2 * i);
}

void DrawBox(int x, int y, int w, int h, Fl_Color color) {
    fl_color(Fl::draw_box_active() ? color : fl_color_average(color, FL_BACKGROUND_COLOR, 0.4F));
    fl_rectf(x, y, w, h);
    DrawFrame(x, y, w, h);
}

// A button: raised, with a brighter upper half, a shadow below and corners that are cut off, so
// that nobody takes it for a box to write in.
void DrawButton(int x, int y, int w, int h, Fl_Color color) {
    const bool active = Fl::draw_box_active() != 0;
    const auto shade = [active](Fl_Color wanted) {
        return active ? wanted : fl_color_average(wanted, FL_BACKGROUND_COLOR, 0.4F);
    };
    const int edge = edge_width;
    fl_color(shade(fl_color_average(FL_WHITE, color, 0.45F)));
    fl_rectf(x + edge, y + edge, w - 2 * edge, h / 2);
    fl_color(shade(color));
    fl_rectf(x + edge, y + h / 2, w - 2 * edge, h - h / 2 - edge);
    fl_color(shade(kButtonEdge));
    fl_rectf(x + edge, y, w - 2 * edge, edge);
    fl_rectf(x + edge, y + h - 2 * edge, w - 2 * edge, 2 * edge);
    fl_rectf(x, y + edge, edge, h - 2 * edge);
    fl_rectf(x + w - edge, y + edge, edge, h - 2 * edge);
}

void SetUpFrames(double scale) {
    edge_width = std::max(1, int(scale));
    const uchar edge = uchar(edge_width);
    for (const Fl_Boxtype box : {FL_DOWN_BOX, FL_THIN_UP_BOX, FL_THIN_DOWN_BOX})
        Fl::set_boxtype(box, DrawBox, edge, edge, uchar(2 * edge), uchar(2 * edge));
    Fl::set_boxtype(FL_UP_BOX, DrawButton, edge, edge, uchar(2 * edge), uchar(3 * edge));
}

void SetUpColors() {
    Fl::background(0xEE, 0xF1, 0xF4);
    Fl::background2(0xFF, 0xFF, 0xFF);
    Fl::foreground(0x1F, 0x24, 0x2B);
    Fl::set_color(FL_SELECTION_COLOR, 0x2B, 0x6C, 0xB8);
    Fl::set_color(FL_INACTIVE_COLOR, 0x8A, 0x93, 0x9E);
}

struct FontMatch {
    std::string family;
    bool chinese = false;
};

// The sans serif face that the system prefers for Chinese.
FontMatch FindFont() {
    FontMatch match;
    FcPattern* const wanted =
        FcNameParse(reinterpret_cast<const FcChar8*>("sans-serif:lang=zh-cn"));
    FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result{};
    if (FcPattern* const found = FcFontMatch(nullptr, wanted, &result)) {
        FcChar8* family = nullptr;
        if (FcPatternGetString(found, FC_FAMILY, 0, &family) == FcResultMatch)
            match.family = reinterpret_cast<const char*>(family);
        FcLangSet* languages = nullptr;
        match.chinese =
            FcPatternGetLangSet(found, FC_LANG, 0, &languages) == FcResultMatch &&
            FcLangSetHasLang(languages, reinterpret_cast<const FcChar8*>("zh-cn")) == FcLangEqual;
        FcPatternDestroy(found);
    }
    FcPatternDestroy(wanted);
    return match;
}

// FLTK draws a text in one face alone, so that face must have every character.
bool SetUpFont(int letters) {
    const FontMatch match = FindFont();
    static const std::string plain = ' ' + match.family; // FLTK keeps the pointers
    static const std::string bold = 'B' + match.family;
    if (match.chinese) {
        Fl::set_font(FL_HELVETICA, plain.c_str());
        Fl::set_font(FL_HELVETICA_BOLD, bold.c_str());
    }
    FL_NORMAL_SIZE = letters;
    Fl_Tooltip::font(FL_HELVETICA);
    Fl_Tooltip::size(letters);
    return match.chinese;
}

} // namespace

std::string SetUpStyle(double scale) {
    SetUpColors();
    SetUpFrames(scale);
    Fl::scrollbar_size(int(std::lround(kScrollBar * scale)));
    Fl::dnd_text_ops(false); // dragging text runs a loop of its own
    if (SetUpFont(int(std::lround(kLetters * scale))))
        return "";
    return "there is no font with Chinese characters, so the windows cannot show them. Install "
           "one, for example the package fonts-wqy-zenhei";
}

ScreenMetrics Metrics(double scale) {
    return {.scale = scale,
            .em = FL_NORMAL_SIZE,
            .scroll_bar = Fl::scrollbar_size(),
            .text_width = [](TextView text) {
                fl_font(FL_HELVETICA, FL_NORMAL_SIZE);
                return int(std::ceil(fl_width(ToUtf8(text).c_str())));
            }};
}

Size LargestWindow(double scale) {
    int x = 0;
    int y = 0;
    int w = 0;
    int h = 0;
    Fl::screen_work_area(x, y, w, h);
    return {w, h - int(std::lround(kTitleBar * scale))};
}

Fl_Color ButtonColor(LayoutNode::Look look) {
    return look == LayoutNode::Look::kCareful ? kCarefulButton : kButton;
}

void DrawFocus(const Fl_Widget& widget) {
    if (Fl::focus() != &widget)
        return;
    fl_color(FL_SELECTION_COLOR);
    for (int i = 0; i < 2 * edge_width; ++i)
        fl_rect(widget.x() + i, widget.y() + i, widget.w() - 2 * i, widget.h() - 2 * i);
}

std::string LabelText(TextView text) {
    std::string label;
    for (const char c : ToUtf8(text)) {
        if (c == '@' || c == '&')
            label += c;
        label += c;
    }
    return label;
}

} // namespace tarnex
