#pragma once

#include "simulator/call_group.h"

#include <optional>
#include <string>
#include <string_view>

namespace tarnex {

enum class LoaderStep { kHandshake, kErase, kWrite, kFinish };
enum class LoaderFault {
    kRefuse,  // a frame that is no acknowledgement
    kLate,    // the right answer after 9 s
    kCorrupt, // one wrong bit in the answer
    kSilent,  // no answer
    kWrong,   // the right answer to another step
};

// What a unit's loader does wrong: once, with the nth frame of a step from now on.
struct LoaderPlan {
    LoaderStep step = LoaderStep::kHandshake;
    long nth = 1;
    LoaderFault fault = LoaderFault::kRefuse;
};

// "write:100 silent": the words of an operator, STEP or STEP:N, and a fault. Nothing for others.
std::optional<LoaderPlan> ParseLoaderPlan(std::string_view words);

// The part of a unit that rewrites its program, in binary frames. An erased program is none until
// the programming is finished: the unit then stays in its loader.
class UnitLoader {
  public:
    struct Times {
        Duration answer = 5ms;
        Duration erase = 1s;
    };
    struct Events {
        std::function<void(std::string_view)> send;
        std::function<void()> taken; // a handshake came in time: the loader has the unit now
        std::function<void()> ended; // it gives the unit up, which is to restart
    };
    UnitLoader(Clock& clock, Events events);

    // The unit restarts: the loader listens for so long, or for ever where there is no program.
    void Start(Duration window, const Times& times);
    // What one write of the PC brought at the loader's line settings.
    void Received(std::string_view bytes);

    // The loader has the unit: nothing else of it works.
    bool InCharge() const { return in_charge_; }
    bool HasProgram() const { return has_program_; }
    // What was written last, from address 0 on; FF where nothing was. Empty in a new unit.
    const std::string& Program() const { return program_; }
    // The text behind "VERSION=" in the program, up to the first byte that is not printable ASCII.
    std::optional<std::string> ProgramVersion() const;

    bool Deaf = false; // hears no handshake
    void SetPlan(std::optional<LoaderPlan> plan) { plan_ = plan; }

  private:
    std::optional<std::string> NextFrame();
    void TakeFrame(std::string_view frame);
    std::optional<LoaderStep> StepOf(std::string_view frame) const; // none: a bad frame
    std::string Obey(LoaderStep step, std::string_view frame);
    std::string Write(std::string_view frame);
    void Answer(LoaderStep step, std::string answer, std::optional<LoaderFault> fault);
    void Send(Duration delay, const std::string& answer);
    std::optional<LoaderFault> FaultNow(LoaderStep step);
    void End();

    Events events_;
    CallGroup calls_;
    CallGroup idle_;
    Times times_;
    bool listening_ = false;
    bool in_charge_ = false;
    bool programming_ = false; // erased, and not finished
    bool has_program_ = true;
    std::string input_;
    Duration last_byte_{};
    std::string program_;
    std::optional<LoaderPlan> plan_;
};

} // namespace tarnex
