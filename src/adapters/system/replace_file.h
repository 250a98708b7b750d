#pragma once

#include "platform/file_readers.h"

#include <string>
#include <string_view>
#include <system_error>

namespace tarnex {

// Puts a new file with that content in the place of path in one step for readers; path + ".new" is
// used on the way. When that fails the old file is still there. The content is not forced to the
// disk.
std::error_code ReplaceFile(const std::string& path, std::string_view content,
                            Readers readers = Readers::kAll);
// Gives a file the name path, where nothing may stand, in one step. Where files have modes, its
// owner may write to it and its group may read it. When that fails it keeps its name.
std::error_code PlaceNewFile(const std::string& file, const std::string& path);
// Takes a file away, if there is one.
void RemoveFile(const std::string& path);
// Whether this user may make files beside path.
bool FolderIsWritable(const std::string& path);

} // namespace tarnex
