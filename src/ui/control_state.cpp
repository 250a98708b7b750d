#include "ui/control_state.h"

namespace tarnex {

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

ControlLook LookOf(const Control& control) {
    return {.enabled = control.Enabled(),
            .visible = control.Visible(),
            .width = control.Width(),
            .caption = control.Caption()};
}

ControlHeld HeldBy(const Control& control) {
    ControlHeld held;
    if (const auto* const box = dynamic_cast<const TextBox*>(&control))
        held.value = box->Value();
    else if (const auto* const check = dynamic_cast<const CheckBox*>(&control))
        held.checked = check->Checked();
    else if (const auto* const list = dynamic_cast<const ListBox*>(&control);
             list && list->Selected() >= 0)
        held.selected = list->FirstNumber() + std::uint64_t(list->Selected()) + 1;
    return held;
}

void SetLook(Control& control, ControlLook look) {
    control.SetEnabled(look.enabled);
    control.SetVisible(look.visible);
    control.SetWidth(look.width);
    if (auto* const button = dynamic_cast<Button*>(&control))
        button->SetCaption(std::move(look.caption));
    else if (auto* const label = dynamic_cast<Label*>(&control))
        label->SetCaption(std::move(look.caption));
}

void SetHeld(Control& control, ControlHeld held) {
    if (auto* const box = dynamic_cast<TextBox*>(&control))
        box->SetValue(std::move(held.value));
    else if (auto* const check = dynamic_cast<CheckBox*>(&control))
        check->SetChecked(held.checked);
    else if (auto* const list = dynamic_cast<ListBox*>(&control))
        list->Select(held.selected > list->FirstNumber()
                         ? int(held.selected - list->FirstNumber() - 1)
                         : -1);
}

void Write(WireWriter& packet, const ControlLook& look) {
    packet.Flag(look.enabled);
    packet.Flag(look.visible);
    packet.Number(std::uint64_t(look.width));
    packet.Letters(look.caption);
}

void Write(WireWriter& packet, const ControlHeld& held) {
    packet.Letters(held.value);
    packet.Flag(held.checked);
    packet.Number(held.selected);
}

ControlLook ReadLook(WireReader& packet) {
    ControlLook look;
    look.enabled = packet.Flag();
    look.visible = packet.Flag();
    look.width = int(packet.Number());
    look.caption = packet.Letters();
    return look;
}

ControlHeld ReadHeld(WireReader& packet) {
    ControlHeld held;
    held.value = packet.Letters();
    held.checked = packet.Flag();
    held.selected = packet.Number();
    return held;
}

} // namespace tarnex
