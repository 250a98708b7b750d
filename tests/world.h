#pragma once

#include "adapters/system/iconv_code_page.h"
#include "logging/debug_lists.h"
#include "logging/log_writer.h"
#include "settings/my_ini_file.h"
#include "simulator/simulated_clock.h"
#include "simulator/simulated_mail_server.h"
#include "simulator/simulated_network.h"
#include "simulator/simulated_serial.h"
#include "simulator/simulated_stores.h"
#include "simulator/simulated_unit.h"

#include <gtest/gtest.h>

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

// The columns of a log row in one line, "-" where nothing was written; the first is the table's
// own.
inline Text RowText(const LogRow& row) {
    Text line;
    for (std::size_t i = 1; i < row.size(); ++i) {
        line += i == 1 ? u"" : u"|";
        if (const Text* text = std::get_if<Text>(&row[i]))
            line += *text;
        else if (const int* number = std::get_if<int>(&row[i]))
            line += ToText(*number);
        else
            line += u"-";
    }
    return line;
}

// What modules are built on: the machine, its network, a unit that stands on no port yet, and the
// lists and notices of the service. It is Monday, 6 May 2024, 08:00.
struct World {
    SimulatedClock clock;
    SimulatedSerialPorts ports{clock};
    SimulatedUnit unit{clock};
    SimulatedNetwork network{clock};
    SimulatedTcpNetwork tcp{clock};
    SimulatedLogTable table;
    SimulatedLineFiles files;
    SimulatedSettingsStore store;
    IconvCodePage code_page{"GBK"};
    MyIniFile ini{store, code_page};
    std::vector<std::string> said; // to the operator
    OperatorNotices notices{[this](const std::string& line) { said.push_back(line); }};
    DebugWindow window;
    DebugLists& lists = window.lists;
    LogWriter log{clock, table, notices};

    // Every row of the log so far.
    std::vector<Text> Rows() const {
        std::vector<Text> lines;
        for (const LogRow& row : table.Rows)
            lines.push_back(RowText(row));
        return lines;
    }
};

// A test of a module in this world.
struct WorldTest : World, testing::Test {};

} // namespace tarnex
