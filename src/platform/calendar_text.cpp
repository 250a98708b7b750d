#include "platform/calendar_text.h"

namespace tarnex {

Text DateText(const CalendarTime& time) {
    return ToText(time.year, 4) + u"-" + ToText(time.month, 2) + u"-" + ToText(time.day, 2);
}

Text TimeText(const CalendarTime& time) {
    return HourMinuteText(time) + u":" + ToText(time.second, 2);
}

Text HourMinuteText(const CalendarTime& time) {
    return ToText(time.hour, 2) + u":" + ToText(time.minute, 2);
}

} // namespace tarnex
