#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

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
        std::string name = "/tmp/tarnex_test_XXXXXX";
        path_ = mkdtemp(name.data());
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

// What check says in a process of its own, and there as a user without special rights.
inline bool InChild(bool unprivileged, const std::function<bool()>& check) {
    const pid_t child = fork();
    if (child == 0) {
        const bool ready =
            !unprivileged || geteuid() != 0 || (setgid(65534) == 0 && setuid(65534) == 0);
        _exit(ready && check() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace tarnex
