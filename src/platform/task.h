#pragma once

#include "platform/clock.h"

#include <coroutine>
#include <exception>
#include <list>
#include <optional>
#include <utility>
#include <variant>

namespace tarnex {

template <class T = void>
class Task;

namespace task_detail {

// Hands control back to whoever awaits the task; a started task has nobody and just stops.
struct FinalAwaiter {
    bool await_ready() const noexcept { return false; }
    template <class Promise>
    std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> finished) const noexcept {
        const auto continuation = finished.promise().continuation;
        return continuation ? continuation : std::noop_coroutine();
    }
    void await_resume() const noexcept {}
};

struct PromiseBase {
    std::coroutine_handle<> continuation;
    std::exception_ptr error;

    std::suspend_always initial_suspend() const noexcept { return {}; }
    FinalAwaiter final_suspend() const noexcept { return {}; }
    void unhandled_exception() {
        if (!continuation)
            std::terminate(); // nobody awaits a started task: its fault must not pass unseen
        error = std::current_exception();
    }
};

template <class T>
struct Promise : PromiseBase {
    std::optional<T> value;
    Task<T> get_return_object();
    template <class U>
    void return_value(U&& result) {
        value.emplace(std::forward<U>(result));
    }
    T Take() {
        if (error)
            std::rethrow_exception(error);
        return std::move(*value);
    }
};

template <>
struct Promise<void> : PromiseBase {
    Task<void> get_return_object();
    void return_void() const noexcept {}
    void Take() const {
        if (error)
            std::rethrow_exception(error);
    }
};

} // namespace task_detail

// A procedure that may wait half-way. It is lazy: it runs once it is awaited or started. The Task
// owns the procedure's frame; destroying the Task cancels the procedure where it stands, and with
// it every wait inside it. A procedure must not destroy its own Task.
template <class T>
class [[nodiscard]] Task {
  public:
    using promise_type = task_detail::Promise<T>;

    Task() = default;
    explicit Task(std::coroutine_handle<promise_type> frame) : frame_(frame) {}
    Task(Task&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
    Task& operator=(Task&& other) noexcept {
        std::swap(frame_, other.frame_);
        return *this;
    }
    ~Task() {
        if (frame_)
            frame_.destroy();
    }

    // Runs the procedure up to its first wait. Only once, and not together with co_await.
    void Start() { frame_.resume(); }
    // Started, and not yet at its end.
    bool Running() const { return frame_ && !frame_.done(); }

    bool await_ready() const noexcept { return false; }
    std::coroutine_handle<> await_suspend(std::coroutine_handle<> awaiting) noexcept {
        frame_.promise().continuation = awaiting;
        return frame_;
    }
    T await_resume() { return frame_.promise().Take(); }

  private:
    std::coroutine_handle<promise_type> frame_;
};

template <class T>
Task<T> task_detail::Promise<T>::get_return_object() {
    return Task<T>(std::coroutine_handle<Promise<T>>::from_promise(*this));
}
inline Task<void> task_detail::Promise<void>::get_return_object() {
    return Task<void>(std::coroutine_handle<Promise<void>>::from_promise(*this));
}

// co_await Sleep(clock, 20ms): goes on that much later. Even 0 lets other due handlers run first.
class [[nodiscard]] Sleep {
  public:
    Sleep(Clock& clock, Duration delay) : clock_(clock), delay_(delay) {}
    Sleep(const Sleep&) = delete;
    Sleep& operator=(const Sleep&) = delete;
    ~Sleep() { clock_.Cancel(call_); }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiting) {
        call_ = clock_.CallAfter(delay_, [waiting] { waiting.resume(); });
    }
    void await_resume() const noexcept {}

  private:
    Clock& clock_;
    Duration delay_;
    CallId call_;
};

// Something that procedures wait for: co_await signal.Wait() goes on after the next Notify().
class Signal {
  public:
    explicit Signal(Clock& clock) : clock_(clock) {}
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    class [[nodiscard]] Waiter {
      public:
        explicit Waiter(Signal& signal) : signal_(signal) {}
        Waiter(const Waiter&) = delete;
        Waiter& operator=(const Waiter&) = delete;
        ~Waiter() {
            signal_.waiting_.remove(this);
            signal_.clock_.Cancel(call_);
        }

        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> waiting) {
            waiting_ = waiting;
            signal_.waiting_.push_back(this);
        }
        void await_resume() const noexcept {}

      private:
        friend Signal;
        Signal& signal_;
        std::coroutine_handle<> waiting_;
        CallId call_;
    };

    // The signal must outlive the wait.
    Waiter Wait() { return Waiter(*this); }

    // Everybody who waits now goes on, in the order of waiting, through the loop's queue.
    void Notify() {
        for (Waiter* waiter : waiting_)
            waiter->call_ = clock_.CallAfter(Duration::zero(),
                                             [handle = waiter->waiting_] { handle.resume(); });
        waiting_.clear();
    }

  private:
    Clock& clock_;
    std::list<Waiter*> waiting_;
};

} // namespace tarnex
