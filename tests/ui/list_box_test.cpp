#include "ui/form.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(ListBox, KeepsTheNewestLinesWhenItIsBounded) {
    Form form("form", u"");
    ListBox list(form, "list");
    list.KeepAtMost(10);
    for (int i = 0; i < 1003; ++i) {
        list.Add(ToText(i));
        ASSERT_LE(list.Lines().size(), 10u);
        ASSERT_EQ(list.Lines()[std::size_t(list.Selected())], ToText(i));
    }
    EXPECT_GE(list.Lines().size(), 5u);
    list.Clear();
    EXPECT_EQ(list.Selected(), -1);
}

} // namespace
} // namespace tarnex
