#include "adapters/system/plain_file.h"

#include "adapters/windows/windows_handle.h"
#include "adapters/windows/windows_text.h"

namespace tarnex {

namespace {

constexpr std::int64_t kUnixEpoch = 116'444'736'000'000'000; // in units of 100 ns since 1601

HANDLE AsHandle(std::intptr_t file) {
    return reinterpret_cast<HANDLE>(file);
}

// A folder cannot be opened like a file: "access denied".
std::error_code WhyNotOpened(const std::wstring& path) {
    const std::error_code problem = LastError();
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool folder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
    return folder ? std::make_error_code(std::errc::is_a_directory) : problem;
}

} // namespace

PlainFile::PlainFile(const std::string& path) {
    const std::wstring wide = ToWide(path);
    file_ = reinterpret_cast<std::intptr_t>(
        CreateFileW(wide.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    if (file_ == kNone)
        problem_ = WhyNotOpened(wide);
    else if (GetFileType(AsHandle(file_)) != FILE_TYPE_DISK)
        problem_ = std::make_error_code(std::errc::not_supported);
}

PlainFile::~PlainFile() {
    if (file_ != kNone)
        CloseHandle(AsHandle(file_));
}

std::size_t PlainFile::Read(char* bytes, std::size_t size) {
    DWORD got = 0;
    if (!problem_ && !ReadFile(AsHandle(file_), bytes, static_cast<DWORD>(size), &got, nullptr))
        problem_ = LastError();
    return problem_ ? 0 : got;
}

// The time of the last change of any kind is used: the usual programs do not set it.
FileStamp PlainFile::Stamp() {
    if (problem_)
        return {};
    BY_HANDLE_FILE_INFORMATION file{};
    FILE_BASIC_INFO times{};
    if (!GetFileInformationByHandle(AsHandle(file_), &file) ||
        !GetFileInformationByHandleEx(AsHandle(file_), FileBasicInfo, &times, sizeof times))
        problem_ = LastError();
    return {.file = std::uint64_t{file.nFileIndexHigh} << 32 | file.nFileIndexLow,
            .size = std::uint64_t{file.nFileSizeHigh} << 32 | file.nFileSizeLow,
            .changed = (times.ChangeTime.QuadPart - kUnixEpoch) * 100};
}

} // namespace tarnex
