#include "adapters/windows/windows_text.h"

#include "adapters/windows/windows_headers.h"

namespace tarnex {

std::wstring ToWide(std::string_view utf8) {
    const int size = static_cast<int>(utf8.size());
    std::wstring wide(utf8.size(), L'\0'); // never more units than bytes
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

std::string FromWide(std::wstring_view wide) {
    const int size = static_cast<int>(wide.size());
    std::string utf8(wide.size() * 3, '\0'); // never more bytes a unit
    const int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(),
                                           static_cast<int>(utf8.size()), nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(length));
    return utf8;
}

std::error_code LastError() {
    const DWORD error = GetLastError();
    switch (error) {
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
    case ERROR_UNABLE_TO_REMOVE_REPLACED:
        return std::make_error_code(std::errc::device_or_resource_busy);
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return std::make_error_code(std::errc::no_such_file_or_directory);
    }
    const std::error_code code(static_cast<int>(error), std::system_category());
    const std::error_condition known = code.default_error_condition();
    return known.category() == std::generic_category()
               ? std::error_code(known.value(), std::generic_category())
               : code;
}

} // namespace tarnex
