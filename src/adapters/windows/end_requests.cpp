#include "adapters/system/end_requests.h"

#include "adapters/asio/asio_loop.h"
#include "adapters/windows/session_end.h"
#include "adapters/windows/windows_headers.h"

#include <mutex>

namespace tarnex {

namespace {

constexpr DWORD kTimeToEndConsole = 30'000; // ms; the system ends the process earlier

// Windows tells a function without an object, in a thread of its own.
std::mutex g_mutex;
AsioLoop* g_loop = nullptr; // nullptr: nobody has asked. Guarded by g_mutex.
std::function<void()> g_on_end, g_on_gone, g_on_system_end; // called from the loop
std::function<std::string()> g_why_not;                     // the same

bool PostToLoop(std::function<void()>& handler) {
    const std::lock_guard lock(g_mutex);
    if (!g_loop || !handler)
        return false;
    g_loop->Post([&handler] {
        if (handler)
            handler();
    });
    return true;
}

BOOL WINAPI TakeRequest(DWORD request) {
    if (request == CTRL_C_EVENT || request == CTRL_BREAK_EVENT)
        return PostToLoop(g_on_end);
    // Before the session's end is watched for, the console tells that too.
    const bool system_ends = request == CTRL_LOGOFF_EVENT || request == CTRL_SHUTDOWN_EVENT;
    if (!(system_ends && PostToLoop(g_on_system_end)) && !PostToLoop(g_on_gone))
        return FALSE;
    Sleep(kTimeToEndConsole); // once this returns, the process is ended
    return TRUE;
}

void EndWithSession() {
    const auto& handler = g_on_system_end ? g_on_system_end : g_on_gone;
    if (!handler) // the system would wait for the process
        std::_Exit(static_cast<int>(STATUS_CONTROL_C_EXIT));
    handler();
}

} // namespace

struct EndRequests::State {
    explicit State(AsioLoop& its_loop) : loop(its_loop) {}
    ~State() { loop.Cancel(watch); }

    AsioLoop& loop;
    std::optional<SessionEnd> session_end;
    // Once the loop runs, and a service so has its sockets: USER32 takes long to load.
    CallId watch = loop.CallAfter(Duration::zero(), [this] {
        session_end.emplace(
            loop, [] { return g_why_not ? g_why_not() : std::string(); }, EndWithSession);
    });
};

EndRequests::EndRequests(AsioLoop& loop) : state_(new State(loop)) {
    const std::lock_guard lock(g_mutex);
    g_loop = &loop;
    SetConsoleCtrlHandler(TakeRequest, TRUE);
}

EndRequests::~EndRequests() {
    SetConsoleCtrlHandler(TakeRequest, FALSE);
    const std::lock_guard lock(g_mutex);
    g_loop = nullptr;
    g_on_end = g_on_gone = g_on_system_end = nullptr;
    g_why_not = nullptr;
}

void EndRequests::OnEnd(const std::function<void()>& handler) {
    const std::lock_guard lock(g_mutex);
    g_on_end = handler;
}

void EndRequests::OnGone(std::function<void()> handler) {
    const std::lock_guard lock(g_mutex);
    g_on_gone = std::move(handler);
}

void EndRequests::OnSystemEnd(std::function<void()> handler) {
    const std::lock_guard lock(g_mutex);
    g_on_system_end = std::move(handler);
}

void EndRequests::BeforeSystemEnd(std::function<std::string()> why_not) {
    const std::lock_guard lock(g_mutex);
    g_why_not = std::move(why_not);
}

} // namespace tarnex
