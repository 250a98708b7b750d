#include "service/main_window.h"

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

TEST(MainWindow, EachLineAndTotalStandsInItsOwnBox) {
    std::string echoed;
    MainWindow window([&](const std::string& list, const Text& line) {
        echoed += list + ":" + ToUtf8(line) + " ";
    });
    DebugLists lists(&window);
    lists.List1Additem(u"nowhere");
    lists.Count(Total(0));
    lists.DebugOn = true;
    lists.List1Additem(u"a");
    lists.List2Additem(u"b");
    lists.mList1Additem(u"c");
    lists.mList2Additem(u"d");
    lists.mList3Additem(u"e");
    lists.mList4Additem(u"f");
    lists.mList5Additem(u"g");
    for (std::size_t total = 0; total < kTotals; ++total)
        for (std::size_t count = 0; count <= total; ++count)
            lists.Count(Total(total));
    EXPECT_EQ(echoed, "List1:a List2:b mList1:c mList2:d mList3:e mList4:f mList5:g ");
    EXPECT_EQ(window.mText1.Value() + window.mText4.Value() + window.mText5.Value() +
                  window.mText3.Value() + window.mText2.Value(),
              u"12345");
}

} // namespace
} // namespace tarnex
