#include "adapters/system/operator_output.h"

#include "adapters/system/terminal.h"
#include "adapters/windows/event_log.h"
#include "adapters/windows/nt_service.h"
#include "adapters/windows/private_access.h"
#include "adapters/windows/windows_handle.h"
#include "adapters/windows/windows_text.h"

namespace tarnex {

namespace {

constexpr int kOperatorNotice = 100;
constexpr LONGLONG kLargestFile = 1 << 20; // bytes

EventType TypeOf(NoticeLevel level) {
    switch (level) {
    case NoticeLevel::kError:
        return EventType::kError;
    case NoticeLevel::kWarning:
        return EventType::kWarning;
    case NoticeLevel::kNotice:
        return EventType::kInformation;
    }
    return EventType::kWarning;
}

} // namespace

void TellOperator(NoticeLevel level, const std::string& line) {
    if (RunsAsService())
        WriteEventLog(TypeOf(level), kOperatorNotice, line);
    else
        PrintError(line + "\n");
}

DebugLines::DebugLines(const std::string& settings_path) {
    if (RunsAsService())
        path_ = settings_path.substr(0, settings_path.find_last_of("/\\") + 1) + "Tarnex-debug";
}

// A line that cannot be written is lost: it is for people who watch.
void DebugLines::Write(const std::string& line) {
    if (path_.empty()) {
        PrintError(line);
        return;
    }
    const std::wstring path = ToWide(path_ + ".log");
    PrivateAccess access;
    LARGE_INTEGER size{};
    {
        const WindowsHandle file(CreateFileW(path.c_str(), FILE_APPEND_DATA, kShareAll,
                                             access.Get(), OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                             nullptr));
        DWORD written = 0;
        if (!file ||
            !WriteFile(file.Get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr))
            return;
        GetFileSizeEx(file.Get(), &size);
    }
    if (size.QuadPart >= kLargestFile)
        MoveFileExW(path.c_str(), ToWide(path_ + "-before.log").c_str(), MOVEFILE_REPLACE_EXISTING);
}

} // namespace tarnex
