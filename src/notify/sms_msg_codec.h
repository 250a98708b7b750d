#pragma once

#include "events/event_record.h"
#include "logging/debug_lists.h"
#include "platform/clock.h"
#include "settings/my_ini_file.h"

namespace tarnex {

// Turns event records into notification texts, and received SMS into commands.
class SMSMsgCodec {
  public:
    SMSMsgCodec(Clock& clock, const MyIniFile& settings_file, DebugLists& lists);

    // Makes the record's event the current one, and lists its fields.
    void ParseEventRecord(TextView record);
    const EventRecord& Current() const { return current_; }
    // Of the current event: its SMS flag and its mail flag, one character each, and the text.
    Text ComposeNotification() const;
    // See CommandAnswer(). The two numbers are those that the settings file holds now.
    Text DecodeSMSCommand(TextView sender, TextView text) const;

  private:
    void ListCurrent();

    Clock& clock_;
    const MyIniFile& settings_file_;
    DebugLists& lists_;
    EventRecord current_;
};

} // namespace tarnex
