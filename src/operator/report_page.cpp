#include "operator/report_page.h"

#include "operator/moment.h"
#include "operator/report_plot.h"
#include "operator/report_style.h"
#include "operator/report_words.h"
#include "operator/text_output.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr int kWidePlot = 736;
constexpr int kNarrowPlot = 330;
constexpr std::size_t kMostMessages = 100;
constexpr std::int64_t kHour = 3'600'000; // ms
constexpr std::array<const char*, kOutcomes> kOutcomeClasses = {"sent", "held-back", "not-sent",
                                                                "waits"};
constexpr std::array<const char*, kOutcomes> kOutcomeWords = {"sent", "held back on purpose",
                                                              "not sent", "waiting"};
// Upwards: what needs somebody stands where it is seen first.
constexpr std::array<Outcome, kOutcomes> kStack = {Outcome::kNotSent, Outcome::kWaits,
                                                   Outcome::kSent, Outcome::kHeldBack};

std::string Element(const std::string& name, const std::string& html,
                    const std::string& kind = "") {
    const std::string attribute = kind.empty() ? "" : " class=\"" + kind + "\"";
    return "<" + name + attribute + ">" + html + "</" + name + ">\n";
}

class PageWriter {
  public:
    PageWriter(const OperatorWorld& world, const ReportFigures& figures)
        : world_(world), figures_(figures) {}

    std::string Html() {
        const std::string days = DaysText(world_, figures_);
        html_ = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                "style-src 'unsafe-inline'\">\n<title>TarnexComm, " +
                days + "</title>\n<style>" + kReportStyle + "</style>\n</head>\n<body>\n";
        html_ += "<header>\n" + Element("h1", "TarnexComm") + Element("p", days, "faint") +
                 "</header>\n";
        Tiles();
        Words();
        Alarms();
        Fates();
        Unit();
        Signal();
        NotSent();
        html_ += Element("footer", "<p>Made " + HtmlText(IsoTime(world_, world_.now())) +
                                       " by tarnexctl " TARNEX_VERSION " from " +
                                       HtmlText(world_.history_path) +
                                       ". A message that was sent again counts once.</p>");
        return html_ + "</body>\n</html>\n";
    }

  private:
    void Section(const std::string& title, const std::string& html) {
        html_ += Element("section", "\n" + Element("h2", title) + html);
    }

    void Tiles() {
        std::string tiles;
        for (const auto& [name, value] : Summary(figures_)) {
            const bool bad = name == "not sent" && value != "0";
            tiles += "<div>" + Element("dt", HtmlText(name)) +
                     Element("dd", HtmlText(value), bad ? "bad" : "") + "</div>\n";
        }
        html_ += Element("section", "\n" + Element("dl", "\n" + tiles));
    }

    void Words() {
        std::string list;
        for (const std::string& sentence : WhatWentWrong(world_, figures_))
            list += Element("li", HtmlText(sentence));
        const std::string held_back = HeldBackText(figures_);
        Section("What went wrong",
                Element("ul", "\n" + list) +
                    (held_back.empty() ? "" : Element("p", HtmlText(held_back), "faint")));
    }

    std::int64_t BucketLength() const {
        return figures_.edges.back() - figures_.edges[figures_.edges.size() - 2];
    }
    // "hour", "day" or "week": what the last bar stands for, which is never a shortened one.
    const char* BucketWord() const {
        const std::int64_t length = BucketLength();
        return length < 2 * kHour ? "hour" : length < 48 * kHour ? "day" : "week";
    }
    // A plot of all buckets; fill gives each column its values and the rest of its title.
    template <class Fill>
    std::string PlotOf(Plot plot, const Fill& fill) const {
        const bool hours = BucketLength() < 2 * kHour;
        for (std::size_t i = 0; i < figures_.buckets.size(); ++i) {
            const std::string begin = MinuteText(world_, figures_.edges[i]);
            PlotColumn column{.label = hours ? begin.substr(11) : begin.substr(5, 5),
                              .title = hours ? begin : begin.substr(0, 10),
                              .parts = {},
                              .low = {},
                              .mid = {},
                              .high = {}};
            column.title += ": " + fill(figures_.buckets[i], column);
            plot.columns.push_back(std::move(column));
        }
        return PlotSvg(plot, kWidePlot, "wide") + PlotSvg(plot, kNarrowPlot, "narrow");
    }
    static std::string Legend(const std::vector<std::pair<std::string, std::string>>& entries) {
        std::string legend;
        for (const auto& [kind, word] : entries)
            legend += "<span>" + (kind.empty() ? "" : "<i class=\"" + kind + "\"></i>") + word +
                      "</span>\n";
        return Element("p", "\n" + legend, "legend");
    }

    void Alarms() {
        if (figures_.total.alarms == 0)
            return Section("Alarms", Element("p", "There was no alarm.", "faint"));
        Plot plot{.name = std::string("Alarms of each ") + BucketWord(),
                  .unit = "alarms",
                  .series = {"sent"},
                  .columns = {}};
        Section(std::string("Alarms, each ") + BucketWord(),
                PlotOf(plot, [](const ReportBucket& bucket, PlotColumn& column) {
                    column.parts = {double(bucket.alarms)};
                    return Counted(bucket.alarms, "alarm");
                }));
    }

