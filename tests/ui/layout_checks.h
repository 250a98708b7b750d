#pragma once

#include "ui/layout.h"

#include <set>

#include <gtest/gtest.h>

namespace tarnex {

constexpr int kEm = 15; // at 96 dpi

// A screen whose Latin letters are somewhat wider than those of faces for Chinese.
inline ScreenMetrics Screen(double scale = 1) {
    const int em = int(kEm * scale);
    return {.scale = scale, .em = em, .text_width = [em](TextView text) {
                int width = 0;
                for (const char16_t c : text)
                    width += c < 0x80 ? em * 9 / 16 : em;
                return width;
            }};
}

inline void CollectLeaves(const LayoutNode& node, std::vector<const LayoutNode*>& leaves) {
    if (!node.control.empty())
        leaves.push_back(&node);
    for (const LayoutNode& child : node.children)
        CollectLeaves(child, leaves);
}

// Every control stands in the layout once, and no two have the same key.
inline void CheckNamesAndKeys(const Form& form, const Layout& layout) {
    std::vector<const LayoutNode*> leaves;
    CollectLeaves(layout.root, leaves);
    std::multiset<std::string> in_form;
    std::multiset<std::string> in_layout;
    std::set<char> keys;
    for (const Control* control : form.Controls())
        in_form.insert(control->Name());
    for (const LayoutNode* leaf : leaves) {
        in_layout.insert(leaf->control);
        EXPECT_TRUE(leaf->key == 0 || keys.insert(leaf->key).second) << "Alt+" << leaf->key;
    }
    EXPECT_EQ(in_layout, in_form);
}

inline bool Overlap(Rect a, Rect b) {
    return a.x < b.x + b.w && b.x < a.x + a.w && a.y < b.y + b.h && b.y < a.y + a.h;
}

inline void CheckPlaces(const std::vector<Placed>& placed, Size window) {
    for (auto a = placed.begin(); a != placed.end(); ++a) {
        EXPECT_FALSE(a->rect.x < 10 || a->rect.y < 10 || a->rect.x + a->rect.w > window.w - 10 ||
                     a->rect.y + a->rect.h > window.h - 10)
            << a->node->control;
        for (auto b = placed.begin(); b != a; ++b)
            EXPECT_FALSE(Overlap(a->rect, b->rect)) << a->node->control << ", " << b->node->control;
    }
}

// Neither a small window, nor a large one, nor a fine screen makes controls overlap or leave it,
// and the common screens have room for all of them beside a panel and a title bar.
inline void CheckLayout(const Form& form, const Layout& layout) {
    SCOPED_TRACE(form.Name());
    CheckNamesAndKeys(form, layout);
    struct {
        Size screen;
        double scale;
    } const kScreens[] = {{{1280, 720}, 1}, {{1280, 800}, 1.25}, {{1920, 1080}, 2}};
    for (const auto& [screen, scale] : kScreens) {
        const Size least = LeastSize(layout.root, form, Screen(scale));
        EXPECT_LE(least.w, screen.w);
        EXPECT_LE(least.h, screen.h - 64 * scale);
        EXPECT_LE(layout.height, 720 - 64);
        for (const Size window : {least, Size{least.w * 3 / 2, least.h + 333}})
            CheckPlaces(Place(layout.root, form, Screen(scale), window), window);
    }
}

} // namespace tarnex
