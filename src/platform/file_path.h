#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tarnex {

// Inside, paths are UTF-8. These are the only way to the file system and back: some systems take
// plain strings for bytes of their own code page.
inline std::filesystem::path ToPath(std::string_view utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}
inline std::string FromPath(const std::filesystem::path& path) {
    const std::u8string utf8 = path.u8string();
    return {utf8.begin(), utf8.end()};
}

// A file below a folder, in the system's one way to write it.
inline std::string FileIn(std::string_view folder, std::string_view file) {
    return FromPath((ToPath(folder) / ToPath(file)).make_preferred());
}

} // namespace tarnex
