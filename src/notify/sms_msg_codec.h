#pragma once

#include "events/event_record.h"
#include "logging/debug_lists.h"
#include "platform/clock.h"
#include "settings/my_ini_file.h"

namespace tarnex {

// Lists event records as they were understood, and turns received SMS into commands.
class SMSMsgCodec {
  public:
    SMSMsgCodec(Clock& clock, const MyIniFile& settings_file, DebugLists& lists);

    // Lists a record and the fields of the event that it was parsed to.
    void ListEvent(TextView record, const EventRecord& event);
    // See CommandAnswer(). The two numbers are those that the settings file holds now.
    Text DecodeSMSCommand(TextView sender, TextView text) const;

  private:
    Clock& clock_;
    const MyIniFile& settings_file_;
    DebugLists& lists_;
};

} // namespace tarnex
