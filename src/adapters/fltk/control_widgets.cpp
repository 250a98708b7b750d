#include "adapters/fltk/control_widgets.h"

#include "adapters/fltk/list_widget.h"
#include "adapters/fltk/style.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Secret_Input.H>
#include <FL/Fl_Text_Editor.H>
#include <FL/fl_draw.H>
#include <FL/fl_utf8.h>

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
        this->align(FL_ALIGN_LEFT);
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
        if (shown == this->value())
            return;
        this->value(shown.c_str());
        this->position(0); // a text that is too long shows its beginning
    }
    int handle(int event) override {
        const int handled = LeafOf<Input>::handle(event);
        if (event == FL_UNFOCUS) {
            if (Fl::focus()) // gone on to another control, not to another program
                this->position(0);
            model_.Leave();
        }
        return handled;
    }

  private:
    TextBox& model_;
};

// Hides what it holds behind marks that every font has. FLTK's own mark is missing in fonts for
// Chinese; its width is kept, by which FLTK finds the place of a click.
class SecretWidget : public InputWidget<Fl_Secret_Input> {
  public:
    using InputWidget::InputWidget;

  protected:
    void draw() override {
        draw_box();
        fl_font(textfont(), textsize());
        const double advance = fl_width("\u2022");
        const int left = x() + Fl::box_dx(box()) + 1;
        const int top = y() + (h() - fl_height()) / 2;
        const bool focused = Fl::focus() == this;
        const int first = CharactersTo(std::min(position(), mark()));
        const int last = CharactersTo(std::max(position(), mark()));
        const auto column = [&](int index) { return left + int(std::lround(index * advance)); };
        fl_push_clip(left, y(), w() - 2 * (left - x()), h());
        if (focused && first != last) {
            fl_color(selection_color());
            fl_rectf(column(first), top, column(last) - column(first), fl_height());
        }
        for (int i = 0; i < CharactersTo(size()); ++i) {
            const bool selected = focused && i >= first && i < last;
            const Fl_Color color =
                selected ? fl_contrast(textcolor(), selection_color()) : textcolor();
            fl_color(active_r() ? color : fl_inactive(color));
            fl_draw("*", column(i) + int(advance - fl_width("*")) / 2,
                    top + fl_height() - fl_descent());
        }
        if (focused) {
            fl_color(cursor_color());
            fl_rectf(column(CharactersTo(position())), top, 1, fl_height());
        }
        fl_pop_clip();
        DrawFocus(*this);
    }

  private:
    int CharactersTo(int bytes) const {
        return fl_utf_nb_char(reinterpret_cast<const unsigned char*>(value()), bytes);
    }
};

struct HasBuffer {
    Fl_Text_Buffer text;
};

// Several lines, which break at the right edge: Base is FLTK's editor or its display. The buffer is
// the first base, since it must outlive the widget.
template <class Base>
class LinesWidget : private HasBuffer, public LeafOf<Base> {
  public:
    LinesWidget(TextBox& model, const Text& title) : model_(model) {
        SetLabel(*this, title);
        this->align(FL_ALIGN_LEFT_TOP);
        this->box(FL_DOWN_BOX);
        this->buffer(text);
        if constexpr (std::is_same_v<Base, Fl_Text_Display>)
            this->color(FL_BACKGROUND_COLOR);
        this->wrap_mode(Base::WRAP_AT_BOUNDS, 0);
        this->when(FL_WHEN_CHANGED);
        this->callback([](Fl_Widget* widget, void*) {
            auto& self = static_cast<LinesWidget&>(*widget);
            self.model_.SetValue(FromInput(self.Shown()));
        });
    }
    void Show() override {
        const std::string wanted = ForInput(model_.Value());
        if (wanted == Shown())
            return;
        text.text(wanted.c_str());
        this->insert_position(0);
        this->scroll(0, 0);
    }
    int handle(int event) override {
        if (event == FL_KEYBOARD && Fl::event_key() == FL_Tab)
            return 0; // it leads on to the next control
        const int handled = LeafOf<Base>::handle(event);
        if (event == FL_UNFOCUS)
            model_.Leave();
        return handled;
    }

  private:
    std::string Shown() {
        const std::unique_ptr<char, decltype(&std::free)> copy(text.text(), &std::free);
        return copy.get();
    }

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
        return *new SecretWidget(model, leaf.title, leaf.look);
    case Look::kReadOnly:
        return *new InputWidget<Fl_Output>(model, leaf.title, leaf.look);
    case Look::kMultiLine:
        return *new LinesWidget<Fl_Text_Editor>(model, leaf.title);
    case Look::kReadOnlyLines:
        return *new LinesWidget<Fl_Text_Display>(model, leaf.title);
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
