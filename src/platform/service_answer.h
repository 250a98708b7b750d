#pragma once

#include <string>

namespace tarnex {

// What came of a request to the service.
struct ServiceAnswer {
    std::string text{};     // of the service
    std::string trouble{};  // why there is none, in words for an operator; "" when there is one
    bool forbidden = false; // the trouble is that this user may not ask
};

} // namespace tarnex
