#include "operator/status_reading.h"

#include "operator/absence.h"
#include "operator/file_access.h"
#include "operator/text_output.h"
#include "platform/file_path.h"

namespace tarnex {

namespace {

constexpr int kFormat = 2;

// What the service writes has some 10 KiB and is nested 4 deep. A deeper one would be printed by as
// many calls inside each other.
constexpr std::uintmax_t kLongest = 1 << 20;
constexpr int kDeepest = 16;

constexpr long long kLongSilent = 180; // s; a service that runs writes every minute

Json Parse(const std::string& path) {
    std::error_code error;
    const bool too_long = std::filesystem::file_size(ToPath(path), error) > kLongest;
    bool too_deep = false;
    Json json;
    if (!too_long)
        json = Json::parse(
            ReadWholeFile(path),
            [&](int depth, Json::parse_event_t event, const Json&) {
                const bool starts = event == Json::parse_event_t::array_start ||
                                    event == Json::parse_event_t::object_start;
                too_deep = too_deep || (starts && depth == kDeepest);
                return !too_deep;
            },
            false);
    if (too_long || too_deep)
        throw Failure(kExitData, path + " is too " + (too_long ? "long" : "deeply nested") +
                                     " for a status file of the service: name another with "
                                     "--status-file");
    if (!json.is_object() || !json.contains("format"))
        throw Failure(kExitData, path + " is not a status file of the service: name another with "
                                        "--status-file");
    if (json["format"] != kFormat)
        throw Failure(kExitData, path + " was written by another version of the service: use the "
                                        "tarnexctl of the same version, or restart the service");
    return json;
}

} // namespace

StatusReading ReadStatusFile(const OperatorWorld& world) {
    StatusReading state;
    state.now = std::chrono::floor<std::chrono::seconds>(world.now().time_since_epoch()).count();
    const std::error_code problem = ReadingProblem(world.status_path);
    if (problem == std::errc::no_such_file_or_directory) {
        state.absence = WhyAbsent(world, Json());
        return state;
    }
    if (problem)
        throw CannotRead(world.words, "status file " + world.status_path, problem, "");
    state.status = Parse(world.status_path);
    const long process = state.status.at("pid").get<long>();
    state.running = world.is_service(process) && state.status.at("ended_at").is_null();
    if (state.running && state.SecondsSince(state.status.at("written_at")) > kLongSilent)
        state.status.at("troubles")
            .push_back(
                {{"topic", "service"},
                 {"level", "error"},
                 {"text",
                  "The service has not written its status for 3 minutes, so what stands here is "
                  "old: free space where its disk is full; else it hangs, and " +
                      world.words.restart_service + " helps."}});
    if (!state.running)
        state.absence = WhyAbsent(world, state.status);
    return state;
}

} // namespace tarnex
