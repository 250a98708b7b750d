#include "ui/form_copies.h"

namespace tarnex {

class FormCopies::Copy : private FormObserver {
  public:
    Copy(std::uint64_t number, WireReader& packet, const Send& send)
        : number_(number), send_(send), form_{packet.String(), packet.Letters()} {
        form_.SetWidth(int(packet.Number()));
        for (std::uint64_t left = packet.Number(); left > 0 && !packet.AtEnd(); --left)
            AddPart(packet);
        form_.OnClose([this] { send_(Record(ViewRecord::kClose).Bytes()); });
        form_.SetVisible(true);
        form_.Observe(this);
    }
    ~Copy() override { form_.Observe(nullptr); }

    void ApplyForm(WireReader& packet);
    void ApplyControl(WireReader& packet);
    void ApplyLines(WireReader& packet);
    // Shows the state that the copy has now.
    void Show(const MakeWindow& make_window);

  private:
    struct Part {
        std::unique_ptr<Control> control;
        std::uint64_t look_revision = 0;
        std::uint64_t held_revision = 0;
    };

    void ControlChanged(Control& control) override;
    void FormChanged() override {
        if (window_)
            window_->FormChanged();
    }

    void AddPart(WireReader& packet);
    std::unique_ptr<Control> MakeControl(ControlKind kind, std::string name, Text caption,
                                         std::uint64_t place);
    // A record about this form, and one about one of its controls.
    WireWriter Record(ViewRecord record) const;
    WireWriter Record(ViewRecord record, std::uint64_t place) const;

