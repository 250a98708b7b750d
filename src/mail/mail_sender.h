#pragma once

#include "logging/operator_notices.h"
#include "mail/smtp_dialogue.h"
#include "notify/dispatcher.h"
#include "platform/ring_fifo.h"
#include "platform/tcp_client.h"
#include "platform/timer.h"
#include "settings/my_ini_file.h"
#include "settings/settings.h"

namespace tarnex {

// What a status display shows of the mails.
struct MailStatus {
    std::size_t queued = 0; // without the one in flight
    bool in_flight = false; // a mail whose content the server was not given yet
    int step = 0;           // of the dialogue, as in SmtpStep
    unsigned long sent = 0; // mails whose content the server was given
    unsigned long failed_attempts = 0;
    unsigned long dropped = 0; // by a full queue
    bool failing = false;      // since the last attempt that failed no mail was confirmed
    std::string last_problem;  // UTF-8, one line; "" while there was none
    friend bool operator==(const MailStatus&, const MailStatus&) = default;
};

// Shows how the mails fare; a window.
class MailDisplay {
  public:
    virtual ~MailDisplay() = default;
    virtual void ShowMail(const MailParts& mail) = 0; // is sent now
    virtual void ShowProgress(TextView progress) = 0;
    // When and why the last attempt failed; "" once mails work.
    virtual void ShowProblem(const Text& problem) = 0;
    // The watchdog's count at the last tick.
    virtual void ShowTicks(int ticks) = 0;
};

// Mails queued texts, one at a time, through the SMTP server of the settings. A mail that the
// server does not take is queued again behind the others and tried again without limit.
class MailSender : public EmailFifo {
  public:
    static constexpr std::size_t kRoom = 400; // texts that wait

    // Everything handed in must outlive it. It works from now on.
    MailSender(Clock& clock, TcpClients& tcp, const MyIniFile& ini, const CodePage& code_page,
               OperatorNotices& notices, MessageObserver& messages);

    // The text becomes the body and the end of the subject. At most kRoom texts wait.
    void dSetEmailFifo(const Text& text, const MessageOrigin& origin = {}) override;
    // Sends this mail now, instead of what is being sent. No observer hears of it: it was never
    // queued.
    void Send(MailParts mail);
    // Stops. The next text to be queued begins anew, and drops what has waited until then.
    void Unload();

    // Is told from now on; nullptr: nobody is. It must outlive the sender or be taken away.
    void SetDisplay(MailDisplay* display) { display_ = display; }
    TimerList& Timers() { return timers_; }
    MailStatus Status() const;

  private:
    struct Waiting {
        Text text;
        MessageId id = 0;
    };

    void Load();
    void InitEmailFifo();
    void Push(Waiting mail);
    Text GetEmailFifo();
    void Drop(const Waiting& mail);
    // Sends the current text now, by the settings as they are now.
    void SendOut();
    void StartDialogue(MailParts mail);
    void HandedOver();
    // Of the mail that was handed over last, unless it has one.
    void EndHandedOver(Fate fate);
    // Of one moment, so that a server never meets the password of another one.
    void LoadMailSettings();
    void MailSenderTimer_Timer();
    void GiveUpForNow();
    void OnReply(std::string_view reply);
    void OnEnded(const TcpEnd& end);
    void TakeStep(const SmtpRule& rule);
    void Confirmed();
    void ShowProgress(TextView progress);
    void ShowProblem(const Text& problem);
    // why: for operators; chinese: the same, for the display.
    void Fail(const std::string& why, const Text& chinese, const std::string& advice);

    Clock& clock_;
    const MyIniFile& ini_;
    const CodePage& code_page_;
    OperatorNotices& notices_;
    MessageObserver& messages_;
    MailDisplay* display_ = nullptr;
    std::unique_ptr<TcpClient> Winsock1_;
    Timer MailSenderTimer_;
    TimerList timers_;
    bool loaded_ = false;

    RingFifo<kRoom + 1, Waiting> fifo_;
    int BusyTicks_ = -1;        // ticks since the last accepted reply; -1: no mail in flight
    bool ReadyForNext_ = true;  // the timer may take the next text
    Waiting CurrentMail_;       // the text in flight
    bool queued_mail_ = false;  // what is being sent is that text
    MessageId handed_over_ = 0; // its content waits for the server's word; 0 for none
    MailParts mail_;            // as it is being sent
    SmtpStep SendStep_ = SmtpStep::kGreeting;
    MailSettings settings_;

    unsigned long sent_ = 0;
    unsigned long failed_attempts_ = 0;
    unsigned long dropped_ = 0;
    bool attempt_failed_ = false; // counted already
    bool failing_ = false;        // and the operator has been told
    std::string last_problem_;
};

} // namespace tarnex
