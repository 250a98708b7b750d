#include "service/main_window.h"
#include "tests/tools/tool_fixture.h"
#include "ui/form_copies.h"
#include "ui/form_feed.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct SomeForm : Form {
    SomeForm() : Form("some", u"表") {}
    Label label{*this, "label"};
    Button button{*this, "button", u"写"};
    TextBox box{*this, "box"};
    CheckBox check{*this, "check", u"发送", false};
    ListBox list{*this, "list"};
};

// A form, its copy, and what is on the way between them.
class FormCopy : public testing::Test {
  protected:
    class Window : public CopyWindow {
      public:
        Window(FormCopy& test, Form& copy) : test_(test) { test_.copy = &copy; }
        ~Window() override { test_.copy = nullptr; }
        void ControlChanged(Control&) override {}
        void FormChanged() override {}
        void Refresh() override {}

      private:
        FormCopy& test_;
    };

    FormCopy() {
        feed.Watch(form);
        form.button.OnClick([this] { ++clicks; });
        form.OnClose([this] { form.SetVisible(false); });
        form.SetVisible(true);
    }
    ~FormCopy() override { feed.Unwatch(form); }

    // Tells the copies; the number of packets.
    int Tell() {
        int packets = 0;
        for (; feed.Pending(); ++packets) {
            const std::string packet = feed.NextPacket();
            EXPECT_LE(packet.size(), kLongestPacket);
            copies->Apply(packet);
        }
        return packets;
    }
    // What the operator has done arrives.
    void Arrive() {
        for (const std::string& packet : std::exchange(sent, {}))
            feed.Take(packet);
    }
    template <class Kind>
    Kind& Copy(const char* name) {
        return dynamic_cast<Kind&>(*copy->Find(name));
    }

    SomeForm form;
    int clicks = 0;
    FormFeed feed{{.shown = [] {}, .hidden = [] {}, .changed = [] {}}};
    Form* copy = nullptr;
    std::vector<std::string> sent;
    TestFileDialog dialog;
    const FormCopies::MakeWindow make = [this](Form& made) {
        return std::make_unique<Window>(*this, made);
    };
    const FormCopies::Send send = [this](const std::string& packet) { sent.push_back(packet); };
    std::optional<FormCopies> copies{std::in_place, make, dialog, send};
};

TEST_F(FormCopy, HoldsWhatTheFormHolds) {
    const auto check = [this] {
        Tell();
        EXPECT_EQ(copy->Caption(), form.Caption());
        EXPECT_EQ(copy->Width(), form.Width());
        for (const Control* own : form.Controls()) {
            const Control& control = *copy->Find(own->Name());
            EXPECT_EQ(typeid(control), typeid(*own));
            EXPECT_EQ(control.Enabled(), own->Enabled());
            EXPECT_EQ(control.Visible(), own->Visible());
            EXPECT_EQ(control.Width(), own->Width());
            EXPECT_EQ(control.Caption(), own->Caption());
        }
        EXPECT_EQ(Copy<TextBox>("box").Value(), form.box.Value());
        EXPECT_EQ(Copy<CheckBox>("check").Checked(), form.check.Checked());
    };
    check();
    form.SetCaption(u"新表");
    form.SetWidth(9915);
    form.label.SetCaption(u"就绪");
    form.button.SetEnabled(false);
    form.box.SetVisible(false);
    form.box.SetWidth(150);
    form.box.SetValue(u"\xD800"); // half a character
    form.check.SetChecked(true);
    check();
    form.SetVisible(false);
    Tell();
    EXPECT_EQ(copy, nullptr);
    form.SetVisible(true);
    check();
    feed.Forget(); // by a view that has died
    copies.emplace(make, dialog, send);
    check();
}

