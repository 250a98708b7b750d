#pragma once

namespace tarnex {

// Exit statuses of all programs, those of sysexits.h where these fit.
enum ExitStatus {
    kExitDone = 0,
    kExitFailed = 1,       // the program could not begin its work
    kExitWarnings = 1,     // tarnexctl settings check
    kExitErrors = 2,       // tarnexctl settings check
    kExitUsage = 64,       // wrong words on the command line
    kExitData = 65,        // a value or file that cannot be used as it is
    kExitNoInput = 66,     // a file that is missing or cannot be read
    kExitUnavailable = 69, // no service, port, unit or display
    kExitSoftware = 70,
    kExitCannotCreate = 73,
    kExitIo = 74,
    kExitTryLater = 75,    // something else has the port or the unit
    kExitWrongAnswer = 76, // the unit answered wrong, or stopped to answer
    kExitNoRights = 77,
    kExitInterrupted = 130, // by Ctrl-C
};

} // namespace tarnex
