#include "operator/report_plot.h"

#include "operator/text_output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

namespace tarnex {

namespace {

constexpr double kHeight = 200;
constexpr double kLeft = 44; // room for the numbers
constexpr double kRight = 8;
constexpr double kTop = 22;
constexpr double kBottom = 26;
constexpr double kLabelWidth = 52; // and a gap
constexpr double kWidestBar = 28;
constexpr int kMostSteps = 4;

// With one decimal at most, in any locale.
std::string SvgNumber(double number) {
    char text[32];
    const double rounded = std::round(number * 10) / 10;
    return {text, std::to_chars(text, text + sizeof text, rounded).ptr};
}

std::string Attribute(const char* name, double value) {
    return std::string(" ") + name + "=\"" + SvgNumber(value) + "\"";
}

// Steps of the axis, 1, 2 or 5 times a power of ten, so that few reach up to highest.
double StepFor(double highest) {
    double power = 1;
    while (true) {
        for (const int factor : {1, 2, 5})
            if (highest <= factor * power * kMostSteps)
                return factor * power;
        power *= 10;
    }
}

double Sum(const std::vector<double>& parts) {
    return std::accumulate(parts.begin(), parts.end(), 0.0);
}

class Drawing {
  public:
    Drawing(const Plot& plot, int width)
        : plot_(plot), width_(width), step_(StepFor(std::max(plot.top, Highest()))),
          top_(plot.top > 0 ? plot.top : std::ceil(std::max(1.0, Highest()) / step_) * step_),
          column_width_((width - kLeft - kRight) / double(plot.columns.size())) {}

    std::string Svg(const std::string& kind) {
        svg_ = "<svg class=\"" + kind + "\" role=\"img\" viewBox=\"0 0 " + SvgNumber(width_) + " " +
               SvgNumber(kHeight) + "\" aria-label=\"" + HtmlText(plot_.name) + "\">\n";
        Axis();
        for (std::size_t i = 0; i < plot_.columns.size(); ++i)
            Bars(i);
        Ranges();
        if (plot_.limit > 0)
            Line("limit", kLeft, Y(plot_.limit), width_ - kRight, Y(plot_.limit));
        Labels();
        for (std::size_t i = 0; i < plot_.columns.size(); ++i)
            Title(i);
        return svg_ + "</svg>\n";
    }

  private:
    double Highest() const {
        double highest = 0;
        for (const PlotColumn& column : plot_.columns)
            highest = std::max({highest, Sum(column.parts), column.high.value_or(0)});
        return highest;
    }
    double Y(double value) const {
        return kHeight - kBottom - value / top_ * (kHeight - kTop - kBottom);
    }
    double Left(std::size_t column) const { return kLeft + double(column) * column_width_; }
    double Middle(std::size_t column) const { return Left(column) + column_width_ / 2; }

    void Line(const char* kind, double x1, double y1, double x2, double y2) {
        svg_ += std::string("<line class=\"") + kind + "\"" + Attribute("x1", x1) +
                Attribute("y1", y1) + Attribute("x2", x2) + Attribute("y2", y2) + "/>\n";
    }
    void Rectangle(const std::string& kind, double x, double y, double width, double height) {
        svg_ += "<rect class=\"" + kind + "\"" + Attribute("x", x) + Attribute("y", y) +
                Attribute("width", width) + Attribute("height", height) + "/>\n";
    }
    void Label(double x, double y, const char* anchor, const std::string& text) {
        svg_ += "<text class=\"label\"" + Attribute("x", x) + Attribute("y", y) +
                " text-anchor=\"" + anchor + "\">" + HtmlText(text) + "</text>\n";
    }

    void Axis() {
        for (double value = 0; value <= top_ + step_ / 2; value += step_) {
            const double shown = std::min(value, top_);
            Line(value == 0 ? "axis" : "grid", kLeft, Y(shown), width_ - kRight, Y(shown));
            Label(kLeft - 6, Y(shown) + 4, "end", SvgNumber(shown));
        }
        Label(kLeft - 6, kTop - 10, "start", plot_.unit);
    }

    void Bars(std::size_t index) {
        const double width = std::min(kWidestBar, column_width_ - std::min(2.0, column_width_ / 4));
        double below = 0;
        const auto& parts = plot_.columns[index].parts;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (parts[i] > 0)
                Rectangle(plot_.series[i], Middle(index) - width / 2, Y(below + parts[i]), width,
                          Y(below) - Y(below + parts[i]));
            below += parts[i];
        }
    }

    // A band from low to high with a line of the means; a gap where there is none.
    void Ranges() {
        for (std::size_t begin = 0; begin < plot_.columns.size(); ++begin) {
            std::size_t end = begin;
            while (end < plot_.columns.size() && plot_.columns[end].mid)
                ++end;
            if (end > begin)
                Range(begin, end);
            begin = end;
        }
    }
    void Range(std::size_t begin, std::size_t end) {
        std::string there, back, means;
        // At its outer ends it has the width of a bar, so that one column alone shows too.
        const auto add = [&](double x, const PlotColumn& column) {
            there += SvgNumber(x) + "," + SvgNumber(Y(*column.high)) + " ";
            back.insert(0, SvgNumber(x) + "," + SvgNumber(Y(*column.low)) + " ");
            means += SvgNumber(x) + "," + SvgNumber(Y(*column.mid)) + " ";
        };
        const double side = std::min(kWidestBar, column_width_) / 2;
        add(Middle(begin) - side, plot_.columns[begin]);
        for (std::size_t i = begin; i < end; ++i)
            add(Middle(i), plot_.columns[i]);
        add(Middle(end - 1) + side, plot_.columns[end - 1]);
        svg_ += "<polygon class=\"band\" points=\"" + there + back + "\"/>\n";
        svg_ += "<polyline class=\"mean\" points=\"" + means + "\"/>\n";
    }

    void Labels() {
        const std::size_t count = plot_.columns.size();
        const auto room = std::max(1.0, std::floor((width_ - kLeft - kRight) / kLabelWidth));
        const auto stride = std::size_t(std::ceil(double(count) / room));
        for (std::size_t i = 0; i < count; i += stride)
            Label(std::min(Middle(i), width_ - kLabelWidth / 2), kHeight - 8, "middle",
                  plot_.columns[i].label);
    }

    void Title(std::size_t index) {
        svg_ += "<rect class=\"touch\"" + Attribute("x", Left(index)) + Attribute("y", kTop) +
                Attribute("width", column_width_) + Attribute("height", kHeight - kTop - kBottom) +
                "><title>" + HtmlText(plot_.columns[index].title) + "</title></rect>\n";
    }

    const Plot& plot_;
    const double width_;
    const double step_;
    const double top_;
    const double column_width_;
    std::string svg_;
};

} // namespace

std::string HtmlText(const std::string& utf8) {
    std::string html;
    for (const char c : Printable(utf8)) {
        if (c == '&')
            html += "&amp;";
        else if (c == '<')
            html += "&lt;";
        else if (c == '>')
            html += "&gt;";
        else if (c == '"')
            html += "&quot;";
        else if (c == '\'')
            html += "&#39;";
        else
            html += c;
    }
    return html;
}

std::string PlotSvg(const Plot& plot, int width, const std::string& kind) {
    return Drawing(plot, width).Svg(kind);
}

} // namespace tarnex
