#pragma once

#include "service/core_window.h"
#include "service/mail_window.h"
#include "service/service_parts.h"

namespace tarnex {

// The service's windows on the screen, and what the buttons of the main window do.
class ServiceWindows {
  public:
    // What the buttons ask of the service.
    struct Actions {
        std::function<void()> stop_all_timers;
        std::function<void()> debug_decided; // by hand, whatever a reset was to take
        std::function<void()> leave;         // the end of the process
    };
    // The parts must outlive the windows.
    ServiceWindows(ServiceParts& parts, Actions actions);

    // The main window; hidden, it takes those along that are reached from it only.
    void Show(bool visible);
    // Somebody can see the main window.
    bool Shown() const { return on_screen_ && on_screen_->Shown(); }
    // Lists whether a monitoring program is connected.
    void ShowLinkCheck();
    // The status display stands still from now on.
    void StopDisplay() { Timer1_.Stop(); }
    // Ends what a button has begun. Not from within it.
    void Cancel() { core_window_.Cancel(); }

  private:
    void WireButtons();
    void PressStop();
    void SwitchDebug();
    void ClearLists();
    // While the unit's program is incomplete, only a second call of it ends.
    void LeaveByHand();

    ServiceParts& parts_;
    MainWindow& window_;
    Actions actions_;
    MailWindow mail_window_;
    CoreWindow core_window_;
    Timer Timer1_;
    bool leave_warned_ = false;             // of the update at work
    std::unique_ptr<FormWindow> on_screen_; // the main window; nullptr without a view
    std::unique_ptr<FormWindow> mail_on_screen_;
    std::unique_ptr<FormWindow> core_on_screen_;
};

} // namespace tarnex
