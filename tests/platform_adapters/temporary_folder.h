#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace tarnex {

// A new empty folder that goes away with everything in it.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        char name[] = "/tmp/tarnex-test-XXXXXX";
        path_ = mkdtemp(name);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }

    std::string Path(const std::string& name = "") const {
        return name.empty() ? path_ : path_ + "/" + name;
    }
    void Write(const std::string& name, const std::string& content) const {
        std::ofstream(Path(name)) << content;
    }
    // "" when there is no such file.
    std::string Read(const std::string& name) const {
        std::ostringstream content;
        content << std::ifstream(Path(name)).rdbuf();
        return content.str();
    }
    bool Has(const std::string& name) const { return std::filesystem::exists(Path(name)); }

  private:
    std::string path_;
};

} // namespace tarnex
