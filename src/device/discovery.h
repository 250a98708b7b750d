#pragma once

#include "device/command_sender.h"
#include "logging/main_job_notices.h"
#include "settings/my_ini_file.h"

namespace tarnex {

// Finds the unit among COM1 to COM20, and opens and closes its port.
class Discovery {
  public:
    struct Parts {
        CommPort& port;
        CommandSender& sender;
        AnswerWait& answer;
        DeviceTrace& trace;
        SerialPorts& ports;
        const MyIniFile& ini;
        OperatorNotices& notices;
        MainJobNotices* main_job;   // nullptr: it is not watched
        std::function<void()> init; // resets the device link
    };
    // The parts must outlive the discovery.
    explicit Discovery(Parts parts) : parts_(std::move(parts)) {}

    enum class Ports {
        kAll,  // COM1 to COM20 ("Open")
        kLast, // the port that LastCom names, or all when it names none ("Last")
    };
    // Opens the first port on which a unit answers the greeting and returns its number; 0 when
    // there is none. The number of the open port at once when one is open.
    Task<int> Connect(Ports which);
    // The number of the port on which the unit was last found (LastCom); 0 when the settings name
    // none of COM1 to COM20.
    int LastPort() const;
    // The same as Connect on COM<number> alone.
    Task<int> ConnectTo(int number);
    // Closes the open port; the number that it had, 0 when none was open ("Close").
    int ConnectClose();
    // The number of the open port, 0 for none ("Status").
    int ConnectStatus() const { return port_no_; }
    // Ports are being tried: a loss of hardware only fails the port at hand.
    bool Scanning() const { return scanning_; }

    // Greets the unit: "OK", "INIT" when it is still starting up, or kFailed.
    Task<Text> HelloTarnex();

    void Init() { port_no_ = 0; }

  private:
    Task<int> Scan(int first, int last);
    Task<bool> Try(int number);
    int StoredPort() const;
    void TellOperator(int number, PortStatus status);

    Parts parts_;
    int port_no_ = 0;
    bool scanning_ = false;
};

} // namespace tarnex
