#include "machine.h"

#include <cstdio>
#include <cstdlib>

namespace tarnex {

namespace {

FileInstanceLock MakeLock() {
    const char* path = std::getenv("TARNEXCOMM_LOCK");
    return path ? FileInstanceLock(path) : FileInstanceLock();
}

} // namespace

Machine::Machine(const char* program_name)
    : program(program_name), store(SettingsPath(std::getenv("WINDIR"))), settings(ReadFile()),
      code_page(settings.code_page), ports(loop, SerialDevicePaths(settings.device_paths)),
      lock(MakeLock()) {}

// Plain C output: the standard streams would cost a tenth of the service's idle memory.
void Machine::Say(const std::string& line) const {
    std::fputs((std::string(program) + ": " + line + "\n").c_str(), stderr);
}

StartSettings Machine::ReadFile() const {
    const IconvCodePage utf8("UTF-8");
    StartSettings read = ReadStartSettings(IniDocument(store.Read().value_or(""), utf8));
    if (!IconvCodePage::Supported(read.code_page)) {
        Say("The settings in " + store.Name() + ", section [Encoding], name the code page \"" +
            read.code_page + "\". GBK and UTF-8 are supported; going on with GBK.");
        read.code_page = "GBK";
    }
    return read;
}

} // namespace tarnex
