#pragma once

#include "operator/operator_world.h"
#include "platform/calendar_text.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnex {

// Columns that a text takes on a terminal; Chinese characters take two.
std::size_t DisplayWidth(std::string_view utf8);

// The text, cut to that many columns, the last one "…" where it is cut.
std::string Shortened(const std::string& utf8, std::size_t columns);

// The text, with blanks to that width and two more.
std::string Padded(const std::string& utf8, std::size_t columns);

// What comes from elsewhere, with control characters escaped, since they could drive the terminal.
std::string Printable(std::string_view utf8);

enum class Colour { kNone, kGood, kWarning, kBad, kFaint, kBold };
// The text in that colour where the terminal shows it.
std::string Paint(const OperatorWorld& world, Colour colour, const std::string& text);

struct Cell {
    std::string text;
    Colour colour = Colour::kNone;
    Cell(std::string text_, Colour colour_ = Colour::kNone)
        : text(std::move(text_)), colour(colour_) {}
    Cell(const char* text_) : text(text_) {}
};

// Rows of cells, aligned, with two blanks in between. A row of one cell is a line of its own.
class TextTable {
  public:
    void Add(std::vector<Cell> row);
    void Print(const OperatorWorld& world) const;

  private:
    std::vector<std::vector<Cell>> rows_;
};

// "a; b; c"
std::string Joined(const std::vector<std::string>& texts, const std::string& separator = "; ");
// "1 mail", "2 mails", "2 SMS"
std::string Counted(long long number, const std::string& noun);

} // namespace tarnex
