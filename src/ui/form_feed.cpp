#include "ui/form_feed.h"

#include <algorithm>
#include <utility>

namespace tarnex {

namespace {

constexpr std::size_t kPacket = 64 * 1024; // a packet that has reached that size takes no more

// How a control looks.
struct Look {
    bool enabled = true;
    bool visible = true;
    int width = 0;
    Text caption;
    friend bool operator==(const Look&, const Look&) = default;
};

// What an operator can change in a control.
struct Held {
    Text value;
    bool checked = false;
    std::uint64_t selected = 0; // number of the line + 1; 0: none
    friend bool operator==(const Held&, const Held&) = default;
};

ControlKind KindOf(const Control& control) {
    if (dynamic_cast<const Button*>(&control))
        return ControlKind::kButton;
    if (dynamic_cast<const TextBox*>(&control))
        return ControlKind::kTextBox;
    if (dynamic_cast<const CheckBox*>(&control))
        return ControlKind::kCheckBox;
    if (dynamic_cast<const ListBox*>(&control))
        return ControlKind::kListBox;
    return ControlKind::kLabel;
}

Look LookOf(const Control& control) {
    return {.enabled = control.Enabled(),
            .visible = control.Visible(),
            .width = control.Width(),
            .caption = control.Caption()};
}

Held HeldBy(const Control& control) {
    Held held;
    if (const auto* const box = dynamic_cast<const TextBox*>(&control))
        held.value = box->Value();
    else if (const auto* const check = dynamic_cast<const CheckBox*>(&control))
        held.checked = check->Checked();
    else if (const auto* const list = dynamic_cast<const ListBox*>(&control);
             list && list->Selected() >= 0)
        held.selected = list->FirstNumber() + std::uint64_t(list->Selected()) + 1;
    return held;
}

} // namespace

// One form, and what the copy of it knows.
class FormFeed::Fed : private FormObserver {
  public:
    Fed(FormFeed& feed, Form& shown) : form(shown), feed_(feed) { form.Observe(this); }
    ~Fed() override {
        form.Observe(nullptr);
        Close();
    }

    void FormChanged() override;
    bool Pending() const { return number != 0 && changed_; }
    void Tell(WireWriter& packet);
    void Forget();
    void Act(WireReader& packet, ViewRecord record);

    Form& form;
    std::uint64_t number = 0; // 0: not visible

  private:
    struct Part {
        Control* control = nullptr;
        ControlKind kind{};
        Look look{};
        Held held{};
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
    void TellOpen(WireWriter& packet);
    static void TellState(WireWriter& packet, const Part& part);
    void TellLines(WireWriter& packet, Part& part, std::size_t place);
    void Enter(Part& part, const Held& held, std::uint64_t revision);

