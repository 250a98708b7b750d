#include "adapters/system/screen_view.h"

#include "ui/file_dialog.h"

namespace tarnex {

namespace {

// No window is shown.
class NoScreen : public SystemView, FileDialog {
  public:
    std::string Open() override { return "this program has no windows for Windows yet"; }
    std::unique_ptr<FormWindow> Attach(Form&) override { return std::make_unique<Window>(); }
    FileDialog& Files() override { return *this; }

  private:
    struct Window : FormWindow {
        bool Shown() const override { return false; }
    };

    void Show(const Text&, std::function<void(const std::string&)> chosen) override { chosen(""); }
    void Withdraw() override {}
};

} // namespace

std::unique_ptr<SystemView> MakeView(ViewHost) {
    return std::make_unique<NoScreen>();
}

} // namespace tarnex
