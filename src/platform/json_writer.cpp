#include "platform/json_writer.h"

namespace tarnex {

void JsonWriter::Begin(std::string_view name, char open, char close) {
    Separate(name);
    text_ += open;
    levels_.push_back({.close = close, .empty = true});
}

void JsonWriter::End() {
    const Level level = levels_.back();
    levels_.pop_back();
    if (!level.empty)
        NewLine();
    text_ += level.close;
    if (levels_.empty())
        text_ += '\n';
}

void JsonWriter::String(std::string_view name, std::string_view utf8) {
    Separate(name);
    Quote(utf8);
}

void JsonWriter::Number(std::string_view name, long long number) {
    Separate(name);
    text_ += std::to_string(number);
}

void JsonWriter::Bool(std::string_view name, bool value) {
    Separate(name);
    text_ += value ? "true" : "false";
}

void JsonWriter::Null(std::string_view name) {
    Separate(name);
    text_ += "null";
}

void JsonWriter::Separate(std::string_view name) {
    if (levels_.empty())
        return;
    if (!levels_.back().empty)
        text_ += ',';
    levels_.back().empty = false;
    NewLine();
    if (levels_.back().close == '}') {
        Quote(name);
        text_ += ": ";
    }
}

void JsonWriter::NewLine() {
    text_ += '\n';
    text_.append(2 * levels_.size(), ' ');
}

void JsonWriter::Quote(std::string_view utf8) {
    constexpr char kDigits[] = "0123456789abcdef";
    text_ += '"';
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (text_ += '\\') += c;
        else if (byte < 0x20)
            ((text_ += "\\u00") += kDigits[byte / 16]) += kDigits[byte % 16];
        else
            text_ += c;
    }
    text_ += '"';
}

} // namespace tarnex
