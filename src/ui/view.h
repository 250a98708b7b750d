#pragma once

#include <memory>

namespace tarnex {

class FileDialog;
class Form;

// A form's place on the screen; nothing is shown of the form once this is gone.
class FormWindow {
  public:
    virtual ~FormWindow() = default;
    // The form's window stands on a screen now, or is about to.
    virtual bool Shown() const = 0;
};

// Shows form models on a screen and sends back clicks and edits. Holds no logic, and no call of it
// waits for the screen.
class View {
  public:
    virtual ~View() = default;
    // From now on the form's window is there whenever the form is visible and a screen can be had;
    // once Form::SetVisible has returned, Shown() is false where none can. A form that loses its
    // window is made invisible, so that making it visible asks for a new one. One window a form.
    // Form and view must outlive the result.
    [[nodiscard]] virtual std::unique_ptr<FormWindow> Attach(Form& form) = 0;
};

// A view that has its screen.
class ScreenView : public View {
  public:
    // Asks on the same screen; the view's own.
    virtual FileDialog& Files() = 0;
};

} // namespace tarnex
