#pragma once

#include "adapters/system/iconv_code_page.h"
#include "simulator/simulated_monitor.h"
#include "simulator/system/system_in_memory.h"

#include <map>

namespace tarnex {

// The settings file of a test, by section and key.
class SettingsText {
  public:
    SettingsText() {
        Set("Check", "Check1(13)", "1");
        for (int key = 8; key <= 12; ++key)
            Set("Check", "Check1(" + std::to_string(key) + ")", "1");
        Set("Check", "Check1(42)", "1");
        Set("Text", "Text1(34)", "13900000001");
        Set("Text", "Text1(35)", "13900000002");
        Set("Text", "Text1(36)", "+8613800100500");
        Set("Text", "Text1(32)", "TX-7");
        Set("Text", "Text1(37)", "log.db");
        Set("Combo", "Combo1(5)", "3");
        Set("Combo", "Combo1(6)", "1x"); // the unit gets its number
        Set("Check", "Check1(44)", "1");
        Set("Check", "Check1(45)", "0");
        Set("Check", "Check1(57)", "1");
    }
    SettingsText& Set(const std::string& section, const std::string& key, std::string value) {
        sections_[section][key] = std::move(value);
        return *this;
    }
    SettingsText& Remove(const std::string& section, const std::string& key) {
        sections_[section].erase(key);
        return *this;
    }
    std::string Content() const {
        std::string content;
        for (const auto& [section, keys] : sections_) {
            content += "[" + section + "]\r\n";
            for (const auto& [key, value] : keys)
                content += key + "=" + value + "\r\n";
        }
        return content;
    }

  private:
    std::map<std::string, std::map<std::string, std::string>> sections_;
};

inline const IconvCodePage kGbk("GBK");

// The system with the settings of a test and a monitoring program on link 1.
struct SimulatedSystem : SystemInMemory {
    SimulatedSystem() : SystemInMemory(SettingsText().Content(), kGbk) {}

    SettingsText settings; // what the store holds; changes go there with SetContent
    const CodePage& gbk = code_page;
    Monitor monitor{clock, network, gbk, {.name = u"WebMon"}};
};

} // namespace tarnex
