#pragma once

#include "platform/text.h"

#include <array>

namespace tarnex {

// The lists in which operators follow what each part of the service is doing.
enum class List {
    kDevice,  // the device link's own lines
    kTraffic, // what passes the line to the unit
    kEvents,  // events, and the search for the unit
    kReceivedSMS,
    kDeviceEvents, // what the unit reports
    kSMSLog,       // what happens to each SMS
    kControlLink,  // what passes the links
};
inline constexpr std::size_t kLists = 7;

// What is counted while debug mode is on.
enum class Total { kUnitLosses, kTicks, kSMSSent, kSMSFailed, kSMSLost };
inline constexpr std::size_t kTotals = 5;

// Shows what DebugLists is told; a window of the service or of a tool.
class DebugDisplay {
  public:
    virtual ~DebugDisplay() = default;
    virtual void AddLine(List list, const Text& line) = 0;
    virtual void ShowTotal(Total, unsigned long) {}
    virtual void ShowUnit(const Text&) {}
    virtual void ShowSignal(int) {}
};

// Tells the operator what each part of the service is doing: every procedure adds one line, and
// does nothing while debug mode is off.
class DebugLists {
  public:
    // The display must outlive the lists; nullptr: nobody is told.
    explicit DebugLists(DebugDisplay* display) : display_(display) {}

    bool DebugOn = false;

    void List1Additem(const Text& text) { Add(List::kDevice, text); }
    void List2Additem(const Text& text) { Add(List::kTraffic, text); }
    void mList1Additem(const Text& text) { Add(List::kEvents, text); }
    void mList2Additem(const Text& text) { Add(List::kReceivedSMS, text); }
    void mList3Additem(const Text& text) { Add(List::kDeviceEvents, text); }
    void mList4Additem(const Text& text) { Add(List::kSMSLog, text); }
    void mList5Additem(const Text& text) { Add(List::kControlLink, text); }

    // Counts one more, in debug mode.
    void Count(Total total) {
        if (!DebugOn)
            return;
        const unsigned long count = ++totals_[std::size_t(total)];
        if (display_)
            display_->ShowTotal(total, count);
    }

    // The unit's state in words, and its last valid signal reading; in debug mode or not.
    void ShowUnit(const Text& state) {
        if (display_)
            display_->ShowUnit(state);
    }
    void ShowSignal(int reading) {
        if (display_)
            display_->ShowSignal(reading);
    }

  private:
    void Add(List list, const Text& text) {
        if (DebugOn && display_)
            display_->AddLine(list, text);
    }

    DebugDisplay* display_;
    std::array<unsigned long, kTotals> totals_{};
};

} // namespace tarnex
