#pragma once

#include "ui/layouts.h"

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
// and a new window has room for all of them.
inline void CheckLayoutOf(const Form& form) {
    SCOPED_TRACE(form.Name());
    const Layout layout = LayoutOf(form);
    CheckNamesAndKeys(form, layout);
    const int width = form.Width() ? form.Width() / 15 : layout.width;
    for (const double scale : {1.0, 1.25, 2.0}) {
        const Size least = LeastSize(layout.root, form, Screen(scale));
        EXPECT_LE(least.w, width * scale);
        EXPECT_LE(least.h, layout.height * scale);
        for (const Size window : {least, Size{least.w * 3 / 2, least.h + 333}})
            CheckPlaces(Place(layout.root, form, Screen(scale), window), window);
    }
}

} // namespace tarnex
