#include "device/firmware_link.h"

#include <utility>

namespace tarnex {

namespace {

constexpr LineSettings kFirmwareLine{.baud = kFirmwareBaud, .parity = 'E'};
constexpr Duration kByteLimit = 8s;
constexpr int kAttempts = 500;
constexpr Duration kAttemptPeriod = 200ms;
constexpr int kGoodAcknowledgements = 3;
constexpr Duration kLastFrameLimit = 200ms; // for what an adapter holds after the driver is empty

} // namespace

FirmwareFile ReadFirmwareFile(LineFiles& files, std::string path) {
    FirmwareFile read{.path = std::move(path)};
    auto file = files.Open(read.path);
    if (!file) {
        read.verdict.fault = FlashFault::kNoFile;
        read.verdict.file_trouble = file.TroubleText();
        return read;
    }
    read.summary = HexSummary::Read(**file);
    if (const std::optional<OddHexLine>& fault = read.summary.Fault()) {
        read.verdict.fault = FlashFault::kBadLine;
        read.verdict.line = fault->line;
        read.verdict.trouble = fault->trouble;
    }
    return read;
}

// Whatever ends the update, also its cancellation: nothing stays open.
class FirmwareLink::Closing {
  public:
    explicit Closing(FirmwareLink& link) : link_(link) {}
    Closing(const Closing&) = delete;
    ~Closing() {
        link_.exchange_ = Task<>();
        link_.FirmComTimer.Disable();
        link_.program_ = {};
        link_.FirmConnect(0);
        link_.firm_mode_ = false;
    }

