#include "tests/world.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(DebugLists, EachLineGoesToItsOwnListWhileDebugModeIsOn) {
    DebugWindow window;
    std::string echoed;
    bool seen = false;
    DebugLists lists(
        window.boxes,
        [&](const std::string& list, const Text& line) {
            echoed += list + ":" + ToUtf8(line) + " ";
        },
        [&] { return seen; });
    const auto add_all = [&] {
        lists.List1Additem(u"a");
        lists.List2Additem(u"b");
        lists.mList1Additem(u"c");
        lists.mList2Additem(u"d");
        lists.mList3Additem(u"e");
        lists.mList4Additem(u"f");
        lists.mList5Additem(u"g");
    };
    add_all();
    EXPECT_EQ(echoed, "");
    EXPECT_TRUE(window.mList1.Lines().empty());
    lists.DebugOn = true;
    add_all();
    EXPECT_EQ(echoed, "List1:a List2:b mList1:c mList2:d mList3:e mList4:f mList5:g ");
    seen = true;
    lists.mList3Additem(u"h");
    EXPECT_EQ(echoed.find('h'), std::string::npos);
    EXPECT_EQ(window.mList3.Lines(), (std::vector<Text>{u"e", u"h"}));
    EXPECT_EQ(window.mList3.Selected(), 1);
}

} // namespace
} // namespace tarnex
