#include "tests/tools/tool_fixture.h"
#include "tests/ui/layout_checks.h"
#include "tools/firmware_flasher.h"
#include "tools/ocx_debug.h"

namespace tarnex {
namespace {

using ToolLayouts = ToolTest;

TEST_F(ToolLayouts, AreInOrder) {
    FirmwareFlasher flasher(world, dialog, u"1.0.0");
    flasher.Form_Load();
    CheckLayout(flasher, FlasherLayout());
    flasher.Text1.SetVisible(true);
    CheckLayout(flasher, FlasherLayout());
}

TEST_F(ToolLayouts, OfTheConsoleHaveRoomInBothWidths) {
    OCXDebug console(world);
    console.Form_Load();
    console.Text6.SetVisible(true);
    CheckLayout(console, ConsoleLayout());
    console.Command(1).Click();
    ASSERT_TRUE(clock.RunUntil([&] { return console.Command(43).Enabled(); }, 1min));
    const auto buttons = [&] {
        std::vector<std::pair<std::string, Rect>> places;
        const Layout layout = ConsoleLayout();
        for (const Placed& placed : Place(layout.root, console, Screen(), {960, 600}))
            if (placed.node->kind == LayoutNode::Kind::kButton)
                places.emplace_back(placed.node->control, placed.rect);
        return places;
    };
    const auto before = buttons();
    console.Command(43).Click();
    EXPECT_EQ(console.Width(), 15530);
    EXPECT_EQ(buttons(), before);
    CheckLayout(console, ConsoleLayout());
}

} // namespace
} // namespace tarnex
