#include "adapters/windows/private_access.h"

#include <sddl.h>

namespace tarnex {

namespace {

// Nothing comes from the folder above (P); everything is allowed (FA) to the system, as which the
// service runs (SY), to administrators (BA) and to the owner (OW), also of what will lie inside
// (OICI).
constexpr const wchar_t* kList = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FA;;;OW)";

} // namespace

PrivateAccess::PrivateAccess() {
    attributes_.nLength = sizeof attributes_;
    ConvertStringSecurityDescriptorToSecurityDescriptorW(
        kList, SDDL_REVISION_1, &attributes_.lpSecurityDescriptor, nullptr);
}

PrivateAccess::~PrivateAccess() {
    LocalFree(attributes_.lpSecurityDescriptor);
}

} // namespace tarnex
