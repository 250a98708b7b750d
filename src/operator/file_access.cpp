#include "operator/file_access.h"

#include "platform/error_words.h"
#include "platform/file_path.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <span>

namespace tarnex {

namespace {

namespace fs = std::filesystem;

struct Remedy {
    std::errc problem;
    ExitStatus status;
    const char* words;  // for the problem; nullptr: those of WordsFor()
    const char* remedy; // or kBecomeUser
};
constexpr const char* kBecomeUser = nullptr; // in the words of the system

// clang-format off
constexpr Remedy kWriting[] = {
    {std::errc::permission_denied,         kExitNoRights,     nullptr, kBecomeUser},
    {std::errc::operation_not_permitted,   kExitNoRights,     nullptr, kBecomeUser},
    {std::errc::no_space_on_device,        kExitCannotCreate, nullptr, "free space on its disk"},
    {std::errc::read_only_file_system,     kExitCannotCreate, "it is read-only", "let it be written to, or the disk that it is on"},
    {std::errc::is_a_directory,            kExitCannotCreate, "it is no ordinary file", "name a file"},
    {std::errc::no_such_file_or_directory, kExitCannotCreate, "its folder is missing", "make the folder first"},
    {std::errc::not_a_directory,           kExitCannotCreate, nullptr, "name a file in a folder"},
    {std::errc::operation_would_block,     kExitCannotCreate, "another program keeps it locked", "try again later"},
    {std::errc::device_or_resource_busy,   kExitCannotCreate, "another program keeps it open", "close it there"},
    {std::errc::operation_in_progress,     kExitCannotCreate, "another program keeps changing it", "try again later"},
    {std::errc::file_too_large,            kExitCannotCreate, "it is too large", "see what has filled it"},
};
constexpr Remedy kOtherWriting{{}, kExitCannotCreate, nullptr, "look for a used-up quota or a failing disk"};

// Of what a command is told to write to.
constexpr Remedy kForbiddenOutput{{}, kExitCannotCreate, nullptr, "name a file in a folder that you may write to"};

constexpr Remedy kReading[] = {
    {std::errc::permission_denied,         kExitNoRights,     nullptr, kBecomeUser},
    {std::errc::is_a_directory,            kExitNoInput,      "it is no ordinary file", "name a file"},
    {std::errc::file_too_large,            kExitNoInput,      "it is longer than 1 MiB", "see what has filled it"},
    {std::errc::device_or_resource_busy,   kExitNoInput,      "another program keeps it open", "close it there"},
};
constexpr Remedy kOtherReading{{}, kExitIo, nullptr, "look for a failing disk"};
// clang-format on

Failure MakeFailure(const SystemWords& words, const std::string& line, std::error_code why,
                    const Remedy& remedy, const std::string& holder) {
    const std::string become_user = "run this as " + words.who_may + words.how_to_become_them;
    const std::string what = !holder.empty() ? holder + " keeps it open"
                             : remedy.words  ? remedy.words
                                             : WordsFor(why);
    return {remedy.status,
            line + " (" + what + "): " + (remedy.remedy ? remedy.remedy : become_user)};
}

const Remedy& RemedyOf(std::error_code why, std::span<const Remedy> table, const Remedy& other) {
    const auto found =
        std::ranges::find_if(table, [&](const Remedy& r) { return why == r.problem; });
    return found == table.end() ? other : *found;
}

} // namespace

std::unique_ptr<FileOwners::Acting> ActForOwner(const OperatorWorld& world, const std::string& path,
                                                const std::string& named_in) {
    auto acting = world.owners.ActFor(path, named_in);
    if (!acting)
        throw Failure(kExitNoRights, acting.TroubleText());
    return std::move(*acting);
}

std::error_code ReadingProblem(const std::string& path) {
    std::error_code problem;
    const fs::file_status status = fs::status(ToPath(path), problem);
    if (!fs::exists(status))
        return problem ? problem : std::make_error_code(std::errc::no_such_file_or_directory);
    if (!fs::is_regular_file(status))
        return std::make_error_code(std::errc::is_a_directory);
    errno = 0;
    const std::ifstream file(ToPath(path));
    return file ? std::error_code() : std::error_code(errno, std::generic_category());
}

std::string ReadWholeFile(const std::string& path) {
    std::ifstream file(ToPath(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteOutput(const OperatorWorld& world, const std::string& path, std::string_view content,
                 Readers readers, const std::string& instead) {
    const auto acting = ActForOwner(world, path);
    // A new file would take the place of what that is for everybody.
    std::error_code error;
    const fs::file_status there = fs::symlink_status(ToPath(path), error);
    if (fs::exists(there) && !fs::is_regular_file(there))
        throw Failure(kExitCannotCreate,
                      path + " is no ordinary file, and stays as it is; " + instead);
    const std::error_code problem = world.replace_file(path, content, readers);
    const Remedy& known = RemedyOf(problem, kWriting, kOtherWriting);
    if (problem)
        throw MakeFailure(world.words, "the file " + path + " cannot be written", problem,
                          known.status == kExitNoRights ? kForbiddenOutput : known,
                          HolderOf(world, path, problem));
}

std::string HolderOf(const OperatorWorld& world, const std::string& path, std::error_code why) {
    return why == std::errc::device_or_resource_busy ? world.machine.LockHolder(path).text : "";
}

Failure CannotRead(const SystemWords& words, const std::string& what, std::error_code why,
                   const std::string& if_missing, const std::string& holder) {
    if (why == std::errc::no_such_file_or_directory || why == std::errc::not_a_directory)
        return {kExitNoInput, "there is no " + what + ": " + if_missing};
    return MakeFailure(words, "the " + what + " cannot be read", why,
                       RemedyOf(why, kReading, kOtherReading), holder);
}

Failure CannotWrite(const SystemWords& words, const std::string& what, std::error_code why,
                    const std::string& holder) {
    return MakeFailure(words, "the " + what + " cannot be written", why,
                       RemedyOf(why, kWriting, kOtherWriting), holder);
}

} // namespace tarnex
