#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnex {

// What an SMTP server answers to, in the order of a dialogue.
enum class MailStep {
    kGreeting, // the connection itself
    kHelo,
    kAuth,     // AUTH LOGIN
    kUser,     // the user name of AUTH LOGIN
    kPassword, // the password of AUTH LOGIN
    kMailFrom,
    kRcptTo,
    kData,
    kContent, // the "." that ends the content
    kQuit,
};

// What a server does with its connection at one moment.
struct SinkAnswer {
    std::vector<std::string> packets; // to be sent, each by itself; line ends included
    bool close = false;               // then ends the connection
    bool endless = false;             // sends the packets over and over until the client closes
};

// A fault to switch on at one step: what the server answers instead.
struct MailFault {
    SinkAnswer answer;
    bool accepts = false; // the server goes on to its next step as after its usual answer

    static MailFault Refuse(std::string reply) { return {{{std::move(reply) + "\r\n"}}}; }
    static MailFault Close() { return {{.packets = {}, .close = true}}; }
    static MailFault Silence() { return {}; }
    static MailFault TalkEndlessly(std::string packet) {
        return {{.packets = {std::move(packet)}, .endless = true}};
    }
    // The step is accepted, in these packets: several, short ones, ones with NUL, several lines.
    static MailFault AcceptIn(std::vector<std::string> packets) {
        return {{std::move(packets)}, true};
    }
};

struct ReceivedMail {
    std::string from;
    std::vector<std::string> to;
    // The bytes between DATA and the final ".", line ends included, the first of two leading dots
    // of a line taken away.
    std::string content;
    bool logged_in = false;
};

struct MailAccount {
    std::string user;
    std::string password;
};

// The server's side of SMTP without a network: what a client sent goes in, answers come out. It
// keeps strictly to the order of commands, knows AUTH LOGIN, after HELO too, and wants it before
// MAIL when it has an account.
class MailSink {
  public:
    std::optional<MailAccount> Account;
    std::map<MailStep, MailFault> Faults;
    std::vector<ReceivedMail> Mails;
    std::function<void(const ReceivedMail&)> OnMail; // called for each mail when it is set

    class Session;
};

// One connection to a sink, which must outlive it.
class MailSink::Session {
  public:
    explicit Session(MailSink& sink) : sink_(sink) {}

    SinkAnswer Connected();
    // What arrived; may hold parts of lines or several of them. An unfinished line of more than
    // 64 KiB, or a content of more than 16 MiB, ends the connection.
    SinkAnswer Receive(std::string_view bytes);

  private:
    enum class State { kStart, kGreeted, kUser, kPassword, kSender, kRecipient, kContent };
    struct Command;
    static const Command kCommands[];

    void Line(std::string_view line);
    void RunCommand(std::string_view line);
    void TakeUser(std::string_view line);
    void TakePassword(std::string_view line);
    void TakeContent(std::string_view line);
    bool Accept(MailStep step, std::string_view reply, State next);
    void Say(std::string_view reply);

    void Helo(std::string_view argument);
    void Ehlo(std::string_view argument);
    void Auth(std::string_view argument);
    void MailFrom(std::string_view argument);
    void RcptTo(std::string_view argument);
    void Data(std::string_view argument);
    void Rset(std::string_view argument);
    void Noop(std::string_view argument);
    void Quit(std::string_view argument);

    MailSink& sink_;
    State state_ = State::kStart;
    std::string unfinished_; // the line that has not ended yet
    std::string user_;
    bool logged_in_ = false;
    ReceivedMail mail_;
    SinkAnswer answer_; // to what is being received
};

} // namespace tarnex
