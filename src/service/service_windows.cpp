#include "service/service_windows.h"

#include "device/flash_report.h"

namespace tarnex {

namespace {

constexpr Duration kStatusPeriod = 500ms;

struct WidthPair {
    int wide;   // twips
    int narrow; // twips
};
constexpr WidthPair kEventListWidths{9255, 3975};
constexpr WidthPair kDebugListWidths{8415, 5175};

void ToggleWidth(ListBox& list, WidthPair widths) {
    list.SetWidth(list.Width() == widths.wide ? widths.narrow : widths.wide);
}

} // namespace

ServiceWindows::ServiceWindows(ServiceParts& parts, Actions actions)
    : parts_(parts), window_(parts.window), actions_(std::move(actions)),
      mail_window_(parts.mail, parts.world.clock),
      core_window_({.core = parts.core,
                    .files = parts.world.files,
                    .unit = parts.unit,
                    .set_to_research =
                        [this] {
                            leave_warned_ = false;
                            parts_.connection.SetToResearch(UnitLoss::kOther);
                        }}),
      Timer1_(parts.world.clock, kStatusPeriod,
              [this] { window_.mTxtStatus.SetValue(parts_.unit.UnitReady ? u"True" : u"False"); }) {
    WireButtons();
    if (View* const view = parts.world.view) {
        on_screen_ = view->Attach(parts.window);
        mail_on_screen_ = view->Attach(mail_window_);
        core_on_screen_ = view->Attach(core_window_);
    }
}

void ServiceWindows::Show(bool visible) {
    window_.SetVisible(visible);
    if (!visible) // these are reached from the main window only
        for (Form* window : {static_cast<Form*>(&mail_window_), static_cast<Form*>(&core_window_)})
            window->SetVisible(false);
    // The status display ticks only while somebody can see it.
    if (Shown())
        Timer1_.Enable();
    else
        Timer1_.Disable();
}

void ServiceWindows::WireButtons() {
    window_.Command1.OnClick([this] { PressStop(); });
    window_.Command2.OnClick([this] { SwitchDebug(); });
    window_.Command3.OnClick([this] { ToggleWidth(window_.mList1, kEventListWidths); });
    window_.Command4.OnClick([this] { ClearLists(); });
    window_.Command5.OnClick([this] { ToggleWidth(window_.List1, kDebugListWidths); });
    window_.Command6.OnClick([this] { window_.List2.SetVisible(!window_.List2.Visible()); });
    window_.mCmdSend.OnClick([this] { parts_.queue.mCmdSend_Click(); });
    window_.mCmdMail.OnClick([this] { mail_window_.SetVisible(true); });
    window_.mCmdCore.OnClick([this] { core_window_.SetVisible(true); });
    window_.mCmdLinkCheck.OnClick([this] { ShowLinkCheck(); });
    window_.mCMDExit.OnClick([this] { LeaveByHand(); });
    window_.OnClose([this] { LeaveByHand(); });
}

// What stands still looks the same as what has nothing to do, so the operator is told.
void ServiceWindows::PressStop() {
    actions_.stop_all_timers();
    for (const Text& line :
         {Text(u"Stop：已停止查找和巡检设备、发送短信、发送邮件、心跳和链路检查。"),
          Text(u"通知仍然记录和排队，但不发出；设置刷新和状态显示继续。"),
          u"重新开始：按Exit结束服务，再启动它(" + FromUtf8(parts_.world.words.start_service) +
              u")。"})
        window_.mList1.Add(line);
}

void ServiceWindows::SwitchDebug() {
    actions_.debug_decided();
    const bool on = window_.Command2.Caption() == u"DebugOn";
    window_.Command2.SetCaption(on ? u"DebugOff" : u"DebugOn");
    parts_.lists.DebugOn = on;
    parts_.core.OCXDebug(on ? u"On" : u"Off");
}

void ServiceWindows::ClearLists() {
    for (ListBox* list : {&window_.mList2, &window_.mList3, &window_.mList4, &window_.mList5,
                          &window_.List1, &window_.List2})
        list->Clear();
}

void ServiceWindows::ShowLinkCheck() {
    parts_.lists.mList3Additem(parts_.link.LinkCheck() ? u"True" : u"False");
}

void ServiceWindows::LeaveByHand() {
    if (parts_.core.firmware.ProgramIncomplete() && !std::exchange(leave_warned_, true))
        window_.mList1.Add(Text(kCloseWarning));
    else
        actions_.leave();
}

} // namespace tarnex
