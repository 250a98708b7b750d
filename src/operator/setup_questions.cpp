#include "operator/setup_questions.h"

#include "operator/file_access.h"
#include "operator/port_check.h"
#include "operator/setting_catalog.h"
#include "operator/settings_check.h"
#include "operator/text_output.h"

#include <algorithm>
#include <ostream>

namespace tarnex {

namespace {

constexpr const char* kSearch = "search";
constexpr const char* kYes = "yes";

// clang-format off
constexpr SetupQuestion kQuestions[] = {
    {"port",          "Serial port of the unit",                                             nullptr, kSearch, false, false, ""},
    {"number-1",      "First alarm telephone number; it may also command by SMS",                         &"alarm-number-1"_setting, "", false, false, ""},
    {"number-2",      "Second alarm telephone number; with one telephone only, the same",                 &"alarm-number-2"_setting, "=number-1", false, false, ""},
    {"sms-centre",    "SMS service centre of your carrier",                                               &"sms-centre"_setting, "", false, false, ""},
    {"communication-alarm", "The unit raises an alarm when this machine falls silent", &"communication-alarm"_setting, kYes, false, false, ""},
    {"power-alarm",   "The unit raises an alarm when its mains power fails", &"power-alarm"_setting, kYes, false, false, ""},
    {"send-again",    "What waited when the unit was lost or the service ended is sent again", &"send-again"_setting, kYes, false, false, ""},
    {"mail-server",   "Mail server, as host or host:port, or none",                                       &"mail-server"_setting, kNone, true, false, ""},
    {"mail-from",     "Sender of the mails",                                                              &"mail-from"_setting, "", false, false, "mail-server"},
    {"mail-to",       "Recipient of the mails",                                                           &"mail-to"_setting, "", false, false, "mail-server"},
    {"mail-user",     "User name at the mail server, or none",                                            &"mail-user"_setting, kNone, true, false, "mail-server"},
    {"mail-password", "Password at the mail server",                                                      &"mail-password"_setting, "", false, true, "mail-user"},
};
// clang-format on

bool AsksForPort(const SetupQuestion& question) {
    return std::string_view(question.name) == "port";
}

bool AsksForSwitch(const SetupQuestion& question) {
    return question.setting && question.setting->Kind() == SettingKind::kSwitch;
}

bool AsksForAlarmNumber(const SetupQuestion& question) {
    return std::string_view(question.name).starts_with("number-");
}

std::string PortForms(const SystemWords& words) {
    return "a device such as " + words.serial_device + ", COM1 to COM20, or search";
}

// "", or what is wrong with an answer.
std::string Wrong(const OperatorWorld& world, const SetupQuestion& question,
                  const std::string& answer) {
    if (question.none_allowed && answer == kNone)
        return "";
    if (AsksForPort(question))
        return ParsePort(answer, world.serial_paths) ? "" : "is not " + PortForms(world.words);
    const Text value = StoredForm(*question.setting, answer);
    if (Trim(value).empty())
        return "must not be empty";
    if (std::string wrong = Objection(*question.setting, value); !wrong.empty())
        return wrong;
    const auto finding =
        AsksForAlarmNumber(question) ? CheckAlarmNumber(*question.setting, value) : std::nullopt;
    return finding ? finding->text : "";
}

std::string ReadSecret(const OperatorWorld& world, const std::string& path) {
    if (const std::error_code problem = ReadingProblem(path))
        throw CannotRead(world.words, "password file " + path, problem, "name another");
    const std::string content = ReadWholeFile(path);
    return content.substr(0, content.find_first_of("\r\n"));
}

std::string Given(const OperatorWorld& world, const SetupQuestion& question,
                  const std::string& flag_value) {
    const std::string answer = question.secret ? ReadSecret(world, flag_value) : flag_value;
    if (const std::string wrong = Wrong(world, question, answer); !wrong.empty())
        throw Failure(kExitData, FlagOf(question) + ": " +
                                     (question.secret ? "the password" : "\"" + answer + "\"") +
                                     " " + wrong);
    return answer;
}

std::string Default(const SetupQuestion& question, const SetupAnswers& answers) {
    const std::string value = question.default_value;
    return value.starts_with('=') ? answers.at(value.substr(1)) : value;
}

void ShowPorts(const OperatorWorld& world) {
    const std::vector<std::string> ports = PortsThere(world);
    world.out << (ports.empty() ? "No serial port is there.\n" : "Serial ports that are there:\n");
    for (const std::string& port : ports)
        world.out << "  " << Printable(port) << '\n';
    world.out.flush();
}

std::string Ask(const OperatorWorld& world, const SetupQuestion& question,
                const SetupAnswers& answers) {
    const std::string preset = Default(question, answers);
    const std::string prompt =
        PromptOf(question, world.words) + (preset.empty() ? "" : " [" + preset + "]") + ": ";
    if (AsksForPort(question))
        ShowPorts(world);
    for (;;) {
        const auto line = world.ask(prompt, question.secret);
        if (!line)
            throw Failure(kExitUsage, "the input ended before all questions were answered; nothing "
                                      "was written");
        const std::string answer = line->empty() ? preset : *line;
        const std::string wrong = Wrong(world, question, answer);
        if (wrong.empty())
            return answer;
        world.err << "  That " << (AsksForSwitch(question) ? "is not yes or no" : wrong) << ".\n";
    }
}

} // namespace

std::span<const SetupQuestion> SetupQuestions() {
    return kQuestions;
}

std::string PromptOf(const SetupQuestion& question, const SystemWords& words) {
    return question.prompt + (AsksForPort(question)     ? ": " + PortForms(words)
                              : AsksForSwitch(question) ? ", yes or no"
                                                        : "");
}

std::string FlagOf(const SetupQuestion& question) {
    return std::string("--") + question.name + (question.secret ? "-file" : "");
}

SetupAnswers AskQuestions(const OperatorWorld& world, const SetupAnswers& given) {
    SetupAnswers answers;
    std::string missing;
    for (const SetupQuestion& question : kQuestions) {
        const std::string condition = question.only_if;
        if (!condition.empty() && (!answers.contains(condition) || answers[condition] == kNone))
            continue;
        if (AsksForSwitch(question) && !world.ask && !given.contains(question.name))
            continue; // as in the sample
        if (const auto found = given.find(question.name); found != given.end())
            answers[question.name] = Given(world, question, found->second);
        else if (world.ask)
            answers[question.name] = Ask(world, question, answers);
        else
            missing += " " + FlagOf(question);
    }
    if (!missing.empty())
        throw Failure(kExitUsage,
                      "there is no terminal to ask on: answer by flags (missing:" + missing + ")");
    return answers;
}

std::optional<PortAnswer> ParsePort(const std::string& answer, const SerialPaths& defaults) {
    if (answer == kSearch)
        return PortAnswer{};
    for (int number = 1; number <= int(defaults.size()); ++number)
        if (EqualIgnoringCase(FromUtf8(answer), u"COM" + ToText(number)) ||
            answer == std::to_string(number) || answer == defaults[std::size_t(number) - 1])
            return PortAnswer{.number = number, .device = ""};
    if (Objection("com1-device"_setting, FromUtf8(answer)).empty())
        return PortAnswer{.number = 1, .device = answer};
    return std::nullopt;
}

} // namespace tarnex
