#pragma once

#include "operator/operator_world.h"
#include "operator/setting_catalog.h"
#include "settings/load_settings.h"
#include "settings/my_ini_file.h"

namespace tarnex {

// Throws Failure for a value that a code page of that name cannot hold.
void CheckHolds(const CodePage& code_page, const std::string& encoding, const Setting& setting,
                TextView value);

// The settings file as a command finds it, read once. Every function that cannot do its work
// throws Failure. The world outlives it.
class SettingsFile {
  public:
    // The one of the world, or another one.
    explicit SettingsFile(const OperatorWorld& world) : SettingsFile(world, world.settings_path) {}
    SettingsFile(const OperatorWorld& world, const std::string& path);

    const std::string& Path() const { return path_; }
    const SystemWords& Words() const { return world_.words; }
    bool AllMayRead() const { return world_.owners.AllMayRead(path_); }
    // Why the service may not read it, and what to do; "" where it may or that cannot be told.
    std::string KeptFromService() const { return world_.machine.KeptFromService(path_); }
    const std::string& Content() const { return content_; }
    const IniDocument& Document() const { return document_; }
    const StartSettings& AtStart() const { return start_; }
    // The one that the service uses: GBK where the settings name an unknown one.
    const CodePage& Encoding() const { return *code_page_; }
    const std::string& EncodingName() const { return encoding_; }
    bool IsAscii() const;
    bool IsUtf8() const;        // short texts in GBK can be, too, by chance
    bool IsChineseUtf8() const; // beyond doubt

    TextView Value(const Setting& setting) const {
        return document_.Get(setting.section, setting.key);
    }

    // Writes as the service does: at once, under its lock, everything else stays. value must have
    // passed Objection().
    void Set(const Setting& setting, TextView value);
    void Unset(const Setting& setting);

  private:
    void CheckWritten(bool written) const;

    const OperatorWorld& world_;
    std::string path_;
    std::unique_ptr<SettingsStore> store_;
    std::string content_;
    std::string encoding_;
    std::unique_ptr<CodePage> code_page_;
    IniDocument document_;
    StartSettings start_;
};

} // namespace tarnex
