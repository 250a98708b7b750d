#include "service/settings_notices.h"

namespace tarnex {

std::string WhyServiceEnds(const SettingsStore& store, const LoadedSettings& loaded) {
    if (!store.Stamp())
        return "The settings file " + store.Name() +
               " is missing, so the service ends. Put it there, readable and "
               "writable for the user of this service; Tarnex.ini.sample is one to begin with.";
    const std::string settings = "The settings in " + store.Name();
    if (!loaded.enabled)
        return settings + " switch the service off, so it ends. To run it, remove the line "
                          "Enable=Disable from section [Service].";
    return settings + " do not allow the service to run, so it ends. To run it, write the line "
                      "Check1(13)=1 into section [Check].";
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
