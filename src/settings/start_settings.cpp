#include "settings/start_settings.h"

#include "settings/load_settings.h"

namespace tarnex {

namespace {

constexpr const char* kDefaultBaseFolder = "/var/lib/tarnexcomm";

void ReadInto(std::string& value, const IniDocument& file, TextView section, TextView key) {
    if (const TextView text = Trim(file.Get(section, key)); !text.empty())
        value = ToUtf8(text);
}

} // namespace

StartSettings ReadStartSettings(const IniDocument& file) {
    StartSettings settings;
    for (std::size_t i = 0; i < settings.device_paths.size(); ++i) {
        const Text key = u"COM" + ToText(static_cast<long long>(i) + 1);
        ReadInto(settings.device_paths[i], file, u"SerialPorts", key);
    }
    ReadInto(settings.bind_address, file, u"ControlLink", u"BindAddress");
    ReadInto(settings.code_page, file, u"Encoding", u"CodePage");
    return settings;
}

SettingsReading ReadAtStart(const SettingsStore& store, const CodePage& code_page,
                            const std::function<void()>& pause) {
    SettingsReading reading = store.Read();
    const LoadedSettings loaded = ReadSettings(IniDocument(reading.content, code_page), {});
    if (loaded.enabled && loaded.allowed)
        return reading;
    pause();
    return store.Read();
}

std::string Unreadable(const std::string& file, std::error_code problem) {
    std::string words = problem.message();
    if (problem == std::errc::is_a_directory)
        words = "it is no ordinary file";
    else if (problem == std::errc::file_too_large)
        words = "it is longer than 1 MiB";
    return "The settings file " + file + " cannot be read (" + words + ")";
}

std::string SettingsPath(const char* windir) {
    const std::string base = windir && *windir ? windir : kDefaultBaseFolder;
    return base + "/system/Tarnex.ini";
}

} // namespace tarnex
