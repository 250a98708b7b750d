#include "mail/mail_sender.h"

#include "mail/server_address.h"
#include "platform/calendar_text.h"
#include "platform/error_words.h"
#include "settings/load_settings.h"
#include "settings/setting_table.h"

#include <algorithm>
#include <utility>

namespace tarnex {

namespace {

constexpr Duration kTick = 5000ms;
constexpr int kPatience = 3; // ticks without an accepted reply; one more and the mail gives up
constexpr TextView kSubjectStart = u"Tarnex K Serial : ";
constexpr std::size_t kLongestQuote = 80; // characters of others' words in a line for operators

// What to do, by what fails.
constexpr const char* kCheckMachine =
    "Find out what takes up the open files, the memory or the threads of this machine";

std::string CheckServer() {
    return "Check the server (setting " + NameOf("mail-server"_setting) + ")";
}

std::string CheckNetwork() {
    return CheckServer() + " and the network";
}

std::string NameServer() {
    return "Set " + NameOf("mail-server"_setting) + " to the mail server as host or host:port";
}

std::string CheckAccount() {
    return "Check the user name and password (settings " + NameOf("mail-user"_setting) + " and " +
           NameOf("mail-password"_setting) + ")";
}

// The first line of text, without control characters.
Text FirstLine(TextView text) {
    Text line(text.substr(0, text.find_first_of(u"\r\n")).substr(0, kLongestQuote));
    std::ranges::replace_if(line, IsControl, u' ');
    return Text(Trim(line));
}

std::string Quote(TextView text) {
    return '"' + ToUtf8(FirstLine(text)) + '"';
}

std::string AdviceAfterRefusal(SmtpDoubt doubt, bool logs_in) {
    switch (doubt) {
    case SmtpDoubt::kServer:
        break;
    case SmtpDoubt::kAccount:
        return logs_in ? CheckAccount() : CheckServer();
    case SmtpDoubt::kSender:
        return "Check the address of the sender (setting " + NameOf("mail-from"_setting) + ")";
    case SmtpDoubt::kRecipient:
        return "Check the address of the recipient (setting " + NameOf("mail-to"_setting) + ")";
    }
    return CheckServer();
}

} // namespace

MailSender::MailSender(Clock& clock, TcpClients& tcp, const MyIniFile& ini,
                       const CodePage& code_page, OperatorNotices& notices,
                       MessageObserver& messages)
    : clock_(clock), ini_(ini), code_page_(code_page), notices_(notices), messages_(messages),
      Winsock1_(tcp.Create({.connected = [] {}, // the server speaks first
                            .received = [this](std::string_view bytes) { OnReply(bytes); },
                            .ended = [this](const TcpEnd& end) { OnEnded(end); }})),
      MailSenderTimer_(clock, kTick, [this] { MailSenderTimer_Timer(); }) {
    timers_.Add(MailSenderTimer_);
    Load();
}

void MailSender::Load() {
    loaded_ = true;
    InitEmailFifo();
    MailSenderTimer_.Enable();
}

void MailSender::Unload() {
    loaded_ = false;
    MailSenderTimer_.Disable();
    Winsock1_->Close();
}

void MailSender::InitEmailFifo() {
    EndHandedOver(Fate::kSent);
    Drop(std::exchange(CurrentMail_, {}));
    while (!fifo_.Empty())
        Drop(fifo_.Pop());
    BusyTicks_ = -1;
    ReadyForNext_ = true;
}

void MailSender::dSetEmailFifo(const Text& text, const MessageOrigin& origin) {
    if (!loaded_)
        Load();
    const MessageId id =
        messages_.Queued({.way = MessageWay::kMail, .number = {}, .text = text, .origin = origin});
    Push({.text = text, .id = id});
}

void MailSender::Push(Waiting mail) {
    if (const auto oldest = fifo_.Push(std::move(mail))) {
        ++dropped_;
        messages_.Ended(oldest->id, Fate::kPushedOut);
    }
}

Text MailSender::GetEmailFifo() {
    if (fifo_.Empty())
        return Text(kNoData);
    CurrentMail_ = fifo_.Pop();
    return CurrentMail_.text;
}

void MailSender::Drop(const Waiting& mail) {
    if (mail.id != 0)
        messages_.Ended(mail.id, Fate::kDropped);
}

void MailSender::MailSenderTimer_Timer() {
    if (display_)
        display_->ShowTicks(BusyTicks_);
    if (BusyTicks_ > -1 && ++BusyTicks_ > kPatience)
        GiveUpForNow();
    if (!ReadyForNext_)
        return;
    if (GetEmailFifo() == kNoData) {
        Drop(std::exchange(CurrentMail_, {}));
        BusyTicks_ = -1;
        return;
    }
    ReadyForNext_ = false;
    SendOut();
    BusyTicks_ = 0;
}

void MailSender::GiveUpForNow() {
    const SmtpRule& rule = RuleOf(SendStep_);
    Fail("no answer in time to " + std::string(rule.waits_for),
         u"服务器没有及时应答：" + Text(rule.waits_for_chinese), CheckNetwork());
    Push(std::exchange(CurrentMail_, {}));
    BusyTicks_ = 0;
    ReadyForNext_ = true;
}

void MailSender::LoadMailSettings() {
    const MailSettings before = std::exchange(settings_, ReadSettings(*ini_.Snapshot()).mail);
    if (settings_ != before)
        failing_ = false; // what fails with the new settings is worth a new line
}

void MailSender::SendOut() {
    EndHandedOver(Fate::kSent);
    LoadMailSettings();
    queued_mail_ = true;
    StartDialogue({.server = settings_.SmtpServer,
                   .from = settings_.MailFrom,
                   .to = settings_.MailTo,
                   .user = settings_.MailAuth ? settings_.SmtpUser : Text(),
                   .password = settings_.SmtpPassword,
                   .subject = Text(kSubjectStart) + CurrentMail_.text,
                   .body = CurrentMail_.text});
}

void MailSender::Send(MailParts mail) {
    EndHandedOver(Fate::kSent);
    if (queued_mail_ && CurrentMail_.id != 0 && !attempt_failed_)
        messages_.Attempted(CurrentMail_.id, u"stopped for another mail");
    queued_mail_ = false;
    StartDialogue(std::move(mail));
}

void MailSender::StartDialogue(MailParts mail) {
    mail_ = std::move(mail);
    if (display_)
        display_->ShowMail(mail_);
    Winsock1_->Close();
    attempt_failed_ = false;
    const auto server = ParseServerAddress(mail_.server);
    if (!server)
        return Fail("it names no host, or a port that is not a number from 1 to 65535",
                    u"服务器应为“主机”或“主机:端口”，端口是1到65535的数", NameServer());
    Winsock1_->Connect(code_page_.Encode(server->host), server->port);
    SendStep_ = SmtpStep::kGreeting;
    ShowProgress(u"试图与服务器连接");
}

// What waits on the connection at one time is one reply: what arrives is never put together, so a
// server that talks without end costs no memory.
void MailSender::OnReply(std::string_view reply) {
    const SmtpRule& rule = RuleOf(SendStep_);
    if (AcceptedReply(reply))
        return TakeStep(rule);
    Winsock1_->Close();
    if (SendStep_ == SmtpStep::kQuit)
        return; // the usual 221
    const Text answer = code_page_.Decode(reply);
    Fail("it answered " + Quote(answer) + " to " + std::string(rule.waits_for),
         u"服务器不接受" + Text(rule.waits_for_chinese) + u"：" + FirstLine(answer),
         AdviceAfterRefusal(rule.doubt, !mail_.user.empty()));
    EndHandedOver(Fate::kGivenUp);
}

void MailSender::TakeStep(const SmtpRule& rule) {
    const SmtpSends sends = rule.compose(mail_, code_page_);
    if (!sends) {
        Winsock1_->Close();
        return Fail("the user name or password holds characters that cannot be sent",
                    u"用户名或密码含有不能发送的字符", CheckAccount());
    }
    for (const std::string& bytes : *sends)
        Winsock1_->Send(bytes);
    if (rule.closes)
        Winsock1_->Close();
    else
        BusyTicks_ = 0;
    if (rule.done)
        ReadyForNext_ = true;
    if (SendStep_ == SmtpStep::kRcptTo && queued_mail_)
        messages_.Attempting(CurrentMail_.id); // the content comes next
    if (SendStep_ == SmtpStep::kData)
        HandedOver();
    if (SendStep_ == SmtpStep::kContent)
        Confirmed();
    SendStep_ = mail_.user.empty() ? rule.next_without_user : rule.next;
    ShowProgress(rule.status);
}

void MailSender::HandedOver() {
    ++sent_;
    const Waiting mail = std::exchange(CurrentMail_, {}); // the next one may start
    if (queued_mail_)
        handed_over_ = mail.id;
    else
        Drop(mail); // the mail that was sent instead has taken its turn
}

void MailSender::EndHandedOver(Fate fate) {
    if (const MessageId id = std::exchange(handed_over_, 0))
        messages_.Ended(id, fate);
}

void MailSender::OnEnded(const TcpEnd& end) {
    const SmtpRule& rule = RuleOf(SendStep_);
    const Text chinese = InChinese(end.why);
    if (SendStep_ == SmtpStep::kGreeting)
        Fail(end.why, u"不能连接服务器：" + chinese,
             end.own_machine ? kCheckMachine : CheckNetwork());
    else if (SendStep_ != SmtpStep::kQuit)
        Fail(end.why + " before the answer to " + std::string(rule.waits_for),
             u"等待服务器应答（" + Text(rule.waits_for_chinese) + u"）时：" + chinese,
             CheckNetwork());
    EndHandedOver(Fate::kSent);
}

void MailSender::Confirmed() {
    if (handed_over_ != 0)
        messages_.Attempted(handed_over_, u"accepted");
    EndHandedOver(Fate::kSent);
    failing_ = false;
    ShowProblem(u"");
    notices_.Report("mail", "", "Mail works again.");
}

void MailSender::Fail(const std::string& why, const Text& chinese, const std::string& advice) {
    if (attempt_failed_)
        return;
    ShowProblem(TimeText(clock_.Calendar()) + u" " + chinese);
    attempt_failed_ = true;
    ++failed_attempts_;
    if (const MessageId id = handed_over_ != 0 ? handed_over_ : queued_mail_ ? CurrentMail_.id : 0)
        messages_.Attempted(id, FromUtf8(why));
    last_problem_ = "server " + Quote(mail_.server) + ": " + why;
    // Later attempts may fail in changing words; one line is enough until mails work again.
    if (!failing_)
        notices_.Report("mail",
                        "Mail cannot be sent: " + last_problem_ + ". " + advice +
                            ". A mail is tried again until its content was handed over.",
                        "");
    failing_ = true;
}

void MailSender::ShowProgress(TextView progress) {
    if (display_)
        display_->ShowProgress(progress);
}

void MailSender::ShowProblem(const Text& problem) {
    if (display_)
        display_->ShowProblem(problem);
}

MailStatus MailSender::Status() const {
    return {.queued = fifo_.Size(),
            .in_flight = !ReadyForNext_,
            .step = static_cast<int>(SendStep_),
            .sent = sent_,
            .failed_attempts = failed_attempts_,
            .dropped = dropped_,
            .failing = failing_,
            .last_problem = last_problem_};
}

} // namespace tarnex
