#pragma once

#include "platform/code_page.h"
#include "platform/settings_store.h"
#include "settings/ini_document.h"

#include <memory>
#include <span>

namespace tarnex {

struct Setting;

// The settings file: nothing that is read here is older than the file, unless the file is there and
// cannot be read: what was read last holds on then. Section and key names compare without case; a
// value is everything behind "=", cut to its first 128 characters.
class MyIniFile {
  public:
    // Both must outlive the object.
    MyIniFile(SettingsStore& store, const CodePage& code_page);

    // The value, or "" when there is none, or when the key is blank.
    Text GetIniStr(TextView section, TextView key) const;
    // False, and nothing is written, when section, key or value is blank, or when no settings file
    // can hold it (a line end inside). True says nothing about the disk: see LastWriteFailed.
    bool WriteIniStr(TextView section, TextView key, TextView value);
    // The same value under several keys in their order, all in one step or none.
    bool WriteIniStr(TextView section, std::span<const TextView> keys, TextView value);

    // The same for the section and key of a setting.
    Text GetIniStr(const Setting& setting) const;
    bool WriteIniStr(const Setting& setting, TextView value);
    // Whether a switch is on.
    bool IsOn(const Setting& setting) const;

    // The last value that was to be written is not in the file: it cannot be written. One that
    // failed since the file cannot be read counts until that is read again.
    bool LastWriteFailed() const { return last_write_failed_; }

    // Why the last look at the file found one that cannot be read; nothing when it was read, or
    // when there was none.
    std::error_code ReadProblem() const { return read_problem_; }

    // The whole file as it is now, for readers that want many values of one moment.
    std::shared_ptr<const IniDocument> Snapshot() const;

  private:
    // False when the file cannot hold it.
    bool Write(TextView section, std::span<const TextView> keys, TextView value);

    SettingsStore& store_;
    const CodePage& code_page_;
    mutable bool last_write_failed_ = false;
    mutable bool failed_unreadable_ = false; // it failed, and the file could not be read either
    // The parsed file of stamp_; reused only while the stamp is settled and still the same.
    mutable std::optional<FileStamp> stamp_;
    mutable std::shared_ptr<const IniDocument> parsed_;
    mutable std::error_code read_problem_;
};

} // namespace tarnex
