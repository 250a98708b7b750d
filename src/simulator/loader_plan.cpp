#include "simulator/loader_plan.h"

#include "simulator/command_words.h"

namespace tarnex {

namespace {

template <class Value>
struct Word {
    std::string_view word;
    Value value;
};
constexpr Word<LoaderStep> kSteps[] = {{"handshake", LoaderStep::kHandshake},
                                       {"erase", LoaderStep::kErase},
                                       {"write", LoaderStep::kWrite},
                                       {"finish", LoaderStep::kFinish}};
constexpr Word<LoaderFault> kFaults[] = {{"refuse", LoaderFault::kRefuse},
                                         {"late", LoaderFault::kLate},
                                         {"corrupt", LoaderFault::kCorrupt},
                                         {"silent", LoaderFault::kSilent},
                                         {"wrong", LoaderFault::kWrong}};

template <class Value, std::size_t Count>
bool Find(const Word<Value> (&words)[Count], std::string_view word, Value& value) {
    const auto found = std::ranges::find(words, word, &Word<Value>::word);
    if (found == std::end(words))
        return false;
    value = found->value;
    return true;
}

} // namespace

std::optional<LoaderPlan> ParseLoaderPlan(std::string_view words) {
    const auto [place, fault] = SplitWord(words);
    const std::size_t colon = place.find(':');
    LoaderPlan plan;
    if (colon != place.npos && !(ReadNumber(place.substr(colon + 1), plan.nth) && plan.nth > 0))
        return std::nullopt;
    if (!Find(kSteps, place.substr(0, colon), plan.step) || !Find(kFaults, fault, plan.fault))
        return std::nullopt;
    return plan;
}

} // namespace tarnex
