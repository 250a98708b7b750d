#pragma once

#include "platform/text.h"

namespace tarnex {

// Takes notification texts to be sent by mail.
class EmailFifo {
  public:
    virtual ~EmailFifo() = default;
    // Queues one line of text. A full queue drops its oldest.
    virtual void dSetEmailFifo(const Text& text) = 0;
};

} // namespace tarnex
