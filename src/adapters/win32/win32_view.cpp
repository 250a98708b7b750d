#include "adapters/win32/win32_view.h"

#include "adapters/win32/win32_window.h"

namespace tarnex {

namespace {

// Every window is as large on each screen as that one needs, and is told when it comes to another.
void SpeakInPixels() {
    if (!SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2))
        SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE); // before 1703
}

WireWriter FontNotice() {
    WireWriter notice(ViewRecord::kNotice);
    notice.String("there is no font with Chinese characters, so the windows cannot show them. Add "
                  "one in the settings of Windows: optional features, Chinese (Simplified) "
                  "supplemental fonts");
    return notice;
}

} // namespace

Win32View::Win32View(ViewPipe& pipe, LayoutOf layout_of)
    : pipe_(pipe), layout_of_(std::move(layout_of)), file_dialog_(queue_),
      copies_([this](Form& copy) { return std::make_unique<Win32Window>(copy, layout_of_(copy)); },
              file_dialog_, [this](const std::string& packet) { pipe_.Send(packet); }) {}

void Win32View::Apply(const std::string& packet) {
    copies_.Apply(packet);
    pipe_.Send(WireWriter(ViewRecord::kSeen).Bytes());
}

void Win32View::Run() {
    SpeakInPixels();
    Win32Window::RegisterType();
    if (ChineseFace().empty())
        pipe_.Send(FontNotice().Bytes());
    pipe_.Listen([this](std::string packet) {
        queue_.Post([this, packet = std::move(packet)] { Apply(packet); });
    });
    pipe_.Send(WireWriter(ViewRecord::kReady).Bytes());
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (Win32Window::TakeKey(message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

} // namespace tarnex
