// tarnex-mail-sink: a mail server that prints what it receives.

#include "adapters/system/iconv_code_page.h"
#include "programs/program_output.h"
#include "programs/tcp_listener.h"
#include "simulator/mail_sink.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <map>
#include <optional>

#include <getopt.h>

namespace tarnex {
namespace {

constexpr char kUsage[] =
    "Usage: tarnex-mail-sink [OPTION]...\n"
    "An SMTP server on 127.0.0.1 that prints every mail it receives, and keeps none.\n"
    "\n"
    "  --port N             listen on port N (2525); 0 is any free port\n"
    "  --user NAME          demand AUTH LOGIN with this user name\n"
    "  --password WORD      and this password (empty)\n"
    "  --encoding NAME      the code page of the mails, GBK or UTF-8 (GBK)\n"
    "  --refuse STEP        answer \"550 refused\" at one step of the dialogue: greeting, helo,\n"
    "                       auth, user, password, mail, rcpt, data, content or quit;\n"
    "                       may be given several times\n"
    "  --help, --version\n"
    "\n"
    "The program ends on the signals TERM and INT.\n"
    "Exit status: 0 done, 1 the port cannot be had, 64 wrong usage.\n";

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
    IconvCodePage code_page_;
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
    for (const int signal : {SIGTERM, SIGINT})
        loop_.OnSignal(signal, [this] { loop_.Stop(); });
}

int Program::Run(std::uint16_t port) {
    if (const std::string obstacle = listener_.Listen(port); !obstacle.empty()) {
        std::fprintf(stderr, "tarnex-mail-sink: port %u: %s\n", unsigned(port), obstacle.c_str());
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
    std::printf("%s", Decoded(mail.content).c_str());
    std::puts("-- end of mail");
    std::fflush(stdout);
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

int UsageError(const std::string& trouble) {
    std::fprintf(stderr, "tarnex-mail-sink: %s (try --help)\n", trouble.c_str());
    return kExitUsage;
}

std::optional<std::uint16_t> ParsePort(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return port;
}

// The exit status, or nothing when the server is to run.
std::optional<int> ReadArguments(int argc, char** argv, Options& options) {
    const option known[] = {{"port", required_argument, nullptr, 'p'},
                            {"user", required_argument, nullptr, 'u'},
                            {"password", required_argument, nullptr, 'w'},
                            {"encoding", required_argument, nullptr, 'e'},
                            {"refuse", required_argument, nullptr, 'r'},
                            {"help", no_argument, nullptr, 'h'},
                            {"version", no_argument, nullptr, 'v'},
                            {}};
    for (int letter; (letter = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        switch (letter) {
        case 'p': {
            const auto port = ParsePort(optarg);
            if (!port)
                return UsageError("\"" + std::string(optarg) + "\" is no port");
            options.port = *port;
            break;
        }
        case 'u':
            options.user = optarg;
            break;
        case 'w':
            options.password = optarg;
            break;
        case 'e':
            options.encoding = optarg;
            if (!IconvCodePage::Supported(options.encoding))
                return UsageError("the encoding is GBK or UTF-8");
            break;
        case 'r': {
            const auto step = std::ranges::find(kStepNames, optarg, &StepName::name);
            if (step == std::end(kStepNames))
                return UsageError("there is no step \"" + std::string(optarg) + "\"");
            options.refuse.push_back(step->step);
            break;
        }
        case 'h':
            std::fputs(kUsage, stdout);
            return kExitDone;
        case 'v':
            std::puts("tarnex-mail-sink " TARNEX_VERSION);
            return kExitDone;
        default: // getopt_long has said what is wrong
            return kExitUsage;
        }
    }
    if (optind < argc)
        return UsageError("unexpected argument \"" + std::string(argv[optind]) + "\"");
    return std::nullopt;
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    tarnex::Options options;
    if (const auto status = tarnex::ReadArguments(argc, argv, options))
        return *status;
    return tarnex::Program(options).Run(options.port);
}
