#include "control/settings_file.h"

#include "control/file_access.h"

#include <algorithm>

namespace tarnex {

namespace {

std::string ReadContent(const FileSettingsStore& store) {
    if (auto content = store.Read())
        return std::move(*content);
    throw CannotRead("settings file " + store.Name(), ReadingProblem(store.Name()),
                     "make one with \"tarnexctl setup\", or name another with --settings-file");
}

StartSettings ReadStart(const std::string& content) {
    return ReadStartSettings(IniDocument(content, IconvCodePage("UTF-8")));
}

bool IsAscii(const std::string& content) {
    return std::ranges::all_of(content, [](unsigned char c) { return c < 0x80; });
}

} // namespace

SettingsFile::SettingsFile(const std::string& path)
    : path_(path), store_(path), content_(ReadContent(store_)), start_(ReadStart(content_)),
      encoding_(IconvCodePage::Supported(start_.code_page) ? start_.code_page : "GBK"),
      code_page_(encoding_), document_(content_, code_page_) {}

void SettingsFile::Set(const Setting& setting, TextView value) {
    if (code_page_.Decode(code_page_.Encode(value)) != value)
        throw Failure(kExitData, setting.name + " cannot hold \"" + ToUtf8(value) +
                                     "\": some of it does not exist in " + encoding_ +
                                     ", the code page of the settings");
    if (setting.name == "code-page" && ToUtf8(value) != encoding_ && !IsAscii(content_))
        throw Failure(kExitData, "code-page cannot be changed: " + path_ + " holds texts in " +
                                     encoding_ +
                                     ", which would become unreadable. Convert the file first, "
                                     "with iconv, and change the line CodePage by hand");
    MyIniFile file(store_, code_page_);
    file.WriteIniStr(setting.section, setting.key, value);
    CheckWritten(!file.LastWriteFailed());
}

void SettingsFile::Unset(const Setting& setting) {
    CheckWritten(store_.Update([&](const std::string& present) -> std::optional<std::string> {
        std::string content = present;
        for (std::string before; content != before;) { // a later line of the same key would count
            before = content;
            content = IniDocument::Remove(before, code_page_, setting.section, setting.key);
        }
        return content == present ? std::nullopt : std::optional(content);
    }));
}

void SettingsFile::CheckWritten(bool written) const {
    if (!written)
        throw CannotWrite("settings file " + path_, store_.Problem());
}

} // namespace tarnex
