#pragma once

#include "events/event_record.h"
#include "platform/clock.h"
#include "settings/settings.h"

#include <array>
#include <optional>
#include <vector>

namespace tarnex {

// What people read about an event, for example
//     设备1"WebMon"的CPU负荷异常(服务器)。回复：1901重启设备，1902关闭设备。
Text NotificationText(const EventRecord& event);

// The most SMS that wait to be sent; a further one pushes the oldest out.
inline constexpr std::size_t kSMSFifoSize = 200;

// What keeps a notification from a number.
enum class HeldBack {
    kFlag,      // the event is not for SMS
    kQuietTime, // no SMS goes out now
    kNoUnit,    // the device link is switched off
    kSendCount, // it would be queued zero times
    kNumberOff, // notifications do not go to this number
};
// In words, by the names of the settings; recipient: u'1' or u'2'.
Text Words(HeldBack reason, char16_t recipient);

// The weekly quiet time at one moment. Both bounds are quiet. The times compare as texts, so a
// window over midnight never holds.
struct QuietTime {
    enum class State {
        kOff,      // switched off
        kOtherDay, // not on for this weekday
        kOutside,  // on, but not between the bounds
        kQuiet,    // no SMS may go out
    };
    State state = State::kOff;
    // This weekday's bounds, if it is on: "hh:mm" where the settings hold a time.
    Text from, to;
};

// What becomes of one event.
struct NotificationPlan {
    struct Number {
        char16_t recipient; // u'1' or u'2'
        std::vector<HeldBack> held_back;
        bool Gets() const { return held_back.empty(); }
    };
    EventRecord event;
    Text text;
    // The SMS that carry the text: as it is when it has fewer than 70 characters, else pieces
    // "{k/n}" + 65 characters, the last with all that is left.
    std::vector<Text> pieces;
    QuietTime quiet;
    std::array<Number, 2> numbers;
    // How often the pieces go to each number that gets them: as often as the settings say, until
    // they fill the queue, since more would only push the same ones out again. 0 when nobody does.
    int repetitions = 0;
    std::optional<Text> mail; // its one line; none when the event is not for mail

    // How many SMS are queued in all.
    std::size_t SMSCount() const;
    // The event is for SMS, but it is quiet time.
    bool HeldByQuietTime() const;
};

// What the service does with an event at that moment.
NotificationPlan Plan(EventRecord event, const Settings& settings, const CalendarTime& now);

// Whether link events go out by SMS, and by mail: "1" or "0" for each.
Text NotifyChannels(const Settings& settings);

} // namespace tarnex
