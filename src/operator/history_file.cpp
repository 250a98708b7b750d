#include "operator/history_file.h"

#include "operator/file_access.h"
#include "platform/file_path.h"

namespace tarnex {

namespace {

// Of a file that nothing was written to yet, as if it were not there.
std::error_code WhyNotOpen(const std::string& path) {
    std::error_code problem = ReadingProblem(path);
    std::error_code unknown;
    if (!problem && std::filesystem::file_size(ToPath(path), unknown) == 0)
        problem = std::make_error_code(std::errc::no_such_file_or_directory);
    return problem;
}

} // namespace

bool HistoryFile::IsThere(const OperatorWorld& world) {
    return WhyNotOpen(world.history_path) != std::errc::no_such_file_or_directory;
}

HistoryFile::HistoryFile(const OperatorWorld& world) : path_(world.history_path) {
    const std::error_code problem = WhyNotOpen(path_);
    if (problem == std::errc::is_a_directory)
        throw Failure(kExitNoInput, "the history " + path_ +
                                        " is no ordinary file: move it away, and the service makes "
                                        "a new one");
    if (problem)
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
