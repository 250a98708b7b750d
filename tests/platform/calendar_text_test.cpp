#include "platform/calendar_text.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(CalendarText, EveryPartHasItsFixedWidth) {
    const CalendarTime time{
        .year = 2024, .month = 5, .day = 6, .hour = 7, .minute = 8, .second = 9};
    EXPECT_EQ(DateText(time), u"2024-05-06");
    EXPECT_EQ(TimeText(time), u"07:08:09");
    EXPECT_EQ(HourMinuteText(time), u"07:08");
}

} // namespace
} // namespace tarnex
