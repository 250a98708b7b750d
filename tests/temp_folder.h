#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace tarnex {

inline void WriteFile(const std::string& path, const std::string& content,
                      std::ios::openmode mode = std::ios::trunc) {
    std::ofstream(path, std::ios::binary | mode) << content;
}

// "" when there is no such file.
inline std::string FileContent(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A folder of its own for one test, open to every user.
class TempFolder {
  public:
    TempFolder() {
        do
            path_ = (std::filesystem::temp_directory_path() /
                     ("tarnex_test_" + std::to_string(std::random_device()())))
                        .string();
        while (!std::filesystem::create_directory(path_));
        std::filesystem::permissions(path_, std::filesystem::perms::all);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() { std::filesystem::remove_all(path_); }

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    const std::string& Path() const { return path_; }
    std::string Path(const std::string& name) const { return *this / name; }
    void Write(const std::string& name, const std::string& content) const {
        WriteFile(*this / name, content);
    }
    std::string Read(const std::string& name) const { return FileContent(*this / name); }
    bool Has(const std::string& name) const { return std::filesystem::exists(*this / name); }

  private:
    std::string path_;
};

} // namespace tarnex
