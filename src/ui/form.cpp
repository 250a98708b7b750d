#include "ui/form.h"

#include <algorithm>
#include <iterator>

namespace tarnex {

namespace {

// False when the value was the same already: then nobody need be told.
template <class Value>
bool Assign(Value& held, Value value) {
    if (held == value)
        return false;
    held = std::move(value);
    return true;
}

} // namespace

Control::Control(Form& form, std::string name) : form_(form), name_(std::move(name)) {
    form.controls_.push_back(this);
}

const Text& Control::Caption() const {
    static const Text none;
    return none;
}

void Control::Changed() {
    if (form_.observer_)
        form_.observer_->ControlChanged(*this);
}

void Control::SetEnabled(bool enabled) {
    if (Assign(enabled_, enabled))
        Changed();
}

void Control::SetVisible(bool visible) {
    if (Assign(visible_, visible))
        Changed();
}

void Control::SetWidth(int twips) {
    if (Assign(width_, twips))
        Changed();
}

void Label::SetCaption(Text caption) {
    if (Assign(caption_, std::move(caption)))
        Changed();
}

Button::Button(Form& form, std::string name, Text caption)
    : Control(form, std::move(name)), caption_(std::move(caption)) {}

void Button::SetCaption(Text caption) {
    if (Assign(caption_, std::move(caption)))
        Changed();
}

void Button::Click() {
    if (Enabled() && on_click_)
        on_click_();
}

void TextBox::SetValue(Text value) {
    if (Assign(value_, std::move(value)))
        Changed();
}

void TextBox::Leave() {
    if (on_leave_)
        on_leave_();
}

CheckBox::CheckBox(Form& form, std::string name, Text caption, bool checked)
    : Control(form, std::move(name)), caption_(std::move(caption)), checked_(checked) {}

void CheckBox::SetChecked(bool checked) {
    if (Assign(checked_, checked))
        Changed();
}

void ListBox::Add(Text line) {
    if (lines_.size() >= most_)
        Drop(lines_.size() - most_ / 2);
    lines_.push_back(std::move(line));
    selected_ = int(lines_.size()) - 1;
    Changed();
}

void ListBox::Select(int index) {
    selected_ = index >= 0 && index < int(lines_.size()) ? index : -1;
    Changed();
}

void ListBox::Clear() {
    Drop(lines_.size());
    selected_ = -1;
    Changed();
}

void ListBox::Drop(std::size_t lines) {
    lines_.erase(lines_.begin(), lines_.begin() + std::ptrdiff_t(lines));
    first_ += lines;
}

void ListBox::Follow(std::uint64_t first, std::uint64_t from, std::vector<Text> lines) {
    const std::size_t gone =
        std::min<std::uint64_t>(std::max(first, first_) - first_, lines_.size());
    Drop(gone);
    selected_ = std::max(selected_ - int(gone), -1);
    if (lines_.empty())
        first_ = from;
    lines_.insert(lines_.end(), std::move_iterator(lines.begin()), std::move_iterator(lines.end()));
    Changed();
}

Control* Form::Find(std::string_view name) const {
    const auto found = std::ranges::find(controls_, name, &Control::Name);
    return found == controls_.end() ? nullptr : *found;
}

void Form::SetCaption(Text caption) {
    if (Assign(caption_, std::move(caption)) && observer_)
        observer_->FormChanged();
}

void Form::SetVisible(bool visible) {
    if (Assign(visible_, visible) && observer_)
        observer_->FormChanged();
}

void Form::SetWidth(int twips) {
    if (Assign(width_, twips) && observer_)
        observer_->FormChanged();
}

void Form::Close() {
    if (on_close_)
        on_close_();
}

} // namespace tarnex
