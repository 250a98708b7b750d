#pragma once

#include "operator/operator_world.h"
#include "operator/report_figures.h"

namespace tarnex {

// A report in words.

// "2024-05-06 22:30", local.
std::string MinuteText(const OperatorWorld& world, std::int64_t ms);
// "2024-05-01 to 2024-05-06"
std::string DaysText(const OperatorWorld& world, const ReportFigures& figures);
// "99.2 %"; of whole 0, "not known"
std::string Percent(std::int64_t part, std::int64_t whole);
// "average 20, 17 to 22", of one with readings
std::string SignalText(const ReportBucket& bucket);
// To whom it went: of a telephone number the last digits.
std::string RecipientText(const HistoryRow& row);

// The main figures: what they are of, and what they are.
std::vector<std::pair<std::string, std::string>> Summary(const ReportFigures& figures);
// What went wrong, a sentence or two each, or that nothing did.
std::vector<std::string> WhatWentWrong(const OperatorWorld& world, const ReportFigures& figures);
// What was held back on purpose, by reason; "" for nothing.
std::string HeldBackText(const ReportFigures& figures);

} // namespace tarnex
