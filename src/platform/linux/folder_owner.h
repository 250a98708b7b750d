#pragma once

#include <string>

namespace tarnex {

// Gives a file, or a folder, to the owner and group of the folder that it stands in, as somebody
// with special rights can and others need not. False when it stays with its present owner though
// that is another one.
bool GiveToFolderOwner(const std::string& path);

} // namespace tarnex
