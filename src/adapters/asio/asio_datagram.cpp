#include "adapters/asio/asio_datagram.h"

#include "adapters/asio/asio_error_words.h"
#include "adapters/asio/loop_core.h"

#include <array>
#include <cstdint>
#include <deque>
#include <thread>

#include <asio/ip/udp.hpp>
#ifdef __linux__
#include <linux/sock_diag.h>
#endif

namespace tarnex {

namespace {

using asio::ip::udp;

constexpr auto kRefusalWait = 100ms;
constexpr std::size_t kLargestDatagram = 65'535;
constexpr int kKernelBuffer = 4 << 20; // bytes; a burst of some thousand datagrams fits

// What is taken from the kernel ahead of its handling; the rest waits in the kernel.
constexpr std::size_t kMostWaiting = 4096;
constexpr std::size_t kMostWaitingBytes = 1 << 20;

[[maybe_unused]] constexpr int kBindAttempts = 5;
[[maybe_unused]] constexpr auto kBindPause = 5ms;
[[maybe_unused]] constexpr auto kPauseAfterTrouble = 1s; // which may last

// The fate of an earlier datagram that was sent, which concerns none that arrive.
bool TellsOfOneSent(const asio::error_code& error) {
    return error == asio::error::connection_refused || error == asio::error::connection_reset ||
           error == asio::error::network_reset;
}

void EnlargeReceiveBuffer(udp::socket& socket) {
#ifdef SO_RCVBUFFORCE
    if (setsockopt(socket.native_handle(), SOL_SOCKET, SO_RCVBUFFORCE, &kKernelBuffer,
                   sizeof kKernelBuffer) == 0)
        return;
#endif
    asio::error_code ignored; // as large as the system allows
    socket.set_option(udp::socket::receive_buffer_size(kKernelBuffer), ignored);
}

// One bound socket, from Bind() to Close(). The socket's handlers hold it weakly: they do nothing
// once it is gone.
class Binding : public std::enable_shared_from_this<Binding> {
  public:
    Binding(AsioLoop& loop, std::shared_ptr<char[]> receive_buffer,
            std::shared_ptr<const DatagramEvents> events)
        : loop_(loop), socket_(loop.core().io), receive_buffer_(std::move(receive_buffer)),
          events_(std::move(events)) {}

    // "", or what stands in the way.
    std::string Open(const std::string& address, std::uint16_t port) {
        asio::error_code error;
        const auto ip = asio::ip::make_address_v4(address, error);
        if (error)
            return "\"" + address + "\" is not an IPv4 address";
        socket_.open(udp::v4(), error);
        if (!error)
            socket_.non_blocking(true, error);
        if (!error)
            BindAlone({ip, port}, error);
        if (error)
            return SocketErrorWords(error);
        EnlargeReceiveBuffer(socket_);
        AwaitArrival();
        return "";
    }

    void Close() {
        asio::error_code ignored;
        socket_.close(ignored);
    }

    bool Send(const Endpoint& to, std::string_view bytes) {
        asio::error_code error;
        const auto ip = asio::ip::make_address_v4(to.address, error);
        if (!error)
            socket_.send_to(asio::buffer(bytes), {ip, to.port}, 0, error);
        return !error;
    }

  private:
    // Windows would let others share the port, and frees one a moment after its socket is closed.
    void BindAlone(const udp::endpoint& at, asio::error_code& error) {
#ifdef SO_EXCLUSIVEADDRUSE
        using Exclusive = asio::detail::socket_option::boolean<SOL_SOCKET, SO_EXCLUSIVEADDRUSE>;
        socket_.set_option(Exclusive(true), error);
        for (int i = 1; i < kBindAttempts; ++i) {
            if (socket_.bind(at, error); error != asio::error::address_in_use)
                return;
            std::this_thread::sleep_for(kBindPause);
        }
#endif
        socket_.bind(at, error);
    }

    bool Full() const {
        return waiting_.size() >= kMostWaiting || waiting_bytes_ >= kMostWaitingBytes;
    }

#ifdef ASIO_HAS_IOCP
    // To wait alone, asio would look each millisecond. So the first that comes is taken, with room
    // for any: of one that were cut short the system would tell twice, and asio would not live
    // through that.
    void AwaitArrival() {
        awaiting_arrival_ = true;
        socket_.async_receive_from(asio::buffer(first_->bytes), first_->from,
                                   [weak = weak_from_this(), kept = first_](
                                       const asio::error_code& error, std::size_t size) {
                                       if (const auto self = weak.lock();
                                           self && error != asio::error::operation_aborted)
                                           self->TakeFirst(error, size);
                                   });
    }

    void TakeFirst(const asio::error_code& error, std::size_t size) {
        if (error && !TellsOfOneSent(error)) {
            AwaitArrivalLater();
            return;
        }
        if (!error)
            Keep(first_->from, {first_->bytes.data(), size});
        TakeArrivals();
    }

    void AwaitArrivalLater() {
        loop_.CallAfter(kPauseAfterTrouble, [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->AwaitArrival();
        });
    }
#else
    void AwaitArrival() {
        awaiting_arrival_ = true;
        socket_.async_wait(udp::socket::wait_read,
                           [weak = weak_from_this()](const asio::error_code& error) {
                               if (const auto self = weak.lock(); self && !error)
                                   self->TakeArrivals();
                           });
    }
#endif

    void TakeArrivals() {
        awaiting_arrival_ = false;
        while (!Full() && TakeOne()) {
        }
        if (!Full())
            AwaitArrival();
        TellDropped(); // comes last: the user may close or destroy the socket
    }