    void Fates() {
        if (figures_.fates.empty())
            return Section("Messages", Element("p", "There was no SMS and no mail.", "faint"));
        Plot plot{.name = std::string("SMS and mails of each ") + BucketWord() +
                          " by what became of them",
                  .unit = "messages",
                  .series = {},
                  .columns = {}};
        std::vector<std::pair<std::string, std::string>> legend;
        for (const Outcome outcome : kStack) {
            plot.series.emplace_back(kOutcomeClasses[std::size_t(outcome)]);
            if (figures_.total.messages[std::size_t(outcome)] > 0)
                legend.emplace_back(kOutcomeClasses[std::size_t(outcome)],
                                    kOutcomeWords[std::size_t(outcome)]);
        }
        const std::string svg = PlotOf(plot, [](const ReportBucket& bucket, PlotColumn& column) {
            std::vector<std::string> words;
            for (const Outcome outcome : kStack) {
                const int count = bucket.messages[std::size_t(outcome)];
                column.parts.push_back(count);
                if (count > 0)
                    words.push_back(std::to_string(count) + " " +
                                    kOutcomeWords[std::size_t(outcome)]);
            }
            return words.empty() ? "no message" : Joined(words, ", ");
        });
        Section(std::string("Messages, each ") + BucketWord(), svg + Legend(legend) + FateTable());
    }

    std::string FateTable() const {
        std::string head = "<th></th>";
        for (const auto& [kind, counts] : figures_.fates)
            head += "<th class=\"number\">" + kind + "</th>";
        std::string rows;
        for (std::size_t fate = 0; fate < kReportedFates.size(); ++fate) {
            std::string cells;
            bool any = false;
            for (const auto& [kind, counts] : figures_.fates) {
                cells += "<td class=\"number\">" + std::to_string(counts[fate]) + "</td>";
                any = any || counts[fate] > 0;
            }
            if (any)
                rows +=
                    "<tr><td>" + std::string(kReportedFates[fate]) + "</td>" + cells + "</tr>\n";
        }
        return "<table>\n<tr>" + head + "</tr>\n" + rows + "</table>\n";
    }

    void Unit() {
        if (figures_.total.known == 0)
            return Section(
                "Unit",
                Element("p", "Nothing is known of the unit: the service did not run.", "faint"));
        Plot plot{.name =
                      std::string("Share of each ") + BucketWord() + " in which the unit was ready",
                  .unit = "% of the time",
                  .top = 100,
                  .series = {"not-sent", "sent"},
                  .columns = {}};
        const std::string svg = PlotOf(plot, [](const ReportBucket& bucket, PlotColumn& column) {
            if (bucket.known == 0)
                return std::string("not known");
            const std::int64_t not_ready = bucket.known - bucket.ready;
            for (const std::int64_t part : {not_ready, bucket.ready})
                column.parts.push_back(100.0 * double(part) / double(bucket.length));
            return "ready " + Percent(bucket.ready, bucket.length) + ", not ready " +
                   Percent(not_ready, bucket.length);
        });
        Section(
            std::string("Unit, each ") + BucketWord(),
            svg + Legend({{"sent", "ready"}, {"not-sent", "not ready"}, {"", "empty: not known"}}));
    }

    void Signal() {
        if (figures_.total.readings == 0)
            return Section("Signal", Element("p", "No signal was read.", "faint"));
        Plot plot{.name = std::string("Signal of each ") + BucketWord(),
                  .unit = "of 31",
                  .top = 31,
                  .limit = 5,
                  .series = {},
                  .columns = {}};
        const std::string svg =
            PlotOf(plot, [](const ReportBucket& bucket, PlotColumn& column) -> std::string {
                if (bucket.readings == 0)
                    return "not read";
                column.low = bucket.weakest;
                column.mid = double(bucket.signal_sum) / bucket.readings;
                column.high = bucket.strongest;
                return SignalText(bucket);
            });
        Section(std::string("Signal, each ") + BucketWord(),
                svg + Legend({{"sent", "average"},
                              {"band", "weakest to strongest"},
                              {"", "below the dashed line: weak"}}));
    }

    void NotSent() {
        const auto& all = figures_.not_sent;
        if (all.empty())
            return;
        std::string rows;
        for (std::size_t i = all.size() - std::min(all.size(), kMostMessages); i < all.size();
             ++i) {
            const HistoryRow& row = all[i];
            rows += "<tr><td>" + MinuteText(world_, row.at) + "</td><td>" + row.kind + "</td><td>" +
                    HtmlText(RecipientText(row)) + "</td><td>" + row.fate + "</td><td>" +
                    HtmlText(row.text) + "</td></tr>\n";
        }
        Section("Not sent",
                (all.size() > kMostMessages ? Element("p",
                                                      "The last " + std::to_string(kMostMessages) +
                                                          " of " + std::to_string(all.size()) + ".",
                                                      "faint")
                                            : "") +
                    "<table class=\"messages\">\n<thead><tr><th>when</th><th></th><th>to</th>"
                    "<th>fate</th><th>text</th></tr></thead>\n<tbody>\n" +
                    rows + "</tbody>\n</table>\n" +
                    Element("p",
                            "\"tarnexctl history --unsent\" lists those that can be sent again by "
                            "\"tarnexctl resend\".",
                            "faint"));
    }

    const OperatorWorld& world_;
    const ReportFigures& figures_;
    std::string html_;
};

} // namespace

std::string ReportPage(const OperatorWorld& world, const ReportFigures& figures) {
    return PageWriter(world, figures).Html();
}

} // namespace tarnex
