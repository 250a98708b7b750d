#pragma once

#include "logging/debug_lists.h"
#include "ui/form.h"
#include "ui/layout.h"

namespace tarnex {

// A list line for standard error: "List2: Send:~TX:RDNO1\r\n" and a line end, in UTF-8. Control
// characters are shown as escapes, so that one list line stays one line of the journal.
std::string EchoLine(const std::string& list, TextView line);

// The main window, shown in debug mode only: what each part of the service is doing.
class MainWindow : public Form, public DebugDisplay {
  public:
    using Echo = std::function<void(const std::string& list, const Text& line)>;

    // echo, when given, is told every line that stands on no screen; seen says whether the window
    // does, and without it it does not.
    explicit MainWindow(Echo echo = nullptr, std::function<bool()> seen = nullptr);

    void AddLine(List list, const Text& line) override;
    void ShowTotal(Total total, unsigned long count) override;
    void ShowUnit(const Text& state) override { mLblTarnexStatus.SetCaption(state); }
    void ShowSignal(int reading) override { mTxtTarnexCSQ.SetValue(ToText(reading)); }

    Label mLblTarnexStatus{*this, "mLblTarnexStatus"}; // the unit's state in words
    TextBox mTxtStatus{*this, "mTxtStatus"};           // "True" while the unit is ready
    TextBox mTxtTarnexCSQ{*this, "mTxtTarnexCSQ"};     // last valid signal reading
    TextBox mText1{*this, "mText1"};                   // losses of the unit
    TextBox mText2{*this, "mText2"};                   // SMS lost
    TextBox mText3{*this, "mText3"};                   // SMS failed
    TextBox mText4{*this, "mText4"};                   // supervision ticks
    TextBox mText5{*this, "mText5"};                   // SMS sent
    CheckBox mChkSMSSendEnable{*this, "mChkSMSSendEnable", u"发送短信", true};

    ListBox List1{*this, "List1"};   // device link, debug
    ListBox List2{*this, "List2"};   // device link, traffic
    ListBox mList1{*this, "mList1"}; // events
    ListBox mList2{*this, "mList2"}; // received SMS
    ListBox mList3{*this, "mList3"}; // device events
    ListBox mList4{*this, "mList4"}; // SMS log
    ListBox mList5{*this, "mList5"}; // control link

    Button Command1{*this, "Command1", u"Stop"};
    Button Command2{*this, "Command2", u"DebugOn"};
    Button Command3{*this, "Command3", u"Width"};  // of mList1
    Button Command4{*this, "Command4", u"Screen"}; // clears the lists
    Button Command5{*this, "Command5", u"Width"};  // of List1
    Button Command6{*this, "Command6", u"List2"};  // shows and hides it
    Button mCmdSend{*this, "mCmdSend", u"测试短信"};
    Button mCmdMail{*this, "mCmdMail", u"邮件"};       // shows the mail sender's window
    Button mCmdCore{*this, "mCmdCore", u"TarnexCore"}; // shows the device link's own window
    Button mCmdLinkCheck{*this, "mCmdLinkCheck", u"Link"};
    Button mCMDExit{*this, "mCMDExit", u"Exit"};

  private:
    Echo echo_;
    std::function<bool()> seen_;
};

// Where its controls stand.
Layout MainLayout();

} // namespace tarnex
