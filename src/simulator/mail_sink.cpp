#include "simulator/mail_sink.h"

#include <algorithm>
#include <utility>

namespace tarnex {

namespace {

constexpr std::size_t kLongestMailLine = 64 * 1024;
constexpr std::size_t kLargestContent = 16 * 1024 * 1024;
constexpr std::string_view kBase64Symbols =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

char Upper(char c) {
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}

bool StartsWithWord(std::string_view text, std::string_view word) {
    return text.size() >= word.size() &&
           std::equal(word.begin(), word.end(), text.begin(),
                      [](char a, char b) { return Upper(a) == Upper(b); });
}

std::string_view TrimBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// The address of "FROM:<a@b>" or "FROM:a@b"; nothing when it is none.
std::optional<std::string> Address(std::string_view argument, std::string_view keyword) {
    if (!StartsWithWord(argument, keyword))
        return std::nullopt;
    std::string_view address = TrimBlanks(argument.substr(keyword.size()));
    if (address.size() >= 2 && address.front() == '<' && address.back() == '>')
        address = address.substr(1, address.size() - 2);
    const bool plain = address.find_first_of(" <>") == std::string_view::npos;
    if (!plain || address.find('@') == std::string_view::npos)
        return std::nullopt;
    return std::string(address);
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    if (text.size() % 4 != 0)
        return std::nullopt;
    std::size_t padding = 0;
    while (padding < 2 && text.ends_with('=')) {
        text.remove_suffix(1);
        ++padding;
    }
    std::string bytes;
    unsigned pending = 0;
    int bits = 0;
    for (const char symbol : text) {
        const auto value = kBase64Symbols.find(symbol);
        if (value == std::string_view::npos)
            return std::nullopt;
        pending = (pending << 6 | unsigned(value)) & 0xFFF;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += char(pending >> bits & 0xFF);
        }
    }
    return bytes;
}

} // namespace

struct MailSink::Session::Command {
    std::string_view word;
    void (Session::*run)(std::string_view argument);
};

// clang-format off
const MailSink::Session::Command MailSink::Session::kCommands[] = {
    {"HELO", &Session::Helo},
    {"EHLO", &Session::Ehlo},
    {"AUTH", &Session::Auth},
    {"MAIL", &Session::MailFrom},
    {"RCPT", &Session::RcptTo},
    {"DATA", &Session::Data},
    {"RSET", &Session::Rset},
    {"NOOP", &Session::Noop},
    {"QUIT", &Session::Quit},
};
// clang-format on

SinkAnswer MailSink::Session::Connected() {
    Accept(MailStep::kGreeting, "220 mail sink ready", State::kStart);
    return std::exchange(answer_, {});
}

SinkAnswer MailSink::Session::Receive(std::string_view bytes) {
    unfinished_ += bytes;
    std::size_t begin = 0;
    for (auto end = unfinished_.find("\r\n"); end != std::string::npos && !answer_.close;
         end = unfinished_.find("\r\n", begin)) {
        Line(std::string_view(unfinished_).substr(begin, end - begin));
        begin = end + 2;
    }
    unfinished_.erase(0, begin);
    if (unfinished_.size() > kLongestMailLine) {
        Say("500 line too long");
        answer_.close = true;
    }
    return std::exchange(answer_, {});
}

void MailSink::Session::Line(std::string_view line) {
    switch (state_) {
    case State::kUser:
        return TakeUser(line);
    case State::kPassword:
        return TakePassword(line);
    case State::kContent:
        return TakeContent(line);
    case State::kStart:
    case State::kGreeted:
    case State::kSender:
    case State::kRecipient:
        return RunCommand(line);
    }
}

void MailSink::Session::RunCommand(std::string_view line) {
    for (const Command& command : kCommands) {
        if (!StartsWithWord(line, command.word))
            continue;
        const std::string_view rest = line.substr(command.word.size());
        if (rest.empty() || rest.front() == ' ')
            return (this->*command.run)(TrimBlanks(rest));
    }
    Say("500 unknown command");
}

