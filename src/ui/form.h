#pragma once

#include "platform/text.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace tarnex {

class Control;

// Told after a control or form changed, so that a view can show it; not when it stays as it was.
class FormObserver {
  public:
    virtual ~FormObserver() = default;
    virtual void ControlChanged(Control& control) = 0;
    virtual void FormChanged() = 0; // caption, visibility, size
};

class Form;

// A control of a form as plain state. Controls are members of their form and register with it.
class Control {
  public:
    Control(Form& form, std::string name);
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    virtual ~Control() = default;

    const std::string& Name() const { return name_; }
    bool Enabled() const { return enabled_; }
    void SetEnabled(bool enabled);
    bool Visible() const { return visible_; }
    void SetVisible(bool visible);
    // In twips, 15 to a pixel; 0: as the layout has it.
    int Width() const { return width_; }
    void SetWidth(int twips);
    // What is written on the control; "" where there is nothing.
    virtual const Text& Caption() const;

  protected:
    void Changed();

  private:
    Form& form_;
    std::string name_;
    bool enabled_ = true;
    bool visible_ = true;
    int width_ = 0;
};

class Label : public Control {
  public:
    using Control::Control;
    const Text& Caption() const override { return caption_; }
    void SetCaption(Text caption);

  private:
    Text caption_;
};

class Button : public Control {
  public:
    Button(Form& form, std::string name, Text caption);
    const Text& Caption() const override { return caption_; }
    void SetCaption(Text caption);
    // What a click does; the form's owner sets it.
    void OnClick(std::function<void()> handler) { on_click_ = std::move(handler); }
    // A press by the operator; ignored while the button is disabled.
    void Click();

  private:
    Text caption_;
    std::function<void()> on_click_;
};

class TextBox : public Control {
  public:
    using Control::Control;
    const Text& Value() const { return value_; }
    void SetValue(Text value);
    // What happens when the operator leaves the box; the form's owner sets it.
    void OnLeave(std::function<void()> handler) { on_leave_ = std::move(handler); }
    // The box lost the input focus.
    void Leave();

  private:
    Text value_;
    std::function<void()> on_leave_;
};

class CheckBox : public Control {
  public:
    CheckBox(Form& form, std::string name, Text caption, bool checked);
    const Text& Caption() const override { return caption_; }
    bool Checked() const { return checked_; }
    void SetChecked(bool checked);

  private:
    Text caption_;
    bool checked_;
};

class ListBox : public Control {
  public:
    using Control::Control;
    const std::vector<Text>& Lines() const { return lines_; }
    // Index of the selected line, -1 for none.
    int Selected() const { return selected_; }
    // By the operator; an index outside the list selects nothing.
    void Select(int index);
    // Appends a line and selects it, so that the list follows the newest.
    void Add(Text line);
    void Clear();
    static constexpr std::size_t kEveryLine = std::numeric_limits<std::size_t>::max();
    // For a list that nobody sees, or that no button clears.
    static constexpr std::size_t kLinesUnseen = 1000;
    // Drops old lines when one is added from now on: at most that many stay, at least half of
    // them. A list keeps every line at first.
    void KeepAtMost(std::size_t lines) { most_ = lines; }
    // How many lines have been here that are gone: the number of the first line, when all lines
    // that ever came are counted from 0.
    std::uint64_t FirstNumber() const { return first_; }
    // Makes this list one of the numbers from first up: drops what is in front of it and adds
    // lines, the first of which has the number from.
    void Follow(std::uint64_t first, std::uint64_t from, std::vector<Text> lines);

  private:
    void Drop(std::size_t lines);

    std::vector<Text> lines_;
    std::uint64_t first_ = 0;
    int selected_ = -1;
    std::size_t most_ = kEveryLine;
};

// A window as plain state.
class Form {
  public:
    Form(std::string name, Text caption) : name_(std::move(name)), caption_(std::move(caption)) {}
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    const std::string& Name() const { return name_; }
    const Text& Caption() const { return caption_; }
    void SetCaption(Text caption);
    bool Visible() const { return visible_; }
    void SetVisible(bool visible);
    // In twips, 15 to a pixel; 0: as the layout has it.
    int Width() const { return width_; }
    void SetWidth(int twips);
    const std::vector<Control*>& Controls() const { return controls_; }
    // nullptr when there is none of that name.
    Control* Find(std::string_view name) const;
    // At most one observer; nullptr for none. It must outlive the form or be taken away.
    void Observe(FormObserver* observer) { observer_ = observer; }
    // What closing the window does; the form's owner sets it.
    void OnClose(std::function<void()> handler) { on_close_ = std::move(handler); }
    void Close();

  private:
    friend Control;
    std::string name_;
    Text caption_;
    bool visible_ = false;
    int width_ = 0;
    std::vector<Control*> controls_;
    FormObserver* observer_ = nullptr;
    std::function<void()> on_close_;
};

} // namespace tarnex