// Of a damaged packet stays what could be read; nothing breaks.
TEST_F(FormCopy, JunkDoesNoHarm) {
    form.list.Add(u"1");
    const std::string packet = feed.NextPacket();
    for (std::size_t size = 0; size < packet.size(); ++size)
        copies->Apply(packet.substr(0, size));
    copies->Apply(packet);
    Copy<TextBox>("box").SetValue(u"a");
    copy->Close();
    for (const std::string& back : sent)
        for (std::size_t size = 0; size < back.size(); ++size) {
            feed.Take(back.substr(0, size));
            feed.Take(back.substr(0, size) + std::string(8, '\xFF'));
        }
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(clicks, 0);
}

TEST_F(FormCopy, WhatTheLogicHasSetSinceWins) {
    Tell();
    auto& box = Copy<TextBox>("box");
    box.SetValue(u"ab");
    form.box.SetEnabled(true);
    form.box.SetWidth(99); // no reason to take back what is being typed
    Tell();
    EXPECT_EQ(box.Value(), u"ab");
    Arrive();
    EXPECT_EQ(form.box.Value(), u"ab");
    EXPECT_EQ(Tell(), 0); // no echo

    box.SetValue(u"abc");
    form.box.SetValue(u"读出");
    Arrive();
    Tell();
    EXPECT_EQ(form.box.Value(), u"读出");
    EXPECT_EQ(box.Value(), u"读出");

    auto& check = Copy<CheckBox>("check");
    check.SetChecked(true);
    Arrive();
    EXPECT_TRUE(form.check.Checked());
    form.check.SetEnabled(false);
    check.SetChecked(false);
    Arrive();
    Tell();
    EXPECT_TRUE(check.Checked());
}

TEST_F(FormCopy, AClickCountsForWhatTheOperatorHasSeen) {
    Tell();
    auto& button = Copy<Button>("button");
    button.Click();
    Arrive();
    EXPECT_EQ(clicks, 1);
    button.Click();
    form.button.SetCaption(u"擦除");
    Arrive();
    EXPECT_EQ(clicks, 1);
    Tell();
    button.Click();
    Arrive();
    EXPECT_EQ(clicks, 2);

    button.Click();
    copy->Close();
    form.SetVisible(false);
    form.SetVisible(true); // another window
    Arrive();
    EXPECT_EQ(clicks, 2);
    EXPECT_TRUE(form.Visible());
}

TEST_F(FormCopy, ListsAreFollowedInParts) {
    for (int i = 0; i < 10'000; ++i)
        form.list.Add(u"第" + ToText(i));
    form.list.Select(5000);
    EXPECT_GT(Tell(), 1);
    auto& list = Copy<ListBox>("list");
    EXPECT_EQ(list.Lines(), form.list.Lines());
    EXPECT_EQ(list.Selected(), 5000);

    form.list.KeepAtMost(1000);
    list.Select(9999); // crosses the next line
    form.list.Add(u"last");
    Arrive();
    Tell();
    EXPECT_EQ(list.Lines(), form.list.Lines());
    EXPECT_EQ(list.Selected(), form.list.Selected());
    list.Select(7);
    Arrive();
    EXPECT_EQ(form.list.Selected(), 7);
    EXPECT_EQ(Tell(), 0);

    form.list.Clear();
    // Nobody takes packets for a while: what is gone by then is never told.
    for (int i = 0; i < 100'000; ++i)
        form.list.Add(Text(100, u'x'));
    EXPECT_LE(Tell(), 5);
    EXPECT_EQ(list.Lines(), form.list.Lines());
    form.list.Add(Text(70'000, u'长'));
    Tell();
    EXPECT_EQ(list.Lines().back().size(), 65'536u);
}

TEST_F(FormCopy, AFileIsAskedForOnce) {
    std::string chosen;
    feed.Show(u"*.hex", [&](const std::string& path) { chosen = path; });
    Tell();
    feed.Withdraw();
    const auto late = dialog.Choose;
    Tell();
    EXPECT_FALSE(dialog.Choose);
    late("/late");
    Arrive();
    EXPECT_EQ(chosen, "");
    feed.Show(u"*.hex", [&](const std::string& path) { chosen = path; });
    Tell();
    dialog.Choose("/\xFF.hex");
    Arrive();
    EXPECT_EQ(chosen, "/\xFF.hex");
}

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
