#pragma once

#include "events/notification_plan.h"
#include "logging/debug_lists.h"
#include "logging/log_writer.h"
#include "notify/sms_queue.h"
#include "settings/settings.h"

namespace tarnex {

// Takes notification texts to be sent by mail.
class EmailFifo {
  public:
    virtual ~EmailFifo() = default;
    // Queues one line of text. A full queue drops its oldest.
    virtual void dSetEmailFifo(const Text& text, const MessageOrigin& origin) = 0;
};

// Carries out the plan of each event.
class Dispatcher {
  public:
    struct Parts {
        Clock& clock;
        const Settings& settings;
        SMSQueue& queue;
        EmailFifo& mail;
        LogWriter& log;
        DebugLists& lists;
        MessageObserver& messages;
    };
    // Since the start of the program.
    struct Counts {
        unsigned long Events = 0;      // dispatched
        unsigned long HeldByQuiet = 0; // of those, not sent by SMS since it was quiet time
        friend bool operator==(const Counts&, const Counts&) = default;
    };
    // The parts must outlive the dispatcher.
    explicit Dispatcher(Parts parts) : parts_(parts) {}

    // Logs the event of the record, and queues it for mail and SMS. Never waits.
    void DispatchEvent(TextView record);
    const Counts& Totals() const { return totals_; }

  private:
    // Lists a record, the fields of its event, and where its text goes.
    void ListPlan(TextView record, const NotificationPlan& plan);
    void QueueSMS(const Text& entry, const MessageOrigin& origin);
    void TellHeldBack(const NotificationPlan& plan, const MessageOrigin& origin);

    Parts parts_;
    Counts totals_;
};

} // namespace tarnex
