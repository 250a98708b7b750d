#pragma once

#include "service/core_window.h"
#include "service/mail_window.h"
#include "service/main_window.h"
#include "tools/firmware_flasher.h"
#include "tools/ocx_debug.h"

#include <string_view>

namespace tarnex {

// The layout of each form, for the process that shows them.
inline Layout LayoutOf(const Form& form) {
    struct NamedLayout {
        std::string_view form;
        Layout (*layout)();
    };
    static constexpr NamedLayout kLayouts[] = {
        {"TarnexComm", MainLayout},         {"MailSender", MailLayout},  {"TarnexCore", CoreLayout},
        {"FirmwareFlasher", FlasherLayout}, {"OCXDebug", ConsoleLayout},
    };
    for (const NamedLayout& entry : kLayouts)
        if (entry.form == form.Name())
            return entry.layout();
    return {}; // of another version, which is not talked to
}

} // namespace tarnex
