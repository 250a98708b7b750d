#pragma once

// The one way to the headers of Windows, without their macros that rename what others have named.

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX // the C++ library defines it too
#define NOMINMAX
#endif
#include <windows.h>
#undef StartService
#undef ReplaceFile
