#pragma once

#include <span>
#include <string>

namespace tarnex {

// The word that was probably meant: the one with the fewest slips of the keyboard in between,
// without case, at most a third of its length; "" when there is none.
std::string Closest(const std::string& typed, std::span<const std::string> words);

// " (did you mean "x"?)", or "" when word is "".
std::string DidYouMean(const std::string& word);

} // namespace tarnex
