#pragma once

#include "ui/view.h"

#include <functional>
#include <memory>
#include <string>

namespace tarnex {

class AsioLoop;

// What the windows get from the program that shows them; everything must outlive them.
struct ViewHost {
    AsioLoop& loop;
    std::function<void(const std::string& line)> notice; // for what an operator must act on
    // Every window is gone; why in words. From the loop.
    std::function<void(const std::string& why)> lost;
};

// The windows of this machine.
class SystemView : public ScreenView {
  public:
    // Gets ready before a form is visible and waits until there is a screen. "", or what stands in
    // the way. For programs that have nothing else to do.
    virtual std::string Open() = 0;
};

std::unique_ptr<SystemView> MakeView(ViewHost host);

} // namespace tarnex
