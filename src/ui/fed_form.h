#pragma once

#include "ui/control_state.h"

#include <map>

namespace tarnex {

// What a feed tells its owner.
struct FeedEvents {
    std::function<void()> shown;   // a form became visible
    std::function<void()> hidden;  // a form is not visible any more
    std::function<void()> changed; // something is pending
};

// What the forms of one feed have in common.
struct FeedState {
    FeedEvents events;
    std::vector<std::uint64_t> closed{}; // numbers of forms that the copies still know
    std::uint64_t last_number = 0;       // of a form or a question
};

// A packet that has reached that size, in bytes, takes no more.
inline constexpr std::size_t kPacket = 64 * 1024;

// One form of a feed, and what the copy of it knows.
class FedForm : private FormObserver {
  public:
    // Is the form's observer. Both must outlive it.
    FedForm(FeedState& feed, Form& shown) : form(shown), feed_(feed) { form.Observe(this); }
    ~FedForm() override {
        form.Observe(nullptr);
        Close();
    }
    FedForm(const FedForm&) = delete;
    FedForm& operator=(const FedForm&) = delete;

    void FormChanged() override;
    bool Pending() const { return number != 0 && changed_; }
    // Adds what is pending to the packet, as far as there is room.
    void Tell(WireWriter& packet);
    // The copy is gone.
    void Forget();
    // Does what the operator has done to the copy.
    void Act(WireReader& packet, ViewRecord record);

    Form& form;
    std::uint64_t number = 0; // 0: not visible

  private:
    struct Part {
        Control* control = nullptr;
        ControlKind kind{};
        ControlLook look{};
        ControlHeld held{};
        std::uint64_t look_revision = 1;
        std::uint64_t held_revision = 1;
        bool changed = false; // the state
        // Of a list alone: the numbers between which the copy has its lines.
        std::uint64_t first_told = 0;
        std::uint64_t end_told = 0;
        bool lines_changed = false; // or the selected one
    };

    void ControlChanged(Control& control) override;

    void Open();
    void Close();
    void NoteChange(Part& part);
    void TellOpen(WireWriter& packet) const;
    void TellLines(WireWriter& packet, Part& part, std::size_t place) const;
    void Enter(Part& part, ControlHeld held, std::uint64_t revision);

    FeedState& feed_;
    bool opened_ = false;       // the copy is there
    bool form_changed_ = false; // caption or width
    bool changed_ = false;      // anything
    std::vector<Part> parts_;   // while visible
    std::map<const Control*, std::size_t> places_;
};

} // namespace tarnex
