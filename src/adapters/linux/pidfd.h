#pragma once

#include <csignal>

#include <fcntl.h>

// The C library's header of version 2.36 does not say that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}
