// tarnex-mail-sink: a mail server that prints what it receives.

#include "adapters/system/arguments.h"
#include "adapters/system/end_requests.h"
#include "adapters/system/system_code_page.h"
#include "adapters/system/terminal.h"
#include "operator/arguments.h"
#include "programs/program_output.h"
#include "programs/tcp_listener.h"
#include "simulator/mail_sink.h"
#include "simulator/words.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <optional>

namespace tarnex {
namespace {

struct StepName {
    std::string_view name;
    MailStep step;
};

constexpr StepName kStepNames[] = {
    {"greeting", MailStep::kGreeting}, {"helo", MailStep::kHelo},
    {"auth", MailStep::kAuth},         {"user", MailStep::kUser},
    {"password", MailStep::kPassword}, {"mail", MailStep::kMailFrom},
    {"rcpt", MailStep::kRcptTo},       {"data", MailStep::kData},
    {"content", MailStep::kContent},   {"quit", MailStep::kQuit},
};

struct Options {
    std::uint16_t port = 2525;
    std::optional<std::string> user; // in UTF-8, as on the command line
    std::string password;
    std::string encoding = "GBK";
    std::vector<MailStep> refuse;
};

class Program {
  public:
    explicit Program(const Options& options);
    int Run(std::uint16_t port);

  private:
    void Print(const std::string& line) { PrintWithTime(loop_, line); }
    void PrintMail(const ReceivedMail& mail);
    std::string Decoded(std::string_view bytes) const;
    void Answer(ConnectionId id, const SinkAnswer& answer);

    AsioLoop loop_;
    EndRequests requests_{loop_};
    SystemCodePage code_page_;
    MailSink sink_;
    std::map<ConnectionId, MailSink::Session> sessions_;
    TcpListener listener_{
        loop_,
        {.accepted =
             [this](ConnectionId id) {
                 Answer(id, sessions_.try_emplace(id, sink_).first->second.Connected());
             },
         .received =
             [this](ConnectionId id, std::string_view bytes) {
                 Answer(id, sessions_.at(id).Receive(bytes));
             },
         .ended = [this](ConnectionId id) { sessions_.erase(id); }}};
};

Program::Program(const Options& options) : code_page_(options.encoding) {
    if (options.user)
        sink_.Account = {code_page_.Encode(FromUtf8(*options.user)),
                         code_page_.Encode(FromUtf8(options.password))};
    for (const MailStep step : options.refuse)
        sink_.Faults[step] = MailFault::Refuse("550 refused");
    sink_.OnMail = [this](const ReceivedMail& mail) {
        PrintMail(mail);
        sink_.Mails.clear(); // it may run for days
    };
    requests_.OnEnd([this] { loop_.Stop(); });
}

int Program::Run(std::uint16_t port) {
    if (const std::string trouble = listener_.Listen(port); !trouble.empty()) {
        PrintError("tarnex-mail-sink: port " + std::to_string(port) + ": " + trouble + "\n");
        return kExitFailed;
    }
    Print("listening on port " + std::to_string(listener_.Port()));
    loop_.Run();
    return kExitDone;
}

void Program::Answer(ConnectionId id, const SinkAnswer& answer) {
    for (const std::string& packet : answer.packets)
        listener_.Send(id, packet);
    if (answer.close)
        listener_.Close(id);
}

void Program::PrintMail(const ReceivedMail& mail) {
    std::string recipients;
    for (const std::string& to : mail.to)
        recipients += " " + Decoded(to);
    Print("mail from " + Decoded(mail.from) + " to" + recipients +
          (mail.logged_in ? ", after log-in" : ""));
    PrintOut(Decoded(mail.content) + "-- end of mail\n");
}

// UTF-8, line by line, other control characters escaped: they could play with a terminal.
std::string Program::Decoded(std::string_view bytes) const {
    const Text text = code_page_.Decode(bytes);
    TextView rest = text;
    std::string shown;
    for (std::size_t end; (end = rest.find(u"\r\n")) != TextView::npos; rest.remove_prefix(end + 2))
        shown += ToUtf8(EscapeControls(rest.substr(0, end))) + '\n';
    return shown + ToUtf8(EscapeControls(rest));
}

std::string ReadPort(std::string_view text, std::uint16_t& port) {
    const auto number = ReadNumber<std::uint16_t>(text);
    port = number.value_or(0);
    return number ? "" : "\"" + std::string(text) + "\" is no port";
}

std::string StepNames() {
    std::string names;
    for (const StepName& step : kStepNames)
        names += (names.empty() ? "" : ", ") + std::string(step.name);
    return names;
}

std::string ReadStep(const std::string& name, std::vector<MailStep>& steps) {
    const auto step = std::ranges::find(kStepNames, name, &StepName::name);
    if (step == std::end(kStepNames))
        return "there is no step \"" + name + "\"";
    steps.push_back(step->step);
    return "";
}

// The exit status, or nothing when the server is to run.
std::optional<ExitStatus> ReadOptions(std::vector<std::string> words, Options& options) {
    using Value = const std::string&;
    const auto store = [](auto& text) {
        return [&text](Value value) {
            text = value;
            return "";
        };
    };
    Arguments arguments(
        "tarnex-mail-sink",
        "An SMTP server on 127.0.0.1 that prints every mail it receives, and keeps none.");
    arguments.EachValue("--port", "N", "listen on port N (2525); 0 is any free port",
                        [&](Value text) { return ReadPort(text, options.port); });
    arguments.EachValue("--user", "NAME", "demand AUTH LOGIN with this user name",
                        store(options.user));
    arguments.EachValue("--password", "WORD", "and this password (empty)", store(options.password));
    arguments.EachValue("--encoding", "NAME", "the code page of the mails, GBK or UTF-8 (GBK)",
                        [&](Value name) {
                            options.encoding = name;
                            return SystemCodePage::Supported(name) ? "" : "it is GBK or UTF-8";
                        });
    arguments.EachValue(
        "--refuse", "STEP",
        "answer \"550 refused\" at one step of the dialogue; may be given several times:\n" +
            StepNames(),
        [&](Value name) { return ReadStep(name, options.refuse); });
    arguments.Footer("Ctrl-C ends the program.\n"
                     "Exit status: 0 done, 1 the port cannot be had, 64 wrong usage.");
    return arguments.Read(std::move(words), std::cout, std::cerr);
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    tarnex::OccupyStandardStreams();
    tarnex::Options options;
    if (const auto status = tarnex::ReadOptions(tarnex::ProgramArguments(argc, argv), options))
        return *status;
    return tarnex::Program(options).Run(options.port);
}
