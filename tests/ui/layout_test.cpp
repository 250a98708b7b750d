#include "tests/ui/screen_metrics.h"
#include "ui/layout.h"
#include "ui/layout_parts.h"

#include <map>

namespace tarnex {
namespace {

using namespace layout_parts;

std::map<std::string, Rect> Rects(const LayoutNode& root, const Form& form, Size window,
                                  double scale = 1) {
    std::map<std::string, Rect> rects;
    for (const Placed& placed : Place(root, form, Screen(scale), window))
        if (!placed.node->control.empty())
            rects[placed.node->control] = placed.rect;
    return rects;
}

struct TwoLists : Form {
    TwoLists() : Form("lists", u"") {}
    ListBox left{*this, "left"};
    ListBox right{*this, "right"};
    LayoutNode root =
        Row({Column({Heading(u"左"), ListOf("left", 10, 3)}, 1), ListOf("right", 10, 3)});
};

TEST(Layout, AWidthOfTheModelIsKeptAsFarAsTheOthersLeaveRoom) {
    TwoLists form;
    const Size window{1000, 500};
    EXPECT_EQ(Rects(form.root, form, window)["left"].w, (1000 - 20 - 6) / 2);

    form.left.SetWidth(8415);
    auto rects = Rects(form.root, form, window);
    EXPECT_EQ(rects["left"].w, 8415 / 15);
    EXPECT_EQ(rects["right"], (Rect{10 + 561 + 6, 10, 1000 - 20 - 561 - 6, 480}));
    EXPECT_EQ(Rects(form.root, form, {2000, 500}, 2)["left"].w, 8415 / 15 * 2);

    form.left.SetWidth(60000);
    const int least = 10 * kEm + 16 + 6;
    EXPECT_EQ(Rects(form.root, form, window)["right"].w, least);
    form.left.SetWidth(15);
    EXPECT_EQ(Rects(form.root, form, window)["left"].w, least);
}

TEST(Layout, WhatIsHiddenLeavesItsPlaceToTheOthers) {
    TwoLists form;
    form.left.SetVisible(false);
    EXPECT_EQ(Place(form.root, form, Screen(), {1000, 500}).size(), 1U); // without the heading
    form.left.SetVisible(true);
    form.right.SetVisible(false);
    for (const int twips : {0, 5175}) { // a width of the model does not leave the row half empty
        form.left.SetWidth(twips);
        const auto rects = Rects(form.root, form, {1000, 500});
        ASSERT_EQ(rects.size(), 1U);
        EXPECT_EQ(rects.at("left").w, 980);
    }
}

TEST(Layout, AGridHasCellsOfOneSize) {
    Form form("grid", u"");
    Button a(form, "a", u"短");
    Button b(form, "b", u"一个很长的按钮");
    Button c(form, "c", u"按钮");
    const LayoutNode root{.kind = Kind::kGrid,
                          .children = {Press("a", 0, u""), Press("b", 0, u""), Press("c", 0, u"")},
                          .columns = 2};
    const Size least = LeastSize(root, form, Screen());
    EXPECT_EQ(least.w, 20 + 6 + 2 * (7 * kEm + 16));
    const auto rects = Rects(root, form, least);
    EXPECT_EQ(rects.at("a").w, rects.at("b").w);
    EXPECT_EQ(rects.at("c").x, rects.at("a").x);
    EXPECT_EQ(rects.at("c").y + rects.at("c").h, least.h - 10);
}

} // namespace
} // namespace tarnex
