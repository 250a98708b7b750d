#include "adapters/asio/name_lookup.h"

#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>

namespace tarnex {

namespace {

using asio::ip::tcp;

// The system has words in the language of its user, and Windows has them in its code page.
std::string WhyNotFound(int error) {
    static constexpr std::pair<int, const char*> kReasons[] = {
        {EAI_NONAME, "no such host"},
#ifdef EAI_NODATA
        {EAI_NODATA, "the host has no address"},
#endif
        {EAI_AGAIN, "no name server answers"},
        {EAI_FAIL, "the name server fails"},
        {EAI_MEMORY, "out of memory"},
    };
    for (const auto& [known, reason] : kReasons)
        if (error == known)
            return reason;
    return "error " + std::to_string(error) + " of the name look-up";
}

HostAddresses LookUp(const std::string& host, const std::string& port) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* list = nullptr;
    if (const int error = getaddrinfo(host.c_str(), port.c_str(), &hints, &list); error != 0)
        return {.endpoints = {}, .why_not = WhyNotFound(error)};

    HostAddresses found;
    for (const addrinfo* entry = list; entry; entry = entry->ai_next) {
        tcp::endpoint endpoint;
        endpoint.resize(entry->ai_addrlen);
        std::memcpy(endpoint.data(), entry->ai_addr, entry->ai_addrlen);
        found.endpoints.push_back(endpoint);
    }
    freeaddrinfo(list);
    return found;
}

} // namespace

// Shared by the look-up and its thread; whichever ends last destroys it.
struct NameLookup::Request {
    std::mutex mutex;
    AsioLoop* loop = nullptr; // nullptr: cancelled. Guarded by mutex.
    std::function<void(const HostAddresses&)> done;

    // From any thread.
    static void Answer(const std::shared_ptr<Request>& request, HostAddresses found) {
        const std::lock_guard lock(request->mutex);
        if (request->loop)
            request->loop->Post([request, found = std::move(found)] {
                if (request->loop)
                    request->done(found);
            });
    }
};

NameLookup::NameLookup(AsioLoop& loop, const std::string& host, std::uint16_t port,
                       std::function<void(const HostAddresses&)> done)
    : request_(std::make_shared<Request>()) {
    request_->loop = &loop;
    request_->done = std::move(done);
    try {
        std::thread([request = request_, host, port = std::to_string(port)] {
            Request::Answer(request, LookUp(host, port));
        }).detach();
    } catch (const std::system_error& error) {
        Request::Answer(request_, {.endpoints = {},
                                   .why_not = std::string("no thread: ") + error.what(),
                                   .own_machine = true});
    }
}

NameLookup::~NameLookup() {
    const std::lock_guard lock(request_->mutex);
    request_->loop = nullptr;
}

} // namespace tarnex
