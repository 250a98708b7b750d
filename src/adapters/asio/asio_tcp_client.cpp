#include "adapters/asio/asio_tcp_client.h"

#include "adapters/asio/asio_error_words.h"
#include "adapters/asio/loop_core.h"
#include "adapters/asio/name_lookup.h"

#include <array>
#include <deque>

#include <asio/ip/tcp.hpp>
#include <asio/write.hpp>

namespace tarnex {

namespace {

using asio::ip::tcp;

constexpr std::size_t kLongestRead = 65'536; // bytes

// One connection, from Connect() to Close() or its end. Its handlers hold it weakly: they do
// nothing once it is gone.
class Connection : public std::enable_shared_from_this<Connection> {
  public:
    Connection(AsioLoop& loop, std::shared_ptr<const TcpEvents> events)
        : loop_(loop), socket_(loop.core().io), events_(std::move(events)) {}

    void Start(const std::string& host, std::uint16_t port) {
        asio::error_code not_numeric;
        const auto address = asio::ip::make_address(host, not_numeric);
        if (!not_numeric) {
            endpoints_ = {{address, port}};
            loop_.CallAfter(Duration::zero(), [weak = weak_from_this()] {
                if (const auto self = weak.lock(); self && !self->endpoints_.empty())
                    self->ConnectNext();
            });
            return;
        }
        lookup_ = std::make_unique<NameLookup>(
            loop_, host, port, [weak = weak_from_this()](const HostAddresses& found) {
                if (const auto self = weak.lock())
                    self->OnLookedUp(found);
            });
    }

    void Send(std::string_view bytes) {
        if (!connected_)
            return;
        output_.emplace_back(bytes);
        if (output_.size() == 1)
            WriteNext();
    }

    void Close() {
        connected_ = false;
        lookup_.reset();
        endpoints_.clear();
        asio::error_code ignored; // there is nothing left to do about it
        socket_.close(ignored);
    }

  private:
    // A completion handler that does nothing once the connection is gone.
    template <class... Arguments>
    auto Guarded(void (Connection::*handler)(asio::error_code, Arguments...)) {
        return [handler, weak = weak_from_this()](asio::error_code error, auto... rest) {
            if (const auto self = weak.lock())
                (self.get()->*handler)(error, rest...);
        };
    }

    void OnLookedUp(const HostAddresses& found) {
        endpoints_.assign(found.endpoints.begin(), found.endpoints.end());
        if (endpoints_.empty())
            End({.why = found.why_not, .own_machine = found.own_machine});
        else
            ConnectNext();
    }

    // There is at least one address to try.
    void ConnectNext() {
        const tcp::endpoint endpoint = endpoints_.front();
        endpoints_.pop_front();
        asio::error_code error; // of an open socket: there is nothing to do about it
        socket_.close(error);
        socket_.open(endpoint.protocol(), error);
        if (!error)
            socket_.async_connect(endpoint, Guarded(&Connection::OnConnected));
        else if (error == asio::error::address_family_not_supported)
            TryNext({.why = SocketErrorWords(error)});
        else
            End({.why = "no socket for the connection: " + SocketErrorWords(error),
                 .own_machine = true});
    }

    void TryNext(const TcpEnd& end) {
        if (endpoints_.empty())
            End(end);
        else
            ConnectNext();
    }

    void OnConnected(asio::error_code error) {
        if (error) {
            TryNext({.why = SocketErrorWords(error)});
            return;
        }
        asio::error_code ignored; // a delay harms nobody
        socket_.set_option(tcp::no_delay(true), ignored);
        connected_ = true;
        ReadNext();
        events_->connected();
    }

    void ReadNext() { socket_.async_read_some(asio::buffer(input_), Guarded(&Connection::OnRead)); }

    void OnRead(asio::error_code error, std::size_t size) {
        if (error) {
            End({.why = error == asio::error::eof ? "closed by the other side"
                                                  : SocketErrorWords(error)});
            return;
        }
        events_->received({input_.data(), size});
        if (connected_) // the user did not close it
            ReadNext();
    }

    void WriteNext() {
        asio::async_write(socket_, asio::buffer(output_.front()), Guarded(&Connection::OnWritten));
    }

    void OnWritten(asio::error_code error, std::size_t) {
        if (error)
            return; // reading meets the same end, after what still waits to be read
        output_.pop_front();
        if (!output_.empty())
            WriteNext();
    }

    void End(const TcpEnd& end) {
        Close();
        events_->ended(end);
    }

    AsioLoop& loop_;
    tcp::socket socket_;
    std::shared_ptr<const TcpEvents> events_;
    bool connected_ = false;
    std::unique_ptr<NameLookup> lookup_;
    std::deque<tcp::endpoint> endpoints_; // not tried yet
    std::array<char, kLongestRead> input_;
    std::deque<std::string> output_; // the first one is being written
};

class AsioTcpClient : public TcpClient {
  public:
    AsioTcpClient(AsioLoop& loop, TcpEvents events)
        : loop_(loop), events_(std::make_shared<const TcpEvents>(std::move(events))) {}
    ~AsioTcpClient() override { Close(); }

    void Connect(const std::string& host, std::uint16_t port) override {
        Close();
        connection_ = std::make_shared<Connection>(loop_, events_);
        connection_->Start(host, port);
    }
    void Close() override {
        if (connection_)
            connection_->Close();
        connection_.reset();
    }
    void Send(std::string_view bytes) override {
        if (connection_)
            connection_->Send(bytes);
    }

  private:
    AsioLoop& loop_;
    std::shared_ptr<const TcpEvents> events_;
    std::shared_ptr<Connection> connection_;
};

} // namespace

std::unique_ptr<TcpClient> AsioTcpClients::Create(TcpEvents events) {
    return std::make_unique<AsioTcpClient>(loop_, std::move(events));
}

} // namespace tarnex
