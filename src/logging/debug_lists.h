#pragma once

#include "platform/text.h"
#include "ui/form.h"

#include <functional>

namespace tarnex {

// The seven list boxes of the main window that echo what each part of the service is doing. Every
// procedure adds one line, and does nothing while debug mode is off.
class DebugLists {
  public:
    struct Boxes {
        ListBox& List1;  // device link, debug
        ListBox& List2;  // device link, traffic
        ListBox& mList1; // events
        ListBox& mList2; // received SMS
        ListBox& mList3; // device events
        ListBox& mList4; // SMS log
        ListBox& mList5; // control link
    };
    using Echo = std::function<void(const std::string& list, const Text& line)>;

    // Boxes that nobody sees keep that many lines, since nobody will ever clear them.
    static constexpr std::size_t kLinesUnseen = 1000;

    // The boxes must outlive the lists. echo, when given, is told every line that stands on no
    // screen; seen says whether the boxes do, and without it none does.
    explicit DebugLists(const Boxes& boxes, Echo echo = nullptr,
                        std::function<bool()> seen = nullptr)
        : boxes_(boxes), echo_(std::move(echo)), seen_(std::move(seen)) {}

    bool DebugOn = false;

    void List1Additem(const Text& text) { Add(boxes_.List1, text); }
    void List2Additem(const Text& text) { Add(boxes_.List2, text); }
    void mList1Additem(const Text& text) { Add(boxes_.mList1, text); }
    void mList2Additem(const Text& text) { Add(boxes_.mList2, text); }
    void mList3Additem(const Text& text) { Add(boxes_.mList3, text); }
    void mList4Additem(const Text& text) { Add(boxes_.mList4, text); }
    void mList5Additem(const Text& text) { Add(boxes_.mList5, text); }

  private:
    void Add(ListBox& box, const Text& text) {
        if (!DebugOn)
            return;
        const bool seen = seen_ && seen_();
        box.KeepAtMost(seen ? ListBox::kEveryLine : kLinesUnseen);
        box.Add(text);
        if (!seen && echo_)
            echo_(box.Name(), text);
    }

    Boxes boxes_;
    Echo echo_;
    std::function<bool()> seen_;
};

} // namespace tarnex
