#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnex {

// Plots as inline SVG without a size of their own. Colours come from the classes of the page: one
// for each series, "axis", "grid" and "label".

// Text as it may stand in HTML, control characters escaped.
std::string HtmlText(const std::string& utf8);

// What stands at one place of the time axis.
struct PlotColumn {
    std::string label;                    // under the axis, where there is room
    std::string title;                    // of what it shows, for the pointer
    std::vector<double> parts;            // bars: from the axis upwards
    std::optional<double> low, mid, high; // or a range with its mean
};

struct Plot {
    std::string name;                // for those who cannot see it
    std::string unit;                // behind the highest number of the vertical axis
    double top = 0;                  // of the vertical axis; 0: as high as it takes
    double limit = 0;                // a line across; 0: none
    std::vector<std::string> series; // classes of the parts
    std::vector<PlotColumn> columns; // one at least
};

// width: of the view box; its texts have 12 units. kind: the class of the whole.
std::string PlotSvg(const Plot& plot, int width, const std::string& kind);

} // namespace tarnex
