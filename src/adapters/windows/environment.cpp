#include "adapters/system/environment.h"

#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

namespace tarnex {

std::string Environment(const char* name) {
    std::wstring value(32'768, L'\0'); // none is longer
    const DWORD length = GetEnvironmentVariableW(ToWide(name).c_str(), value.data(),
                                                 static_cast<DWORD>(value.size()));
    return FromWide(value.substr(0, length));
}

} // namespace tarnex
