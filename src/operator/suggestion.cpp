#include "operator/suggestion.h"

#include <algorithm>
#include <vector>

namespace tarnex {

namespace {

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

// Letters added, left out, changed or swapped with their neighbour.
std::size_t Slips(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> slips(a.size() + 1,
                                                std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                slips[i][j] = i + j;
                continue;
            }
            const bool same = Lower(a[i - 1]) == Lower(b[j - 1]);
            slips[i][j] =
                std::min({slips[i - 1][j] + 1, slips[i][j - 1] + 1, slips[i - 1][j - 1] + !same});
            if (i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) &&
                Lower(a[i - 2]) == Lower(b[j - 1]))
                slips[i][j] = std::min(slips[i][j], slips[i - 2][j - 2] + 1);
        }
    return slips[a.size()][b.size()];
}

} // namespace

std::string Closest(const std::string& typed, std::span<const std::string> words) {
    std::string closest;
    std::size_t fewest = std::string::npos;
    for (const std::string& word : words) {
        const std::size_t slips = Slips(typed, word);
        if (slips < fewest && slips <= std::max<std::size_t>(1, word.size() / 3)) {
            fewest = slips;
            closest = word;
        }
    }
    return closest;
}

std::string DidYouMean(const std::string& word) {
    return word.empty() ? "" : " (did you mean \"" + word + "\"?)";
}

} // namespace tarnex
