#pragma once

#include "adapters/windows/windows_headers.h"

#include <deque>
#include <functional>
#include <mutex>

namespace tarnex {

// Runs functions in the thread of the windows, also while that one is in a loop of the system's:
// the frame of a window is being dragged, a menu is open.
class UiQueue {
  public:
    UiQueue();
    ~UiQueue();
    UiQueue(const UiQueue&) = delete;
    UiQueue& operator=(const UiQueue&) = delete;

    // From any thread.
    void Post(std::function<void()> fn);

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
    void RunNext();

    HWND window_; // on no screen
    std::mutex mutex_;
    std::deque<std::function<void()>> posted_; // guarded by mutex_
};

} // namespace tarnex
