#pragma once

#include "tests/scenarios/simulated_system.h"

#include <gtest/gtest.h>

namespace tarnex {

// Scenarios of the whole system.
struct SystemTest : SimulatedSystem, testing::Test {
    // The monitor greets as soon as the service is up.
    void StartServiceAndMonitor() {
        StartService();
        EXPECT_EQ(monitor.Start(), "");
    }
    void StartToReady() {
        StartServiceAndMonitor();
        ASSERT_TRUE(RunUntilReady(1min));
    }
    bool RunUntilReady(Duration limit) {
        return clock.RunUntil([&] { return State().UnitReady; }, limit);
    }
    bool RunUntilReceived(TextView code, Duration limit) {
        return clock.RunUntil([&] { return monitor.Received(code); }, limit);
    }
    const UnitState& State() { return service->Unit(); }
    MainWindow& Window() { return service->Window(); }

    // When the monitor received the first message that begins with prefix.
    std::optional<Duration> ReceivedAt(TextView prefix) const {
        for (const MonitorMessage& message : monitor.Messages())
            if (StartsWith(message.text, prefix))
                return message.at;
        return std::nullopt;
    }
    // What the unit was given to send, each with the number that it goes to.
    std::vector<Text> SentTexts() const {
        std::vector<Text> texts;
        for (const SentSms& sms : unit.Sent())
            texts.push_back(ToText(sms.number_index) + sms.text);
        return texts;
    }
};

} // namespace tarnex
