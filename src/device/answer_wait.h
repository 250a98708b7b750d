#pragma once

#include "platform/task.h"
#include "platform/text.h"
#include "platform/timer.h"

#include <list>

namespace tarnex {

// The answer slot and the wait for it. Commands that wait at the same time share both: each takes
// the first answer that comes, and they share one time-out, which each renews in its turn.
class AnswerWait {
  public:
    explicit AnswerWait(Clock& clock);

    // The last line of the unit that begins with "TX:" and was no event.
    const Text& Answer() const { return answer_; }
    // A non-empty answer goes to every waiting command at this moment.
    void SetAnswer(Text answer);

    // Waits for an answer; "" when none came within limit, or the waits were ended.
    Task<Text> Wait(std::chrono::seconds limit);
    // Every wait ends with "" now.
    void EndWaits();

    Timer ComTimer;

  private:
    struct Pending {
        Text answer;
        bool ended = false;
    };

    // Arms the shared time-out, or tells, once, that it has passed; 0 stops it.
    bool AnswerTimeout(std::chrono::seconds limit);

    Text answer_;
    bool TimedOut_ = false;
    bool TimerRunning_ = false;
    std::list<Pending*> pending_;
    Signal changed_;
};

} // namespace tarnex
