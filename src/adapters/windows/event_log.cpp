#include "adapters/windows/event_log.h"

#include "adapters/windows/nt_service.h"
#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

namespace tarnex {

static_assert(int(EventType::kError) == EVENTLOG_ERROR_TYPE &&
              int(EventType::kWarning) == EVENTLOG_WARNING_TYPE &&
              int(EventType::kInformation) == EVENTLOG_INFORMATION_TYPE);

void WriteEventLog(EventType type, int number, std::string_view text) {
    const HANDLE log = RegisterEventSourceW(nullptr, kServiceName);
    if (!log)
        return; // there is no other place to say so
    const std::wstring wide = ToWide(text);
    const wchar_t* inserted = wide.c_str();
    ReportEventW(log, static_cast<WORD>(type), 0, static_cast<DWORD>(number), nullptr, 1, 0,
                 &inserted, nullptr);
    DeregisterEventSource(log);
}

} // namespace tarnex
