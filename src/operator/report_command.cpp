#include "operator/commands.h"
#include "operator/file_access.h"
#include "operator/history_file.h"
#include "operator/moment.h"
#include "operator/report_page.h"
#include "operator/report_words.h"
#include "operator/text_output.h"

#include <ostream>

namespace tarnex {

namespace {

// A bar stands for an hour of so many days, or a day, or a week.
constexpr int kDaysInHours = 2;
constexpr int kDaysInDays = 92;

// Where each bar begins, and the end of the last one: the midnight to come.
std::vector<std::int64_t> EdgesOf(const OperatorWorld& world, int days) {
    using namespace std::chrono;
    const sys_seconds end = floor<std::chrono::days>(AsIfUtc(LocalNow(world))) + 24h;
    const sys_seconds begin = end - days * 24h;
    const seconds step = days <= kDaysInHours ? 1h : days <= kDaysInDays ? 24h : 7 * 24h;
    std::vector<std::int64_t> edges;
    for (sys_seconds edge = end; edge > begin; edge -= step)
        edges.insert(edges.begin(), UnixMs(TimeOf(world, CalendarOf(edge))));
    edges.insert(edges.begin(), UnixMs(TimeOf(world, CalendarOf(begin))));
    return edges;
}

ReportFigures Figures(const OperatorWorld& world, int days) {
    HistoryFile history(world);
    std::vector<std::int64_t> edges = EdgesOf(world, days);
    // How the unit was when the days begin.
    std::vector<HistoryRow> rows = history.Rows({.until = edges.front(), .unit = true, .last = 1});
    std::vector<HistoryRow> later = history.Rows({.since = edges.front()});
    rows.insert(rows.end(), std::make_move_iterator(later.begin()),
                std::make_move_iterator(later.end()));
    return FiguresOf(rows, std::move(edges), UnixMs(world.now()));
}

void PrintText(const OperatorWorld& world, const ReportFigures& figures) {
    world.out << DaysText(world, figures) << '\n';
    TextTable table;
    for (const auto& [name, value] : Summary(figures))
        table.Add({"  " + name, value});
    table.Print(world);
    world.out << "What went wrong:\n";
    for (const std::string& sentence : WhatWentWrong(world, figures))
        world.out << "  " << Printable(sentence) << '\n';
    if (const std::string text = HeldBackText(figures); !text.empty())
        world.out << "  " << Printable(text) << '\n';
}

} // namespace

ExitStatus Report(OperatorWorld& world, const ReportOptions& options) {
    const ReportFigures figures = Figures(world, options.days);
    if (options.html.empty())
        PrintText(world, figures);
    else if (options.html == "-")
        world.out << ReportPage(world, figures);
    else // people's messages
        WriteOutput(world, options.html, ReportPage(world, figures), Readers::kOwner,
                    "name - for standard output");
    return kExitDone;
}

} // namespace tarnex
