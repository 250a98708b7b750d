#pragma once

#include "tests/scenarios/simulated_system.h"

#include <gtest/gtest.h>

namespace tarnex {

// Scenarios of the whole system.
class SystemTest : public testing::Test, protected SimulatedSystem {
  protected:
    // The monitor greets as soon as the service is up.
    void StartServiceAndMonitor() {
        StartService();
        EXPECT_EQ(monitor.Start(), "");
    }
    void StartToReady() {
        StartServiceAndMonitor();
        ASSERT_TRUE(clock.RunUntil([&] { return service->Unit().UnitReady; }, 1min));
    }
    // The settings as another program edits them: the service's own keys stay.
    void EditSetting(TextView section, TextView key, TextView value) {
        MyIniFile other(store, gbk);
        ASSERT_TRUE(other.WriteIniStr(section, key, value));
    }
    Text Setting(TextView section, TextView key) {
        return MyIniFile(store, gbk).GetIniStr(section, key);
    }
    // When the monitor received the first message that begins with prefix.
    std::optional<Duration> ReceivedAt(TextView prefix) const {
        for (const MonitorMessage& message : monitor.Messages())
            if (StartsWith(message.text, prefix))
                return message.at;
        return std::nullopt;
    }
    std::vector<Text> SentTexts() const {
        std::vector<Text> texts;
        for (const SentSms& sms : unit.Sent())
            texts.push_back(ToText(sms.number_index) + sms.text);
        return texts;
    }
    // Column of every log row so far, "-" where it was not written.
    std::vector<Text> Column(std::size_t position) const {
        std::vector<Text> column;
        for (const LogRow& row : log.Rows) {
            if (const Text* text = std::get_if<Text>(&row[position]))
                column.push_back(*text);
            else if (const int* number = std::get_if<int>(&row[position]))
                column.push_back(ToText(*number));
            else
                column.push_back(u"-");
        }
        return column;
    }
};

} // namespace tarnex
