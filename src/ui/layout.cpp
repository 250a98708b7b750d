#include "ui/layout.h"

#include <algorithm>
#include <numeric>

namespace tarnex {

namespace {

using Kind = LayoutNode::Kind;
using Look = LayoutNode::Look;

// In pixels at 96 dpi.
constexpr int kMargin = 10; // between the sheet's edge and what it holds
constexpr int kTitleGap = 6;
constexpr int kTextPadding = 3;   // between a frame and the text in it
constexpr int kButtonPadding = 8; // left and right of a caption
constexpr int kLeastButton = 60;

constexpr double kLine = 1.35; // height of a line of text, in ems

bool HasControls(const LayoutNode& node) {
    return !node.control.empty() || std::ranges::any_of(node.children, HasControls);
}

class Placer {
  public:
    Placer(const Form& form, const ScreenMetrics& screen) : form_(form), screen_(screen) {}

    Size Least(const LayoutNode& node) const;
    void Put(const LayoutNode& node, Rect rect);

    std::vector<Placed> Result() && { return std::move(placed_); }

  private:
    using Children = std::vector<const LayoutNode*>;

    Size LeastOfLine(const LayoutNode& node) const;
    Size LeastOfGrid(const LayoutNode& node) const;
    Size LeastOfLeaf(const LayoutNode& node) const;

    void PutLine(const LayoutNode& node, Rect rect);
    void PutGrid(const LayoutNode& node, Rect rect);
    void PutLeaf(const LayoutNode& node, Rect rect);
    std::vector<int> Lengths(const Children& children, int room, bool row) const;
    int WantedWidth(const LayoutNode& node) const;

    bool Visible(const LayoutNode& node) const;
    Children VisibleChildren(const LayoutNode& node) const;

    int Px(int at_96_dpi) const { return screen_.Pixels(at_96_dpi); }
    // Between so many children of a node.
    int Gaps(const LayoutNode& node, int children) const { return (children - 1) * Px(node.gap); }
    int LinesHeight(int lines) const { return int(std::lround(lines * screen_.em * kLine)); }
    int RowHeight() const { return LinesHeight(1) + 2 * Px(kTextPadding); }
    int TitleWidth(const LayoutNode& node) const {
        return node.title.empty() ? 0
                                  : Px(kTitleGap) + std::max(screen_.text_width(node.title),
                                                             node.title_ems * screen_.em);
    }

