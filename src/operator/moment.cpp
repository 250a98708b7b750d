#include "operator/moment.h"

#include "platform/calendar_text.h"

#include <string_view>
#include <vector>

namespace tarnex {

namespace {

constexpr const char* kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

// Reads text by a form in which each digit place is "9"; the numbers in their order.
std::optional<std::vector<int>> Numbers(std::string_view text, std::string_view form) {
    if (text.size() != form.size())
        return std::nullopt;
    std::vector<int> numbers;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (form[i] != '9') {
            if (text[i] != form[i])
                return std::nullopt;
            continue;
        }
        if (!digit)
            return std::nullopt;
        if (i == 0 || form[i - 1] != '9')
            numbers.push_back(0);
        numbers.back() = numbers.back() * 10 + (text[i] - '0');
    }
    return numbers;
}

} // namespace

std::optional<CalendarTime> ParseMoment(const std::string& text) {
    auto numbers = Numbers(text, "9999-99-99 99:99");
    if (!numbers)
        numbers = Numbers(text + " 00:00", "9999-99-99 99:99");
    if (!numbers)
        return std::nullopt;
    const auto& n = *numbers;
    const auto date = std::chrono::year(n[0]) / n[1] / n[2];
    if (!date.ok() || n[3] > 23 || n[4] > 59)
        return std::nullopt;
    const std::chrono::weekday weekday{std::chrono::sys_days(date)};
    return CalendarTime{.year = n[0],
                        .month = n[1],
                        .day = n[2],
                        .hour = n[3],
                        .minute = n[4],
                        .weekday = int(weekday.c_encoding())};
}

std::chrono::minutes OffsetFromUtc(const OperatorWorld& world) {
    using namespace std::chrono;
    const CalendarTime local = world.calendar();
    const auto as_utc = sys_days(year(local.year) / local.month / local.day) + hours(local.hour) +
                        minutes(local.minute) + seconds(local.second);
    return round<minutes>(as_utc - floor<seconds>(world.now()));
}

std::string IsoTime(long long seconds, std::chrono::minutes offset) {
    using namespace std::chrono;
    const sys_seconds local = sys_seconds(std::chrono::seconds(seconds)) + offset;
    const sys_days day = floor<days>(local);
    const year_month_day date(day);
    const hh_mm_ss time(local - day);
    const hh_mm_ss zone(abs(offset));
    const auto two = [](auto number) { return ToUtf8(ToText(static_cast<long long>(number), 2)); };
    return ToUtf8(ToText(int(date.year()), 4)) + "-" + two(unsigned(date.month())) + "-" +
           two(unsigned(date.day())) + "T" + two(time.hours().count()) + ":" +
           two(time.minutes().count()) + ":" + two(time.seconds().count()) +
           (offset < 0min ? "-" : "+") + two(zone.hours().count()) + ":" +
           two(zone.minutes().count());
}

std::string MomentText(const CalendarTime& time) {
    return std::string(WeekdayName(time.weekday)).substr(0, 3) + " " + ToUtf8(DateText(time)) +
           " " + ToUtf8(HourMinuteText(time));
}

const char* WeekdayName(int weekday) {
    return kWeekdays[weekday];
}

} // namespace tarnex
