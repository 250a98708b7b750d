#include "device/sms_record.h"

#include "device/answer_rules.h"

#include <optional>

namespace tarnex {

namespace {

// A 1-based position, or nothing when something that it depends on was not found.
using Position = std::optional<std::size_t>;

Position FindAfter(TextView record, TextView what, Position after) {
    if (!after)
        return std::nullopt;
    const auto found = record.find(what, *after);
    return found == TextView::npos ? std::nullopt : Position(found + 1);
}

// The characters from first + skip to last - drop, both counted in; nothing when that is less than
// no characters at all.
std::optional<TextView> Between(TextView record, Position first, std::size_t skip, Position last,
                                std::size_t drop) {
    if (!first || !last || *last + 1 < *first + skip + drop)
        return std::nullopt;
    return record.substr(*first + skip - 1, *last + 1 - drop - *first - skip);
}

} // namespace

void CutSMSRecord(TextView record, ReceivedSMS& fields) {
    const Position comma1 = FindAfter(record, u",", 0);
    const Position comma2 = FindAfter(record, u",", comma1);
    const Position comma3 = FindAfter(record, u",", comma2);
    const Position comma4 = FindAfter(record, u",", comma3);
    const Position quote = FindAfter(record, u"\"", comma4);
    const Position ok = FindAfter(record, u"OK", quote);

    if (const auto number = Between(record, comma1, 2, comma2, 2)) // inside the quotes
        fields.TelNo = HexDecode(*number);
    if (const auto date = Between(record, comma3, 2, comma4, 1)) // behind the opening quote
        fields.Date = *date;
    if (const auto time = Between(record, comma4, 1, quote, 4)) // without the time zone
        fields.Time = *time;
    if (const auto text = Between(record, quote, 2, ok, 4))
        fields.Msg = Trim(HexDecode(*text));
}

} // namespace tarnex
