#include "simulator/unit_loader.h"

#include "simulator/words.h"

#include <cstdint>

namespace tarnex {

namespace {

using namespace std::string_view_literals;

// Every frame: 5A A5, its length in two bytes, its kind, its content, 16.
constexpr std::string_view kLoaderFrameStart = "\x5A\xA5"sv;
constexpr std::string_view kHandshake = "\x5A\xA5\x00\x08\xB0\x01\xB7\x16"sv;
constexpr std::string_view kErase = "\x5A\xA5\x00\x08\xB2\x01\xB9\x16"sv;
constexpr std::string_view kRefusal = "\x5A\xA5\x00\x08\xBF\x00\xC5\x16"sv;
constexpr std::string_view kVersionMarker = "VERSION="sv;

constexpr std::size_t kKindAt = 4;
constexpr std::size_t kAddressAt = 7; // of a write frame: address, two bytes count, data, sum
constexpr std::size_t kCountAt = 9;
constexpr std::size_t kDataAt = 11;
constexpr std::size_t kShortestFrame = 8;
constexpr std::size_t kLongestFrame = 0xFF + 14;
constexpr std::size_t kProgramSize = 0x10000;
constexpr std::size_t kCorruptedByte = 5;

constexpr Duration kLateBy = 9s;
constexpr Duration kGap = 3s; // within a frame; a longer one begins a new frame
constexpr Duration kGiveUp = 10s;
constexpr Duration kRestartDelay = 100ms;

unsigned Number(std::string_view bytes, std::size_t at) {
    return unsigned(std::uint8_t(bytes[at]) * 256 + std::uint8_t(bytes[at + 1]));
}

unsigned Sum(std::string_view bytes) {
    unsigned sum = 0;
    for (const char byte : bytes)
        sum += std::uint8_t(byte);
    return sum & 0xFFFF;
}

std::string HighFirst(unsigned number) {
    return {char(number >> 8), char(number)};
}

std::string WriteAck(std::string_view data) {
    std::string ack = std::string("\x5A\xA5\x00\x0A\xB3"sv) + HighFirst(Sum(data));
    ack += HighFirst(Sum(ack));
    return ack += '\x16';
}

// Where a frame begins in the bytes, or may begin with their last one.
std::size_t FrameStart(const std::string& bytes) {
    if (const std::size_t start = bytes.find(kLoaderFrameStart); start != bytes.npos)
        return start;
    return bytes.ends_with(kLoaderFrameStart[0]) ? bytes.size() - 1 : bytes.size();
}

bool IsWholeWrite(std::string_view frame) {
    if (frame[kKindAt] != '\xB3' || frame.size() < kDataAt + 3)
        return false;
    const std::size_t sum_at = frame.size() - 3;
    return Number(frame, kCountAt) == sum_at - kDataAt &&
           Number(frame, sum_at) == Sum(frame.substr(0, sum_at));
}

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
std::optional<Value> FindWord(const Word<Value> (&words)[Count], std::string_view word) {
    const auto found = std::ranges::find(words, word, &Word<Value>::word);
    return found == std::end(words) ? std::nullopt : std::optional(found->value);
}

} // namespace

std::optional<LoaderPlan> ParseLoaderPlan(std::string_view words) {
    const auto [place, fault_word] = SplitWord(words);
    const std::size_t colon = place.find(':');
    const auto step = FindWord(kSteps, place.substr(0, colon));
    const std::optional<long> nth =
        colon == place.npos ? std::optional(1L) : ReadNumber<long>(place.substr(colon + 1));
    const auto fault = FindWord(kFaults, fault_word);
    if (!step || !nth || *nth <= 0 || !fault)
        return std::nullopt;
    return LoaderPlan{*step, *nth, *fault};
}

UnitLoader::UnitLoader(Clock& clock, Events events)
    : events_(std::move(events)), calls_(clock), idle_(clock) {}

void UnitLoader::Start(Duration window, const Times& times) {
    calls_.CancelAll();
    idle_.CancelAll();
    input_.clear();
    times_ = times;
    programming_ = false;
    listening_ = true;
    in_charge_ = !has_program_;
    if (has_program_)
        idle_.After(window, [this] { listening_ = false; });
}

void UnitLoader::Received(std::string_view bytes) {
    if (!listening_ || Deaf)
        return;
    const Duration now = calls_.clock().Now();
    if (now - last_byte_ > kGap)
        input_.clear();
    last_byte_ = now;
    input_ += bytes;
    while (const std::optional<std::string> frame = NextFrame())
        TakeFrame(*frame);
}

std::optional<std::string> UnitLoader::NextFrame() {
    for (;;) {
        input_.erase(0, FrameStart(input_));
        if (input_.size() < kShortestFrame)
            return std::nullopt;
        const std::size_t length = Number(input_, 2);
        if (length < kShortestFrame || length > kLongestFrame) {
            input_.erase(0, 1); // no frame begins here
            continue;
        }
        if (input_.size() < length)
            return std::nullopt;
        const std::string frame = input_.substr(0, length);
        input_.erase(0, length);
        return frame;
    }
}

void UnitLoader::TakeFrame(std::string_view frame) {
    const std::optional<LoaderStep> step = StepOf(frame);
    if (!in_charge_) {
        if (step != LoaderStep::kHandshake)
            return;
        in_charge_ = true;
        events_.taken();
    }
    const std::optional<LoaderFault> fault = step ? FaultNow(*step) : LoaderFault::kRefuse;
    if (fault == LoaderFault::kRefuse)
        Send(times_.answer, std::string(kRefusal));
    else
        Answer(*step, Obey(*step, frame), fault);
    idle_.CancelAll();
    if (has_program_)
        idle_.After(kGiveUp, [this] { End(); });
}

std::optional<LoaderStep> UnitLoader::StepOf(std::string_view frame) const {
    if (frame == kHandshake)
        return LoaderStep::kHandshake;
    if (frame == kErase)
        return programming_ ? LoaderStep::kFinish : LoaderStep::kErase;
    if (programming_ && IsWholeWrite(frame))
        return LoaderStep::kWrite;
    return std::nullopt;
}

std::string UnitLoader::Obey(LoaderStep step, std::string_view frame) {
    switch (step) {
    case LoaderStep::kHandshake:
        programming_ = false;
        break;
    case LoaderStep::kErase:
        has_program_ = false;
        programming_ = true;
        program_.assign(kProgramSize, '\xFF');
        break;
    case LoaderStep::kWrite:
        return Write(frame);
    case LoaderStep::kFinish:
        programming_ = false;
        has_program_ = true;
        calls_.After(times_.answer + kRestartDelay, [this] { End(); });
        break;
    }
    return std::string(kHandshake);
}

std::string UnitLoader::Write(std::string_view frame) {
    const std::string_view data = frame.substr(kDataAt, frame.size() - kDataAt - 3);
    std::size_t at = Number(frame, kAddressAt);
    for (const char byte : data)
        program_[at++ % kProgramSize] = byte;
    return WriteAck(data);
}

void UnitLoader::Answer(LoaderStep step, std::string answer, std::optional<LoaderFault> fault) {
    Duration delay = step == LoaderStep::kErase ? times_.erase : times_.answer;
    if (fault == LoaderFault::kSilent)
        return;
    if (fault == LoaderFault::kLate)
        delay += kLateBy;
    if (fault == LoaderFault::kCorrupt)
        answer[kCorruptedByte] = char(answer[kCorruptedByte] ^ 0x10);
    if (fault == LoaderFault::kWrong)
        answer = step == LoaderStep::kWrite ? std::string(kHandshake) : WriteAck("");
    Send(delay, answer);
}

void UnitLoader::Send(Duration delay, const std::string& answer) {
    calls_.After(delay, [this, answer] { events_.send(answer); });
}

std::optional<LoaderFault> UnitLoader::FaultNow(LoaderStep step) {
    if (!plan_ || plan_->step != step || --plan_->nth > 0)
        return std::nullopt;
    const LoaderFault fault = plan_->fault;
    plan_.reset();
    return fault;
}

void UnitLoader::End() {
    calls_.CancelAll();
    listening_ = false;
    in_charge_ = false;
    events_.ended();
}

std::optional<std::string> UnitLoader::ProgramVersion() const {
    const std::size_t marker = program_.find(kVersionMarker);
    if (marker == program_.npos)
        return std::nullopt;
    const auto first = program_.begin() + std::ptrdiff_t(marker + kVersionMarker.size());
    const auto printable = [](char c) { return c >= ' ' && c <= '~'; };
    return std::string(first, std::find_if_not(first, program_.end(), printable));
}

} // namespace tarnex
