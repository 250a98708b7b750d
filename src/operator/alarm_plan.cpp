#include "operator/alarm_plan.h"

#include <algorithm>
#include <random>

namespace tarnex {

namespace {

enum State { kAbnormal = 1, kNormal = 2, kLost = 3 };

struct Trouble {
    int service;
    State state;
    int action;
    int per_month;    // how often, in 30 days
    int shortest;     // min until all is well again
    int longest;      // min; 0: nobody reports that it is over
    const char* memo; // a "#" becomes a figure
};

// clang-format off
constexpr Trouble kTroubles[] = {
    // service             state      action month shortest longest memo
    { 3 /* CPU */,         kAbnormal, 0,     24,    5,      90,    "9#%"},
    { 2 /* memory */,      kAbnormal, 0,     12,   15,     180,    "9#%"},
    {10 /* ping 1 */,      kLost,     0,      8,    1,      30,    "192.0.2.1#"},
    {30 /* web */,         kAbnormal, 1,      8,    2,       6,    "www.example.com"},
    {33 /* smtp */,        kAbnormal, 0,      4,    5,     240,    "mail.example.com"},
    {50 /* storage */,     kAbnormal, 0,      4,    0,       0,    "/srv 9#%"},
    {20 /* file */,        kAbnormal, 4,      4,    0,       0,    "/srv/orders.db"},
    { 1 /* ended badly */, kAbnormal, 0,      1,    0,       0,    ""},
};
// clang-format on

constexpr int kMinutesADay = 24 * 60;
constexpr int kMonth = 30;
// Nothing happens while the service finds the unit and sets it up.
constexpr int kFirstMinute = 5;

class Planner {
  public:
    explicit Planner(std::uint64_t seed) : random_(seed) {}

    std::vector<PlannedAlarm> Plan(int days) {
        for (const Trouble& trouble : kTroubles)
            for (int minute = kFirstMinute; minute < days * kMinutesADay; ++minute)
                if (Below(kMonth * kMinutesADay) < trouble.per_month)
                    minute = Add(trouble, minute);
        std::ranges::stable_sort(alarms_, {}, &PlannedAlarm::at);
        std::erase_if(alarms_, [days](const PlannedAlarm& a) { return a.at >= days * 24h; });
        return std::move(alarms_);
    }

  private:
    // When it is over.
    int Add(const Trouble& trouble, int minute) {
        MonitorEvent event{.service = trouble.service,
                           .state = trouble.state,
                           .action = trouble.action,
                           .machine_name = u"server-1",
                           .memo = Memo(trouble.memo)};
        Put(minute, event);
        if (trouble.longest == 0)
            return minute;
        minute += trouble.shortest + Below(trouble.longest - trouble.shortest);
        event.state = kNormal;
        event.action = 0;
        Put(minute, event);
        return minute;
    }

    void Put(int minute, const MonitorEvent& event) {
        alarms_.push_back({std::chrono::minutes(minute) + std::chrono::seconds(Below(60)), event});
    }

    Text Memo(const char* pattern) {
        Text memo;
        for (const char c : std::string_view(pattern))
            memo += c == '#' ? ToText(Below(10)) : Text(1, char16_t(c));
        return memo;
    }

    // Without the library's distributions, which may differ from one library to the next.
    int Below(int limit) { return int(random_() % std::uint64_t(limit)); }

    std::mt19937_64 random_;
    std::vector<PlannedAlarm> alarms_;
};

} // namespace

std::vector<PlannedAlarm> PlanAlarms(int days, std::uint64_t seed) {
    return Planner(seed).Plan(days);
}

} // namespace tarnex
