#include "platform/fltk/control_widgets.h"

#include "platform/fltk/list_widget.h"
#include "platform/fltk/style.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Multiline_Input.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Secret_Input.H>

namespace tarnex {

namespace {

using Look = LayoutNode::Look;

void SetLabel(Fl_Widget& widget, const Text& caption) {
    const std::string label = LabelText(caption);
    if (!widget.label() || label != widget.label())
        widget.copy_label(label.c_str());
}

template <class Base>
class LeafOf : public Base, public LeafWidget {
  public:
    template <class... Arguments>
    explicit LeafOf(Arguments&&... arguments)
        : Base(0, 0, 0, 0, std::forward<Arguments>(arguments)...) {}
    Fl_Widget& Widget() override { return *this; }
    int handle(int event) override {
        const int handled = Base::handle(event);
        if (handled && (event == FL_FOCUS || event == FL_UNFOCUS))
            this->redraw();
        return handled;
    }

  protected:
    void draw() override {
        Base::draw();
        DrawFocus(*this);
    }
};

class HeadingWidget : public LeafOf<Fl_Box> {
  public:
    explicit HeadingWidget(const Text& title) {
        SetLabel(*this, title);
        labelfont(FL_HELVETICA_BOLD);
        align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
    }
    void Show() override {}
};

class LabelWidget : public LeafOf<Fl_Box> {
  public:
    LabelWidget(Control& model, Look look) : model_(model) {
        align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
        if (look == Look::kStrong) {
            labelfont(FL_HELVETICA_BOLD);
            labelsize(int(FL_NORMAL_SIZE * kStrongLetters));
        }
    }
    void Show() override { SetLabel(*this, model_.Caption()); }

  private:
    Control& model_;
};

class ButtonWidget : public LeafOf<Fl_Button> {
  public:
    ButtonWidget(Button& model, Look look) : model_(model) {
        color(ButtonColor(look), ButtonColor(look));
        callback(
            [](Fl_Widget* widget, void*) { static_cast<ButtonWidget&>(*widget).model_.Click(); });
    }
    void Show() override { SetLabel(*this, model_.Caption()); }
    int handle(int event) override {
        const bool enter = Fl::event_key() == FL_Enter || Fl::event_key() == FL_KP_Enter;
        if (event == FL_KEYBOARD && Fl::focus() == this && enter) {
            do_callback();
            return 1;
        }
        return LeafOf::handle(event);
    }

  private:
    Button& model_;
};

class CheckWidget : public LeafOf<Fl_Check_Button> {
  public:
    explicit CheckWidget(CheckBox& model) : model_(model) {
        callback([](Fl_Widget* widget, void*) {
            auto& self = static_cast<CheckWidget&>(*widget);
            self.model_.SetChecked(self.value() != 0);
        });
    }
    void Show() override {
        SetLabel(*this, model_.Caption());
        value(model_.Checked());
    }

  private:
    CheckBox& model_;
};

// A text box breaks lines with CR LF, FLTK with LF alone.
std::string ForInput(const Text& value) {
    std::string shown = ToUtf8(value);
    std::erase(shown, '\r');
    return shown;
}

Text FromInput(std::string_view shown) {
    Text value;
    for (const char16_t c : FromUtf8(shown)) {
        if (c == u'\n')
            value += u'\r';
        value += c;
    }
    return value;
}

template <class Input>
class InputWidget : public LeafOf<Input> {
  public:
    InputWidget(TextBox& model, const Text& title, Look look) : model_(model) {
        SetLabel(*this, title);
        this->align(look == Look::kMultiLine ? FL_ALIGN_LEFT_TOP : FL_ALIGN_LEFT);
        if (look == Look::kReadOnly)
            this->color(FL_BACKGROUND_COLOR);
        this->when(FL_WHEN_CHANGED);
        this->callback([](Fl_Widget* widget, void*) {
            auto& self = static_cast<InputWidget&>(*widget);
            self.model_.SetValue(FromInput(self.value()));
        });
    }
    void Show() override {
        const std::string shown = ForInput(model_.Value());
        if (shown != this->value())
            this->value(shown.c_str());
    }
    int handle(int event) override {
        const int handled = LeafOf<Input>::handle(event);
        if (event == FL_UNFOCUS)
            model_.Leave();
        return handled;
    }

  private:
    TextBox& model_;
};

class ListLeaf : public LeafWidget, public ListWidget {
  public:
    using ListWidget::ListWidget;
    Fl_Widget& Widget() override { return *this; }
    void Show() override { ListWidget::Show(); }
};

LeafWidget& MakeInput(const LayoutNode& leaf, TextBox& model) {
    switch (leaf.look) {
    case Look::kSecret:
        return *new InputWidget<Fl_Secret_Input>(model, leaf.title, leaf.look);
    case Look::kReadOnly:
        return *new InputWidget<Fl_Output>(model, leaf.title, leaf.look);
    case Look::kMultiLine:
        return *new InputWidget<Fl_Multiline_Input>(model, leaf.title, leaf.look);
    case Look::kPlain:
    case Look::kStrong:
    case Look::kCareful:
        break;
    }
    return *new InputWidget<Fl_Input>(model, leaf.title, leaf.look);
}

LeafWidget& MakeLeaf(const LayoutNode& leaf, const Form& form) {
    if (leaf.control.empty())
        return *new HeadingWidget(leaf.title);
    Control& control = *form.Find(leaf.control);
    if (auto* const button = dynamic_cast<Button*>(&control))
        return *new ButtonWidget(*button, leaf.look);
    if (auto* const check = dynamic_cast<CheckBox*>(&control))
        return *new CheckWidget(*check);
    if (auto* const list = dynamic_cast<ListBox*>(&control))
        return *new ListLeaf(*list);
    if (auto* const text = dynamic_cast<TextBox*>(&control))
        return MakeInput(leaf, *text);
    return *new LabelWidget(control, leaf.look);
}

std::string HintText(const LayoutNode& leaf) {
    std::string hint = ToUtf8(leaf.hint);
    if (leaf.key != 0)
        hint += std::string("（Alt+") + leaf.key + "）";
    return hint;
}

} // namespace

LeafWidget& MakeWidget(const LayoutNode& leaf, const Form& form) {
    LeafWidget& made = MakeLeaf(leaf, form);
    Fl_Widget& widget = made.Widget();
    if (const std::string hint = HintText(leaf); !hint.empty())
        widget.copy_tooltip(hint.c_str());
    if (auto* const button = dynamic_cast<Fl_Button*>(&widget); button && leaf.key != 0)
        button->shortcut(FL_ALT | (leaf.key - 'A' + 'a'));
    return made;
}

} // namespace tarnex
