#pragma once

namespace tarnex {

// The programs of this executable. Each runs to its end and returns the exit status.
int RunServiceProgram(int argc, char** argv); // tarnexcomm
int RunFlasherProgram(int argc, char** argv); // tarnex-flasher
int RunConsoleProgram(int argc, char** argv); // tarnex-console

} // namespace tarnex
