#pragma once

#include "tools/tool_form.h"

namespace tarnex {

enum class UpdateEnd { kDone, kFailed, kLeftAlone };

// What an update tells the one who watches it; in a window or on a terminal.
class UpdateObserver {
  public:
    virtual ~UpdateObserver() = default;
    // The unit is connected and is restarted next. False leaves it alone.
    virtual Task<bool> UnitAnswers() = 0;
    // The unit's loader is called from now on.
    virtual void LoaderCalled() = 0;
    // A step of the writing has begun or failed. line: in words, for a log in Chinese.
    virtual void StepBegan(const Text& line) = 0;
};

// The update of the unit's program: the file is judged before the unit hears anything, a unit that
// answers is restarted, its loader is called, and the file is written.
class FirmwareUpdate {
  public:
    // All must outlive the update.
    FirmwareUpdate(const ToolWorld& world, TarnexCore& core, UpdateObserver& observer);

    // Reads the whole file and judges it; false: it cannot be sent, Standing() says why.
    bool Judge(std::string path);
    // Writes the file that was judged last. port: of a unit that does not answer; 0: where it is
    // connected. The port is closed afterwards, unless the observer left the unit alone.
    Task<UpdateEnd> Write(int port = 0);

    // What is in the file that was judged last.
    const FirmwareFile& File() const { return file_; }
    // How far the update came, and what ended it; of the file alone as long as nothing was written.
    const FlashProgress& Standing() const;
    // Since the present step began.
    Duration StepTime() const { return world_.clock.Now() - step_began_; }
    // Ending now would leave the unit without a program.
    bool MustNotEnd() const { return core_.firmware.ProgramIncomplete(); }

  private:
    void NoteStep(const Text& line);

    const ToolWorld& world_;
    TarnexCore& core_;
    UpdateObserver& observer_;
    FirmwareFile file_;
    bool writing_ = false; // or has been written
    FlashStep step_ = FlashStep::kOpenFile;
    Duration step_began_{};
};

} // namespace tarnex