    const Form& form_;
    const ScreenMetrics& screen_;
    std::vector<Placed> placed_;
};

// Of nodes with controls that are all hidden, the headings are hidden too.
bool Placer::Visible(const LayoutNode& node) const {
    if (!node.control.empty())
        return form_.Find(node.control)->Visible();
    const auto shows_control = [this](const LayoutNode& child) {
        return HasControls(child) && Visible(child);
    };
    return !HasControls(node) || std::ranges::any_of(node.children, shows_control);
}

Placer::Children Placer::VisibleChildren(const LayoutNode& node) const {
    Children visible;
    for (const LayoutNode& child : node.children)
        if (Visible(child))
            visible.push_back(&child);
    return visible;
}

Size Placer::Least(const LayoutNode& node) const {
    if (node.kind == Kind::kGrid)
        return LeastOfGrid(node);
    if (node.kind == Kind::kRow || node.kind == Kind::kColumn)
        return LeastOfLine(node);
    return LeastOfLeaf(node);
}

Size Placer::LeastOfLine(const LayoutNode& node) const {
    const Children children = VisibleChildren(node);
    const int gaps = Gaps(node, int(children.size()));
    Size sum{gaps, gaps};
    Size most;
    for (const LayoutNode* child : children) {
        const Size least = Least(*child);
        sum = {sum.w + least.w, sum.h + least.h};
        most = {std::max(most.w, least.w), std::max(most.h, least.h)};
    }
    return node.kind == Kind::kRow ? Size{sum.w, most.h} : Size{most.w, sum.h};
}

Size Placer::LeastOfGrid(const LayoutNode& node) const {
    const Children children = VisibleChildren(node);
    Size cell;
    for (const LayoutNode* child : children) {
        const Size least = Least(*child);
        cell = {std::max(cell.w, least.w), std::max(cell.h, least.h)};
    }
    const int rows = (int(children.size()) + node.columns - 1) / node.columns;
    return {node.columns * cell.w + Gaps(node, node.columns), rows * cell.h + Gaps(node, rows)};
}

Size Placer::LeastOfLeaf(const LayoutNode& node) const {
    const Text& text = node.control.empty() ? node.title : form_.Find(node.control)->Caption();
    const double letters = node.look == Look::kStrong ? kStrongLetters : 1;
    const int text_width = int(std::lround(screen_.text_width(text) * letters));
    const int held_width = node.ems * screen_.em;
    const int frame = 2 * Px(kTextPadding);
    switch (node.kind) {
    case Kind::kSpace:
        return {held_width, 0};
    case Kind::kButton:
        return {std::max(text_width + 2 * Px(kButtonPadding), Px(kLeastButton)), RowHeight()};
    case Kind::kCheckBox:
        return {text_width + RowHeight(), RowHeight()};
    case Kind::kTextBox:
        return {TitleWidth(node) + held_width + frame, LinesHeight(node.lines) + frame};
    case Kind::kListBox:
        return {held_width + screen_.scroll_bar + frame, LinesHeight(node.lines) + frame};
    case Kind::kHeading: // in bold letters, which are wider
        return {std::max(text_width + screen_.em / 2, held_width), RowHeight()};
    default:
        return {std::max(text_width, held_width), RowHeight()};
    }
}

void Placer::Put(const LayoutNode& node, Rect rect) {
    if (node.kind == Kind::kGrid)
        PutGrid(node, rect);
    else if (node.kind == Kind::kRow || node.kind == Kind::kColumn)
        PutLine(node, rect);
    else
        PutLeaf(node, rect);
}

void Placer::PutLine(const LayoutNode& node, Rect rect) {
    const bool row = node.kind == Kind::kRow;
    const Children children = VisibleChildren(node);
    const int room = (row ? rect.w : rect.h) - Gaps(node, int(children.size()));
    const std::vector<int> lengths = Lengths(children, room, row);
    for (std::size_t i = 0; i < children.size(); ++i) {
        (row ? rect.w : rect.h) = lengths[i];
        Put(*children[i], rect);
        (row ? rect.x : rect.y) += lengths[i] + Px(node.gap);
    }
}

// First everybody has the least, then the model's widths are met, then the weights have the rest;
// where only the model's widths stand in a row, they share it as if it had none.
std::vector<int> Placer::Lengths(const Children& children, int room, bool row) const {
    std::vector<int> lengths;
    for (const LayoutNode* child : children)
        lengths.push_back(row ? Least(*child).w : Least(*child).h);
    int spare = std::max(room - std::reduce(lengths.begin(), lengths.end()), 0);

    std::vector<int> weights;
    for (std::size_t i = 0; i < children.size(); ++i) {
        const int wanted = row ? WantedWidth(*children[i]) : 0;
        const int more = std::clamp(wanted - lengths[i], 0, spare);
        lengths[i] += more;
        spare -= more;
        weights.push_back(wanted > 0 ? 0 : children[i]->weight);
    }
    int weight_left = std::reduce(weights.begin(), weights.end());
    if (weight_left == 0)
        for (std::size_t i = 0; i < children.size(); ++i)
            weight_left += weights[i] = children[i]->weight;
    for (std::size_t i = 0; i < children.size(); ++i) {
        if (weights[i] == 0)
            continue;
        const int more = spare * weights[i] / weight_left;
        lengths[i] += more;
        spare -= more;
        weight_left -= weights[i];
    }
    return lengths;
}

// As the model sets it for a list or what is stacked with it; 0 where it does not.
int Placer::WantedWidth(const LayoutNode& node) const {
    if (node.kind == Kind::kListBox)
        return screen_.FromTwips(form_.Find(node.control)->Width());
    int wanted = 0;
    if (node.kind == Kind::kColumn)
        for (const LayoutNode* child : VisibleChildren(node))
            wanted = std::max(wanted, WantedWidth(*child));
    return wanted;
}

void Placer::PutGrid(const LayoutNode& node, Rect rect) {
    const Children children = VisibleChildren(node);
    const int columns = node.columns;
    const int height = Least(*children.front()).h;
    const int room = rect.w - Gaps(node, columns);
    for (int i = 0; i < int(children.size()); ++i) {
        const int column = i % columns;
        const int left = room * column / columns;
        const int right = room * (column + 1) / columns;
        Put(*children[std::size_t(i)],
            {rect.x + left + column * Px(node.gap), rect.y + i / columns * (height + Px(node.gap)),
             right - left, height});
    }
}

void Placer::PutLeaf(const LayoutNode& node, Rect rect) {
    const bool takes_height = node.kind == Kind::kListBox || node.look == Look::kMultiLine ||
                              node.look == Look::kReadOnlyLines;
    if (const int least = Least(node).h; !takes_height && least < rect.h)
        rect = {rect.x, rect.y + (rect.h - least) / 2, rect.w, least};
    if (node.kind == Kind::kTextBox) {
        const int title = TitleWidth(node);
        rect = {rect.x + title, rect.y, rect.w - title, rect.h};
    }
    if (node.kind != Kind::kSpace)
        placed_.push_back({&node, rect});
}

} // namespace

Size LeastSize(const LayoutNode& root, const Form& form, const ScreenMetrics& screen) {
    const Size least = Placer(form, screen).Least(root);
    const int margins = 2 * screen.Pixels(kMargin);
    return {least.w + margins, least.h + margins};
}

Size LeastWindow(const LayoutNode& root, const Form& form, const ScreenMetrics& screen,
                 Size largest) {
    const Size least = LeastSize(root, form, screen);
    const int right_bar = least.h > largest.h ? screen.scroll_bar : 0;
    const int lower_bar = least.w > largest.w ? screen.scroll_bar : 0;
    return {std::min(least.w + right_bar, largest.w), std::min(least.h + lower_bar, largest.h)};
}

Sheet SheetOf(const LayoutNode& root, const Form& form, const ScreenMetrics& screen, Size window) {
    const Size least = LeastSize(root, form, screen);
    const int bar = screen.scroll_bar;
    const bool right_bar = least.h > window.h - (least.w > window.w ? bar : 0);
    const bool lower_bar = least.w > window.w - (right_bar ? bar : 0);
    const Size seen{window.w - (right_bar ? bar : 0), window.h - (lower_bar ? bar : 0)};
    return {{std::max(least.w, seen.w), std::max(least.h, seen.h)}, seen};
}

std::vector<Placed> Place(const LayoutNode& root, const Form& form, const ScreenMetrics& screen,
                          Size sheet) {
    const int margin = screen.Pixels(kMargin);
    Placer placer(form, screen);
    placer.Put(root, {margin, margin, sheet.w - 2 * margin, sheet.h - 2 * margin});
    return std::move(placer).Result();
}

} // namespace tarnex
