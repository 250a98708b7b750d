#include "control/service_state.h"

#include "control/file_access.h"
#include "control/text_output.h"

namespace tarnex {

namespace {

constexpr int kFormat = 1;
constexpr const char* kStart = "start it with \"systemctl start tarnexcomm\"";

Json Parse(const std::string& path, const std::string& text) {
    Json json = Json::parse(text, nullptr, false);
    if (!json.is_object() || !json.contains("format"))
        throw Failure(kExitData, path + " is not a status file of the service: name another with "
                                        "--status-file");
    if (json["format"] != kFormat)
        throw Failure(kExitData, path + " was written by another version of the service: use the "
                                        "tarnexctl of the same version, or restart the service");
    return json;
}

} // namespace

ServiceState ReadServiceState(const ControlWorld& world) {
    ServiceState state;
    state.now = std::chrono::floor<std::chrono::seconds>(world.now().time_since_epoch()).count();
    const std::error_code problem = ReadingProblem(world.status_path);
    if (problem == std::errc::no_such_file_or_directory) {
        state.absence = "the service does not run, or has no runtime folder (there is no " +
                        world.status_path + "): " + kStart;
        return state;
    }
    if (problem)
        throw CannotRead("status file " + world.status_path, problem, "");
    state.status = Parse(world.status_path, ReadWholeFile(world.status_path));
    const long process = state.status.at("pid").get<long>();
    state.running = world.is_service(process);
    if (!state.running)
        state.absence = "the service does not run: process " + std::to_string(process) +
                        " has gone, and its last word is " +
                        AgeText(state.SecondsSince(state.status.at("written_at"))) + " old; " +
                        kStart;
    return state;
}

} // namespace tarnex
