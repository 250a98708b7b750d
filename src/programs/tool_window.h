#pragma once

#include "tools/tool_form.h"
#include "ui/view.h"

#include <memory>

namespace tarnex {

using MakeTool = std::function<std::unique_ptr<ToolForm>(const ToolWorld& world, ScreenView& view)>;

// Shows a service tool's window until it is closed; the exit status. program: the name under which
// it speaks to its operator. advice: added where no window can be shown.
int RunToolWindow(const char* program, const std::string& advice, const MakeTool& make);

} // namespace tarnex
