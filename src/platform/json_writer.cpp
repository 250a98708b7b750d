#include "platform/json_writer.h"

#include "platform/text.h"

#include <algorithm>

namespace tarnex {

std::string EscapeJsonControls(std::string_view json) {
    const auto plain = [](char c) { return (c >= ' ' && c < '\x7F') || c == '\n'; };
    if (std::ranges::all_of(json, plain)) // as nearly all is; the status is written often
        return std::string(json);
    Text escaped;
    for (const char16_t c : FromUtf8(json)) {
        if (!IsControl(c) || c == u'\n') {
            escaped += c;
            continue;
        }
        escaped += u"\\u";
        for (const int shift : {12, 8, 4, 0})
            escaped += u"0123456789abcdef"[c >> shift & 0xF];
    }
    return ToUtf8(escaped);
}

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
    std::string text;
    for (const char c : utf8) {
        if (c == '"' || c == '\\')
            (text += '\\') += c;
        else if (c == '\n')
            text += "\\n";
        else
            text += c;
    }
    text_ += '"' + EscapeJsonControls(text) + '"';
}

} // namespace tarnex
