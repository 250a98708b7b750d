#pragma once

#include "tools/firmware_update.h"
#include "ui/file_dialog.h"
#include "ui/layout.h"

namespace tarnex {

// The operator's window for loading new firmware into the unit from a HEX file: choose the file,
// connect, upgrade. What it has beside these three steps: another file, and the way to a unit
// without its program.
class FirmwareFlasher : public ToolForm, private UpdateObserver {
  public:
    // version: the program's, "1.0.327". The dialog must outlive the window.
    FirmwareFlasher(const ToolWorld& world, FileDialog& dialog, Text version);
    ~FirmwareFlasher() override {
        Cancel();
        CommonDialog_.Withdraw();
    }

    void Form_Load() override;
    // Adds a line with the time in front.
    void List1Additem(const Text& text);

    Button Command1{*this, "Command1", u"打　开"}; // its caption is the tool's state
    Button Command41{*this, "Command41", u"升　级"};
    Button Command6{*this, "Command6", u"退　出"};
    Button OtherFile{*this, "OtherFile", u"另选文件"};
    Button Rescue{*this, "Rescue", u"恢　复"}; // a unit that answers no greeting
    ListBox List1{*this, "List1"};
    TextBox Text1{*this, "Text1"};   // the address being written
    Label Figures{*this, "Figures"}; // percent, bytes and time left; shown with the address

    Timer GetAddrTimer;

  private:
    void Command1_Click();
    void ChooseFile();
    void FileChosen(const std::string& path);
    void TakeFile(const std::string& path);
    void ShowFigures(bool visible);
    void Follow();
    void EnableSteps();
    void EnableExtras();
    void DisableAll();
    void DisableExtras();
    bool Connected() const { return link_.core.discovery.ConnectStatus() != 0; }
    Task<> Connect();
    void Disconnect();
    void ListConnected(int port);
    Task<> Upgrade();
    Task<> CallLoader();
    Task<bool> UnitAnswers() override;
    void LoaderCalled() override { GetAddrTimer.Enable(); }
    void StepBegan(const Text& line) override;
    void EndInSuccess();
    void EndInFailure();
    void ListFailure();
    void Command6_Click();
    void HardwareLost();

    FileDialog& CommonDialog_;
    Text version_;
    int port_ = 0; // where the unit was last connected; 0 if never yet
    bool choosing_ = false;
    bool failed_ = false; // one can only leave, or do what stands beside the three steps
    ToolLink link_;
    FirmwareUpdate update_;
};

// Where its controls stand.
Layout FlasherLayout();

} // namespace tarnex
