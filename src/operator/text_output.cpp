#include "operator/text_output.h"

#include "platform/text.h"

#include <algorithm>
#include <ostream>

namespace tarnex {

namespace {

struct Range {
    char16_t first;
    char16_t last;
};
// Characters of two columns.
constexpr Range kDoubleWidth[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},
                                  {0xF900, 0xFAFF}, {0xFE30, 0xFE6F}, {0xFF00, 0xFF60},
                                  {0xFFE0, 0xFFE6}};

std::size_t Width(char16_t c) {
    if (c >= 0xD800 && c < 0xE000)
        return 1; // the halves of a rare character, itself two columns wide
    return 1 +
           std::ranges::any_of(kDoubleWidth, [c](Range r) { return c >= r.first && c <= r.last; });
}

} // namespace

std::size_t DisplayWidth(std::string_view utf8) {
    std::size_t width = 0;
    for (const char16_t c : FromUtf8(utf8))
        width += Width(c);
    return width;
}

std::string Shortened(const std::string& utf8, std::size_t columns) {
    if (DisplayWidth(utf8) <= columns)
        return utf8;
    Text text = FromUtf8(utf8);
    while (DisplayWidth(ToUtf8(text)) >= columns)
        text.pop_back();
    return ToUtf8(text) + "…";
}

std::string Padded(const std::string& utf8, std::size_t columns) {
    const std::size_t used = DisplayWidth(utf8);
    return utf8 + std::string(used < columns ? columns - used : 0, ' ') + "  ";
}

std::string Printable(std::string_view utf8) {
    return EscapeControls(utf8);
}

std::string Paint(const OperatorWorld& world, Colour colour, const std::string& text) {
    constexpr const char* kCodes[] = {"", "32", "33", "31", "2", "1"};
    if (!world.colours || colour == Colour::kNone || text.empty())
        return text;
    return std::string("\x1b[") + kCodes[static_cast<std::size_t>(colour)] + "m" + text + "\x1b[0m";
}

void TextTable::Add(std::vector<Cell> row) {
    for (Cell& cell : row)
        cell.text = Printable(cell.text); // before anything counts its columns
    rows_.push_back(std::move(row));
}

void TextTable::Print(const OperatorWorld& world) const {
    std::vector<std::size_t> widths;
    for (const auto& row : rows_) {
        if (row.size() == 1)
            continue;
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], DisplayWidth(row[i].text));
    }
    for (const auto& row : rows_) {
        std::string line;
        std::size_t missing = 0; // blanks up to the next cell, if it has a text
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (row[i].text.empty()) {
                missing += widths[i] + 2;
                continue;
            }
            line.append(missing, ' ');
            line += Paint(world, row[i].colour, row[i].text);
            missing = row.size() == 1 ? 0 : widths[i] + 2 - DisplayWidth(row[i].text);
        }
        world.out << line << '\n';
    }
}

std::string Joined(const std::vector<std::string>& texts, const std::string& separator) {
    std::string joined;
    for (const std::string& text : texts)
        joined += (joined.empty() ? "" : separator) + text;
    return joined;
}

std::string Counted(long long number, const std::string& noun) {
    return std::to_string(number) + " " + noun + (number == 1 || noun == "SMS" ? "" : "s");
}

} // namespace tarnex
