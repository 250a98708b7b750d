#include "service/core_window.h"
#include "service/mail_window.h"
#include "service/main_window.h"
#include "tests/tools/tool_fixture.h"
#include "tests/ui/screen_metrics.h"
#include "tools/firmware_flasher.h"
#include "tools/ocx_debug.h"

#include <set>

namespace tarnex {
namespace {

// Every control of a form stands in its layout once, and no two have the same key. All are visible.
void CheckNamesAndKeys(const Form& form, const std::vector<Placed>& placed) {
    std::multiset<std::string> in_form;
    std::multiset<std::string> in_layout;
    std::set<char> keys;
    for (const Control* control : form.Controls())
        in_form.insert(control->Name());
    for (const Placed& leaf : placed) {
        if (!leaf.node->control.empty())
            in_layout.insert(leaf.node->control);
        EXPECT_TRUE(leaf.node->key == 0 || keys.insert(leaf.node->key).second) << leaf.node->key;
    }
    EXPECT_EQ(in_layout, in_form);
}

void CheckPlaces(const std::vector<Placed>& placed, Size window) {
    for (auto a = placed.begin(); a != placed.end(); ++a) {
        const Rect r = a->rect;
        EXPECT_TRUE(r.x >= 10 && r.y >= 10 && r.x + r.w <= window.w - 10 &&
                    r.y + r.h <= window.h - 10)
            << a->node->control;
        for (auto b = placed.begin(); b != a; ++b)
            EXPECT_TRUE(r.x >= b->rect.x + b->rect.w || b->rect.x >= r.x + r.w ||
                        r.y >= b->rect.y + b->rect.h || b->rect.y >= r.y + r.h)
                << a->node->control << ", " << b->node->control;
    }
}

// Neither a small window, nor a large one, nor a fine screen makes controls overlap or leave it,
// and the common screens have room for all of them beside a panel and a title bar.
void CheckScreens(const Form& form, const Layout& layout) {
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

using WindowLayouts = ToolTest;

TEST_F(WindowLayouts, AreInOrderAndNoButtonMovesWhenMoreIsShown) {
    ToolLink link(world, [] {});
    UnitState state;
    MailSender mail(clock, tcp, ini, code_page, notices);
    MainWindow main;
    MailWindow mails(mail, clock);
    CoreWindow core({.core = link.core, .files = files, .unit = state, .set_to_research = [] {}});
    FirmwareFlasher flasher(world, dialog, u"1.0.0");
    OCXDebug console(world);
    flasher.Form_Load();
    console.Form_Load();
    for (const auto& [form, layout] : {std::pair<Form*, Layout>{&main, MainLayout()},
                                       {&mails, MailLayout()},
                                       {&core, CoreLayout()},
                                       {&flasher, FlasherLayout()},
                                       {&console, ConsoleLayout()}}) {
        SCOPED_TRACE(form->Name());
        CheckScreens(*form, layout);
        std::map<const LayoutNode*, Rect> buttons;
        for (const Placed& placed : Place(layout.root, *form, Screen(), {960, 600}))
            if (placed.node->kind == LayoutNode::Kind::kButton)
                buttons[placed.node] = placed.rect;
        for (Control* control : form->Controls())
            control->SetVisible(true);
        CheckScreens(*form, layout);
        const auto all = Place(layout.root, *form, Screen(), {960, 600});
        CheckNamesAndKeys(*form, all);
        for (const Placed& placed : all)
            if (const auto button = buttons.find(placed.node); button != buttons.end()) {
                EXPECT_EQ(placed.rect, button->second) << placed.node->control;
            }
    }
}

} // namespace
} // namespace tarnex
