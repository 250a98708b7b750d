#include "events/event_record.h"
#include "notify/control_link.h"
#include "operator/commands.h"
#include "operator/moment.h"
#include "operator/record_explanation.h"
#include "operator/status_reading.h"
#include "operator/text_output.h"

#include <ostream>

namespace tarnex {

namespace {

std::string RecordOf(std::string text) {
    if (const std::string code = ToUtf8(ControlLink::kRequestCode); text.starts_with(code))
        text.erase(0, code.size());
    return text;
}

CalendarTime MomentOf(const OperatorWorld& world, const std::string& at) {
    if (at.empty())
        return LocalNow(world);
    if (const auto moment = ParseMoment(at))
        return *moment;
    throw Failure(kExitUsage,
                  "--at: \"" + at + "\" is no moment; write it as \"2024-05-06 22:30\"");
}

std::string WithName(const std::string& number, std::optional<TextView> name) {
    return number + ", " + (name && !name->empty() ? ToUtf8(*name) : "no name");
}

// What the service that runs now would do with the SMS.
std::string ServiceNow(const OperatorWorld& world) {
    try {
        const StatusReading state = ReadStatusFile(world);
        if (!state.running)
            return "it does not run";
        const Json& unit = state.status.at("unit");
        return UnitIs(UnitPhase::kReady, unit)
                   ? "it runs, and the unit is ready"
                   : "it runs, but the unit is not ready (" + unit.at("state").get<std::string>() +
                         "): SMS wait in the queue";
    } catch (const Failure&) {
        return "not known: its status file cannot be read";
    } catch (const Json::exception&) {
        return "not known: its status file lacks something";
    }
}

class TextPage {
  public:
    TextPage(const RecordExplanation& why, const CalendarTime& at) {
        Record(why.plan.event);
        Section("Text, " + Counted(std::ssize(why.plan.text), "character"));
        Add({"  " + ToUtf8(why.plan.text)});
        Sms(why, at);
        Way("Mail", "  one mail", why.mail);
        Way("Log", "  one row", why.log);
    }
    void Service(const std::string& now, const std::vector<std::string>& gates) {
        Section("Service");
        Add({"  now", now});
        for (const std::string& gate : gates)
            Add({"  settings", {gate + ", so it ends", Colour::kBad}});
    }
    void Print(const OperatorWorld& world) const {
        for (const TextTable& section : sections_)
            section.Print(world);
    }

  private:
    void Section(const std::string& title) {
        sections_.emplace_back();
        Add({{title, Colour::kBold}});
    }
    void Add(std::vector<Cell> row) { sections_.back().Add(std::move(row)); }

    void Record(const EventRecord& event) {
        Section("Record");
        Add({"  machine", std::to_string(event.MachineNo)});
        const int state = LeadingInt16(event.StatusNo).value_or(0);
        Add({"  service", WithName(std::to_string(event.ServiceNo), ServiceName(event.ServiceNo))});
        Add({"  state", WithName(ToUtf8(event.StatusNo), StateName(state))});
        Add({"  action", WithName(std::to_string(event.AutoNo), ActionName(event.AutoNo))});
        Add({"  SMS flag", ToUtf8(event.SMSableNo)});
        Add({"  mail flag", ToUtf8(event.EmailableNo)});
        Add({"  machine name", ToUtf8(event.MachineName)});
        Add({"  memo", ToUtf8(event.Memo)});
    }

    void Sms(const RecordExplanation& why, const CalendarTime& at) {
        const bool quiet = why.plan.quiet.state == QuietTime::State::kQuiet;
        Section("SMS, " + std::to_string(why.plan.SMSCount()) + " in all");
        for (const auto& sms : why.sms)
            Add({"  number " + std::to_string(sms.recipient), YesNo(sms),
                 ToUtf8(sms.number) + (sms.number.empty() ? "" : ": ") + Joined(sms.reasons)});
        Add({"  quiet", quiet ? "yes" : "no", MomentText(at) + ": " + why.quiet_reason});
        Add({"  repeated", std::to_string(why.send_count) + "x", "send-count"});
        if (why.plan.SMSCount() > kSMSFifoSize)
            Add({"  queue",
                 {"!", Colour::kWarning},
                 "it holds " + std::to_string(kSMSFifoSize) + ", so the first ones are dropped"});
        if (why.plan.pieces.size() > 1)
            for (const Text& piece : why.plan.pieces)
                Add({"  " + ToUtf8(piece)});
    }

    void Way(const char* title, const char* what, const WayExplanation& way) {
        Section(title);
        Add({what, YesNo(way), Joined(way.reasons)});
    }

    static Cell YesNo(const WayExplanation& way) {
        return way.taken ? Cell("yes", Colour::kGood) : Cell("no", Colour::kWarning);
    }

    std::vector<TextTable> sections_; // aligned by themselves
};

Json WhyJson(const WayExplanation& way) {
    return {{"taken", way.taken}, {"reasons", way.reasons}};
}

Json NumberOrNull(TextView digits) {
    return NumberOr(ToUtf8(digits), {});
}

Json WhyJson(const OperatorWorld& world, const RecordExplanation& why, const CalendarTime& at) {
    const EventRecord& event = why.plan.event;
    Json json{{"record",
               {{"machine", event.MachineNo},
                {"service", event.ServiceNo},
                {"state", NumberOrNull(event.StatusNo)},
                {"action", event.AutoNo},
                {"sms_flag", NumberOrNull(event.SMSableNo)},
                {"mail_flag", NumberOrNull(event.EmailableNo)},
                {"machine_name", ToUtf8(event.MachineName)},
                {"memo", ToUtf8(event.Memo)}}},
              {"at", IsoTime(world, TimeOf(world, at))},
              {"text", ToUtf8(why.plan.text)},
              {"pieces", Json::array()},
              {"quiet", why.plan.quiet.state == QuietTime::State::kQuiet},
              {"quiet_reason", why.quiet_reason},
              {"sms_in_all", why.plan.SMSCount()},
              {"repeated", why.send_count},
              {"sms", Json::array()},
              {"mail", WhyJson(why.mail)},
              {"log", WhyJson(why.log)},
              {"service_would_end", why.gates}};
    for (const Text& piece : why.plan.pieces)
        json["pieces"].push_back(ToUtf8(piece));
    for (const auto& sms : why.sms) {
        Json way{{"recipient", sms.recipient}, {"number", ToUtf8(sms.number)}};
        way.update(WhyJson(static_cast<const WayExplanation&>(sms)));
        json["sms"].push_back(way);
    }
    return json;
}

} // namespace

ExitStatus ExplainRecord(OperatorWorld& world, const WhyOptions& options) {
    const CalendarTime at = MomentOf(world, options.at);
    const SettingsFile file(world);
    // As the service receives it: through the code page.
    const CodePage& encoding = file.Encoding();
    const Text record = encoding.Decode(encoding.Encode(FromUtf8(RecordOf(options.record))));
    const RecordExplanation why = Explain(file, record, at);
    if (options.json) {
        world.out << JsonText(WhyJson(world, why, at));
        return kExitDone;
    }
    TextPage page(why, at);
    page.Service(ServiceNow(world), why.gates);
    page.Print(world);
    return kExitDone;
}

} // namespace tarnex
