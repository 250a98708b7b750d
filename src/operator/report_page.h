#pragma once

#include "operator/operator_world.h"
#include "operator/report_figures.h"

namespace tarnex {

// A report as one HTML page that needs nothing else: no script, no file, no network. It suits light
// and dark, wide and narrow screens.
std::string ReportPage(const OperatorWorld& world, const ReportFigures& figures);

} // namespace tarnex
