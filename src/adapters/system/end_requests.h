#pragma once

#include <functional>
#include <memory>
#include <string>

namespace tarnex {

class AsioLoop;

// Requests that this program end, from people and from the system. One that nobody has asked for
// ends it at once. Handlers are called from the loop, which must outlive the requests.
class EndRequests {
  public:
    explicit EndRequests(AsioLoop& loop);
    EndRequests(const EndRequests&) = delete;
    EndRequests& operator=(const EndRequests&) = delete;
    ~EndRequests();

    // Somebody asks for its end: a key such as Ctrl-C, or a program such as kill.
    void OnEnd(const std::function<void()>& handler);
    // Whoever watched it is gone: the terminal has hung up, its window is closed, the user has
    // logged off.
    void OnGone(std::function<void()> handler);
    // The user's session or the whole machine ends; without a handler OnGone's is called. On Linux
    // never: there it is the service manager that knows.
    void OnSystemEnd(std::function<void()> handler);
    // Asked before that, where the system asks: why it has to wait, in words for its user, who has
    // the last word; "" when it may end.
    void BeforeSystemEnd(std::function<std::string()> why_not);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace tarnex
