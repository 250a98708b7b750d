#pragma once

#include "adapters/system/system_code_page.h"
#include "settings/my_ini_file.h"
#include "simulator/simulated_monitor.h"
#include "simulator/system/system_in_memory.h"

namespace tarnex {

inline constexpr const char* kTestSettings = R"([Check]
Check1(8)=1
Check1(9)=1
Check1(10)=1
Check1(11)=1
Check1(12)=1
Check1(13)=1
Check1(42)=1
Check1(44)=1
Check1(45)=0
Check1(57)=1
[Combo]
Combo1(5)=3
Combo1(6)=1x
[Text]
Text1(32)=TX-7
Text1(34)=13900000001
Text1(35)=13900000002
Text1(36)=+8613800100500
Text1(37)=log.db
)";

inline const SystemCodePage kGbk("GBK");

// The system with the settings of a test and a monitoring program on link 1.
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
