#pragma once

#include "tools/tool_form.h"
#include "ui/layout.h"

#include <array>

namespace tarnex {

// The engineer's test window for the device link: a button for each of its procedures.
class OCXDebug : public ToolForm, private DebugDisplay {
  public:
    static constexpr int kButtons = 45;

    explicit OCXDebug(const ToolWorld& world);
    ~OCXDebug() override { Cancel(); }

    void Form_Load() override;
    // Command<number>, 1 to 45.
    Button& Command(int number) { return *buttons_.at(std::size_t(number - 1)); }

    TextBox Text1{*this, "Text1"}; // first alarm number
    TextBox Text2{*this, "Text2"}; // second alarm number
    TextBox Text3{*this, "Text3"}; // SMS service centre
    TextBox Text4{*this, "Text4"}; // name of the unit
    TextBox Text5{*this, "Text5"}; // text of a test message
    TextBox Text6{*this, "Text6"}; // the address being written
    TextBox Text7{*this, "Text7"}; // serial number to write
    ListBox List1{*this, "List1"}; // what the buttons do
    ListBox List2{*this, "List2"}; // received SMS
    // What the device link says and what passes the line, while its debug output is on.
    ListBox DebugList{*this, "DebugList"};
    ListBox TrafficList{*this, "TrafficList"};

    Timer GetSMSTimer;
    Timer GetAddrTimer;

  private:
    // One button. It either calls the device link and lists the answer, or runs a procedure.
    struct ConsoleCommand {
        TextView caption; // at first
        TextView label;   // listed before the call; "" for none
        Task<Text> (*call)(CommandSet& unit, OCXDebug& console);
        TextBox OCXDebug::*box; // that takes the answer; nullptr for none
        Task<> (OCXDebug::*procedure)();
    };
    static const std::array<ConsoleCommand, kButtons> kCommands; // Command1 first

    void AddLine(List list, const Text& line) override;
    void Log(const Text& text) { List1.Add(text); }
    void DisableButtons();
    void EnableButtons();
    void LoadBoxes();
    void SaveBoxes();
    void GetSMS();
    void HardwareLost();

    Task<> Press(int number);
    Task<> Run(int number);

    // What single buttons do.
    Task<> ToggleLink();
    Task<> Leave();
    Task<> SendAndWait();
    Task<> Initialise();
    Task<> AlarmsOff();
    Task<> Upgrade();
    void ListFailure(const FlashProgress& progress, int port);
    Task<> ToggleDebug();
    Task<> FillTestValues();
    Task<Text> WriteNextSerial();
    Text TestMessage() const { return Text4.Value() + u"说:" + Text5.Value(); }

    ToolLink link_;
    std::array<std::unique_ptr<Button>, kButtons> buttons_;
};

// Where its controls stand.
Layout ConsoleLayout();

} // namespace tarnex
