#pragma once

#include "logging/debug_lists.h"

namespace tarnex {

// The controls of the main window that the modules of this folder write to.
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
    DebugLists lists{{List1, List2, mList1, mList2, mList3, mList4, mList5}};
};

} // namespace tarnex
