#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnex {

// JSON with every control character (IsControl() of text.h) as its escape "\u009b"; the line ends
// between values stay.
std::string EscapeJsonControls(std::string_view json);

// Writes one JSON value, indented, as UTF-8. Names and values come in the order of the calls; every
// Begin needs its End.
class JsonWriter {
  public:
    // name: of the member in an object, "" in an array and for the outermost value.
    void BeginObject(std::string_view name = {}) { Begin(name, '{', '}'); }
    void BeginArray(std::string_view name = {}) { Begin(name, '[', ']'); }
    void End();

    void String(std::string_view name, std::string_view utf8);
    void Number(std::string_view name, long long number);
    void Bool(std::string_view name, bool value);
    void Null(std::string_view name);

    // What was written so far; ends in a line end once the outermost value has ended.
    const std::string& Written() const { return text_; }

  private:
    void Begin(std::string_view name, char open, char close);
    void Separate(std::string_view name);
    void NewLine();
    void Quote(std::string_view utf8);

    struct Level {
        char close;
        bool empty;
    };
    std::string text_;
    std::vector<Level> levels_;
};

} // namespace tarnex
