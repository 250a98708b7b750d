#include "programs/tcp_listener.h"

#include "adapters/asio/asio_error_words.h"
#include "adapters/asio/loop_core.h"

#include <array>
#include <deque>
#include <map>
#include <optional>

#include <asio/ip/tcp.hpp>
#include <asio/write.hpp>

namespace tarnex {

namespace {

using asio::ip::tcp;

// The port at once after the end of a predecessor; on Windows that takes nothing, and the option of
// that name would let others share it.
#ifdef SO_EXCLUSIVEADDRUSE
using OwnAddress = asio::detail::socket_option::boolean<SOL_SOCKET, SO_EXCLUSIVEADDRUSE>;
#else
using OwnAddress = tcp::acceptor::reuse_address;
#endif

constexpr std::size_t kLongestRead = 4096; // bytes

// One accepted connection. Its handlers keep it, and with it its buffers, until they have run.
class Connection : public std::enable_shared_from_this<Connection> {
  public:
    struct Owner {
        std::function<void(std::string_view bytes)> received;
        std::function<void()> ended;
    };

    Connection(tcp::socket socket, Owner owner)
        : socket_(std::move(socket)), owner_(std::move(owner)) {
        asio::error_code ignored; // a delay harms nobody
        socket_.set_option(tcp::no_delay(true), ignored);
    }

    void Read() {
        auto self = shared_from_this();
        socket_.async_read_some(
            asio::buffer(input_),
            [self](asio::error_code error, std::size_t size) { self->OnRead(error, size); });
    }
    void Send(std::string_view bytes) {
        if (closing_)
            return;
        output_.emplace_back(bytes);
        if (output_.size() == 1)
            Write();
    }
    void Close() {
        closing_ = true;
        if (output_.empty())
            Shut();
    }
    // Ends it at once, without telling anybody.
    void Drop() {
        owner_.reset();
        asio::error_code ignored; // there is nothing left to do about it
        socket_.close(ignored);
    }

  private:
    void OnRead(asio::error_code error, std::size_t size) {
        if (!owner_)
            return;
        if (error)
            return End();
        if (!closing_)
            owner_->received({input_.data(), size});
        Read();
    }
    void Write() {
        auto self = shared_from_this();
        asio::async_write(socket_, asio::buffer(output_.front()),
                          [self](asio::error_code error, std::size_t) { self->OnWritten(error); });
    }
    void OnWritten(asio::error_code error) {
        output_.pop_front();
        if (!owner_ || error)
            return; // reading meets the same end
        if (!output_.empty())
            Write();
        else if (closing_)
            Shut();
    }
    // The other side reads to the end of what was sent, and reading here meets its end.
    void Shut() {
        asio::error_code ignored; // a broken connection is as good as a closed one
        socket_.shutdown(tcp::socket::shutdown_both, ignored);
    }
    void End() {
        const auto ended = std::move(owner_->ended);
        Drop();
        ended();
    }

    tcp::socket socket_;
    std::optional<Owner> owner_; // nothing once it is over
    std::array<char, kLongestRead> input_;
    std::deque<std::string> output_; // the first one is being written
    bool closing_ = false;
};

} // namespace

class TcpListener::Server : public std::enable_shared_from_this<Server> {
  public:
    Server(AsioLoop& loop, Events events) : acceptor_(loop.core().io), events_(std::move(events)) {}
    ~Server() {
        for (const auto& [id, connection] : connections_)
            connection->Drop();
    }

    std::string Listen(std::uint16_t port) {
        asio::error_code error;
        acceptor_.open(tcp::v4(), error);
        if (!error)
            acceptor_.set_option(OwnAddress(true), error);
        if (!error)
            acceptor_.bind({asio::ip::address_v4::loopback(), port}, error);
        if (!error)
            acceptor_.listen(tcp::acceptor::max_listen_connections, error);
        if (error)
            return SocketErrorWords(error);
        Accept();
        return "";
    }
    std::uint16_t Port() const { return acceptor_.local_endpoint().port(); }
    Connection* Find(ConnectionId id) const {
        const auto found = connections_.find(id);
        return found == connections_.end() ? nullptr : found->second.get();
    }

  private:
    void Accept() {
        acceptor_.async_accept(
            [weak = weak_from_this()](asio::error_code error, tcp::socket socket) {
                const auto self = weak.lock();
                if (!self)
                    return;
                if (!error)
                    self->Welcome(std::move(socket));
                self->Accept();
            });
    }
    void Welcome(tcp::socket socket) {
        const ConnectionId id = ++last_id_;
        Connection::Owner owner{
            .received = [this, id](std::string_view bytes) { events_.received(id, bytes); },
            .ended =
                [this, id] {
                    connections_.erase(id);
                    events_.ended(id);
                }};
        const auto connection = std::make_shared<Connection>(std::move(socket), std::move(owner));
        connections_[id] = connection;
        connection->Read();
        events_.accepted(id);
    }

    tcp::acceptor acceptor_;
    Events events_;
    std::map<ConnectionId, std::shared_ptr<Connection>> connections_;
    ConnectionId last_id_ = 0;
};

TcpListener::TcpListener(AsioLoop& loop, Events events)
    : server_(std::make_shared<Server>(loop, std::move(events))) {}
TcpListener::~TcpListener() = default;

std::string TcpListener::Listen(std::uint16_t port) {
    return server_->Listen(port);
}

std::uint16_t TcpListener::Port() const {
    return server_->Port();
}

void TcpListener::Send(ConnectionId id, std::string_view bytes) {
    if (Connection* connection = server_->Find(id))
        connection->Send(bytes);
}

void TcpListener::Close(ConnectionId id) {
    if (Connection* connection = server_->Find(id))
        connection->Close();
}

} // namespace tarnex
