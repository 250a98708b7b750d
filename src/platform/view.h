#pragma once

namespace tarnex {

class Form;

// Shows form models on a screen and sends back clicks and edits. Holds no logic.
class View {
  public:
    virtual ~View() = default;
    // There is a screen to show windows on.
    virtual bool Available() const = 0;
    // Shows or hides the form's window as the model says, now and whenever the model changes. The
    // form must outlive the view.
    virtual void Attach(Form& form) = 0;
};

} // namespace tarnex
