#include "settings/my_ini_file.h"

#include "settings/setting.h"

#include <algorithm>
#include <utility>

namespace tarnex {

namespace {

bool IsBlank(TextView text) {
    return Trim(text).empty();
}

} // namespace

MyIniFile::MyIniFile(SettingsStore& store, const CodePage& code_page)
    : store_(store), code_page_(code_page) {}

Text MyIniFile::GetIniStr(TextView section, TextView key) const {
    return IsBlank(key) ? Text() : Text(Snapshot()->Get(section, key));
}

bool MyIniFile::WriteIniStr(TextView section, TextView key, TextView value) {
    return WriteIniStr(section, {&key, 1}, value);
}

bool MyIniFile::WriteIniStr(TextView section, std::span<const TextView> keys, TextView value) {
    if (IsBlank(section) || IsBlank(value) || std::ranges::any_of(keys, IsBlank))
        return false;
    return Write(section, keys, value);
}

Text MyIniFile::GetIniStr(const Setting& setting) const {
    return GetIniStr(setting.section, setting.key);
}

bool MyIniFile::WriteIniStr(const Setting& setting, TextView value) {
    return WriteIniStr(setting.section, setting.key, value);
}

bool MyIniFile::IsOn(const Setting& setting) const {
    return tarnex::IsOn(setting, GetIniStr(setting));
}

bool MyIniFile::Write(TextView section, std::span<const TextView> keys, TextView value) {
    bool possible = true;
    const auto edit = [&](const std::string& present) -> std::optional<std::string> {
        std::optional<std::string> content = present;
        for (const TextView key : keys)
            if (content)
                content = IniDocument::Set(*content, code_page_, section, key, value);
        possible = content.has_value();
        return content == present ? std::nullopt : content;
    };
    const bool written = store_.Update(edit);
    if (!possible)
        return false;
    last_write_failed_ = !written;
    failed_unreadable_ = !written && store_.Read().Unreadable();
    if (failed_unreadable_)
        stamp_.reset(); // the next look is a real one
    return true;
}

std::shared_ptr<const IniDocument> MyIniFile::Snapshot() const {
    // Before reading: a change in between then shows as another stamp at the next look.
    const std::optional<FileStamp> stamp = store_.Stamp();
    if (parsed_ && stamp && stamp->settled && stamp == stamp_)
        return parsed_;
    const SettingsReading reading = store_.Read();
    read_problem_ = reading.Unreadable() ? reading.problem : std::error_code();
    if (!read_problem_ || !parsed_)
        parsed_ = std::make_shared<const IniDocument>(reading.content, code_page_);
    if (!read_problem_ && std::exchange(failed_unreadable_, false))
        last_write_failed_ = false;
    stamp_ = reading.problem ? std::nullopt : stamp;
    return parsed_;
}

} // namespace tarnex
