#pragma once

#include "device/tarnex_core.h"
#include "tests/world.h"

namespace tarnex {

// A device that answers fixed lines by fixed lines, so that tests own every instant.
class ScriptedDevice : public SerialDevice {
  public:
    explicit ScriptedDevice(Clock& clock) : clock_(clock) {}
    void Plugged(SerialLine& line) override { line_ = &line; }
    void Unplugged() override { line_ = nullptr; }
    void Received(std::string_view bytes) override {
        Heard.emplace_back(bytes);
        const auto reply = Replies.find(std::string(bytes));
        if (reply != Replies.end())
            SendAfter(Delay, reply->second);
    }
    void SendAfter(Duration delay, std::string bytes) {
        clock_.CallAfter(delay, [this, bytes] {
            if (line_)
                line_->Send(bytes);
        });
    }

    std::map<std::string, std::string> Replies; // whole frames to whole answers
    Duration Delay{};
    std::vector<std::string> Heard;

  private:
    Clock& clock_;
    SerialLine* line_ = nullptr;
};

// A running procedure: its result and the instant at which it ended.
template <class T>
class Running {
  public:
    Running(Clock& clock, Task<T> task) : clock_(clock), task_(Drive(std::move(task))) {
        task_.Start();
    }
    Running(const Running&) = delete;

    std::optional<T> result;
    Duration ended{};

  private:
    Task<> Drive(Task<T> task) {
        T value = co_await task;
        result = std::move(value);
        ended = clock_.Now();
    }
    Clock& clock_;
    Task<> task_;
};

struct DeviceTest : WorldTest {
    // The device's port is open and answers the greeting.
    void Open(int number = 7) {
        ports.Plug(number, device);
        device.Replies["~TX:Hello,tarnex\r\n"] = "TX:Hello,sever\r\n";
        ASSERT_EQ(Connect(), number);
        device.Heard.clear();
        start = clock.Now();
    }
    // What a procedure gives within a time.
    template <class T>
    std::optional<T> Within(Duration limit, Task<T> task) {
        Running<T> running(clock, std::move(task));
        clock.RunFor(limit);
        ended = running.ended;
        return running.result;
    }
    std::optional<int> Connect(Discovery::Ports which = Discovery::Ports::kAll) {
        return Within(2min, core.discovery.Connect(which));
    }
    Duration SinceStart(Duration instant) const { return instant - start; }

    ScriptedDevice device{clock};
    int losses = 0;
    TarnexCore core{{.clock = clock,
                     .ports = ports,
                     .code_page = code_page,
                     .ini = ini,
                     .lists = lists,
                     .notices = notices,
                     .hardware_lost = [this] {
                         ++losses;
                         core.discovery.ConnectClose();
                     }}};
    Duration start{};
    Duration ended{}; // the last procedure that was waited for
};

} // namespace tarnex
