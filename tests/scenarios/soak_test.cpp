#include "tests/scenarios/system_fixture.h"

#include <random>

namespace tarnex {
namespace {

// Trouble of every kind at random instants, then calm: the service must always come back.
class Soak : public SystemTest {
  protected:
    int Random(int below) { return int(random_() % unsigned(below)); }

    void MakeTrouble() {
        switch (Random(11)) {
        case 0:
            Unplug();
            break;
        case 1:
            Plug();
            break;
        case 2:
            unit.Faults.Silent = !unit.Faults.Silent;
            break;
        case 3:
            unit.Boot();
            break;
        case 4:
            unit.Say(std::string(std::size_t(Random(6000)), char(Random(256))));
            break;
        case 5:
            unit.Faults.TwoChunks = !unit.Faults.TwoChunks;
            unit.Faults.Noise = Random(4) == 0;
            unit.Faults.NoLineEnd = Random(4) == 0;
            break;
        case 6:
            unit.Outcome = SmsOutcome(Random(3));
            break;
        case 7:
            log.Problem = Random(2) ? "the log is locked" : "";
            break;
        case 8:
            EditSetting(u"Text", u"Text1(34)", u"1390000000" + ToText(Random(10)));
            break;
        case 9:
            unit.ReceiveSms(u"13900000002", u"1301");
            break;
        case 10:
            monitor.Send((Random(2) ? u"txSendSMS" : u"") + RandomText());
            break;
        }
    }
    Text RandomText() {
        Text text(std::size_t(Random(300)), u'0');
        for (char16_t& c : text)
            c = char16_t(Random(4) ? u'0' + Random(10) : Random(0x10000));
        return text;
    }
    void CalmDown() {
        unit.Faults = {};
        unit.Outcome = SmsOutcome::kSent;
        log.Problem.clear();
        Plug();
    }
    void Plug() {
        if (port_ != 0)
            return;
        port_ = 1 + Random(20);
        ports.Plug(port_, unit);
    }
    void Unplug() {
        if (port_ != 0)
            ports.Unplug(port_);
        port_ = 0;
    }
    bool Delivers(const Text& memo) {
        monitor.SendEvent({.service = 3, .state = 1, .by_mail = false, .memo = memo});
        return clock.RunUntil(
            [&] { return !unit.Sent().empty() && Contains(unit.Sent().back().text, memo); }, 5min);
    }

  private:
    std::mt19937 random_{20240506};
    int port_ = 3;
};

TEST_F(Soak, AfterAnyTroubleAlarmsGoOutAgain) {
    StartToReady();
    for (int round = 0; round < 60; ++round) {
        for (int i = 0; i < 12; ++i) {
            MakeTrouble();
            clock.RunFor(Duration(Random(60'000)));
        }
        CalmDown();
        // At worst a silent unit is noticed after 90 s, and its next greeting waits for a scan.
        clock.RunFor(5min);
        ASSERT_TRUE(clock.RunUntil([&] { return service->Unit().UnitReady; }, 5min)) << round;
        ASSERT_TRUE(Delivers(u"round " + ToText(round))) << round;
    }
    EXPECT_FALSE(ended_at);
}

} // namespace
} // namespace tarnex
