#pragma once

#include "platform/file_path.h"

#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace tarnex {

inline void WriteFile(const std::string& path, const std::string& content,
                      std::ios::openmode mode = std::ios::trunc) {
    std::ofstream(ToPath(path), std::ios::binary | mode) << content;
}

// "" when there is no such file.
inline std::string FileContent(const std::string& path) {
    std::ifstream file(ToPath(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A folder of its own for one test, open to every user, of a name as people give them.
class TempFolder {
  public:
    TempFolder() {
        do
            path_ = FromPath(std::filesystem::temp_directory_path() /
                             ToPath("日志 " + std::to_string(std::random_device()())));
        while (!std::filesystem::create_directory(ToPath(path_)));
        std::filesystem::permissions(ToPath(path_), std::filesystem::perms::all);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() { std::filesystem::remove_all(ToPath(path_)); }

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    const std::string& Path() const { return path_; }
    std::string Path(const std::string& name) const { return *this / name; }
    void Write(const std::string& name, const std::string& content) const {
        WriteFile(*this / name, content);
    }
    std::string Read(const std::string& name) const { return FileContent(*this / name); }
    bool Has(const std::string& name) const {
        return std::filesystem::exists(ToPath(*this / name));
    }

  private:
    std::string path_;
};

} // namespace tarnex
