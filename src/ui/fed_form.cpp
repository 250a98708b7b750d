#include "ui/fed_form.h"

#include <algorithm>

namespace tarnex {

void FedForm::ControlChanged(Control& control) {
    if (!opened_)
        return;
    if (const auto place = places_.find(&control); place != places_.end())
        NoteChange(parts_[place->second]);
    feed_.events.changed();
}

void FedForm::NoteChange(Part& part) {
    if (ControlLook look = LookOf(*part.control); look != part.look) {
        part.look = std::move(look);
        ++part.look_revision;
        part.changed = true;
    }
    const bool is_list = part.kind == ControlKind::kListBox;
    if (ControlHeld held = HeldBy(*part.control); held != part.held) {
        part.held = std::move(held);
        ++part.held_revision;
        (is_list ? part.lines_changed : part.changed) = true;
    }
    if (is_list) {
        const auto& list = static_cast<const ListBox&>(*part.control);
        part.lines_changed |= part.first_told != list.FirstNumber() ||
                              part.end_told != list.FirstNumber() + list.Lines().size();
    }
    changed_ |= part.changed || part.lines_changed;
}

void FedForm::FormChanged() {
    if (!form.Visible()) {
        Close();
        return;
    }
    if (number == 0) {
        number = ++feed_.last_number;
        changed_ = true;
        feed_.events.shown();
    } else {
        form_changed_ = true;
        changed_ = true;
    }
    feed_.events.changed();
}

void FedForm::Open() {
    opened_ = true;
    form_changed_ = false;
    for (Control* const control : form.Controls()) {
        places_[control] = parts_.size();
        Part part{.control = control, .kind = KindOf(*control)};
        part.look = LookOf(*control);
        part.held = HeldBy(*control);
        part.changed = true;
        part.lines_changed = part.kind == ControlKind::kListBox;
        parts_.push_back(std::move(part));
    }
}

void FedForm::Close() {
    if (number == 0)
        return;
    if (opened_)
        feed_.closed.push_back(number);
    number = 0;
    Forget();
    feed_.events.hidden();
    feed_.events.changed();
}

void FedForm::Forget() {
    opened_ = false;
    parts_.clear();
    places_.clear();
    if (number != 0) {
        number = ++feed_.last_number;
        changed_ = true;
    }
}

void FedForm::Tell(WireWriter& packet) {
    if (!opened_) {
        Open();
        TellOpen(packet);
    } else if (form_changed_) {
        form_changed_ = false;
        packet.Begin(FeedRecord::kForm);
        packet.Number(number);
        packet.Letters(form.Caption());
        packet.Number(std::uint64_t(form.Width()));
    }
    const auto has_room = [&packet] { return packet.Bytes().size() < kPacket; };
    for (std::size_t place = 0; place < parts_.size(); ++place)
        if (Part& part = parts_[place]; part.changed && has_room()) {
            part.changed = false;
            packet.Begin(FeedRecord::kControl);
            packet.Number(number);
            packet.Number(place);
            packet.Number(part.look_revision);
            Write(packet, part.look);
            packet.Number(part.held_revision);
            Write(packet, part.held);
        }
    // Long lists do not keep the rest of the form waiting.
    for (std::size_t place = 0; place < parts_.size(); ++place)
        if (parts_[place].lines_changed && has_room())
            TellLines(packet, parts_[place], place);
    changed_ = std::ranges::any_of(
        parts_, [](const Part& part) { return part.changed || part.lines_changed; });
}

void FedForm::TellOpen(WireWriter& packet) const {
    packet.Begin(FeedRecord::kOpen);
    packet.Number(number);
    packet.String(form.Name());
    packet.Letters(form.Caption());
    packet.Number(std::uint64_t(form.Width()));
    packet.Number(parts_.size());
    for (const Part& part : parts_) {
        packet.Begin(part.kind);
        packet.String(part.control->Name());
        packet.Letters(part.look.caption);
    }
}

void FedForm::TellLines(WireWriter& packet, Part& part, std::size_t place) const {
    const auto& list = static_cast<const ListBox&>(*part.control);
    const std::vector<Text>& lines = list.Lines();
    const std::uint64_t first = list.FirstNumber();
    const std::uint64_t from = std::max(part.end_told, first);
    std::uint64_t end = from;
    for (std::size_t size = packet.Bytes().size(); end < first + lines.size() && size < kPacket;
         ++end)
        size += lines[end - first].size() * sizeof(char16_t) + sizeof(std::uint64_t);
    packet.Begin(FeedRecord::kLines);
    packet.Number(number);
    packet.Number(place);
    packet.Number(first);
    packet.Number(from);
    packet.Number(end - from);
    for (std::uint64_t line = from; line < end; ++line)
        packet.Letters(lines[line - first]);
    part.first_told = first;
    part.end_told = end;
    part.lines_changed = end < first + lines.size();
    packet.Number(part.lines_changed ? 0 : part.held_revision); // the selected one may be to come
    packet.Number(part.held.selected);
}

void FedForm::Act(WireReader& packet, ViewRecord record) {
    if (record == ViewRecord::kClose) {
        form.Close();
        return;
    }
    const std::uint64_t place = packet.Number();
    if (place >= parts_.size())
        return;
    Part& part = parts_[place];
    Control& control = *part.control;
    if (record == ViewRecord::kLeave && part.kind == ControlKind::kTextBox) {
        static_cast<TextBox&>(control).Leave();
        return;
    }
    const std::uint64_t revision = packet.Number();
    if (record == ViewRecord::kEnter)
        Enter(part, ReadHeld(packet), revision);
    else if (record == ViewRecord::kClick && part.kind == ControlKind::kButton &&
             revision == part.look_revision)
        static_cast<Button&>(control).Click();
}

void FedForm::Enter(Part& part, ControlHeld held, std::uint64_t revision) {
    if (revision != part.held_revision)
        return;       // what the logic has set since is on its way to the copy
    part.held = held; // as the copy has it
    if (part.control->Enabled())
        SetHeld(*part.control, std::move(held));
    else
        ControlChanged(*part.control); // so it is put back
}

} // namespace tarnex
