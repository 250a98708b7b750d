#include "service/settings_notices.h"

#include "settings/setting_table.h"

namespace tarnex {

namespace {

std::string HowToSwitchOn(const Setting& setting) {
    return "Switch it on with \"tarnexctl settings set " + std::string(setting.name) +
           " on\" and start it again.";
}

} // namespace

std::string WhyServiceEnds(const SettingsStore& store, const LoadedSettings& loaded) {
    if (!store.Stamp())
        return "The settings file " + store.Name() +
               " is missing, so the service ends. Put it there, readable and "
               "writable for the user of this service; Tarnex.ini.sample is one to begin with.";
    const std::string settings = "The settings in " + store.Name();
    if (!loaded.enabled)
        return settings + " switch the service off, so it ends. " +
               HowToSwitchOn("service-enabled"_setting);
    return settings + " do not allow the service to run, so it ends. " +
           HowToSwitchOn("run-allowed"_setting);
}

std::string WhyNotRead(const SettingsStore& store, const MyIniFile& ini) {
    if (!ini.ReadProblem())
        return "";
    return Unreadable(store.Name(), ini.ReadProblem()) +
           ", so the settings stay as they were read last. " +
           ReadingAdvice(ini.ReadProblem(),
                         "Give the user of this service read access to the file and its folder.") +
           " It is tried again all the time.";
}

std::string WhyRestart(const SettingsStore& store, const StartSettings& in_use,
                       const StartSettings& now, const SystemWords& words) {
    std::string names;
    const auto name = [&names](const Setting& setting) {
        names += (names.empty() ? "" : ", ") + NameOf(setting);
    };
    for (std::size_t i = 0; i < now.device_paths.size(); ++i)
        if (now.device_paths[i] != in_use.device_paths[i])
            name(DeviceSetting(int(i) + 1));
    if (now.bind_address != in_use.bind_address)
        name("bind-address"_setting);
    if (now.code_page != in_use.code_page)
        name("code-page"_setting);
    if (names.empty())
        return "";
    return "The settings in " + store.Name() +
           " are others than this service was started with: " + names +
           ". These are read at the start only: restart it (" + words.restart_service + ").";
}

std::string WhyNotWritten(const SettingsStore& store, const MyIniFile& ini) {
    if (!ini.LastWriteFailed())
        return "";
    return "The settings file " + store.Name() +
           " cannot be written, so it does not tell where the unit is, and the unit may be sent "
           "its settings again and again. Give the user of this service write access to the file "
           "and its folder, and look for a full disk.";
}

} // namespace tarnex
