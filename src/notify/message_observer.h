#pragma once

#include "platform/text.h"

#include <cstdint>

namespace tarnex {

// A message by its number; 0 for none. No two that an observer has named are the same.
using MessageId = std::uint64_t;

enum class MessageWay : std::uint8_t { kSMS, kMail };

// What became of a message. Each gets one, and then is no more.
enum class Fate : std::uint8_t {
    kSent,     // by the unit's word; a mail: the server was given the content and did not refuse it
    kGivenUp,  // an SMS after too many attempts; a mail whose content the server refused
    kHeldBack, // never waited: by quiet time, a switch or a send count of 0
    kPushedOut, // of a full queue, by a newer one
    kDropped,   // by a new start with the unit, or of the mail sender
    kLost,      // waited when the service ended
};
inline constexpr std::size_t kFates = 6;

// Where a message comes from.
struct MessageOrigin {
    Text record;            // the event's; empty: no event
    MessageId again_of = 0; // the message that is sent again by this one; 0: a new one
    int maybe_sent = 0;     // how often that one, and those before it, may have been sent
};

struct NewMessage {
    MessageWay way;
    TextView number; // of an SMS: "1" or "2", the configured number that it goes to
    TextView text;
    const MessageOrigin& origin;
};

// Is told at once of every SMS and every mail that waits to be sent, of each attempt and of its
// fate. Called from within the queues: it leaves them alone meanwhile.
class MessageObserver {
  public:
    virtual ~MessageObserver() = default;
    // It waits from now on. Names it.
    virtual MessageId Queued(const NewMessage& message) = 0;
    // It is never queued, for that reason.
    virtual void HeldBack(const NewMessage& message, TextView reason) = 0;
    // It is about to be given to the unit or the server, by a later call of the loop: from then on
    // it may have been sent, whatever is heard of it.
    virtual void Attempting(MessageId id) = 0;
    // How that went: the unit's word, or what was wrong with the mail.
    virtual void Attempted(MessageId id, TextView result) = 0;
    // kHeldBack is never told so.
    virtual void Ended(MessageId id, Fate fate) = 0;
};

} // namespace tarnex
