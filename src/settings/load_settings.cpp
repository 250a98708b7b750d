#include "settings/load_settings.h"

#include "platform/error_words.h"
#include "platform/file_path.h"
#include "settings/setting_table.h"

#include <algorithm>

namespace tarnex {

namespace {

struct Advice {
    std::errc problem;
    const char* words;
};
constexpr const char* kPutBack = "Put an ordinary file back in its place.";
constexpr const char* kFreeFiles = "End what holds so many files open, or raise the limit.";
constexpr Advice kAdvice[] = {
    {std::errc::is_a_directory, kPutBack},
    {std::errc::not_a_directory, "Put its folder back in its place."},
    {std::errc::too_many_symbolic_link_levels, kPutBack},
    {std::errc::file_too_large, "Take out what has filled it."},
    {std::errc::too_many_files_open, kFreeFiles},
    {std::errc::too_many_files_open_in_system, kFreeFiles},
    {std::errc::not_enough_memory, "Free memory."},
    {std::errc::device_or_resource_busy, "Close it there."},
};

} // namespace

LoadedSettings ReadSettings(const IniDocument& file, const Settings& previous) {
    LoadedSettings loaded;
    loaded.settings = previous;
    for (const Setting& setting : kSettings)
        if (setting.land)
            setting.land(loaded, setting, file.Get(setting.section, setting.key));
    return loaded;
}

SettingsReading ReadAtStart(const SettingsStore& store, const CodePage& code_page,
                            const std::function<void()>& pause) {
    SettingsReading reading = store.Read();
    const LoadedSettings loaded = ReadSettings(IniDocument(reading.content, code_page));
    if (loaded.enabled && loaded.allowed)
        return reading;
    pause();
    return store.Read();
}

std::string Unreadable(const std::string& file, std::error_code problem) {
    std::string words = WordsFor(problem);
    if (problem == std::errc::is_a_directory)
        words = "it is no ordinary file";
    else if (problem == std::errc::file_too_large)
        words = "it is longer than 1 MiB";
    else if (problem == std::errc::device_or_resource_busy)
        words = "another program keeps it open";
    return "The settings file " + file + " cannot be read (" + words + ")";
}

std::string ReadingAdvice(std::error_code problem, const std::string& for_rights) {
    const auto advice =
        std::ranges::find_if(kAdvice, [&](const Advice& each) { return problem == each.problem; });
    if (problem == std::errc::permission_denied)
        return for_rights;
    return advice == std::end(kAdvice) ? "Look for a failing disk." : advice->words;
}

std::string SettingsPath(const std::string& windir, const SystemWords& words) {
    return FileIn(windir.empty() ? words.settings_folder : windir, "system/Tarnex.ini");
}

} // namespace tarnex
