#pragma once

#include "platform/clock.h"
#include "platform/settings_store.h"

namespace tarnex {

// The settings in a file. A path that is a symbolic link stands for the file it leads to. Beside
// the file lie its lock, path + ".lock", and after a crash in the middle of a write one left-over
// path + ".new", which the next write takes away.
class FileSettingsStore : public SettingsStore {
  public:
    using Pause = std::function<void(Duration)>;

    // pause is how the store waits for another program in the middle of its work: at most 15 ms
    // in one call of Read, 250 ms in one of Update.
    explicit FileSettingsStore(std::string path, Pause pause = Sleep);

    std::string Name() const override { return path_; }
    std::optional<FileStamp> Stamp() const override;
    SettingsReading Read() const override;
    bool Update(const Edit& edit) override;
    std::error_code Problem() const override { return problem_; }

  private:
    static void Sleep(Duration duration);
    std::error_code TryUpdate(const Edit& edit);
    std::error_code UpdateOnce(const std::string& target, const std::string& successor,
                               const Edit& edit);

    std::string path_;
    Pause pause_;
    // The file as Update left it: nobody else is in the middle of writing that.
    std::optional<FileStamp> own_write_;
    std::error_code problem_;
};

} // namespace tarnex
