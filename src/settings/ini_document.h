#pragma once

#include "platform/code_page.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace tarnex {

// The longest value a setting can have, in characters; the rest is cut off.
inline constexpr std::size_t kLongestValue = 128;

// One state of the settings file, parsed: "[section]" lines, "key=value" lines, ";" lines as
// comments; anything else means nothing. Section and key names compare without case and without
// the blanks around them; a value is everything behind "=". The first section of a name and the
// first key of a name in it count, later ones are never seen.
class IniDocument {
  public:
    IniDocument() = default;
    IniDocument(std::string_view content, const CodePage& code_page);

    // The value, cut to kLongestValue characters and without its NUL characters; "" when there is
    // none. Valid as long as the document.
    TextView Get(TextView section, TextView key) const;

    // content with the value of that key replaced, or the key, or the section and the key, added:
    // what Get then finds. Everything else, byte for byte, stays: comments, order, line ends.
    // Nothing when no file can hold that name or value, as when it contains a line end.
    static std::optional<std::string> Set(const std::string& content, const CodePage& code_page,
                                          TextView section, TextView key, TextView value);
    // content without the line of that key and the later ones that would then count; as it is when
    // there is none. Get then finds nothing.
    static std::string Remove(const std::string& content, const CodePage& code_page,
                              TextView section, TextView key);

    // A line that gives a key a value, whether it counts or not.
    struct KeyLine {
        int number; // of the line, from 1
        Text section;
        Text key;
        Text value; // whole
    };
    // All of them in their order.
    static std::vector<KeyLine> KeyLines(std::string_view content, const CodePage& code_page);

  private:
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(TextView name) const;
    };
    struct NameEqual {
        using is_transparent = void;
        bool operator()(TextView a, TextView b) const { return EqualIgnoringCase(a, b); }
    };
    template <typename Value>
    using ByName = std::unordered_map<Text, Value, NameHash, NameEqual>;

    ByName<ByName<Text>> sections_;
};

} // namespace tarnex
