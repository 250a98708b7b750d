#include "events/sms_pieces.h"

namespace tarnex {

namespace {

constexpr std::size_t kSMSLength = 70;
constexpr std::size_t kPieceLength = 65; // leaves room for "{k/n}"

} // namespace

std::vector<Text> CutIntoPieces(TextView text) {
    const std::size_t count = text.size() / kSMSLength + 1;
    if (count == 1)
        return {Text(text)};
    std::vector<Text> pieces;
    for (std::size_t k = 1; k <= count; ++k) {
        const TextView part = k < count ? text.substr(0, kPieceLength) : text;
        text.remove_prefix(part.size());
        pieces.push_back(u"{" + ToText((long long)k) + u"/" + ToText((long long)count) + u"}" +
                         Text(part));
    }
    return pieces;
}

} // namespace tarnex
