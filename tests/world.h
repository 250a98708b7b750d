#pragma once

#include "adapters/system/iconv_code_page.h"
#include "logging/debug_lists.h"
#include "logging/operator_notices.h"
#include "settings/my_ini_file.h"
#include "simulator/simulated_clock.h"
#include "simulator/simulated_stores.h"

namespace tarnex {

// The controls of the main window that modules write to.
struct DebugWindow {
    Form form{"TarnexComm", u""};
    ListBox List1{form, "List1"};
    ListBox List2{form, "List2"};
    ListBox mList1{form, "mList1"};
    ListBox mList2{form, "mList2"};
    ListBox mList3{form, "mList3"};
    ListBox mList4{form, "mList4"};
    ListBox mList5{form, "mList5"};
    CheckBox mChkSMSSendEnable{form, "mChkSMSSendEnable", u"", true};
    TextBox mText2{form, "mText2"};
    TextBox mText3{form, "mText3"};
    TextBox mText5{form, "mText5"};
    DebugLists::Boxes boxes{List1, List2, mList1, mList2, mList3, mList4, mList5};
    DebugLists lists{boxes};
};

// What most modules are built on. It is Monday, 6 May 2024, 08:00.
struct World {
    SimulatedClock clock;
    SimulatedSettingsStore store;
    IconvCodePage code_page{"GBK"};
    MyIniFile ini{store, code_page};
    std::vector<std::string> said; // to the operator
    OperatorNotices notices{[this](const std::string& line) { said.push_back(line); }};
    DebugWindow window;
};

} // namespace tarnex
