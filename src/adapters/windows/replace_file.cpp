#include "adapters/system/replace_file.h"

#include "adapters/system/settings_file.h"
#include "adapters/windows/windows_handle.h"
#include "adapters/windows/windows_text.h"
#include "adapters/windows/write_new_file.h"

namespace tarnex {

namespace {

constexpr int kAttempts = 4;
constexpr DWORD kPause = 5; // ms; readers that let nobody replace the file are quick

} // namespace

std::error_code WriteNewFile(const std::string& path, std::string_view content,
                             SECURITY_ATTRIBUTES* access, bool flushed) {
    RemoveFile(path);
    const WindowsHandle file(CreateFileW(ToWide(path).c_str(), GENERIC_WRITE, 0, access, CREATE_NEW,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return LastError();
    while (!content.empty()) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(std::min<std::size_t>(content.size(), 1 << 20));
        if (!WriteFile(file.Get(), content.data(), size, &written, nullptr))
            return LastError();
        content.remove_prefix(written);
    }
    return flushed && !FlushFileBuffers(file.Get()) ? LastError() : std::error_code();
}

std::error_code ReplaceFile(const std::string& path, std::string_view content, Readers) {
    const std::string successor = path + ".new";
    std::error_code problem = WriteNewFile(successor, content, nullptr, false);
    if (!problem)
        problem = TakePlace(successor, path);
    for (int i = 1; i < kAttempts && problem == std::errc::device_or_resource_busy; ++i) {
        Sleep(kPause);
        problem = TakePlace(successor, path);
    }
    if (problem)
        RemoveFile(successor);
    return problem;
}

std::error_code PlaceNewFile(const std::string& file, const std::string& path) {
    if (MoveFileExW(ToWide(file).c_str(), ToWide(path).c_str(), MOVEFILE_WRITE_THROUGH))
        return {};
    return LastError();
}

void RemoveFile(const std::string& path) {
    DeleteFileW(ToWide(path).c_str());
}

bool FolderIsWritable(const std::string& path) {
    const std::size_t end = path.find_last_of("/\\");
    const std::string folder = end == std::string::npos ? "." : path.substr(0, end + 1);
    return bool(WindowsHandle(CreateFileW(ToWide(folder).c_str(), FILE_ADD_FILE, kShareAll, nullptr,
                                          OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)));
}

} // namespace tarnex