    // False when nothing more waits in the kernel.
    bool TakeOne() {
        udp::endpoint from;
        asio::error_code error;
        const std::size_t size = socket_.receive_from(
            asio::buffer(receive_buffer_.get(), kLargestDatagram), from, 0, error);
        if (TellsOfOneSent(error))
            return true;
        if (error)
            return false;
        Keep(from, {receive_buffer_.get(), size});
        return true;
    }

    void Keep(const udp::endpoint& from, std::string_view bytes) {
        if (waiting_.empty())
            DeliverLater();
        waiting_bytes_ += bytes.size();
        waiting_.push_back(
            {.from = {from.address().to_string(), from.port()}, .bytes = std::string(bytes)});
    }

    // The kernel counts from the start of the socket. Its note beside a datagram would tell only of
    // those before it: the end of a burst would stay unknown.
    void TellDropped() {
#ifdef SO_MEMINFO
        std::array<std::uint32_t, SK_MEMINFO_VARS> info{};
        socklen_t size = sizeof info;
        if (getsockopt(socket_.native_handle(), SOL_SOCKET, SO_MEMINFO, info.data(), &size) != 0)
            return;
        const std::uint32_t known = std::exchange(dropped_, info[SK_MEMINFO_DROPS]);
        if (dropped_ != known && events_->dropped)
            events_->dropped(dropped_ - known);
#endif
    }

    void DeliverLater() {
        loop_.CallAfter(Duration::zero(), [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->Deliver();
        });
    }

    // The handler comes last: it may close or destroy the socket.
    void Deliver() {
        const Datagram datagram = std::move(waiting_.front());
        waiting_.pop_front();
        waiting_bytes_ -= datagram.bytes.size();
        if (!waiting_.empty())
            DeliverLater();
        if (!awaiting_arrival_)
            AwaitArrival();
        events_->received(datagram);
    }

    AsioLoop& loop_;
    udp::socket socket_;
    std::shared_ptr<char[]> receive_buffer_;
    std::shared_ptr<const DatagramEvents> events_;
#ifdef ASIO_HAS_IOCP
    // The system writes there until the handler has run, which may be after the end of this.
    struct Arrival {
        udp::endpoint from;
        std::array<char, kLargestDatagram> bytes;
    };
    std::shared_ptr<Arrival> first_ = std::make_shared<Arrival>();
#endif
    std::uint32_t dropped_ = 0; // datagrams since Open(), as last read
    bool awaiting_arrival_ = false;
    std::deque<Datagram> waiting_;
    std::size_t waiting_bytes_ = 0;
};

class AsioDatagramSocket : public DatagramSocket {
  public:
    AsioDatagramSocket(AsioLoop& loop, std::shared_ptr<const std::string> bind_address,
                       std::shared_ptr<char[]> receive_buffer, DatagramEvents events)
        : loop_(loop), bind_address_(std::move(bind_address)),
          receive_buffer_(std::move(receive_buffer)),
          events_(std::make_shared<const DatagramEvents>(std::move(events))) {}
    ~AsioDatagramSocket() override { Close(); }

    std::string Bind(std::uint16_t port) override {
        if (binding_ && port == port_)
            return "";
        Close();
        auto binding = std::make_shared<Binding>(loop_, receive_buffer_, events_);
        if (std::string trouble = binding->Open(*bind_address_, port); !trouble.empty())
            return trouble;
        binding_ = std::move(binding);
        port_ = port;
        return "";
    }
    bool Bound() const override { return binding_ != nullptr; }
    void Close() override {
        if (binding_)
            binding_->Close();
        binding_.reset();
    }
    bool Send(const Endpoint& to, std::string_view bytes) override {
        return binding_ && binding_->Send(to, bytes);
    }

  private:
    AsioLoop& loop_;
    std::shared_ptr<const std::string> bind_address_;
    std::shared_ptr<char[]> receive_buffer_;
    std::shared_ptr<const DatagramEvents> events_;
    std::shared_ptr<Binding> binding_;
    std::uint16_t port_ = 0; // as it was asked for
};

} // namespace

AsioDatagramSockets::AsioDatagramSockets(AsioLoop& loop, std::string bind_address)
    : loop_(loop), bind_address_(std::make_shared<std::string>(std::move(bind_address))),
      receive_buffer_(std::make_shared_for_overwrite<char[]>(kLargestDatagram)) {}

std::unique_ptr<DatagramSocket> AsioDatagramSockets::Create(DatagramEvents events) {
    return std::make_unique<AsioDatagramSocket>(loop_, bind_address_, receive_buffer_,
                                                std::move(events));
}

std::string SendDatagram(const Endpoint& to, std::string_view bytes) {
    asio::error_code error;
    const auto ip = asio::ip::make_address_v4(to.address, error);
    if (error)
        return "\"" + to.address + "\" is not an IPv4 address";
    std::string answer(kLargestDatagram, '\0'); // outlives what the system does for the socket
    asio::io_context io{1};
    udp::socket socket(io);
    socket.open(udp::v4(), error);
    if (!error)
        socket.connect({ip, to.port}, error); // only a connected socket is told of a refusal
    if (!error)
        socket.send(asio::buffer(bytes), 0, error);
    if (!error) {
        socket.async_receive(asio::buffer(answer), [&error](const asio::error_code& outcome,
                                                            std::size_t) { error = outcome; });
        io.run_for(kRefusalWait);
    }
    if (error == asio::error::connection_refused || error == asio::error::connection_reset)
        return "nobody listens there";
    return error ? SocketErrorWords(error) : "";
}

} // namespace tarnex
