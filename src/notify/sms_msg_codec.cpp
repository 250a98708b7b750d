#include "notify/sms_msg_codec.h"

#include "events/event_names.h"
#include "notify/sms_command.h"
#include "settings/setting_table.h"

namespace tarnex {

SMSMsgCodec::SMSMsgCodec(Clock& clock, const MyIniFile& settings_file, DebugLists& lists)
    : clock_(clock), settings_file_(settings_file), lists_(lists) {}

void SMSMsgCodec::ListEvent(TextView record, const EventRecord& e) {
    if (!lists_.DebugOn)
        return;
    lists_.mList1Additem(u"解码:" + Text(record));
    const auto state_no = LeadingInt16(e.StatusNo).value_or(0);
    const auto list = [this](TextView label, TextView value, std::optional<TextView> name = {}) {
        lists_.mList1Additem(Text(label) + Text(value) + Text(name.value_or(TextView())));
    };
    list(u"MachineNo:", ToText(e.MachineNo));
    list(u"ServiceNo:", ToText(e.ServiceNo), ServiceName(e.ServiceNo));
    list(u"StatusNo:", e.StatusNo, StateName(state_no));
    list(u"AutoNo:", ToText(e.AutoNo), ActionName(e.AutoNo));
    list(u"SMSableNo:", e.SMSableNo);
    list(u"EmailableNo:", e.EmailableNo);
    list(u"MachineName:", e.MachineName);
    list(u"Memo:", e.Memo);
}

Text SMSMsgCodec::DecodeSMSCommand(TextView sender, TextView text) const {
    const AlarmNumbers numbers{.First = settings_file_.GetIniStr("alarm-number-1"_setting),
                               .Second = settings_file_.GetIniStr("alarm-number-2"_setting)};
    return CommandAnswer(numbers, sender, text, clock_.Calendar());
}

} // namespace tarnex