  private:
    FirmwareLink& link_;
};

FirmwareLink::FirmwareLink(Parts parts)
    : FirmComTimer(parts.clock, kByteLimit,
                   [this] {
                       FirmComTimer.Disable();
                       ByteTimedOut_ = true;
                       changed_.Notify();
                   }),
      parts_(parts), changed_(parts.clock) {}

PortStatus FirmwareLink::FirmConnect(int port) {
    if (port != 0 || !parts_.port.IsOpen())
        return parts_.port.Open(port, kFirmwareLine);
    parts_.port.Close();
    return PortStatus::kOk;
}

void FirmwareLink::HardwareLost() {
    line_lost_ = true;
    changed_.Notify();
}

Task<bool> FirmwareLink::FirmwareFlash(int port, HexProgram program) {
    const Closing closing(*this);
    FlashOK_ = false;
    FlashDone_ = false;
    line_lost_ = false;
    progress_ = FlashProgress();
    program_ = std::move(program);
    List1Additem_(u"打开HEX文件");
    List1Additem_(u"用升级模式打开Com" + ToText(port));
    if (!OpenPort(port))
        co_return FlashOK_;
    firm_mode_ = true;
    progress_.step = FlashStep::kHandshake;
    List1Additem_(u"开始握手");
    co_await ShakeHands();
    co_return FlashOK_;
}

// Opened twice: the second opening discards what the change of speed made of the line.
bool FirmwareLink::OpenPort(int port) {
    progress_.step = FlashStep::kOpenPort;
    FirmConnect(port);
    FirmConnect(0);
    progress_.port_status = FirmConnect(port);
    if (progress_.port_status == PortStatus::kOk)
        return true;
    End(Fail(FlashFault::kNoPort));
    return false;
}

// Calls the loader until it answers; the exchange then runs in the receive event, while this waits.
Task<> FirmwareLink::ShakeHands() {
    for (int attempt = 0; attempt < kAttempts && !FlashDone_; ++attempt) {
        const bool sent = co_await SendFrame(FirmwareCommand::kHandshake);
        if (sent)
            co_await Sleep(parts_.clock, kAttemptPeriod);
        while (exchange_.Running())
            co_await changed_.Wait();
        if ((!sent || line_lost_) && !FlashDone_)
            End(Fail(line_lost_ ? FlashFault::kLineLost : FlashFault::kStuckLine));
    }
    if (!FlashDone_)
        Fail(FlashFault::kNoLoader);
    if (FlashOK_)
        co_await Sleep(parts_.clock, kLastFrameLimit);
}

void FirmwareLink::OnComm() {
    if (exchange_.Running())
        return;
    exchange_ = Exchange();
    exchange_.Start();
}

Task<> FirmwareLink::Exchange() {
    parts_.port.SetRThreshold(0); // until the port is opened again
    FlashDone_ = false;
    const bool written = co_await WriteProgram();
    if (written)
        progress_.step = FlashStep::kDone;
    End(written);
    changed_.Notify();
}

void FirmwareLink::End(bool ok) {
    firm_mode_ = false;
    FlashOK_ = ok;
    FlashDone_ = true;
    parts_.trace.DebugAdd(TextView(ok ? u"Flash写入正常!" : u"Flash写入错误!"));
}

// The first fault counts; those that it brings about do not.
bool FirmwareLink::Fail(FlashFault fault) {
    if (progress_.fault == FlashFault::kNone)
        progress_.fault = fault;
    return false;
}

Task<bool> FirmwareLink::WriteProgram() {
    const bool shaken = co_await AcknowledgeThrice();
    if (!shaken)
        co_return false;
    const bool erased = co_await Erase();
    if (!erased)
        co_return false;
    co_return co_await WriteRecords();
}

Task<bool> FirmwareLink::AcknowledgeThrice() {
    for (int good = 0; good < kGoodAcknowledgements; ++good) {
        if (good > 0)
            co_await SendFrame(FirmwareCommand::kHandshake);
        const bool acknowledged = co_await CheckAck();
        if (!acknowledged)
            co_return false;
    }
    co_return true;
}

Task<bool> FirmwareLink::Erase() {
    progress_.step = FlashStep::kErase;
    List1Additem_(u"握手成功，开始擦除。");
    co_await SendFrame(FirmwareCommand::kErase);
    const bool erased = co_await CheckAck();
    if (!erased)
        List1Additem_(u"擦除失败。");
    co_return erased;
}

// record must outlive the wait.
Task<bool> FirmwareLink::WriteRecords() {
    progress_.step = FlashStep::kWrite;
    List1Additem_(u"擦除成功，开始写入。");
    for (const HexRecord& record : program_) {
        ++progress_.line;
        const bool written = co_await WriteRecord(record);
        if (!written)
            co_return false;
    }
    co_return co_await SendFrame(FirmwareCommand::kErase); // closes the programming
}

// record must outlive the wait.
Task<bool> FirmwareLink::WriteRecord(const HexRecord& record) {
    progress_.address.assign(record.address.begin(), record.address.end());
    co_await SendBlock(DataFrame(record));
    const bool written = co_await CheckWriteAck(DataSum(record.data));
    if (written) {
        ++progress_.records;
        progress_.bytes += long(record.data.size());
    }
    co_return written;
}

Task<bool> FirmwareLink::SendFrame(FirmwareCommand command) {
    const std::string frame = CommandFrame(command);
    const bool ready = co_await parts_.port.OutputLeft();
    if (!ready)
        co_return Fail(FlashFault::kStuckLine);
    co_return co_await Send(frame);
}

Task<bool> FirmwareLink::SendBlock(std::string block) {
    for (std::size_t i = 0; i < block.size(); ++i) {
        const bool sent = co_await Send(std::string_view(block).substr(i, 1));
        if (!sent)
            co_return false;
    }
    co_return true;
}

// bytes must outlive the wait.
Task<bool> FirmwareLink::Send(std::string_view bytes) {
    progress_.answer.clear();
    if (parts_.port.OutputBytes(bytes) != PortStatus::kOk)
        co_return Fail(FlashFault::kLineLost);
    const bool left = co_await parts_.port.OutputLeft();
    co_return left || Fail(FlashFault::kStuckLine);
}

Task<bool> FirmwareLink::CheckAck() {
    return ReadAnswer(kAckPattern);
}

Task<bool> FirmwareLink::CheckWriteAck(std::uint16_t data_sum) {
    const bool fits = co_await ReadAnswer(kWriteAckPattern);
    if (!fits)
        co_return false;
    co_return SumInWriteAck(progress_.answer) == data_sum || Fail(FlashFault::kWrongAnswer);
}

// pattern must outlive the wait.
Task<bool> FirmwareLink::ReadAnswer(std::span<const int> pattern) {
    if (progress_.fault != FlashFault::kNone)
        co_return false; // what it would answer to was not sent
    for (const int expected : pattern) {
        const std::uint8_t byte = co_await ReadByte();
        if (line_lost_)
            co_return Fail(FlashFault::kLineLost);
        if (ByteTimedOut_)
            co_return Fail(FlashFault::kSilence);
        progress_.answer += char(byte);
        if (expected >= 0 && byte != expected)
            co_return Fail(FlashFault::kWrongAnswer);
    }
    co_return true;
}

// 255 when none came in time, or the line was lost.
Task<std::uint8_t> FirmwareLink::ReadByte() {
    ByteTimedOut_ = false;
    FirmComTimer.SetInterval(kByteLimit);
    FirmComTimer.Enable();
    while (parts_.port.InBufferCount() < 1 && !ByteTimedOut_ && !line_lost_)
        co_await changed_.Wait();
    FirmComTimer.Disable();
    co_return parts_.port.InputByte().value_or(0xFF);
}

} // namespace tarnex
