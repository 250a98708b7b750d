#include "mail/smtp_dialogue.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tarnex {

namespace {

constexpr TextView kSenderName = u"Tarnex K Serial";
constexpr TextView kSignatureLine = u"Tarnex K Serial:http://tarnex.example";
constexpr TextView kLineEnd = u"\r\n";
constexpr std::array<std::string_view, 5> kAcceptedCodes{"220", "250", "354", "334", "235"};

constexpr std::string_view kBase64Symbols =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t ByteAt(std::string_view bytes, std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

// A line break inside a command or a header would end it there, and the rest would count as a
// command or header of its own. The body may have several lines and is left as it is.
Text OneLine(TextView text) {
    Text line(text);
    std::ranges::replace_if(
        line, [](char16_t c) { return c == u'\r' || c == u'\n'; }, u' ');
    return line;
}

SmtpSends Line(TextView command, TextView argument, const CodePage& code_page) {
    const Text line = Text(command) + OneLine(argument);
    return std::vector{code_page.Encode(line) + "\r\n"};
}

SmtpSends Base64Line(TextView secret, const CodePage& code_page) {
    const std::string bytes = code_page.Encode(secret);
    // A "?" in the place of a character would only be refused as a wrong password.
    if (code_page.Decode(bytes) != secret)
        return std::nullopt;
    return std::vector{Base64Encode(bytes) + "\r\n"};
}

SmtpSends Helo(const MailParts& mail, const CodePage& code_page) {
    return Line(u"HELO ", Trim(mail.from), code_page);
}
SmtpSends AuthLogin(const MailParts&, const CodePage& code_page) {
    return Line(u"AUTH LOGIN", u"", code_page);
}
SmtpSends User(const MailParts& mail, const CodePage& code_page) {
    return Base64Line(Trim(mail.user), code_page);
}
SmtpSends Password(const MailParts& mail, const CodePage& code_page) {
    return Base64Line(mail.password, code_page);
}
SmtpSends MailFrom(const MailParts& mail, const CodePage& code_page) {
    return Line(u"MAIL FROM:", Trim(mail.from), code_page);
}
SmtpSends RcptTo(const MailParts& mail, const CodePage& code_page) {
    return Line(u"RCPT TO:", Trim(mail.to), code_page);
}
SmtpSends Data(const MailParts&, const CodePage& code_page) {
    return Line(u"DATA", u"", code_page);
}
SmtpSends Quit(const MailParts&, const CodePage& code_page) {
    return Line(u"QUIT", u"", code_page);
}
SmtpSends Nothing(const MailParts&, const CodePage&) {
    return std::vector<std::string>();
}

// The signature stands among the headers, and a line of the body that begins with "." is not
// doubled: receivers know the mails by this form.
SmtpSends Content(const MailParts& mail, const CodePage& code_page) {
    const Text end(kLineEnd);
    const Text from = Text(u"From:").append(kSenderName) + u" <" + OneLine(mail.from) + u">" + end;
    const Text to = u"To: <" + OneLine(mail.to) + u">" + end;
    const Text subject = Text(kSignatureLine) + end + u"Subject: " + OneLine(mail.subject) + end;
    const Text body = mail.body + end + end;
    return std::vector{code_page.Encode(from), code_page.Encode(to),
                       code_page.Encode(subject + end), code_page.Encode(body + end),
                       std::string(".\r\n")};
}

using enum SmtpStep;
using enum SmtpDoubt;

// clang-format off
constexpr std::array<SmtpRule, 10> kRules{{
    //       the reply to            in Chinese     doubt       sends      next       without user  done   closes status
    /* 0 */ {"the connection",       u"连接",       kServer,    Helo,      kHelo,     kReady,       false, false, u"登陆服务器"},
    /* 1 */ {"HELO",                 u"HELO",       kServer,    AuthLogin, kAuth,     kAuth,        false, false, u"正在校验用户名"},
    /* 2 */ {"MAIL FROM",            u"发件人地址", kSender,    RcptTo,    kRcptTo,   kRcptTo,      false, false, u"邮件发送之中..."},
    /* 3 */ {"RCPT TO",              u"收件人地址", kRecipient, Data,      kData,     kData,        false, false, u"获取邮件内容"},
    /* 4 */ {"DATA",                 u"DATA",       kServer,    Content,   kContent,  kContent,     true,  false, u"邮件送完毕"},
    /* 5 */ {"the content",          u"正文",       kServer,    Quit,      kQuit,     kQuit,        true,  false, u"邮件成功发送!!!"},
    /* 6 */ {"QUIT",                 u"QUIT",       kServer,    Nothing,   kQuit,     kQuit,        false, true,  u"待命之中..."},
    /* 7 */ {"AUTH LOGIN",           u"AUTH LOGIN", kAccount,   User,      kUser,     kUser,        false, false, u"校验用户密码"},
    /* 8 */ {"the user name",        u"用户名",     kAccount,   Password,  kReady,    kReady,       false, false, u"发送人邮件地址"},
    /* 9 */ {"HELO or the password", u"HELO或密码", kAccount,   MailFrom,  kMailFrom, kMailFrom,    false, false, u"接收人邮件地址"},
}};
// clang-format on

} // namespace

const SmtpRule& RuleOf(SmtpStep step) {
    return kRules[static_cast<std::size_t>(step)];
}

bool AcceptedReply(std::string_view reply) {
    return std::ranges::find(kAcceptedCodes, reply.substr(0, 3)) != kAcceptedCodes.end();
}

std::string Base64Encode(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::uint32_t group =
            ByteAt(bytes, at) << 16 | ByteAt(bytes, at + 1) << 8 | ByteAt(bytes, at + 2);
        for (int shift = 18; shift >= 0; shift -= 6)
            text += kBase64Symbols[group >> shift & 0x3F];
    }
    if (const std::size_t rest = bytes.size() % 3; rest != 0)
        text.replace(text.size() - (3 - rest), 3 - rest, 3 - rest, '=');
    return text;
}

} // namespace tarnex
