#include "operator/commands.h"
#include "operator/json_output.h"
#include "operator/settings_check.h"
#include "operator/text_output.h"

#include <algorithm>
#include <ostream>

namespace tarnex {

namespace {

// Of a value in the short list, where the effect tells it whole.
constexpr std::size_t kValueColumns = 24;

const Setting& Known(const std::string& name) {
    if (const Setting* setting = FindSetting(name))
        return *setting;
    const std::string closest = ClosestSettingName(name);
    throw Failure(kExitUsage, "there is no setting \"" + name + "\"" +
                                  (closest.empty() ? "; \"tarnexctl settings list\" shows all"
                                                   : " (did you mean \"" + closest + "\"?)"));
}

std::string ShownValue(const Setting& setting, TextView value) {
    if (value.empty())
        return "";
    if (setting.Kind() == SettingKind::kPassword)
        return "(set)";
    if (setting.Kind() == SettingKind::kSwitch)
        return IsOn(setting, value) ? "on" : "off";
    return ToUtf8(value);
}

bool HasPart(std::string_view name, const std::string& part) {
    return name.find(part) != std::string::npos;
}

std::vector<const Setting*> Wanted(const std::vector<std::string>& names) {
    std::vector<const Setting*> wanted;
    for (const Setting& setting : SettingCatalog())
        if (names.empty() || std::ranges::any_of(names, [&](const std::string& name) {
                return FindSetting(name) == &setting || HasPart(setting.name, name);
            }))
            wanted.push_back(&setting);
    for (const std::string& name : names)
        if (std::ranges::none_of(wanted, [&](const Setting* setting) {
                return FindSetting(name) == setting || HasPart(setting->name, name);
            }))
            Known(name);
    return wanted;
}

Json SettingJson(const OperatorWorld& world, const Setting& setting, TextView value) {
    const bool secret = setting.Kind() == SettingKind::kPassword;
    return {{"name", setting.name},
            {"section", ToUtf8(setting.section)},
            {"key", ToUtf8(setting.key)},
            {"group", setting.group},
            {"meaning", setting.meaning},
            {"allowed", AllowedValues(setting)},
            {"set", !value.empty()},
            {"value", secret ? Json() : Json(ToUtf8(value))},
            {"effect", Effect(setting, value, world.serial_paths)},
            {"change_in_force", setting.in_force}};
}

void PrintLong(const OperatorWorld& world, const Setting& setting, TextView value) {
    TextTable table;
    table.Add({{std::string(setting.name), Colour::kBold}});
    table.Add({"  key", "[" + ToUtf8(setting.section) + "] " + ToUtf8(setting.key)});
    table.Add({"  meaning", std::string(setting.meaning)});
    table.Add({"  allowed", AllowedValues(setting)});
    table.Add({"  value", value.empty() ? "(none)" : ShownValue(setting, value)});
    table.Add({"  now", Effect(setting, value, world.serial_paths)});
    table.Add({"  a change", std::string(setting.in_force)});
    table.Add({""});
    table.Print(world);
}

void PrintShort(const OperatorWorld& world, const SettingsFile& file,
                const std::vector<const Setting*>& settings) {
    TextTable table;
    std::string group;
    for (const Setting* setting : settings) {
        if (setting->group != group) {
            if (!group.empty())
                table.Add({""});
            group = setting->group;
            table.Add({{group, Colour::kBold}});
        }
        const TextView value = file.Value(*setting);
        table.Add({"  " + std::string(setting->name), ToUtf8(setting->key),
                   Shortened(ShownValue(*setting, value), kValueColumns),
                   Effect(*setting, value, world.serial_paths)});
    }
    table.Print(world);
}

// Changes the setting and says what that does, and what is now wrong with it or on its account.
ExitStatus Change(OperatorWorld& world, const Setting& setting,
                  const std::function<void(SettingsFile&)>& change) {
    SettingsFile before(world);
    change(before);
    const SettingsFile now(world);
    world.out << setting.name << ": "
              << Printable(Effect(setting, now.Value(setting), world.serial_paths)) << " ("
              << setting.in_force << ")\n";
    const std::vector<Finding> known = CheckSettingsHere(world, before);
    for (const Finding& finding : CheckSettingsHere(world, now))
        if (finding.name == setting.name ||
            std::ranges::count(known, finding.text, &Finding::text) == 0)
            world.err << "tarnexctl: warning: " << Printable(finding.name + " " + finding.text)
                      << '\n';
    return kExitDone;
}

std::string Quoted(const Setting& setting, const std::string& typed) {
    return setting.Kind() == SettingKind::kPassword ? "this" : "\"" + typed + "\"";
}

const Setting& Changeable(const std::string& name) {
    const Setting& setting = Known(name);
    if (setting.Kind() == SettingKind::kRecord)
        throw Failure(kExitUsage, std::string(setting.name) +
                                      " is written by the service alone; it cannot be "
                                      "changed here");
    return setting;
}

// So that a password stands in no list of processes and in no shell's history.
std::string AskFor(const OperatorWorld& world, const Setting& setting) {
    const bool secret = setting.Kind() == SettingKind::kPassword;
    const auto line =
        world.ask
            ? world.ask(std::string(setting.name) + " (" + AllowedValues(setting) + "): ", secret)
            : std::nullopt;
    if (!line)
        throw Failure(kExitUsage, "the value is missing (try \"tarnexctl settings set --help\")");
    return *line;
}

} // namespace

ExitStatus SettingsList(OperatorWorld& world, const ListOptions& options) {
    const std::vector<const Setting*> settings = Wanted(options.names);
    const SettingsFile file(world);
    if (options.json) {
        Json list = Json::array();
        for (const Setting* setting : settings)
            list.push_back(SettingJson(world, *setting, file.Value(*setting)));
        world.out << JsonText(list);
    } else if (options.long_form) {
        for (const Setting* setting : settings)
            PrintLong(world, *setting, file.Value(*setting));
    } else {
        PrintShort(world, file, settings);
    }
    return kExitDone;
}

ExitStatus SettingsGet(OperatorWorld& world, const std::string& name) {
    const Setting& setting = Known(name);
    world.out << Printable(ToUtf8(SettingsFile(world).Value(setting))) << '\n';
    return kExitDone;
}

ExitStatus SettingsSet(OperatorWorld& world, const std::string& name,
                       const std::optional<std::string>& given) {
    const Setting& setting = Changeable(name);
    const std::string typed = given ? *given : AskFor(world, setting);
    const Text value = StoredForm(setting, typed);
    const std::string plain(setting.name);
    if (Trim(value).empty())
        throw Failure(kExitData, plain +
                                     " cannot be set to nothing: to take the value away, "
                                     "use \"tarnexctl settings unset " +
                                     plain + "\"");
    if (const std::string objection = Objection(setting, value); !objection.empty())
        throw Failure(kExitData, plain + ": " + Quoted(setting, typed) + " " + objection);
    return Change(world, setting, [&](SettingsFile& file) { file.Set(setting, value); });
}

ExitStatus SettingsUnset(OperatorWorld& world, const std::string& name) {
    const Setting& setting = Changeable(name);
    return Change(world, setting, [&](SettingsFile& file) { file.Unset(setting); });
}

ExitStatus SettingsCheck(OperatorWorld& world, bool json) {
    const SettingsFile file(world);
    const std::vector<Finding> findings = CheckSettingsHere(world, file);
    const auto errors = std::ranges::count(findings, Finding::Level::kError, &Finding::level);
    Json list = Json::array();
    TextTable table;
    for (const Finding& finding : findings) {
        const bool error = finding.level == Finding::Level::kError;
        const std::string word = error ? "error" : "warning";
        list.push_back({{"level", word}, {"setting", finding.name}, {"text", finding.text}});
        table.Add({{word, error ? Colour::kBad : Colour::kWarning}, finding.name, finding.text});
    }
    if (json) {
        world.out << JsonText(list);
    } else {
        table.Print(world);
        world.out << file.Path() << ": " << Counted(errors, "error") << ", "
                  << Counted(std::ssize(findings) - errors, "warning") << '\n';
    }
    return errors > 0 ? kExitErrors : findings.empty() ? kExitDone : kExitWarnings;
}

} // namespace tarnex
