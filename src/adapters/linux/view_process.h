#pragma once

#include "adapters/linux/descriptor_watch.h"
#include "adapters/linux/unique_fd.h"

#include <optional>
#include <string>

namespace tarnex {

// The program tarnex-view, which shows the windows, and the socket to it. Packets arrive whole.
// Nothing here waits for it.
class ViewProcess {
  public:
    struct Handlers {
        std::function<void(const std::string& packet)> arrived;
        // It has ended: once, after its last packet. how: the reason in words. The handler may
        // destroy the process.
        std::function<void(const std::string& how)> ended;
    };

    // Starts the program that stands beside this one or is installed with it. nullptr, and in
    // trouble why, when that fails. loop must outlive the process.
    static std::unique_ptr<ViewProcess> Start(AsioLoop& loop, Handlers handlers,
                                              std::string& trouble);
    // Kills it.
    ~ViewProcess();
    ViewProcess(const ViewProcess&) = delete;
    ViewProcess& operator=(const ViewProcess&) = delete;

    // False when it does not take the packet.
    bool Send(const std::string& packet);
    // It ends at once, whatever it waits for, and ended is called.
    void Kill();
    // Waits until a packet has arrived or the process has ended, and calls the handler.
    void Wait();

  private:
    ViewProcess(AsioLoop& loop, Handlers handlers, UniqueFd socket, UniqueFd end, int pid);
    // False when no packet has come.
    bool Receive();
    void SocketReadable();
    void Ended();

    Handlers handlers_;
    int pid_; // -1 once its end has been seen
    UniqueFd socket_;
    UniqueFd end_; // readable when the process has ended
    std::optional<DescriptorWatch> socket_watch_;
    std::optional<DescriptorWatch> end_watch_;
};

} // namespace tarnex
