#include "adapters/system/process.h"

#include "adapters/windows/process_image.h"
#include "adapters/windows/windows_text.h"

#include <filesystem>

namespace tarnex {

std::wstring ImageOf(HANDLE process) {
    std::wstring path(32'768, L'\0'); // none is longer
    auto length = static_cast<DWORD>(path.size());
    const bool known = QueryFullProcessImageNameW(process, 0, path.data(), &length);
    return path.substr(0, known ? length : 0);
}

long ThisProcess() {
    return static_cast<long>(GetCurrentProcessId());
}

std::string ThisProgram() {
    return FromWide(ImageOf(GetCurrentProcess()));
}

bool ProcessRuns(long process, const std::string& program) {
    if (process <= 0)
        return false;
    const WindowsHandle target(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(process)));
    if (!target)
        return GetLastError() == ERROR_ACCESS_DENIED;
    DWORD status = 0;
    if (GetExitCodeProcess(target.Get(), &status) && status != STILL_ACTIVE)
        return false; // it has ended, and somebody still asks how
    const std::wstring image = ImageOf(target.Get());
    const std::wstring name = std::filesystem::path(image).stem().wstring();
    return image.empty() || _wcsicmp(name.c_str(), ToWide(program).c_str()) == 0;
}

} // namespace tarnex
