#pragma once

#include "platform/status_sink.h"

namespace tarnex {

// Where the status file is: what the environment variable TARNEXCOMM_STATUS names; else status.json
// in the runtime folder that the service manager made (RUNTIME_DIRECTORY), or else in
// the runtime folder of SystemWords.
std::string StatusFilePath();

// The status text in a file that everybody may read, beside which the next one is written.
class StatusFile : public StatusSink {
  public:
    explicit StatusFile(std::string path) : path_(std::move(path)) {}

    // The folder is there and may be written to.
    bool Possible() const;
    std::string Replace(const std::string& text) override;

  private:
    std::string path_;
};

} // namespace tarnex
