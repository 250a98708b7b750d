#pragma once

#include "platform/text.h"

namespace tarnex {

// The system's ANSI code page: the one place where bytes become text and text becomes bytes.
class CodePage {
  public:
    virtual ~CodePage() = default;

    // What cannot be converted becomes "?", one for each character or byte.
    virtual std::string Encode(TextView text) const = 0;
    virtual Text Decode(std::string_view bytes) const = 0;
    // How many of the bytes form whole characters: the rest, if any, is the first part of one
    // more character, whose other part has not arrived yet.
    virtual std::size_t WholeLength(std::string_view bytes) const = 0;
};

} // namespace tarnex
