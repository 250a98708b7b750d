#pragma once

#include "platform/line_files.h"

namespace tarnex {

// Files of the machine. What is no plain file cannot be read.
class DiskLineFiles : public LineFiles {
  public:
    Result<std::unique_ptr<LineFile>> Open(const std::string& path) override;
};

} // namespace tarnex
