#include "history/message_ledger.h"
#include "service/core_window.h"
#include "service/mail_window.h"
#include "service/main_window.h"
#include "tests/tools/tool_fixture.h"
#include "tools/firmware_flasher.h"
#include "tools/ocx_debug.h"
#include "ui/layout.h"
#include "ui/layout_parts.h"

#include <map>
#include <set>

namespace tarnex {
namespace {

using namespace layout_parts;

constexpr int kEm = 15; // at 96 dpi
constexpr int kBar = 16;

// A screen whose Latin letters are somewhat wider than those of faces for Chinese.
ScreenMetrics Screen(double scale = 1) {
    const int em = int(kEm * scale);
    return {.scale = scale, .em = em, .scroll_bar = kBar, .text_width = [em](TextView text) {
                int width = 0;
                for (const char16_t c : text)
                    width += c < 0x80 ? em * 9 / 16 : em;
                return width;
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
    const int least = 10 * kEm + kBar + 6;
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

TEST(Layout, ScrollBarsComeForWhatALowOrNarrowScreenHasNoRoomFor) {
    TwoLists form;
    const Size least = LeastSize(form.root, form, Screen());
    const auto more = [least](int w, int h) { return Size{least.w + w, least.h + h}; };
    struct {
        Size largest;
        Size window;
        Size seen;
    } const kRows[] = {
        {more(0, 0), more(0, 0), more(0, 0)},
        {more(99, -1), more(kBar, -1), more(0, -1)},
        {more(-1, 99), more(-1, kBar), more(-1, 0)},
        {more(kBar - 1, -1), more(kBar - 1, -1), more(-1, -1 - kBar)},
        {more(-1, kBar - 1), more(-1, kBar - 1), more(-1 - kBar, -1)},
    };
    for (const auto& [largest, window, seen] : kRows) {
        EXPECT_EQ(LeastWindow(form.root, form, Screen(), largest), window);
        const Sheet sheet = SheetOf(form.root, form, Screen(), window);
        EXPECT_EQ(sheet.seen, seen);
        EXPECT_EQ(sheet.whole, least);
    }
    EXPECT_EQ(SheetOf(form.root, form, Screen(), more(50, -1)).whole, more(50 - kBar, 0));
    for (const auto& [first, last, by] :
         {std::tuple{10, 90, 0}, {80, 105, 5}, {-5, 50, -5}, {20, 140, 20}})
        EXPECT_EQ(ScrollTo(first, last, 100), by);
}

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
    SimulatedHistory history;
    HistoryWriter writer(clock, history, notices);
    MessageLedger messages(writer, [](MessageWay, TextView) { return Text(); });
    MailSender mail(clock, tcp, ini, code_page, notices, messages);
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
