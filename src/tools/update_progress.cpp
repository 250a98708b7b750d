#include "tools/update_progress.h"

#include "device/flash_report.h"

#include <cstdio>

namespace tarnex {

namespace {

constexpr int kBarWidth = 16;             // keeps the whole within 80 columns
constexpr Duration kShortestMeasure = 2s; // less says nothing about the time left

std::string Counted(long count, const char* one, const char* several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

std::string AddressText(int address) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "%04X", unsigned(address));
    return digits;
}

std::string PercentText(const FlashProgress& progress, long total_bytes) {
    const std::string percent = std::to_string(Percent(progress, total_bytes));
    return std::string(3 - percent.size(), ' ') + percent + " %";
}

// Nothing where it cannot be told yet.
std::optional<std::chrono::seconds> TimeLeft(const FlashProgress& progress, long total_bytes,
                                             Duration step_time) {
    if (progress.bytes == 0 || step_time < kShortestMeasure)
        return std::nullopt;
    const auto left = step_time * (total_bytes - progress.bytes) / progress.bytes;
    return std::chrono::ceil<std::chrono::seconds>(left);
}

std::string Figures(const FlashProgress& progress, long total_bytes, Duration step_time) {
    std::string text =
        std::to_string(progress.bytes) + "/" + std::to_string(total_bytes) + " bytes";
    if (!progress.address.empty())
        text += "  address " + ToUtf8(progress.address);
    if (const auto left = TimeLeft(progress, total_bytes, step_time))
        text += "  " + DurationText(*left) + " left";
    return text;
}

std::string Waiting(const char* what, Duration step_time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(step_time);
    return std::string(what) + " ..." + (seconds.count() > 0 ? " " + DurationText(seconds) : "");
}

} // namespace

std::string DurationText(std::chrono::seconds time) {
    const auto minutes = std::chrono::floor<std::chrono::minutes>(time);
    const std::string seconds = std::to_string((time - minutes).count()) + " s";
    return minutes.count() > 0 ? std::to_string(minutes.count()) + " min " + seconds : seconds;
}

Text FiguresInChinese(const FlashProgress& progress, long total_bytes, Duration step_time) {
    Text text = ToText(Percent(progress, total_bytes)) + u" %  " + ToText(progress.bytes) + u"/" +
                ToText(total_bytes) + u"字节";
    if (const auto left = TimeLeft(progress, total_bytes, step_time)) {
        const auto minutes = std::chrono::floor<std::chrono::minutes>(*left);
        text += u"  剩余" + (minutes.count() > 0 ? ToText(minutes.count()) + u"分" : Text()) +
                ToText((*left - minutes).count()) + u"秒";
    }
    return text;
}

int Percent(const FlashProgress& progress, long total_bytes) {
    return total_bytes > 0 ? int(progress.bytes * 100 / total_bytes) : 100;
}

std::string ProgressBar(const FlashProgress& progress, long total_bytes, Duration step_time) {
    switch (progress.step) {
    case FlashStep::kWrite:
        break;
    case FlashStep::kHandshake:
        return Waiting("Calling the unit's loader", step_time);
    case FlashStep::kErase:
        return Waiting("Erasing", step_time);
    case FlashStep::kOpenFile:
    case FlashStep::kOpenPort:
    case FlashStep::kDone:
        return "";
    }
    const auto done = std::size_t(Percent(progress, total_bytes) * kBarWidth / 100);
    return PercentText(progress, total_bytes) + "  [" + std::string(done, '#') +
           std::string(kBarWidth - done, ' ') + "]  " + Figures(progress, total_bytes, step_time);
}

std::string ProgressLine(const FlashProgress& progress, long total_bytes, Duration step_time) {
    return PercentText(progress, total_bytes) + "  " + Figures(progress, total_bytes, step_time);
}

std::vector<std::string> SummaryLines(const std::string& file, const HexSummary& summary) {
    std::string content = file + ": " + Counted(summary.Records(), "record", "records") + ", " +
                          Counted(summary.Bytes(), "byte", "bytes");
    if (summary.Bytes() > 0)
        content += ", addresses " + AddressText(summary.LowestAddress()) + " to " +
                   AddressText(summary.HighestAddress());
    std::vector<std::string> lines{content};
    lines.push_back("Estimated time: " + DurationText(summary.LineTime()) +
                    " on the line, and what the unit needs to erase and to write.");
    for (const OddHexLine& odd : summary.OddLines())
        lines.push_back("line " + std::to_string(odd.line) + " " + TroubleInEnglish(odd.trouble));
    const long more = summary.OddCount() - long(summary.OddLines().size());
    if (more > 0)
        lines.push_back("and " + Counted(more, "more odd line", "more odd lines"));
    return lines;
}

} // namespace tarnex
