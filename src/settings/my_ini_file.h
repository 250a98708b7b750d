#pragma once

#include "platform/code_page.h"
#include "platform/settings_store.h"
#include "settings/ini_document.h"

#include <memory>

namespace tarnex {

// The settings file: nothing that is read here is older than the file. Section and key names
// compare without case; a value is everything behind "=", cut to its first 128 characters.
class MyIniFile {
  public:
    MyIniFile(SettingsStore& store, const CodePage& code_page);

    // True only if the key's value in section "Setting" is exactly "1".
    bool GetIniTF(TextView key) const;
    // Stores "1" or "0" in section "Setting"; always true.
    bool WriteIniTF(TextView key, bool value);
    // The value, or "" when there is none, or when the key is blank.
    Text GetIniStr(TextView section, TextView key) const;
    // False, and nothing is written, when section, key or value is blank.
    bool WriteIniStr(TextView section, TextView key, TextView value);

    // The whole file as it is now, for readers that want many values of one moment.
    std::shared_ptr<const IniDocument> Snapshot() const;

  private:
    SettingsStore& store_;
    const CodePage& code_page_;
    // The parsed file of stamp_; reused only while the stamp is settled and still the same.
    mutable std::optional<FileStamp> stamp_;
    mutable std::shared_ptr<const IniDocument> parsed_;
};

} // namespace tarnex
