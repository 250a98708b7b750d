#pragma once

#include "platform/file_readers.h"

#include <string>
#include <string_view>

namespace tarnex {

// Puts a new file with that content in the place of path in one step for readers; path + ".new" is
// used on the way. "" when done, else what the system says stands in the way; the old file is still
// there then. The content is not forced to the disk.
std::string ReplaceFile(const std::string& path, std::string_view content,
                        Readers readers = Readers::kAll);
// Gives a file the name path, where nothing may stand, in one step. Where files have modes, its
// owner may write to it and its group may read it. "" when done, else what stands in the way; the
// file then keeps its name.
std::string PlaceNewFile(const std::string& file, const std::string& path);
// Takes a file away, if there is one.
void RemoveFile(const std::string& path);
// Whether this user may make files beside path.
bool FolderIsWritable(const std::string& path);

} // namespace tarnex
