#include "operator/settings_file.h"

#include "operator/file_access.h"

#include <algorithm>

namespace tarnex {

namespace {

std::string ReadContent(const SettingsStore& store, const OperatorWorld& world) {
    SettingsReading reading = store.Read();
    if (!reading.problem)
        return std::move(reading.content);
    throw CannotRead(world.words, "settings file " + store.Name(), reading.problem,
                     "make one with \"tarnexctl setup\", or name another with --settings-file",
                     HolderOf(world, store.Name(), reading.problem));
}

// Names of code pages are the same in each.
std::string CodePageOf(const OperatorWorld& world, const std::string& content) {
    const IniDocument document(content, *world.make_code_page("UTF-8"));
    const std::string named = ReadSettings(document).start.code_page;
    return world.make_code_page(named) ? named : "GBK";
}

} // namespace

void CheckHolds(const CodePage& code_page, const std::string& encoding, const Setting& setting,
                TextView value) {
    const bool secret = setting.Kind() == SettingKind::kPassword;
    if (code_page.Decode(code_page.Encode(value)) != value)
        throw Failure(kExitData, std::string(setting.name) + " cannot hold " +
                                     (secret ? "this" : "\"" + ToUtf8(value) + "\"") +
                                     ": some of it does not exist in " + encoding +
                                     ", the code page of the settings");
}

SettingsFile::SettingsFile(const OperatorWorld& world, const std::string& path)
    : world_(world), path_(path), store_(world.open_settings(path)),
      content_(ReadContent(*store_, world)), encoding_(CodePageOf(world, content_)),
      code_page_(world.make_code_page(encoding_)), document_(content_, *code_page_),
      start_(ReadSettings(document_).start) {}

bool SettingsFile::IsAscii() const {
    return std::ranges::all_of(content_, [](unsigned char c) { return c < 0x80; });
}

bool SettingsFile::IsUtf8() const {
    const std::unique_ptr<CodePage> utf8 = world_.make_code_page("UTF-8");
    return utf8->Encode(utf8->Decode(content_)) == content_;
}

bool SettingsFile::IsChineseUtf8() const {
    const auto chinese = [](char16_t c) { return c >= 0x4E00 && c <= 0x9FFF; };
    return IsUtf8() && std::ranges::any_of(FromUtf8(content_), chinese);
}

void SettingsFile::Set(const Setting& setting, TextView value) {
    CheckHolds(*code_page_, encoding_, setting, value);
    const bool unreadable =
        !IsAscii() && (value == u"UTF-8" ? !IsChineseUtf8() : value == u"GBK" && IsUtf8());
    if (setting.name == "code-page"_setting.name && unreadable)
        throw Failure(kExitData, "code-page cannot be " + ToUtf8(value) + ": " + path_ +
                                     " holds texts that are none. Convert the file first, with " +
                                     world_.words.text_converter +
                                     ", and change the line CodePage by hand");
    const auto acting = ActForOwner(world_, path_);
    MyIniFile file(*store_, *code_page_);
    file.WriteIniStr(setting.section, setting.key, value);
    CheckWritten(!file.LastWriteFailed());
}

void SettingsFile::Unset(const Setting& setting) {
    const auto acting = ActForOwner(world_, path_);
    CheckWritten(store_->Update([&](const std::string& present) -> std::optional<std::string> {
        std::string content =
            IniDocument::Remove(present, *code_page_, setting.section, setting.key);
        return content == present ? std::nullopt : std::optional(content);
    }));
}

void SettingsFile::CheckWritten(bool written) const {
    if (!written)
        throw CannotWrite(world_.words, "settings file " + path_, store_->Problem(),
                          HolderOf(world_, path_, store_->Problem()));
}

} // namespace tarnex
