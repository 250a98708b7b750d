#include "ui/form_feed.h"

#include <algorithm>
#include <utility>

namespace tarnex {

FormFeed::FormFeed(FeedEvents events) : state_{.events = std::move(events)} {}

FormFeed::~FormFeed() = default;

void FormFeed::Watch(Form& form) {
    forms_.push_back(std::make_unique<FedForm>(state_, form));
    forms_.back()->FormChanged();
}

void FormFeed::Unwatch(const Form& form) {
    const auto found = std::ranges::find(forms_, &form, [](const auto& fed) { return &fed->form; });
    if (found == forms_.end())
        return;
    const auto fed = std::move(*found);
    forms_.erase(found);
}

bool FormFeed::AnyVisible() const {
    return std::ranges::any_of(forms_, [](const auto& fed) { return fed->number != 0; });
}

void FormFeed::HideAll() {
    for (const auto& fed : forms_)
        fed->form.SetVisible(false);
}

bool FormFeed::Pending() const {
    return !state_.closed.empty() || withdrawn_ || (question_ && !question_->told) ||
           std::ranges::any_of(forms_, [](const auto& fed) { return fed->Pending(); });
}

std::string FormFeed::NextPacket() {
    WireWriter packet;
    for (const std::uint64_t number : std::exchange(state_.closed, {})) {
        packet.Begin(FeedRecord::kClose);
        packet.Number(number);
    }
    if (std::exchange(withdrawn_, false))
        packet.Begin(FeedRecord::kWithdraw);
    if (question_ && !question_->told) {
        question_->told = true;
        packet.Begin(FeedRecord::kAsk);
        packet.Number(question_->number);
        packet.Letters(question_->filter);
    }
    for (const auto& fed : forms_)
        if (fed->Pending() && packet.Bytes().size() < kPacket)
            fed->Tell(packet);
    return packet.Bytes();
}

void FormFeed::Forget() {
    state_.closed.clear();
    withdrawn_ = false;
    if (question_)
        question_->told = false;
    for (const auto& fed : forms_)
        fed->Forget();
}

void FormFeed::Take(std::string_view packet) {
    WireReader reader(packet);
    const auto record = reader.Begin<ViewRecord>();
    if (record < ViewRecord::kClick)
        return;
    const std::uint64_t number = reader.Number();
    if (record == ViewRecord::kChosen) {
        if (!question_ || question_->number != number)
            return;
        const auto chosen = std::move(question_->chosen);
        question_.reset();
        chosen(reader.String());
        return;
    }
    const auto fed =
        std::ranges::find(forms_, number, [](const auto& each) { return each->number; });
    if (number != 0 && fed != forms_.end())
        (*fed)->Act(reader, record);
}

void FormFeed::Show(const Text& filter, std::function<void(const std::string&)> chosen) {
    question_ = {.number = ++state_.last_number, .filter = filter, .chosen = std::move(chosen)};
    state_.events.changed();
}

void FormFeed::Withdraw() {
    if (!question_)
        return;
    withdrawn_ = question_->told;
    question_.reset();
    state_.events.changed();
}

} // namespace tarnex
