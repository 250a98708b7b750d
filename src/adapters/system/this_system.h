#pragma once

#include "platform/system_words.h"

namespace tarnex {

SystemWords WordsOfThisSystem();

// Makes the folders of those words where nobody else does: on Windows, for administrators, the
// service and whoever runs this. Where a folder cannot be made, its users meet that later.
void MakeFoldersOfThisSystem();

// Where the history of the service is: beside the log, where nothing else is said.
std::string HistoryPath();

} // namespace tarnex
