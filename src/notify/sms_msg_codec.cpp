#include "notify/sms_msg_codec.h"

#include "events/event_record.h"
#include "platform/calendar_text.h"
#include "settings/setting_table.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr std::size_t kCommandLength = 4;

// Networks report a number with or without its country code.
bool SameNumber(TextView sender, TextView number) {
    return Contains(sender, number) || Contains(number, sender);
}

// Empty for a stranger. The second number wins when both match.
TextView RecipientSelector(const AlarmNumbers& numbers, TextView sender) {
    if (SameNumber(sender, numbers.Second))
        return u"2";
    return SameNumber(sender, numbers.First) ? TextView(u"1") : TextView();
}

// The first four digits in a row, or empty.
TextView FindCommand(TextView text) {
    const auto found = std::search_n(text.begin(), text.end(), kCommandLength, true,
                                     [](char16_t c, bool) { return IsDigit(c); });
    return found == text.end() ? TextView() : TextView(&*found, kCommandLength);
}

// What the command asks for, in words; empty when its service or its action has no name.
Text Description(TextView command) {
    const auto service = ServiceName(LeadingInt16(command.substr(1, 2)).value_or(0));
    const auto action = CommandName(LeadingInt16(command.substr(3)).value_or(0));
    if (service.value_or(TextView()).empty() || action.value_or(TextView()).empty())
        return Text();
    return Text(command.substr(0, 1)) + u"号设备" + Text(*service) + Text(*action);
}

Text ReplyStart(const CalendarTime& now) {
    return u"系统在" + ToText(now.day, 2) + u"日" + HourMinuteText(now);
}

} // namespace

Text CommandAnswer(const AlarmNumbers& numbers, TextView sender, TextView text,
                   const CalendarTime& now) {
    const TextView selector = RecipientSelector(numbers, sender);
    if (selector.empty())
        return Text(kStrangerAnswer);

    Text rest = Text(selector) + ReplyStart(now);
    const TextView trimmed = Trim(text);
    const TextView command = FindCommand(trimmed);
    if (const Text description = command.empty() ? Text() : Description(command);
        !description.empty())
        return Text(command) + rest + u"收到命令：" + Text(command) + u"--" + description;

    // Only a message that is long enough for a command, but holds none, gets the blank.
    if (command.empty() && trimmed.size() >= kCommandLength)
        rest += u" ";
    return Text(kBadCommandAnswer) + rest + u"收到错误命令：" + Text(text);
}

Text SMSMsgCodec::DecodeSMSCommand(TextView sender, TextView text) const {
    const AlarmNumbers numbers{.First = settings_file_.GetIniStr("alarm-number-1"_setting),
                               .Second = settings_file_.GetIniStr("alarm-number-2"_setting)};
    return CommandAnswer(numbers, sender, text, clock_.Calendar());
}

bool SMSMsgCodec::IsCommand(TextView text) const {
    const AlarmNumbers everybody;
    return !StartsWith(CommandAnswer(everybody, u"", text, clock_.Calendar()), kBadCommandAnswer);
}

} // namespace tarnex