bool MailSink::Session::Accept(MailStep step, std::string_view reply, State next) {
    const auto fault = sink_.Faults.find(step);
    if (fault == sink_.Faults.end()) {
        Say(reply);
        state_ = next;
        return true;
    }
    const MailFault& instead = fault->second;
    answer_.packets.insert(answer_.packets.end(), instead.answer.packets.begin(),
                           instead.answer.packets.end());
    answer_.close |= instead.answer.close;
    answer_.endless |= instead.answer.endless;
    if (instead.accepts)
        state_ = next;
    return instead.accepts;
}

// One line that no fault changes.
void MailSink::Session::Say(std::string_view reply) {
    answer_.packets.push_back(std::string(reply) + "\r\n");
}

void MailSink::Session::Helo(std::string_view argument) {
    if (argument.empty())
        return Say("501 HELO wants a name");
    Accept(MailStep::kHelo, "250 hello", State::kGreeted);
}

void MailSink::Session::Ehlo(std::string_view argument) {
    if (argument.empty())
        return Say("501 EHLO wants a name");
    Accept(MailStep::kHelo, "250-hello\r\n250 AUTH LOGIN", State::kGreeted);
}

void MailSink::Session::Auth(std::string_view argument) {
    if (!sink_.Account)
        return Say("502 no log-in here");
    if (state_ != State::kGreeted || logged_in_)
        return Say("503 not now");
    if (!StartsWithWord(argument, "LOGIN") || argument.size() != 5)
        return Say("504 only AUTH LOGIN");
    Accept(MailStep::kAuth, "334 VXNlcm5hbWU6", State::kUser); // "Username:"
}

void MailSink::Session::TakeUser(std::string_view line) {
    const auto user = DecodeBase64(line);
    if (!user) {
        state_ = State::kGreeted;
        return Say("501 not Base64");
    }
    user_ = *user;
    Accept(MailStep::kUser, "334 UGFzc3dvcmQ6", State::kPassword); // "Password:"
}

void MailSink::Session::TakePassword(std::string_view line) {
    state_ = State::kGreeted;
    const auto password = DecodeBase64(line);
    if (!password)
        return Say("501 not Base64");
    if (user_ != sink_.Account->user || *password != sink_.Account->password)
        return Say("535 wrong user name or password");
    logged_in_ = Accept(MailStep::kPassword, "235 logged in", State::kGreeted);
}

void MailSink::Session::MailFrom(std::string_view argument) {
    if (state_ != State::kGreeted)
        return Say("503 not now");
    if (sink_.Account && !logged_in_)
        return Say("530 log in first");
    const auto from = Address(argument, "FROM:");
    if (!from)
        return Say("501 no address");
    mail_ = {.from = *from, .to = {}, .content = "", .logged_in = logged_in_};
    Accept(MailStep::kMailFrom, "250 sender ok", State::kSender);
}

void MailSink::Session::RcptTo(std::string_view argument) {
    if (state_ != State::kSender && state_ != State::kRecipient)
        return Say("503 not now");
    const auto to = Address(argument, "TO:");
    if (!to)
        return Say("501 no address");
    mail_.to.push_back(*to);
    Accept(MailStep::kRcptTo, "250 recipient ok", State::kRecipient);
}

void MailSink::Session::Data(std::string_view argument) {
    if (state_ != State::kRecipient || !argument.empty())
        return Say("503 not now");
    Accept(MailStep::kData, "354 end with a dot", State::kContent);
}

void MailSink::Session::TakeContent(std::string_view line) {
    if (line != ".") {
        mail_.content += line.starts_with('.') ? line.substr(1) : line;
        mail_.content += "\r\n";
        if (mail_.content.size() > kLargestContent) {
            Say("552 too large");
            answer_.close = true;
        }
        return;
    }
    state_ = State::kGreeted;
    if (!Accept(MailStep::kContent, "250 taken", State::kGreeted))
        return;
    sink_.Mails.push_back(mail_);
    if (sink_.OnMail)
        sink_.OnMail(mail_);
}

void MailSink::Session::Rset(std::string_view) {
    if (state_ != State::kStart)
        state_ = State::kGreeted;
    Say("250 reset");
}

void MailSink::Session::Noop(std::string_view) {
    Say("250 nothing done");
}

void MailSink::Session::Quit(std::string_view) {
    answer_.close |= Accept(MailStep::kQuit, "221 bye", State::kStart);
}

} // namespace tarnex
