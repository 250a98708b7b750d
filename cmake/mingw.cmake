# Programs for 64-bit Windows 10 and later by Debian's mingw-w64:
# g++-mingw-w64-x86-64-posix, whose threads are those of the C++ library.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(machine x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER ${machine}-g++-posix)
set(CMAKE_C_COMPILER ${machine}-gcc-posix)
set(CMAKE_RC_COMPILER ${machine}-windres)
set(CMAKE_MESSAGE_COMPILER ${machine}-windmc)

# Nothing of this machine is for that system; windows_libraries.cmake has what it takes all the same.
set(CMAKE_FIND_ROOT_PATH /usr/${machine})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# What somebody has set for the programs of this machine would not fit these.
unset(ENV{CFLAGS})
unset(ENV{CXXFLAGS})
unset(ENV{LDFLAGS})

# One file, with no library of the compiler beside it.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)

add_compile_definitions(_WIN32_WINNT=0x0A00)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tests/under-wine)
