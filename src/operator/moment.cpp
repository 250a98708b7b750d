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

CalendarTime LocalNow(const OperatorWorld& world) {
    return world.local_time(world.now());
}

std::chrono::system_clock::time_point TimeOf(const OperatorWorld& world,
                                             const CalendarTime& local) {
    const std::chrono::sys_seconds wanted = AsIfUtc(local);
    std::chrono::sys_seconds time = wanted;
    for (int i = 0; i < 2; ++i) // the offset of the first guess may be another
        time = wanted - (AsIfUtc(world.local_time(time)) - time);
    return time;
}

std::int64_t UnixMs(std::chrono::system_clock::time_point time) {
    return std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

std::string IsoTime(const OperatorWorld& world, std::chrono::system_clock::time_point time) {
    using namespace std::chrono;
    const CalendarTime local = world.local_time(time);
    const auto offset = round<minutes>(AsIfUtc(local) - floor<seconds>(time));
    const hh_mm_ss zone(abs(offset));
    const auto two = [](long long number) { return ToUtf8(ToText(number, 2)); };
    return ToUtf8(DateText(local) + u"T" + TimeText(local)) + (offset < 0min ? "-" : "+") +
           two(zone.hours().count()) + ":" + two(zone.minutes().count());
}

std::string MomentText(const CalendarTime& time) {
    return std::string(WeekdayName(time.weekday)).substr(0, 3) + " " + ToUtf8(DateText(time)) +
           " " + ToUtf8(HourMinuteText(time));
}

const char* WeekdayName(int weekday) {
    return kWeekdays[weekday];
}

} // namespace tarnex
