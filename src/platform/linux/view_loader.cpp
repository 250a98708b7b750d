#include "platform/linux/view_loader.h"

#include "ui/form.h"

#include <array>
#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>

namespace tarnex {

namespace {

constexpr char kModule[] = "tarnex-view.so";

std::string FindModule() {
    std::error_code error;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const auto beside = folder / kModule;
    return std::filesystem::exists(beside, error)
               ? beside
               : folder.parent_path() / TARNEX_MODULE_FOLDER / kModule;
}

} // namespace

std::unique_ptr<ScreenView> LoadView(const ViewHost& host, std::string& trouble) {
    const char* const display = std::getenv("DISPLAY");
    if (!display || !*display) {
        trouble = "there is no display (the environment variable DISPLAY is not set)";
        return nullptr;
    }
    const std::string path = FindModule();
    void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL); // never closed
    if (!module) {
        trouble = std::string("the window module cannot be loaded: ") + dlerror() +
                  " (it comes with the package tarnexcomm-view)";
        return nullptr;
    }
    const auto version = reinterpret_cast<ViewVersionFunction*>(dlsym(module, kViewVersionSymbol));
    const auto open = reinterpret_cast<OpenViewFunction*>(dlsym(module, kOpenViewSymbol));
    if (!version || !open || std::string(version()) != TARNEX_VERSION) {
        trouble = path + " belongs to another version of the program";
        return nullptr;
    }
    return std::unique_ptr<ScreenView>(open(host, trouble));
}

// Stands in for the window until the form is visible for the first time.
class ViewLoader::Window : public FormWindow, private FormObserver {
  public:
    Window(ViewLoader& loader, Form& form) : loader_(loader), form_(form) {
        form_.Observe(this);
        FormChanged();
    }
    ~Window() override {
        if (!window_)
            form_.Observe(nullptr);
    }
    bool Shown() const override { return window_ && window_->Shown(); }

  private:
    void ControlChanged(Control&) override {}
    void FormChanged() override {
        if (!form_.Visible())
            return;
        if (View* const view = loader_.Loaded())
            window_ = view->Attach(form_); // it observes the form from now on
    }

    ViewLoader& loader_;
    Form& form_;
    std::unique_ptr<FormWindow> window_;
};

std::unique_ptr<FormWindow> ViewLoader::Attach(Form& form) {
    return std::make_unique<Window>(*this, form);
}

View* ViewLoader::Loaded() {
    if (view_)
        return view_.get();
    std::string trouble;
    view_ = LoadView(host_, trouble);
    if (!view_ && !said_) {
        host_.notice("no window can be shown: " + trouble + ". Going on without");
        said_ = true;
    }
    return view_.get();
}

} // namespace tarnex
