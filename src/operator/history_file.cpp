#include "operator/history_file.h"

#include "operator/file_access.h"

namespace tarnex {

HistoryFile::HistoryFile(const OperatorWorld& world) : path_(world.history_path) {
    if (const std::error_code problem = ReadingProblem(path_))
        throw CannotRead(world.words, "history " + path_, problem,
                         "the service makes it with its first message");
    acting_ = ActForOwner(world, path_);
    auto reader = world.open_history(path_);
    if (!reader)
        throw Unreadable(reader.TroubleText());
    reader_ = std::move(*reader);
}

std::vector<HistoryRow> HistoryFile::Rows(const HistoryQuery& query) {
    auto rows = reader_->Rows(query);
    if (!rows)
        throw Unreadable(rows.TroubleText());
    return std::move(*rows);
}

Failure HistoryFile::Unreadable(const std::string& trouble) const {
    return {kExitIo, "the history " + path_ + " " + trouble};
}

} // namespace tarnex
