#include "adapters/system/access_log.h"

#include "platform/file_path.h"

#include <filesystem>
#include <fstream>

namespace tarnex {

bool IsAccessDatabase(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(ToPath(path), error))
        return false; // a pipe would keep who reads it waiting
    std::ifstream file(ToPath(path), std::ios::binary);
    char head[19]{};
    file.read(head, sizeof head);
    const std::string_view kind(head + 4, 15);
    return kind == "Standard Jet DB" || kind == "Standard ACE DB";
}

} // namespace tarnex
