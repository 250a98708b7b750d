#pragma once

#include "platform/code_page.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnex {

// What one mail is made of.
struct MailParts {
    Text server; // host, or host ":" port
    Text from;   // address
    Text to;     // address
    Text user;   // empty: no log-in
    Text password;
    Text subject;
    Text body;
};

// The steps of the dialogue, each named for the reply that it waits for. A status display shows
// the numbers.
enum class SmtpStep {
    kGreeting = 0,
    kHelo = 1,
    kMailFrom = 2,
    kRcptTo = 3,
    kData = 4,
    kContent = 5,
    kQuit = 6,
    kAuth = 7,
    kUser = 8,
    kReady = 9, // the reply to the password, or to HELO where there is no log-in
};

// What is sent to the server, each string by itself; nothing when the mail holds characters that
// cannot be sent.
using SmtpSends = std::optional<std::vector<std::string>>;

// What to look at when the awaited reply is a refusal.
enum class SmtpDoubt {
    kServer,
    kAccount, // the server, when the mail has no user
    kSender,
    kRecipient,
};

// What happens when the awaited reply has come.
struct SmtpRule {
    std::string_view waits_for; // the reply to what, for operators
    TextView waits_for_chinese; // the same, for a display
    SmtpDoubt doubt;
    SmtpSends (*compose)(const MailParts& mail, const CodePage& code_page);
    SmtpStep next;
    SmtpStep next_without_user; // instead of next, when the mail has no user
    bool done;                  // the mail counts as done: the next one may start
    bool closes;                // the dialogue is over
    TextView status;            // after sending, for a display
};

const SmtpRule& RuleOf(SmtpStep step);

// A reply with one of these codes carries any step forward; a reply begins with its code.
bool AcceptedReply(std::string_view reply);

// Standard Base64 with padding, without line breaks.
std::string Base64Encode(std::string_view bytes);

} // namespace tarnex
