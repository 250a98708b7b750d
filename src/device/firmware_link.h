#pragma once

#include "device/comm_port.h"
#include "device/firmware_frames.h"
#include "platform/task.h"
#include "platform/timer.h"

#include <span>

namespace tarnex {

enum class FlashStep {
    kOpenFile,
    kOpenPort,
    kHandshake, // until the unit's loader has acknowledged three times
    kErase,
    kWrite,
    kDone,
};

enum class FlashFault {
    kNone,
    kNoFile,      // the HEX file cannot be opened
    kBadLine,     // a line of it cannot be sent, or its end record is missing
    kNoPort,      // the port cannot be opened
    kNoLoader,    // the unit answered no handshake
    kSilence,     // the unit did not answer in time, or not to the end
    kWrongAnswer, // the unit answered something else
    kLineLost,    // the hardware behind the port went away
    kStuckLine,   // written bytes do not leave the port
};

// How far an update came, and what ended it.
struct FlashProgress {
    FlashStep step = FlashStep::kOpenFile;
    Text address;     // four hexadecimal digits, of the record being written
    long line = 0;    // of the HEX file, 1 for the first
    long records = 0; // acknowledged by the unit
    long bytes = 0;   // data bytes in them

    FlashFault fault = FlashFault::kNone;
    std::string file_trouble{};                    // kNoFile: why, as LineFiles says it
    HexTrouble trouble = HexTrouble::kNoEndRecord; // kBadLine: why
    PortStatus port_status = PortStatus::kOk;      // kNoPort: why
    std::string answer{}; // the bytes that came after what was sent last; the last is the wrong one
};

// A HEX file, read to its end and judged before anything is sent to a unit.
struct FirmwareFile {
    std::string path{}; // in the system's own bytes
    HexSummary summary{};
    // Where an update with this file would stand: fault is kNone, kNoFile, or kBadLine with the
    // first line that cannot be sent.
    FlashProgress verdict{};

    bool Sendable() const { return verdict.fault == FlashFault::kNone; }
};

FirmwareFile ReadFirmwareFile(LineFiles& files, std::string path);

// Rewrites the unit's program from an Intel HEX file, in a binary mode of the line.
class FirmwareLink {
  public:
    struct Parts {
        Clock& clock;
        CommPort& port;
        DeviceTrace& trace;
    };
    // The parts must outlive the link.
    explicit FirmwareLink(Parts parts);

    // Told meanwhile, in words for an operator: a step has begun or failed. Not empty.
    using StepTold = std::function<void(const Text& line)>;
    void OnStep(StepTold told) { List1Additem_ = std::move(told); }

    // The whole update on a port that nothing has open; true when it succeeded. Cancelled or not,
    // the port is closed afterwards. One update at a time. The caller has read program from a HEX
    // file and judged it: a file that is read while the unit is written may change in between.
    Task<bool> FirmwareFlash(int port, HexProgram program);
    // Opens COM<port> in firmware mode; 0 closes the open port, and is absent without one.
    PortStatus FirmConnect(int port);
    // Load address of the record being written, "" before the first.
    const Text& HEXWriteAddr() const { return progress_.address; }
    // Of the running update or, after it, of the last one.
    const FlashProgress& Progress() const { return progress_; }

    // The receive event belongs to the exchange with the loader.
    bool FirmMode() const { return firm_mode_; }
    // The update has begun to erase and is not finished: broken off now, it leaves a unit that does
    // not work.
    bool ProgramIncomplete() const {
        return firm_mode_ &&
               (progress_.step == FlashStep::kErase || progress_.step == FlashStep::kWrite);
    }
    // The port's receive event in firmware mode.
    void OnComm();
    // Further bytes wait at the port.
    void BytesArrived() { changed_.Notify(); }
    // The hardware went away: the update fails at once.
    void HardwareLost();

    void Init() { firm_mode_ = false; }

    Timer FirmComTimer;

  private:
    class Closing;

    Task<> ShakeHands();
    Task<> Exchange();
    Task<bool> WriteProgram();
    Task<bool> AcknowledgeThrice();
    Task<bool> Erase();
    Task<bool> WriteRecords();
    Task<bool> WriteRecord(const HexRecord& record);

    Task<bool> SendFrame(FirmwareCommand command);
    Task<bool> SendBlock(std::string block);
    Task<bool> Send(std::string_view bytes);
    Task<bool> CheckAck();
    Task<bool> CheckWriteAck(std::uint16_t data_sum);
    Task<bool> ReadAnswer(std::span<const int> pattern);
    Task<std::uint8_t> ReadByte();

    bool OpenPort(int port);
    bool Fail(FlashFault fault);
    void End(bool ok);

    Parts parts_;
    StepTold List1Additem_ = [](const Text&) {};
    Signal
        changed_; // bytes arrived, the byte time-out passed, the line was lost, the exchange ended
    HexProgram program_;
    Task<> exchange_;
    FlashProgress progress_;
    bool firm_mode_ = false;
    bool FlashOK_ = false;
    bool FlashDone_ = false;
    bool ByteTimedOut_ = false;
    bool line_lost_ = false;
};

} // namespace tarnex
