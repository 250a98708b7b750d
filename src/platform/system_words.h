#pragma once

#include <string>

namespace tarnex {

// What programs tell their operators in the words of the system they run on: its commands, its
// users, its folders.
struct SystemWords {
    // Commands to type.
    std::string start_service; // "systemctl start tarnexcomm"
    std::string stop_service;
    std::string restart_service;
    std::string with_all_rights; // in front of a command: "sudo "; "" where none is needed
    // Who may do it, after "run this as": "root or as the user of the service".
    std::string who_may;
    // What follows that in a line of tarnexctl: how, and what even that does not help with; "" for
    // nothing.
    std::string how_to_become_them;
    std::string settings_folder; // of "system/Tarnex.ini", where WINDIR names none
    std::string data_folder;     // of the log, where nothing else is said
    std::string runtime_folder;  // of the lock and the status file, where nothing else is said
    // A command that lets no stranger read the file %1.
    std::string close_file;
    char quote = '\''; // around a word of a command that holds blanks; no file's name holds '"'
    // Brings a text file from one code page to another: a command, or what else does it.
    std::string text_converter;
    // Examples of what an operator may give.
    std::string serial_device;
    std::string log_file;
    std::string metrics_file;
};

} // namespace tarnex
