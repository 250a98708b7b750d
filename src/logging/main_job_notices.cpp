#include "logging/main_job_notices.h"

#include "platform/calendar_text.h"

#include <algorithm>
#include <utility>

namespace tarnex {

namespace {

constexpr Duration kLongNotReady = 5min;
constexpr int kWeakBelow = 5;  // signal quality
constexpr int kStrongest = 31; // 99 is none that is known
constexpr Duration kLongWeak = 10min;
constexpr Duration kMainsStay = 1min; // until then they may go again
constexpr Duration kWordsCome = 1min; // after the unit is ready it has told what is wrong with it
constexpr Duration kRefusedTold = 1h;
constexpr Duration kGreetsAgain = 1min; // a program that hears nothing has done so by then
// Of a queue: nearly full from here on, and until it is down to that.
constexpr int kFullPercent = 80;
constexpr int kRoomPercent = 50;
constexpr std::size_t kDigitsShown = 4;
constexpr std::size_t kNameShown = 64; // characters

// The words of the table are indexed by their enumeration.
constexpr const char* kLossWords[] = {
    "the service began anew with it",
    "its device went away; look whether its cable or its adapter was pulled",
    "it does not answer any more; look at its power and its cable",
    "it has restarted by itself; look at its power supply if that happens again",
    "it does not know the SMS any more that it was given",
};
constexpr const char* kPortWords[] = {
    "no answer",      "not there", "may not be opened",      "held by another program",
    "no serial line", "no answer", "its hardware went away",
};

std::string Since(Duration then, Duration now) {
    return AgeText(std::chrono::floor<std::chrono::seconds>(now - then).count());
}

// And a blank; "" for a program that has told no name.
std::string InQuotes(TextView program) {
    return program.empty() ? "" : "\"" + ToUtf8(EscapeControls(ShortName(program))) + "\" ";
}

std::string Com(int number) {
    return "COM" + std::to_string(number);
}

std::string Span(const std::string& first, const std::string& last) {
    return first == last ? first : first + " to " + last;
}

} // namespace

std::string Masked(TextView number) {
    const std::size_t shown = std::min(kDigitsShown, number.size() / 2);
    return std::string(number.size() - shown, '*') +
           ToUtf8(EscapeControls(number.substr(number.size() - shown)));
}

Text ShortName(TextView name) {
    return Text(name.substr(0, kNameShown)) + (name.size() > kNameShown ? u"…" : u"");
}

// ---- the unit

void MainJobNotices::PortTried(const Port& port, PortStatus status, bool found) {
    tried_[port.number] = {port.device, status};
    if (found)
        port_ = port;
}

void MainJobNotices::NotFound() {
    why_not_ready_ = "it was not found (" + PortsTried() + ")";
}

void MainJobNotices::SettingRefused(std::string_view setting, TextView answer) {
    why_not_ready_ = "it does not take the setting " + std::string(setting) + " (it answers \"" +
                     ToUtf8(EscapeControls(answer)) + "\")";
}

void MainJobNotices::Ready() {
    if (ready_)
        return;
    ready_ = true;
    ready_since_ = clock_.Now();
    notices_.Report("unit", "",
                    "The unit is ready again" + Place() + ", after " +
                        Since(not_ready_since_, clock_.Now()) + ".");
}

void MainJobNotices::BegunAnew(unsigned long dropped) {
    begun_anew_ = clock_.Now();
    const std::string why = kLossWords[std::size_t(std::exchange(loss_, UnitLoss::kOther))];
    if (std::exchange(ready_, false)) {
        not_ready_since_ = clock_.Now();
        why_not_ready_ = why;
    } else if (dropped == 0) {
        return; // nothing that worked is lost
    }
    notices_.Report("unit",
                    "The unit was lost" + Place() + ": " + why + ". " +
                        (dropped == 0 ? ""
                                      : std::to_string(dropped) + " SMS that waited " +
                                            (dropped == 1 ? "was" : "were") + " dropped. ") +
                        "No SMS leaves until it is ready again.",
                    "", NoticeLevel::kError);
}

void MainJobNotices::Said(TextView word) {
    if (word == u"NoCard")
        Tell(card_,
             "The unit reports that it has no SIM card, so no SMS leaves: put a card in, or look "
             "how it sits and whether it asks for a PIN, and switch the unit off and on.",
             NoticeLevel::kError);
    else if (word == u"ACLost")
        MainsLost();
    else if (word == u"ACOk" && !mains_back_ && notices_.Troubled(mains_.topic))
        mains_back_ = clock_.Now();
}

// Mains that come and go are one trouble, which is over when they stay.
void MainJobNotices::MainsLost() {
    if (!notices_.Troubled(mains_.topic)) {
        mains_lost_ = clock_.Now();
        mains_losses_ = 1;
    } else if (mains_back_) {
        ++mains_losses_;
    }
    mains_back_.reset();
    Tell(mains_,
         "The unit has lost its mains power and lives on its battery: look at the supply before "
         "the battery is empty.",
         NoticeLevel::kWarning);
}

void MainJobNotices::LookAtMains() {
    if (!mains_back_ || clock_.Now() - *mains_back_ < kMainsStay)
        return;
    notices_.Report(mains_.topic, "",
                    "The unit has mains power again, after " + Since(mains_lost_, *mains_back_) +
                        (mains_losses_ == 1
                             ? ""
                             : "; it was lost " + std::to_string(mains_losses_) + " times") +
                        ".");
    mains_back_.reset();
}

void MainJobNotices::Tell(Condition& condition, const std::string& trouble, NoticeLevel level) {
    condition.told = clock_.Now();
    notices_.Report(condition.topic, trouble, "", level);
}

void MainJobNotices::EndOld(const Condition& condition, const std::string& over) {
    if (condition.told && *condition.told < begun_anew_)
        notices_.Report(condition.topic, "", over);
}

void MainJobNotices::Signal(int value) {
    if (value >= kWeakBelow && value <= kStrongest) {
        weak_since_.reset();
        notices_.Report("signal", "", "The signal of the unit is strong enough again.");
    } else if (!weak_since_) {
        weak_since_ = clock_.Now();
    } else if (clock_.Now() - *weak_since_ >= kLongWeak) {
        notices_.Report(
            "signal",
            "The signal of the unit has been below 5 (of 31), or 99 (not known), for 10 minutes, "
            "so SMS may fail: look at its antenna, or put it elsewhere.",
            "");
    }
    if (ready_ && clock_.Now() - ready_since_ >= kWordsCome) {
        EndOld(card_, "The unit reports no lack of a SIM card any more.");
        EndOld(mains_, "The unit reports no loss of mains power any more.");
    }
}

std::string MainJobNotices::Place() const {
    return port_ ? " at " + Com(port_->number) + " (" + port_->device + ")" : "";
}

// Neighbours of one answer stand together: "COM1 (/dev/ttyS0) no answer; COM2 to COM20 not there".
std::string MainJobNotices::PortsTried() const {
    std::string text;
    for (auto port = tried_.begin(); port != tried_.end();) {
        const auto first = port;
        auto last = port;
        const auto& [device, status] = first->second;
        while (++port != tried_.end() && port->second.second == status)
            last = port;
        text += (text.empty() ? "" : "; ") + Span(Com(first->first), Com(last->first));
        if (status != PortStatus::kAbsent)
            text += " (" + Span(device, last->second.first) + ")";
        text += std::string(" ") + kPortWords[std::size_t(status)];
    }
    return text;
}

// ---- messages

void MainJobNotices::SmsGivenUp(TextView recipient, const std::vector<Text>& attempts) {
    ++given_up_;
    std::string answers;
    for (const Text& attempt : attempts)
        answers += (answers.empty() ? "" : ", ") + ToUtf8(EscapeControls(attempt));
    const Text& number = numbers_[recipient == u"2"];
    notices_.Report("sms",
                    "An SMS to number " + ToUtf8(recipient) + " (" + Masked(number) +
                        ") was given up after " + std::to_string(attempts.size()) +
                        (attempts.size() == 1 ? " attempt (" : " attempts (") + answers + "); " +
                        std::to_string(given_up_) +
                        " since one was sent last. Look at the credit of the card, the signal, "
                        "the number and the service centre.",
                    "", NoticeLevel::kError);
}

void MainJobNotices::SmsSent() {
    notices_.Report("sms", "",
                    "SMS leave again; " + std::to_string(given_up_) + " given up meanwhile.");
    given_up_ = 0;
    card_.told.reset();
    notices_.Report(card_.topic, "", "The unit sends SMS, so it has a SIM card again.");
}

void MainJobNotices::CommandRefused(TextView sender) {
    refused_ = clock_.Now();
    notices_.Report("sms command",
                    "An SMS command from " + (sender.empty() ? "nobody" : Masked(sender)) +
                        " was refused, since that is neither of the alarm numbers: if you know "
                        "the sender, see \"tarnexctl settings list alarm-number\".",
                    "");
}

// ---- the links

void MainJobNotices::LinkLost(int link, TextView program) {
    const std::string name = InQuotes(program);
    links_gone_[link] = {.gone = clock_.Now(), .program = name, .forgotten = false};
    const std::string number = std::to_string(link);
    notices_.Report("link " + number,
                    "The monitoring program " + name + "on link " + number +
                        " is lost: nothing was heard of it for 40 seconds. What it watches is "
                        "watched by nobody; start it again.",
                    "");
}

void MainJobNotices::LinkForgotten(int link, TextView program) {
    links_gone_[link] = {.gone = clock_.Now(), .program = InQuotes(program), .forgotten = true};
}

void MainJobNotices::LinkGreeted(int link) {
    const auto gone = links_gone_.extract(link);
    if (!gone.empty())
        notices_.Report("link " + std::to_string(link), "",
                        "A monitoring program has greeted link " + std::to_string(link) +
                            " again, after " + Since(gone.mapped().gone, clock_.Now()) + ".");
}

void MainJobNotices::LookAtLinks() {
    for (auto& [link, at] : links_gone_) {
        if (!at.forgotten || clock_.Now() - at.gone < kGreetsAgain)
            continue;
        at.forgotten = false;
        const std::string number = std::to_string(link);
        notices_.Report("link " + number,
                        "The monitoring program " + at.program + "on link " + number +
                            " has not greeted it again since the service began anew with the "
                            "unit: it is told nothing of the unit and of SMS commands, and nobody "
                            "would notice its end. Start it again.",
                        "");
    }
}

// ---- every few seconds

void MainJobNotices::Look(const State& state) {
    numbers_ = state.numbers;
    LookAtUnit(state);
    LookAtMains();
    LookAtQueue("SMS", state.sms, sms_pushed_out_);
    LookAtQueue("mail", state.mail, mails_pushed_out_);
    LookAtNumbers();
    LookAtLinks();
    if (refused_ && clock_.Now() - *refused_ >= kRefusedTold)
        notices_.Report("sms command", "", "No SMS command was refused for an hour.");
}

void MainJobNotices::LookAtUnit(const State& state) {
    if (ready_)
        return;
    if (!state.searching) {
        not_ready_since_ = clock_.Now();
        notices_.Report("unit", "", "The settings switch the unit off: it is not searched for.");
    } else if (clock_.Now() - not_ready_since_ >= kLongNotReady) {
        notices_.Report(
            "unit",
            "The unit has not been ready for 5 minutes, so no SMS leaves: " + why_not_ready_ +
                ". \"tarnexctl doctor\" looks at each port and says what to do.",
            "", NoticeLevel::kError);
    }
}

void MainJobNotices::LookAtQueue(const std::string& name, const Queue& queue,
                                 unsigned long& pushed_out) {
    const std::string topic = name + " queue";
    const bool lost = std::exchange(pushed_out, queue.pushed_out) != queue.pushed_out;
    if (lost)
        notices_.Report(topic,
                        "The " + topic +
                            " is full, and its oldest entries are lost: find out why "
                            "they do not leave, or which program sends so many.",
                        "", NoticeLevel::kError);
    else if (queue.waiting * 100 >= queue.room * kFullPercent && !notices_.Troubled(topic))
        notices_.Report(topic,
                        "The " + topic +
                            " is nearly full, and then loses its oldest entries: find "
                            "out why they do not leave, or which program sends so many.",
                        "");
    else if (queue.waiting * 100 <= queue.room * kRoomPercent)
        notices_.Report(topic, "", "The " + topic + " has room again.");
}

void MainJobNotices::LookAtNumbers() {
    const auto placeholder = [](const Text& number) {
        return !number.empty() && number.find_first_not_of(u'0') == Text::npos;
    };
    const bool not_set_up = std::ranges::any_of(numbers_, placeholder);
    notices_.Report("set-up",
                    not_set_up
                        ? "The service is not set up yet: an alarm telephone number is still "
                          "the place-holder of the sample, so nobody gets that SMS. Set it "
                          "up: tarnexctl setup"
                        : "",
                    "The alarm telephone numbers are set up now.");
}

} // namespace tarnex