    FormFeed& feed_;
    bool opened_ = false;       // the copy is there
    bool form_changed_ = false; // caption or width
    bool changed_ = false;      // anything
    std::vector<Part> parts_;   // while visible
    std::map<const Control*, std::size_t> places_;
};

void FormFeed::Fed::ControlChanged(Control& control) {
    if (!opened_)
        return;
    if (const auto place = places_.find(&control); place != places_.end())
        NoteChange(parts_[place->second]);
    feed_.events_.changed();
}

void FormFeed::Fed::NoteChange(Part& part) {
    if (Look look = LookOf(*part.control); look != part.look) {
        part.look = std::move(look);
        ++part.look_revision;
        part.changed = true;
    }
    const bool is_list = part.kind == ControlKind::kListBox;
    if (Held held = HeldBy(*part.control); held != part.held) {
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

void FormFeed::Fed::FormChanged() {
    if (!form.Visible()) {
        Close();
        return;
    }
    if (number == 0) {
        number = ++feed_.last_number_;
        changed_ = true;
        feed_.events_.shown();
    } else {
        form_changed_ = true;
        changed_ = true;
    }
    feed_.events_.changed();
}

void FormFeed::Fed::Open() {
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

void FormFeed::Fed::Close() {
    if (number == 0)
        return;
    if (opened_)
        feed_.closed_.push_back(number);
    number = 0;
    Forget();
    feed_.events_.hidden();
    feed_.events_.changed();
}

void FormFeed::Fed::Forget() {
    opened_ = false;
    parts_.clear();
    places_.clear();
    if (number != 0) {
        number = ++feed_.last_number_;
        changed_ = true;
    }
}

void FormFeed::Fed::Tell(WireWriter& packet) {
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
        if (parts_[place].changed && has_room()) {
            parts_[place].changed = false;
            packet.Begin(FeedRecord::kControl);
            packet.Number(number);
            packet.Number(place);
            TellState(packet, parts_[place]);
        }
    // Long lists do not keep the rest of the form waiting.
    for (std::size_t place = 0; place < parts_.size(); ++place)
        if (parts_[place].lines_changed && has_room())
            TellLines(packet, parts_[place], place);
    changed_ = std::ranges::any_of(
        parts_, [](const Part& part) { return part.changed || part.lines_changed; });
}

void FormFeed::Fed::TellOpen(WireWriter& packet) {
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
        packet.Flag(part.held.checked);
    }
}

void FormFeed::Fed::TellState(WireWriter& packet, const Part& part) {
    packet.Number(part.look_revision);
    packet.Flag(part.look.enabled);
    packet.Flag(part.look.visible);
    packet.Number(std::uint64_t(part.look.width));
    packet.Letters(part.look.caption);
    packet.Number(part.held_revision);
    packet.Letters(part.held.value);
    packet.Flag(part.held.checked);
}

void FormFeed::Fed::TellLines(WireWriter& packet, Part& part, std::size_t place) {
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

void FormFeed::Fed::Act(WireReader& packet, ViewRecord record) {
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
    if (record == ViewRecord::kClick && part.kind == ControlKind::kButton) {
        if (revision == part.look_revision)
            static_cast<Button&>(control).Click();
    } else if (record == ViewRecord::kText && part.kind == ControlKind::kTextBox) {
        Enter(part, {.value = packet.Letters()}, revision);
    } else if (record == ViewRecord::kTick && part.kind == ControlKind::kCheckBox) {
        Enter(part, {.value = {}, .checked = packet.Flag()}, revision);
    } else if (record == ViewRecord::kSelect && part.kind == ControlKind::kListBox) {
        Enter(part, {.value = {}, .selected = packet.Number()}, revision);
    }
}

void FormFeed::Fed::Enter(Part& part, const Held& held, std::uint64_t revision) {
    if (revision != part.held_revision)
        return;       // what the logic has set since is on its way to the copy
    part.held = held; // as the copy has it
    Control& control = *part.control;
    if (!control.Enabled())
        ControlChanged(control); // so it is put back
    else if (part.kind == ControlKind::kTextBox)
        static_cast<TextBox&>(control).SetValue(held.value);
    else if (part.kind == ControlKind::kCheckBox)
        static_cast<CheckBox&>(control).SetChecked(held.checked);
    else if (auto& list = static_cast<ListBox&>(control); held.selected > list.FirstNumber())
        list.Select(int(held.selected - list.FirstNumber() - 1));
    else
        list.Select(-1);
}

FormFeed::FormFeed(Events events) : events_(std::move(events)) {}

FormFeed::~FormFeed() = default;

void FormFeed::Watch(Form& form) {
    forms_.push_back(std::make_unique<Fed>(*this, form));
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
    return !closed_.empty() || withdrawn_ || (question_ && !question_->told) ||
           std::ranges::any_of(forms_, [](const auto& fed) { return fed->Pending(); });
}

std::string FormFeed::NextPacket() {
    WireWriter packet;
    for (const std::uint64_t number : std::exchange(closed_, {})) {
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
    closed_.clear();
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
    question_ = {.number = ++last_number_, .filter = filter, .chosen = std::move(chosen)};
    events_.changed();
}

void FormFeed::Withdraw() {
    if (!question_)
        return;
    withdrawn_ = question_->told;
    question_.reset();
    events_.changed();
}

} // namespace tarnex
