#include "programs/machine.h"

#include "adapters/system/environment.h"
#include "adapters/system/operator_output.h"
#include "adapters/system/terminal.h"
#include "adapters/system/this_system.h"
#include "settings/setting_table.h"

#include <thread>

namespace tarnex {

namespace {

constexpr auto kSecondLook = 100ms;

FileInstanceLock MakeLock() {
    const std::string path = Environment("TARNEXCOMM_LOCK");
    return path.empty() ? FileInstanceLock() : FileInstanceLock(path);
}

ExitStatus StatusFor(std::error_code problem) {
    if (problem == std::errc::permission_denied)
        return kExitNoRights;
    if (problem == std::errc::is_a_directory || problem == std::errc::file_too_large)
        return kExitNoInput;
    return kExitIo;
}

} // namespace

Machine::Machine(const char* program_name)
    : program(program_name), words(WordsOfThisSystem()),
      store(SettingsPath(Environment("WINDIR"), words)), code_page(settings.code_page),
      ports(loop, SerialDevicePaths(settings.device_paths)), lock(MakeLock()) {
    BrokenStreamsFail();
    lock.SetNotice([this](const std::string& line) { Say(line); });
}

void Machine::Say(NoticeLevel level, const std::string& line) const {
    TellOperator(level, std::string(program) + ": " + line);
}

ExitStatus Machine::TakeSettings() {
    const auto pause = [] { std::this_thread::sleep_for(kSecondLook); };
    const SettingsReading reading = ReadAtStart(store, code_page, pause);
    if (reading.Unreadable()) {
        Say(NoticeLevel::kError,
            Unreadable(store.Name(), reading.problem) + ". " +
                ReadingAdvice(reading.problem, "Run this as " + words.who_may +
                                                   ", who must be able to read the file."));
        return StatusFor(reading.problem);
    }
    const std::string named = ReadSettings(IniDocument(reading.content, code_page)).start.code_page;
    if (SystemCodePage::Supported(named))
        code_page = SystemCodePage(named);
    else
        Say("The settings in " + store.Name() + " name the code page \"" + named + "\" (setting " +
            NameOf("code-page"_setting) + "). GBK and UTF-8 are supported; going on with GBK.");
    settings = ReadSettings(IniDocument(reading.content, code_page)).start;
    ports.SetPaths(SerialDevicePaths(settings.device_paths));
    return kExitDone;
}

} // namespace tarnex