    const std::uint64_t number_;
    const Send& send_;
    Form form_;
    std::vector<Part> parts_;
    std::map<const Control*, std::uint64_t> places_;
    bool applying_ = false; // changes are the feed's
    std::unique_ptr<CopyWindow> window_;
};

WireWriter FormCopies::Copy::Record(ViewRecord record) const {
    WireWriter packet(record);
    packet.Number(number_);
    return packet;
}

WireWriter FormCopies::Copy::Record(ViewRecord record, std::uint64_t place) const {
    WireWriter packet = Record(record);
    packet.Number(place);
    return packet;
}

std::unique_ptr<Control> FormCopies::Copy::MakeControl(ControlKind kind, std::string name,
                                                       Text caption, std::uint64_t place) {
    switch (kind) {
    case ControlKind::kLabel:
        return std::make_unique<Label>(form_, std::move(name));
    case ControlKind::kButton: {
        auto button = std::make_unique<Button>(form_, std::move(name), std::move(caption));
        button->OnClick([this, place] {
            WireWriter packet = Record(ViewRecord::kClick, place);
            packet.Number(parts_[place].look_revision);
            send_(packet.Bytes());
        });
        return button;
    }
    case ControlKind::kTextBox: {
        auto box = std::make_unique<TextBox>(form_, std::move(name));
        box->OnLeave([this, place] { send_(Record(ViewRecord::kLeave, place).Bytes()); });
        return box;
    }
    case ControlKind::kCheckBox:
        return std::make_unique<CheckBox>(form_, std::move(name), std::move(caption), false);
    case ControlKind::kListBox:
        break;
    }
    return std::make_unique<ListBox>(form_, std::move(name));
}

void FormCopies::Copy::AddPart(WireReader& packet) {
    const auto kind = packet.Begin<ControlKind>();
    std::string name = packet.String();
    Text caption = packet.Letters();
    const std::uint64_t place = parts_.size();
    Part part{.control = MakeControl(kind, std::move(name), std::move(caption), place)};
    places_[part.control.get()] = place;
    parts_.push_back(std::move(part));
}

void FormCopies::Copy::ApplyForm(WireReader& packet) {
    form_.SetCaption(packet.Letters());
    form_.SetWidth(int(packet.Number()));
}

void FormCopies::Copy::ApplyControl(WireReader& packet) {
    const std::uint64_t place = packet.Number();
    if (place >= parts_.size())
        return;
    Part& part = parts_[place];
    Control& control = *part.control;
    applying_ = true;
    part.look_revision = packet.Number();
    SetLook(control, ReadLook(packet));
    const std::uint64_t revision = packet.Number();
    ControlHeld held = ReadHeld(packet);
    // What the operator has just entered stays, unless the logic has set something since. Of a
    // list it comes with the lines.
    if (revision != part.held_revision && KindOf(control) != ControlKind::kListBox) {
        part.held_revision = revision;
        SetHeld(control, std::move(held));
    }
    applying_ = false;
}

void FormCopies::Copy::ApplyLines(WireReader& packet) {
    const std::uint64_t place = packet.Number();
    const std::uint64_t first = packet.Number();
    const std::uint64_t from = packet.Number();
    std::vector<Text> lines;
    for (std::uint64_t left = packet.Number(); left > 0 && !packet.AtEnd(); --left)
        lines.push_back(packet.Letters());
    const std::uint64_t revision = packet.Number();
    const std::uint64_t selected = packet.Number();
    auto* const list =
        place < parts_.size() ? dynamic_cast<ListBox*>(parts_[place].control.get()) : nullptr;
    if (!list)
        return;
    applying_ = true;
    list->Follow(first, from, std::move(lines));
    if (std::uint64_t& known = parts_[place].held_revision; revision != 0 && revision != known) {
        known = revision;
        SetHeld(*list, {.selected = selected});
    }
    applying_ = false;
}

void FormCopies::Copy::Show(const MakeWindow& make_window) {
    if (!window_)
        window_ = make_window(form_);
    window_->Refresh();
}

void FormCopies::Copy::ControlChanged(Control& control) {
    if (window_)
        window_->ControlChanged(control);
    if (applying_)
        return;
    // Only what an operator can enter changes here.
    const std::uint64_t place = places_[&control];
    WireWriter packet = Record(ViewRecord::kEnter, place);
    packet.Number(parts_[place].held_revision);
    Write(packet, HeldBy(control));
    send_(packet.Bytes());
}

FormCopies::FormCopies(MakeWindow make_window, FileDialog& dialog, Send send)
    : make_window_(std::move(make_window)), dialog_(dialog), send_(std::move(send)) {}

FormCopies::~FormCopies() = default;

FormCopies::Copy* FormCopies::Find(WireReader& packet) {
    const auto found = copies_.find(packet.Number());
    return found == copies_.end() ? nullptr : found->second.get();
}

void FormCopies::ApplyRecord(WireReader& packet) {
    switch (packet.Begin<FeedRecord>()) {
    case FeedRecord::kOpen: {
        const std::uint64_t number = packet.Number();
        copies_[number] = std::make_unique<Copy>(number, packet, send_);
        break;
    }
    case FeedRecord::kForm:
        if (Copy* const copy = Find(packet))
            copy->ApplyForm(packet);
        break;
    case FeedRecord::kClose:
        copies_.erase(packet.Number());
        break;
    case FeedRecord::kControl:
        if (Copy* const copy = Find(packet))
            copy->ApplyControl(packet);
        break;
    case FeedRecord::kLines:
        if (Copy* const copy = Find(packet))
            copy->ApplyLines(packet);
        break;
    case FeedRecord::kAsk: {
        const std::uint64_t question = packet.Number();
        dialog_.Show(packet.Letters(), [this, question](const std::string& path) {
            WireWriter answer(ViewRecord::kChosen);
            answer.Number(question);
            answer.String(path);
            send_(answer.Bytes());
        });
        break;
    }
    case FeedRecord::kWithdraw:
        dialog_.Withdraw();
        break;
    }
}

void FormCopies::Apply(std::string_view packet) {
    WireReader reader(packet);
    while (!reader.AtEnd())
        ApplyRecord(reader);
    for (const auto& [number, copy] : copies_)
        copy->Show(make_window_);
}

} // namespace tarnex
