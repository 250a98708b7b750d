#pragma once

#include "platform/clock.h"
#include "settings/my_ini_file.h"

namespace tarnex {

// The first four characters of the answer to a message that is no command.
inline constexpr TextView kStrangerAnswer = u"ETel";
inline constexpr TextView kBadCommandAnswer = u"ECmd";

// The numbers whose messages are commands. One that is empty admits every sender.
struct AlarmNumbers {
    Text First;
    Text Second;
};

// The answer to a received SMS: the four-digit command, kBadCommandAnswer or kStrangerAnswer; then,
// unless it is a stranger's, the recipient selector of the sender ("1" or "2") and the reply SMS.
Text CommandAnswer(const AlarmNumbers& numbers, TextView sender, TextView text,
                   const CalendarTime& now);

// Turns received SMS into commands.
class SMSMsgCodec {
  public:
    SMSMsgCodec(Clock& clock, const MyIniFile& settings_file)
        : clock_(clock), settings_file_(settings_file) {}

    // See CommandAnswer(). The two numbers are those that the settings file holds now.
    Text DecodeSMSCommand(TextView sender, TextView text) const;

    // Whether it would be a command from somebody who may command.
    bool IsCommand(TextView text) const;

  private:
    Clock& clock_;
    const MyIniFile& settings_file_;
};

} // namespace tarnex
