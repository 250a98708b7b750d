#include "tools/firmware_update.h"

namespace tarnex {

FirmwareUpdate::FirmwareUpdate(const ToolWorld& world, TarnexCore& core, UpdateObserver& observer)
    : world_(world), core_(core), observer_(observer) {
    core.firmware.OnStep([this](const Text& line) { NoteStep(line); });
}

bool FirmwareUpdate::Judge(std::string path) {
    file_ = ReadFirmwareFile(world_.files, std::move(path));
    writing_ = false;
    return file_.Sendable();
}

Task<UpdateEnd> FirmwareUpdate::Write(int port) {
    if (core_.discovery.ConnectStatus() != 0) {
        const bool wanted = co_await observer_.UnitAnswers();
        if (!wanted)
            co_return UpdateEnd::kLeftAlone;
        co_await core_.commands.RESET_NOBACK();
        const int connected = core_.discovery.ConnectClose();
        port = port != 0 ? port : connected;
    }
    writing_ = true;
    step_began_ = world_.clock.Now();
    observer_.LoaderCalled();
    HexProgram program = file_.summary.TakeProgram();
    const bool done = co_await core_.firmware.FirmwareFlash(port, std::move(program));
    co_return done ? UpdateEnd::kDone : UpdateEnd::kFailed;
}

const FlashProgress& FirmwareUpdate::Standing() const {
    return writing_ ? core_.firmware.Progress() : file_.verdict;
}

void FirmwareUpdate::NoteStep(const Text& line) {
    if (const FlashStep step = core_.firmware.Progress().step; step != step_) {
        step_ = step;
        step_began_ = world_.clock.Now();
    }
    observer_.StepBegan(line);
}

} // namespace tarnex
