#pragma once

#include "adapters/system/system_code_page.h"
#include "logging/debug_lists.h"
#include "logging/log_writer.h"
#include "logging/main_job_notices.h"
#include "settings/my_ini_file.h"
#include "simulator/simulated_clock.h"
#include "simulator/simulated_mail_server.h"
#include "simulator/simulated_network.h"
#include "simulator/simulated_serial.h"
#include "simulator/simulated_stores.h"
#include "simulator/simulated_unit.h"

#include <map>

#include <gtest/gtest.h>

namespace tarnex {

// What modules tell the main window.
struct DebugWindow : DebugDisplay {
    void AddLine(List list, const Text& line) override { lines[list].push_back(line); }
    void ShowTotal(Total total, unsigned long count) override { totals[total] = count; }
    std::map<List, std::vector<Text>> lines;
    std::map<Total, unsigned long> totals;
    DebugLists lists{this};
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
    SystemCodePage code_page{"GBK"};
    MyIniFile ini{store, code_page};
    std::vector<std::string> said; // to the operator
    OperatorNotices notices{[this](NoticeLevel, const std::string& line) { said.push_back(line); }};
    MainJobNotices main_job{clock, notices};
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
