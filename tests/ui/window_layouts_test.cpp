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

void CollectLeaves(const LayoutNode& node, std::vector<const LayoutNode*>& leaves) {
    if (!node.control.empty())
        leaves.push_back(&node);
    for (const LayoutNode& child : node.children)
        CollectLeaves(child, leaves);
}

// Every control stands in the layout once, and no two have the same key.
void CheckNamesAndKeys(const Form& form, const Layout& layout) {
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

bool Overlap(Rect a, Rect b) {
    return a.x < b.x + b.w && b.x < a.x + a.w && a.y < b.y + b.h && b.y < a.y + a.h;
}

void CheckPlaces(const std::vector<Placed>& placed, Size window) {
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

std::map<std::string, Rect> Buttons(const Form& form, const Layout& layout) {
    std::map<std::string, Rect> places;
    for (const Placed& placed : Place(layout.root, form, Screen(), {960, 600}))
        if (placed.node->kind == LayoutNode::Kind::kButton)
            places[placed.node->control] = placed.rect;
    return places;
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
        CheckNamesAndKeys(*form, layout);
        CheckScreens(*form, layout);
        const auto before = Buttons(*form, layout);
        for (Control* control : form->Controls())
            control->SetVisible(true);
        CheckScreens(*form, layout);
        EXPECT_EQ(Buttons(*form, layout), before);
    }
}

} // namespace
} // namespace tarnex
