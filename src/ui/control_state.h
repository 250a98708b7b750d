#pragma once

#include "ui/form.h"
#include "ui/form_wire.h"

namespace tarnex {

// The state of a control, as a form and its copy tell it to each other.

// How it looks. Only the logic changes that.
struct ControlLook {
    bool enabled = true;
    bool visible = true;
    int width = 0;
    Text caption{};
    friend bool operator==(const ControlLook&, const ControlLook&) = default;
};

// What it holds. The operator changes that too.
struct ControlHeld {
    Text value{};
    bool checked = false;
    std::uint64_t selected = 0; // number of the line + 1; 0: none
    friend bool operator==(const ControlHeld&, const ControlHeld&) = default;
};

ControlKind KindOf(const Control& control);
ControlLook LookOf(const Control& control);
ControlHeld HeldBy(const Control& control);
// The caption of labels and buttons alone; no other changes.
void SetLook(Control& control, ControlLook look);
void SetHeld(Control& control, ControlHeld held);

void Write(WireWriter& packet, const ControlLook& look);
void Write(WireWriter& packet, const ControlHeld& held);
ControlLook ReadLook(WireReader& packet);
ControlHeld ReadHeld(WireReader& packet);

} // namespace tarnex
