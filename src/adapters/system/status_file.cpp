#include "adapters/system/status_file.h"

#include "adapters/system/environment.h"
#include "adapters/system/replace_file.h"
#include "adapters/system/this_system.h"
#include "platform/error_words.h"
#include "platform/file_path.h"

namespace tarnex {

std::string StatusFilePath() {
    if (const std::string path = Environment("TARNEXCOMM_STATUS"); !path.empty())
        return path;
    const std::string folders = Environment("RUNTIME_DIRECTORY"); // several are parted by ":"
    const std::string folder = folders.substr(0, folders.find(':'));
    return FileIn(folder.empty() ? WordsOfThisSystem().runtime_folder : folder, "status.json");
}

bool StatusFile::Possible() const {
    return FolderIsWritable(path_);
}

std::string StatusFile::Replace(const std::string& text) {
    const std::error_code problem = ReplaceFile(path_, text);
    return !problem ? ""
                    : "The status file " + path_ + " cannot be written (" + WordsFor(problem) +
                          "), so tarnexctl shows old values or none. Give the user of this "
                          "service write access to its folder, and free space there.";
}

} // namespace tarnex
