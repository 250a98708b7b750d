#include "simulator/simulated_serial.h"

#include "simulator/call_group.h"

#include <algorithm>
#include <utility>

namespace tarnex {

namespace {

constexpr std::size_t kInputLimit = 1024;
constexpr std::size_t kWrittenLimit = 64 * 1024;

} // namespace

struct SimulatedSerialPorts::Slot : SerialLine {
    void Send(std::string_view bytes) override;

    PortStatus status = PortStatus::kAbsent;
    SerialDevice* device = nullptr;
    Port* open = nullptr;
    bool hold_output = false;
    std::string written;
};

class SimulatedSerialPorts::Port : public SerialPort {
  public:
    Port(Clock& clock, Slot& slot, const LineSettings& settings, SerialEvents events)
        : settings(settings), slot_(&slot),
          events_(std::make_shared<SerialEvents>(std::move(events))), calls_(clock) {
        slot.open = this;
        if (slot.device)
            slot.device->Opened(settings);
    }
    ~Port() override {
        if (!slot_)
            return;
        slot_->open = nullptr;
        if (slot_->device)
            slot_->device->Closed();
    }

    PortStatus Write(std::string_view bytes) override {
        if (!slot_)
            return PortStatus::kLost;
        slot_->written += bytes;
        if (slot_->written.size() > kWrittenLimit)
            slot_->written.erase(0, slot_->written.size() - kWrittenLimit / 2);
        output_ += bytes;
        if (!slot_->hold_output)
            ReleaseOutput();
        return PortStatus::kOk;
    }
    std::size_t OutBufferCount() const override { return output_.size(); }
    std::size_t InBufferCount() const override { return std::min(input_.size(), kInputLimit); }
    std::string Read(std::size_t limit) override {
        const std::size_t count = std::min(limit, InBufferCount());
        std::string bytes = input_.substr(0, count);
        if (input_.size() > kInputLimit)
            AnnounceInput(); // the driver fills up what was taken
        input_.erase(0, count);
        return bytes;
    }

    void Arrive(std::string_view bytes) {
        input_ += bytes;
        AnnounceInput();
    }
    void ReleaseOutput() {
        const std::string bytes = std::exchange(output_, {});
        if (slot_->device && !bytes.empty())
            slot_->device->Received(bytes);
    }
    void Lose() {
        slot_ = nullptr;
        input_.clear();
        output_.clear();
        // The events are held by the call, since a handler may close the port.
        calls_.After(0ms, [events = events_] { events->lost(); });
    }

    const LineSettings settings;

  private:
    void AnnounceInput() {
        if (announced_)
            return;
        announced_ = true;
        calls_.After(0ms, [this, events = events_] {
            announced_ = false;
            if (!input_.empty())
                events->received();
        });
    }

    Slot* slot_; // nullptr: lost
    std::shared_ptr<SerialEvents> events_;
    std::string input_;
    std::string output_;
    bool announced_ = false;
    CallGroup calls_;
};

void SimulatedSerialPorts::Slot::Send(std::string_view bytes) {
    if (open)
        open->Arrive(bytes);
}

SimulatedSerialPorts::SimulatedSerialPorts(Clock& clock)
    : clock_(clock), slots_(std::make_unique<std::array<Slot, kSerialPorts>>()) {}

SimulatedSerialPorts::~SimulatedSerialPorts() = default;

SimulatedSerialPorts::Slot& SimulatedSerialPorts::At(int number) const {
    return slots_->at(std::size_t(number - 1));
}

OpenedPort SimulatedSerialPorts::Open(int number, const LineSettings& settings,
                                      SerialEvents events) {
    if (number < 1 || number > int(slots_->size()))
        return {nullptr, PortStatus::kAbsent};
    Slot& slot = At(number);
    if (slot.status != PortStatus::kOk)
        return {nullptr, slot.status};
    if (slot.open)
        return {nullptr, PortStatus::kBusy};
    return {std::make_unique<Port>(clock_, slot, settings, std::move(events)), PortStatus::kOk};
}

std::string SimulatedSerialPorts::DeviceName(int number) const {
    if (number < 1 || number > int(slots_->size()))
        return "";
    return At(number).status == PortStatus::kAbsent ? "" : "COM" + std::to_string(number);
}

void SimulatedSerialPorts::Plug(int number, SerialDevice& device) {
    Slot& slot = At(number);
    slot.status = PortStatus::kOk;
    slot.device = &device;
    device.Plugged(slot);
    if (slot.open)
        device.Opened(slot.open->settings);
}

void SimulatedSerialPorts::Unplug(int number) {
    Slot& slot = At(number);
    slot.status = PortStatus::kAbsent;
    if (SerialDevice* device = std::exchange(slot.device, nullptr))
        device->Unplugged();
    if (Port* port = std::exchange(slot.open, nullptr))
        port->Lose();
}

void SimulatedSerialPorts::SetStatus(int number, PortStatus status) {
    At(number).status = status;
}

void SimulatedSerialPorts::HoldOutput(int number, bool hold) {
    Slot& slot = At(number);
    slot.hold_output = hold;
    if (slot.open && !hold)
        slot.open->ReleaseOutput();
}

std::optional<LineSettings> SimulatedSerialPorts::OpenSettings(int number) const {
    const Slot& slot = At(number);
    return slot.open ? std::optional(slot.open->settings) : std::nullopt;
}

const std::string& SimulatedSerialPorts::Written(int number) const {
    return At(number).written;
}

void SimulatedSerialPorts::ForgetWritten(int number) {
    At(number).written.clear();
}

} // namespace tarnex
