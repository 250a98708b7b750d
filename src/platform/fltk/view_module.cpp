// What the module exports.

#include "platform/view_module.h"

#include "platform/fltk/fltk_view.h"
#include "platform/fltk/style.h"

#define TARNEX_EXPORT extern "C" __attribute__((visibility("default")))

TARNEX_EXPORT const char* TarnexViewVersion() {
    return TARNEX_VERSION;
}

TARNEX_EXPORT tarnex::ScreenView* TarnexOpenView(const tarnex::ViewHost& host,
                                                 std::string& trouble) {
    auto screen = tarnex::Screen::Open(trouble);
    if (!screen)
        return nullptr;
    if (const std::string warning = tarnex::SetUpStyle(screen->Scale()); !warning.empty())
        host.notice(warning);
    return new tarnex::FltkView(host, std::move(screen));
}
