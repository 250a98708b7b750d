#include "adapters/system/request_socket.h"

#include "adapters/asio/loop_core.h"
#include "adapters/system/environment.h"
#include "adapters/system/this_system.h"
#include "adapters/windows/private_access.h"
#include "adapters/windows/windows_handle.h"
#include "adapters/windows/windows_text.h"
#include "platform/error_words.h"

#include <algorithm>
#include <deque>

#include <asio/windows/overlapped_ptr.hpp>
#include <asio/windows/stream_handle.hpp>

namespace tarnex {

namespace {

constexpr std::size_t kMostAskers = 8; // at a time; the one that has waited longest goes
constexpr DWORD kLongest = 65536;
constexpr DWORD kAskerPatience = 5'000; // ms

std::string Words(std::error_code error) {
    return WordsFor(error);
}

// One instance of the pipe, for one who asks. It lives as long as the last of asio's handlers.
struct Asker {
    explicit Asker(AsioLoop& loop) : pipe(loop.core().io), text(kLongest, '\0') {}

    asio::windows::stream_handle pipe;
    std::string text; // the request, then the answer
};
using SharedAsker = std::shared_ptr<Asker>;

// Its owner ends it by Close().
class Pipe : public std::enable_shared_from_this<Pipe> {
  public:
    Pipe(AsioLoop& loop, RequestSocket::Answer answer) : loop_(loop), answer_(std::move(answer)) {}

    std::string Listen(const std::string& path) {
        path_ = ToWide(path);
        // The first one of its name: nobody else hears what is asked.
        const std::error_code problem = Offer(FILE_FLAG_FIRST_PIPE_INSTANCE);
        return problem ? Words(problem) : "";
    }
    void Close() {
        answer_ = nullptr;
        for (const SharedAsker& asker : askers_)
            Hang(*asker);
    }

  private:
    // An instance for the next one who asks; the last in the list.
    std::error_code Offer(DWORD flags) {
        const auto asker = std::make_shared<Asker>(loop_);
        HANDLE pipe =
            CreateNamedPipeW(path_.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | flags,
                             PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS,
                             PIPE_UNLIMITED_INSTANCES, kLongest, kLongest, 0, access_.Get());
        if (pipe == INVALID_HANDLE_VALUE)
            return LastError();
        asker->pipe.assign(pipe);
        if (askers_.size() > kMostAskers)
            Drop(askers_.front());
        askers_.push_back(asker);
        asio::windows::overlapped_ptr connected(
            loop_.core().io,
            [self = shared_from_this(), asker](asio::error_code error, std::size_t) {
                self->Accept(asker, error);
            });
        const bool done = ConnectNamedPipe(pipe, connected.get());
        const DWORD error = done ? ERROR_SUCCESS : GetLastError();
        if (error == ERROR_IO_PENDING)
            connected.release();
        else
            connected.complete(error == ERROR_PIPE_CONNECTED
                                   ? asio::error_code()
                                   : asio::error_code(int(error), asio::system_category()),
                               0);
        return {};
    }
    void Accept(const SharedAsker& asker, asio::error_code error) {
        if (!answer_)
            return;
        Offer(0);
        if (error) // it has gone again
            Drop(asker);
        else
            asker->pipe.async_read_some(
                asio::buffer(asker->text),
                [self = shared_from_this(), asker](asio::error_code failed, std::size_t size) {
                    self->Serve(asker, failed ? 0 : size);
                });
    }
    void Serve(const SharedAsker& asker, std::size_t size) {
        if (!answer_)
            return;
        if (size == 0) {
            Drop(asker);
            return;
        }
        asker->text = answer_(asker->text.substr(0, size));
        asker->pipe.async_write_some(asio::buffer(asker->text),
                                     [self = shared_from_this(),
                                      asker](asio::error_code, std::size_t) { self->Drop(asker); });
    }
    void Drop(SharedAsker asker) {
        Hang(*asker);
        std::erase(askers_, asker);
    }
    // What is on its way is called off.
    static void Hang(Asker& asker) {
        asio::error_code ignored;
        asker.pipe.close(ignored);
    }

    AsioLoop& loop_;
    RequestSocket::Answer answer_; // none once the owner is gone
    std::wstring path_;
    PrivateAccess access_;
    std::deque<SharedAsker> askers_;
};

// The service's end, for one question. The service never acts in the name of who asks.
WindowsHandle Connect(const std::wstring& path) {
    const auto open = [&] {
        return WindowsHandle(CreateFileW(
            path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
            FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
    };
    const ULONGLONG begun = GetTickCount64();
    WindowsHandle pipe = open();
    while (!pipe && GetLastError() == ERROR_PIPE_BUSY &&
           GetTickCount64() - begun < kAskerPatience) {
        WaitNamedPipeW(path.c_str(), kAskerPatience); // others may be faster
        pipe = open();
    }
    return pipe;
}

} // namespace

std::string RequestSocketPath() {
    const std::string path = Environment("TARNEXCOMM_REQUESTS");
    return path.empty() ? "\\\\.\\pipe\\TarnexComm-requests" : path;
}

struct RequestSocket::State {
    std::shared_ptr<Pipe> pipe;
};

RequestSocket::RequestSocket(AsioLoop& loop, Answer answer)
    : state_(new State{std::make_shared<Pipe>(loop, std::move(answer))}) {}

RequestSocket::~RequestSocket() {
    state_->pipe->Close();
}

std::string RequestSocket::Listen(const std::string& path) {
    return state_->pipe->Listen(path);
}

ServiceAnswer AskService(const std::string& path, const std::string& request) {
    const auto trouble = [&](const std::string& why) {
        return ServiceAnswer{.trouble =
                                 "the service cannot be asked at " + path + " (" + why + ")"};
    };
    const WindowsHandle pipe = Connect(ToWide(path));
    if (!pipe) {
        const std::error_code problem = LastError();
        if (problem == std::errc::no_such_file_or_directory)
            return trouble("it does not run");
        const SystemWords words = WordsOfThisSystem();
        ServiceAnswer none =
            trouble(Words(problem) + ": run this as " + words.who_may + words.how_to_become_them);
        none.forbidden = problem == std::errc::permission_denied;
        return none;
    }
    DWORD by_messages = PIPE_READMODE_MESSAGE;
    SetNamedPipeHandleState(pipe.Get(), &by_messages, nullptr, nullptr);
    const WindowsHandle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    OVERLAPPED progress{};
    progress.hEvent = done.Get();
    std::string question = request;
    std::string answer(kLongest, '\0');
    DWORD size = 0;
    if (!TransactNamedPipe(pipe.Get(), question.data(), DWORD(question.size()), answer.data(),
                           kLongest, nullptr, &progress) &&
        GetLastError() != ERROR_IO_PENDING)
        return trouble(Words(LastError()));
    const bool late = WaitForSingleObject(done.Get(), kAskerPatience) != WAIT_OBJECT_0;
    if (late)
        CancelIoEx(pipe.Get(), &progress);
    if (!GetOverlappedResult(pipe.Get(), &progress, &size, TRUE))
        return trouble(late ? Words(std::make_error_code(std::errc::timed_out))
                            : "it has ended the connection");
    answer.resize(size);
    return {.text = std::move(answer)};
}

} // namespace tarnex
