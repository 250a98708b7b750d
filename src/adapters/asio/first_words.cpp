#include "adapters/asio/first_words.h"

#include "adapters/asio/asio_tcp_client.h"

namespace tarnex {

FirstWords HearFirstWords(const std::string& host, std::uint16_t port, Duration limit) {
    FirstWords words{.heard = "", .trouble = "it says nothing"};
    AsioLoop loop;
    const auto end = [&](std::string heard, std::string trouble) {
        words = {.heard = std::move(heard), .trouble = std::move(trouble)};
        loop.Stop();
    };
    AsioTcpClients clients(loop);
    const auto client =
        clients.Create({.connected = [] {},
                        .received = [&](std::string_view bytes) { end(std::string(bytes), ""); },
                        .ended = [&](const TcpEnd& why) { end("", why.why); }});
    loop.CallAfter(limit, [&loop] { loop.Stop(); });
    client->Connect(host, port);
    loop.Run();
    return words;
}

} // namespace tarnex
