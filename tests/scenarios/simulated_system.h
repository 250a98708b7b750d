#pragma once

#include "adapters/system/system_code_page.h"
#include "settings/my_ini_file.h"
#include "simulator/simulated_monitor.h"
#include "simulator/system/system_in_memory.h"

namespace tarnex {

inline constexpr const char* kTestSettings =
    "[Check]\nCheck1(8)=1\nCheck1(9)=1\nCheck1(10)=1\nCheck1(11)=1\nCheck1(12)=1\nCheck1(13)=1\n"
    "Check1(42)=1\nCheck1(44)=1\nCheck1(45)=0\nCheck1(57)=1\n[Combo]\nCombo1(5)=3\nCombo1(6)=1x\n"
    "[Text]\nText1(32)=TX-7\nText1(34)=13900000001\nText1(35)=13900000002\n"
    "Text1(36)=+8613800100500\nText1(37)=log.db\n";

inline const SystemCodePage kGbk("GBK");

// The system with the settings of a test and a monitoring program on link 0.
struct SimulatedSystem : SystemInMemory {
    SimulatedSystem() : SystemInMemory(kTestSettings, kGbk) {}

    // The settings as another program edits them: the service's own keys stay.
    bool Set(TextView section, TextView key, TextView value) {
        return MyIniFile(store, code_page).WriteIniStr(section, key, value);
    }
    Text Setting(TextView section, TextView key) {
        return MyIniFile(store, code_page).GetIniStr(section, key);
    }

    Monitor monitor{clock, network, code_page, {.name = u"WebMon"}};
};

} // namespace tarnex
