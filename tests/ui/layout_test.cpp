#include "mail/mail_form.h"
#include "service/main_window.h"
#include "ui/layout.h"
#include "ui/layout_parts.h"
#include "ui/layouts.h"

#include <map>
#include <set>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

using namespace layout_parts;

// A screen whose characters are all as wide as an em.
ScreenMetrics Screen(double scale = 1) {
    const int em = int(14 * scale);
    return {.scale = scale, .em = em, .text_width = [em](TextView text) {
                return int(text.size()) * em;
            }};
}

std::map<std::string, Rect> Rects(const LayoutNode& root, const Form& form, Size window,
                                  double scale = 1) {
    std::map<std::string, Rect> rects;
    for (const Placed& placed : Place(root, form, Screen(scale), window))
        if (!placed.node->control.empty())
            rects[placed.node->control] = placed.rect;
    return rects;
}

void CollectLeaves(const LayoutNode& node, std::vector<const LayoutNode*>& leaves) {
    if (!node.control.empty())
        leaves.push_back(&node);
    for (const LayoutNode& child : node.children)
        CollectLeaves(child, leaves);
}

struct TwoLists : Form {
    TwoLists() : Form("lists", u"") {}
    ListBox left{*this, "left"};
    ListBox right{*this, "right"};
    LayoutNode root = Row({Column({Heading(u"左"), List("left", 10, 3)}, 1), List("right", 10, 3)});
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
    const int least = 10 * 14 + 16 + 8;
    EXPECT_EQ(Rects(form.root, form, window)["right"].w, least);
    form.left.SetWidth(15);
    EXPECT_EQ(Rects(form.root, form, window)["left"].w, least);
}

TEST(Layout, WhatIsHiddenLeavesItsPlaceToTheOthers) {
    TwoLists form;
    form.right.SetVisible(false);
    const auto rects = Rects(form.root, form, {1000, 500});
    EXPECT_FALSE(rects.contains("right"));
    EXPECT_EQ(rects.at("left").w, 980);
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
    EXPECT_EQ(least.w, 20 + 6 + 2 * (7 * 14 + 24));
    const auto rects = Rects(root, form, least);
    EXPECT_EQ(rects.at("a").w, rects.at("b").w);
    EXPECT_EQ(rects.at("c").x, rects.at("a").x);
    EXPECT_EQ(rects.at("c").y + rects.at("c").h, least.h - 10);
}

// Every form of the program.
struct Forms {
    MainWindow main;
    MailForm mail;
    std::vector<const Form*> all{&main, &mail};
};

TEST(Layouts, ShowEveryControlOnceAndGiveEachKeyOnce) {
    const Forms forms;
    for (const Form* form : forms.all) {
        const Layout layout = LayoutOf(*form);
        std::vector<const LayoutNode*> leaves;
        CollectLeaves(layout.root, leaves);
        std::multiset<std::string> in_form;
        std::multiset<std::string> in_layout;
        std::set<char> keys;
        for (const Control* control : form->Controls())
            in_form.insert(control->Name());
        for (const LayoutNode* leaf : leaves) {
            in_layout.insert(leaf->control);
            EXPECT_TRUE(leaf->key == 0 || keys.insert(leaf->key).second)
                << form->Name() << ", Alt+" << leaf->key;
        }
        EXPECT_EQ(in_layout, in_form) << form->Name();
    }
}

bool Overlap(Rect a, Rect b) {
    return a.x < b.x + b.w && b.x < a.x + a.w && a.y < b.y + b.h && b.y < a.y + a.h;
}

// Neither a small window, nor a large one, nor a fine screen makes controls overlap or leave it.
TEST(Layouts, KeepControlsApartAndInTheWindow) {
    const Forms forms;
    for (const Form* form : forms.all) {
        const Layout layout = LayoutOf(*form);
        for (const double scale : {1.0, 1.25, 2.0}) {
            const Size least = LeastSize(layout.root, *form, Screen(scale));
            EXPECT_LE(least.w, layout.width * scale) << form->Name();
            EXPECT_LE(least.h, layout.height * scale) << form->Name();
            for (const Size window : {least, Size{least.w * 3 / 2, least.h + 333}}) {
                const auto placed = Place(layout.root, *form, Screen(scale), window);
                for (auto a = placed.begin(); a != placed.end(); ++a) {
                    EXPECT_FALSE(a->rect.x < 10 || a->rect.y < 10 ||
                                 a->rect.x + a->rect.w > window.w - 10 ||
                                 a->rect.y + a->rect.h > window.h - 10)
                        << form->Name() << "." << a->node->control;
                    for (auto b = placed.begin(); b != a; ++b)
                        EXPECT_FALSE(Overlap(a->rect, b->rect))
                            << form->Name() << ": " << a->node->control << ", " << b->node->control;
                }
            }
        }
    }
}

} // namespace
} // namespace tarnex
