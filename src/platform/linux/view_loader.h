#pragma once

#include "platform/view_module.h"

namespace tarnex {

// The view of the module tarnex-view.so, beside the program or where it is installed. Without the
// module or without a display nullptr, and in trouble why. One view a process.
std::unique_ptr<ScreenView> LoadView(const ViewHost& host, std::string& trouble);

// The same view for a program that can do without: loaded when a form becomes visible and not
// before. When that fails the program goes on without windows, is told so once, and the next form
// to become visible tries again.
class ViewLoader : public View {
  public:
    explicit ViewLoader(ViewHost host) : host_(std::move(host)) {}
    std::unique_ptr<FormWindow> Attach(Form& form) override;

  private:
    class Window;
    View* Loaded();

    ViewHost host_;
    std::unique_ptr<ScreenView> view_;
    bool said_ = false;
};

} // namespace tarnex
