#pragma once

#include "platform/code_page.h"

#include <string>
#include <unordered_map>

namespace tarnex {

// The longest value a setting can have, in characters; the rest is cut off.
inline constexpr std::size_t kLongestValue = 128;

// One state of the settings file, parsed.
class IniDocument {
  public:
    IniDocument(std::string_view bytes, const CodePage& code_page);

    // The value of the first matching key of the first matching section, cut to kLongestValue
    // characters, without NUL characters; "" when there is none.
    TextView Get(TextView section, TextView key) const;

    // content with the value of that key replaced, or the key, or the section and the key, added.
    // Everything else, byte for byte, stays: comments, order, line ends.
    static std::string Set(const std::string& content, const CodePage& code_page, TextView section,
                           TextView key, TextView value);

  private:
    std::unordered_map<Text, Text> values_;
};

} // namespace tarnex
