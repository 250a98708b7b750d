#include "service/settings_notices.h"

#include "platform/error_words.h"
#include "settings/setting_table.h"

#include <algorithm>

namespace tarnex {

namespace {

struct WritingTrouble {
    std::errc problem;
    const char* words; // nullptr: those of WordsFor()
    const char* advice;
};
constexpr const char* kGiveRights =
    "Give the user of this service write access to the file and its folder.";
// clang-format off
constexpr WritingTrouble kWriting[] = {
    {std::errc::permission_denied,       nullptr,                            kGiveRights},
    {std::errc::no_space_on_device,      nullptr,                            "Free space on its disk."},
    {std::errc::read_only_file_system,   "it is read-only",                  "Let it be written to, or the disk that it is on."},
    {std::errc::device_or_resource_busy, "another program keeps it open",    "Close it there."},
    {std::errc::operation_would_block,   "another program keeps it locked",  "End that one."},
    {std::errc::operation_in_progress,   "another program keeps changing it", "End that one."},
    {std::errc::is_a_directory,          "it is no ordinary file",           "Put an ordinary file back in its place."},
    {std::errc::file_too_large,          "it is too large",                  "Take out what has filled it."},
};
constexpr WritingTrouble kOtherWriting{
    {}, nullptr, "Look at the rights of the user of this service, and for a used-up quota or a failing disk."};
// clang-format on

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
    const std::error_code problem = store.Problem();
    const auto known = std::ranges::find_if(
        kWriting, [&](const WritingTrouble& each) { return problem == each.problem; });
    const WritingTrouble& trouble = known != std::end(kWriting) ? *known : kOtherWriting;
    return "The settings file " + store.Name() + " cannot be written (" +
           (trouble.words ? trouble.words : WordsFor(problem)) +
           "), so it does not tell where the unit is, and the unit may be sent its settings again "
           "and again. " +
           trouble.advice;
}

} // namespace tarnex
