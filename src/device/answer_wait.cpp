#include "device/answer_wait.h"

namespace tarnex {

AnswerWait::AnswerWait(Clock& clock)
    : ComTimer(clock, "ComTimer", 0ms,
               [this] {
                   TimedOut_ = true;
                   ComTimer.Disable();
                   changed_.Notify();
               }),
      changed_(clock) {}

void AnswerWait::SetAnswer(Text answer) {
    answer_ = std::move(answer);
    if (answer_.empty())
        return;
    for (Pending* pending : pending_)
        if (pending->answer.empty())
            pending->answer = answer_;
    changed_.Notify();
}

Task<Text> AnswerWait::Wait(std::chrono::seconds limit) {
    struct Entry : Pending {
        explicit Entry(std::list<Pending*>& all) : all_(all) { all_.push_back(this); }
        Entry(const Entry&) = delete;
        ~Entry() { all_.remove(this); }
        std::list<Pending*>& all_;
    } entry(pending_);

    while (entry.answer.empty() && !entry.ended && !AnswerTimeout(limit))
        co_await changed_.Wait();
    AnswerTimeout(0s);
    co_return std::move(entry.answer);
}

void AnswerWait::EndWaits() {
    for (Pending* pending : pending_)
        pending->ended = true;
    changed_.Notify();
}

bool AnswerWait::AnswerTimeout(std::chrono::seconds limit) {
    if (limit == 0s) {
        ComTimer.Disable();
        TimerRunning_ = false;
        changed_.Notify(); // whoever still waits arms it again
        return false;
    }
    if (!TimerRunning_) {
        TimerRunning_ = true;
        TimedOut_ = false;
        ComTimer.Disable();
        ComTimer.SetInterval(limit);
        ComTimer.Enable();
        return false;
    }
    if (!TimedOut_)
        return false;
    TimerRunning_ = false;
    return true;
}

} // namespace tarnex
