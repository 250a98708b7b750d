#pragma once

// For .cpp files alone: asio stays out of every other header.

#include "platform/error_words.h"

#include <asio/error.hpp>

namespace tarnex {

// Windows has numbers of its own for what happens to sockets, which asio knows.
inline std::string SocketErrorWords(const asio::error_code& error) {
    using std::errc;
    namespace e = asio::error;
    static const std::pair<e::basic_errors, errc> kKnown[] = {
        {e::access_denied, errc::permission_denied},
        {e::address_in_use, errc::address_in_use},
        {e::connection_aborted, errc::connection_aborted},
        {e::connection_refused, errc::connection_refused},
        {e::connection_reset, errc::connection_reset},
        {e::host_unreachable, errc::host_unreachable},
        {e::invalid_argument, errc::invalid_argument},
        {e::network_down, errc::network_down},
        {e::network_reset, errc::network_reset},
        {e::network_unreachable, errc::network_unreachable},
        {e::no_buffer_space, errc::no_buffer_space},
        {e::no_descriptors, errc::too_many_files_open},
        {e::not_connected, errc::not_connected},
        {e::timed_out, errc::timed_out},
    };
    for (const auto& [number, known] : kKnown)
        if (error == number)
            return WordsFor(std::make_error_code(known));
#ifdef _WIN32
    constexpr int kNoSuchAddress = 10'049; // for which asio has no name
    if (error.value() == kNoSuchAddress)
        return WordsFor(std::make_error_code(errc::address_not_available));
#endif
    return WordsFor(error);
}

} // namespace tarnex
