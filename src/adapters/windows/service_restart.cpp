#include "adapters/system/service_restart.h"

#include "adapters/windows/windows_headers.h"

#include <array>
#include <cstdlib>

namespace tarnex {

namespace {

// The one of the system, and none that lies in the present folder.
int Net(const std::wstring& arguments) {
    std::array<wchar_t, MAX_PATH> folder{};
    GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    return _wsystem((folder.data() + (L"\\net.exe " + arguments)).c_str());
}

} // namespace

// The commands show by themselves what they do and what stands in their way.
std::string RestartService() {
    Net(L"stop TarnexComm");
    return Net(L"start TarnexComm") == 0 ? "" : "see what stands above";
}

} // namespace tarnex
