#include "adapters/system/file_lock.h"

#include "adapters/system/this_system.h"
#include "adapters/windows/private_access.h"
#include "adapters/windows/process_image.h"
#include "adapters/windows/windows_text.h"
#include "platform/error_words.h"

#include <charconv>

namespace tarnex {

namespace {

// One byte behind everything that stands in the file: others can still read the number there.
constexpr DWORD kLockedByte = 1 << 20;

void MakeFolderOf(const std::string& path) {
    const std::size_t end = path.find_last_of("/\\");
    PrivateAccess access;
    if (end != std::string::npos)
        CreateDirectoryW(ToWide(path.substr(0, end)).c_str(), access.Get());
}

// Nobody can take it away meanwhile.
WindowsHandle Open(const std::string& path, DWORD access, DWORD how) {
    return WindowsHandle(CreateFileW(ToWide(path).c_str(), access,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, how, 0, nullptr));
}

void Record(HANDLE file, DWORD process) {
    const std::string line = std::to_string(process) + "\n";
    DWORD written = 0;
    if (SetEndOfFile(file)) // at its start; where nothing may be written, nobody is recorded
        WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

// 0 when nobody is recorded.
DWORD Recorded(HANDLE file) {
    char text[32];
    DWORD size = 0;
    DWORD process = 0;
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    if (ReadFile(file, text, sizeof text, &size, nullptr))
        std::from_chars(text, text + size, process);
    return process;
}

} // namespace

struct FileInstanceLock::Held : WindowsHandle {
    explicit Held(WindowsHandle file) : WindowsHandle(std::move(file)) {}
};

// Who may not enter that is told that nothing keeps a second program away: a lock of his own would
// keep away nobody's but his.
FileInstanceLock::FileInstanceLock() : paths_{WordsOfThisSystem().runtime_folder + "\\lock"} {}

FileInstanceLock::FileInstanceLock(std::string path) : paths_{std::move(path)} {}

FileInstanceLock::FileInstanceLock(FileInstanceLock&&) noexcept = default;

FileInstanceLock::~FileInstanceLock() = default;

FileInstanceLock::Attempt FileInstanceLock::Try(const std::string& path) {
    MakeFolderOf(path);
    WindowsHandle file = Open(path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    std::error_code problem = file ? std::error_code() : LastError();
    if (!file)
        file = Open(path, GENERIC_READ, OPEN_EXISTING);
    if (!file) {
        const DWORD attributes = GetFileAttributesW(ToWide(path).c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
            problem = std::make_error_code(std::errc::is_a_directory);
        return {.problem = WordsFor(problem)};
    }
    OVERLAPPED place{};
    place.Offset = kLockedByte;
    if (!LockFileEx(file.Get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                    &place)) {
        problem = LastError();
        return {.by_another = problem == std::errc::device_or_resource_busy,
                .problem = WordsFor(problem)};
    }
    Record(file.Get(), GetCurrentProcessId());
    return {.held = std::make_shared<Held>(std::move(file))};
}

void FileInstanceLock::KillLeftOver() {
    const DWORD process = held_ ? Recorded(held_->Get()) : 0;
    if (process == 0 || process == GetCurrentProcessId())
        return;
    // Held before the check: meanwhile no later process can have the same number.
    const WindowsHandle target(
        OpenProcess(PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
    const std::wstring image = target ? ImageOf(target.Get()) : L"";
    if (!image.empty() && image == ImageOf(GetCurrentProcess()))
        TerminateProcess(target.Get(), 1);
}

} // namespace tarnex
