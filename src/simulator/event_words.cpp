#include "simulator/event_words.h"

#include "simulator/command_words.h"

namespace tarnex {

namespace {

constexpr TextView kMemoDelimiter = u"{[b^k^]}";

// clang-format off
constexpr EventWord kServices[] = {
    { 1, "abnormal-end", "abnormal end of the last run"},
    { 2, "memory",       "memory"},
    { 3, "cpu",          "CPU load"},
    {10, "ping1",        "ping of address 1"},
    {11, "ping2",        "ping of address 2"},
    {20, "files",        "file monitoring"},
    {30, "web",          "web service"},
    {31, "ftp",          "ftp service"},
    {32, "pop",          "pop service"},
    {33, "smtp",         "smtp service"},
    {50, "storage",      "storage space"},
    {80, "link",         "communication"},
    {90, "machine",      "the whole machine"},
};
constexpr EventWord kStates[] = {
    {1, "abnormal", "abnormal"},
    {2, "normal",   "normal"},
    {3, "lost",     "lost"},
};
constexpr EventWord kActions[] = {
    {0, "none",            "nothing"},
    {1, "restart-service", "restarts the service"},
    {3, "restart-device",  "restarts the machine"},
    {4, "recover",         "tries to recover"},
};
// clang-format on

std::string NameOf(std::span<const EventWord> words, int number) {
    const std::string_view meaning = MeaningOf(words, number);
    return meaning.empty() ? "number " + std::to_string(number) : std::string(meaning);
}

} // namespace

std::span<const EventWord> EventServices() {
    return kServices;
}
std::span<const EventWord> EventStates() {
    return kStates;
}
std::span<const EventWord> EventActions() {
    return kActions;
}

std::string_view MeaningOf(std::span<const EventWord> words, int number) {
    const auto found = std::ranges::find(words, number, &EventWord::number);
    return found == words.end() ? "" : found->meaning;
}

std::optional<int> NumberOf(std::span<const EventWord> words, std::string_view text) {
    const auto found = std::ranges::find(words, text, &EventWord::word);
    if (found != words.end())
        return found->number;
    int number = 0;
    const bool good = ReadNumber(text, number) && number >= 0 && number <= 99;
    return good ? std::optional(number) : std::nullopt;
}

Text MakeEventRecord(const MonitorEvent& event) {
    Text record = ToText(event.machine);
    record += ToText(event.service, 2);
    record += ToText(event.state);
    record += ToText(event.action);
    record += event.by_sms ? u'1' : u'0';
    record += event.by_mail ? u'1' : u'0';
    record += event.machine_name;
    record += kMemoDelimiter;
    record += event.memo;
    return record;
}

Text MakeEventMessage(const MonitorEvent& event) {
    return u"txSendSMS" + MakeEventRecord(event);
}

std::string DescribeEvent(const MonitorEvent& event) {
    return "machine " + std::to_string(event.machine) + ", " +
           NameOf(EventServices(), event.service) + ": " + NameOf(EventStates(), event.state) +
           "; action: " + NameOf(EventActions(), event.action) +
           (event.by_sms ? "; by SMS" : "; not by SMS") +
           (event.by_mail ? ", by mail" : ", not by mail");
}

} // namespace tarnex
