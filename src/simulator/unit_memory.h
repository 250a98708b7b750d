#pragma once

#include <string>

namespace tarnex {

// What a unit holds, as bytes of its line. A restart clears the display and the PC alarm only.
struct UnitMemory {
    std::string Number1 = "13900000001";
    std::string Number2 = "13900000002";
    std::string SmsCentre{};           // hex text
    std::string AlarmTime{};           // WRDT
    std::string SendTimes{};           // WRAT
    std::string PowerAlarm = "0";      // "1" switched on
    std::string ConnectionAlarm = "0"; // "1" switched on
    std::string Name{};                // hex text
    std::string NameMode = "0";        // "1" the name is used
    std::string Serial = "SIM00000001";
    std::string Version = "TARNEX-SIM 1.0";
    std::string Lcd1{};
    std::string Lcd2{};
    std::string PcAlarm{};        // "" no alarm
    std::string AlarmState = "0"; // RDALARM; "1" while mains power is lost
};

} // namespace tarnex
