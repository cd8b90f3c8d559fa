// Drawing internals shared by the SVG renderers of plots (plot_svg.cpp and
// plot_spectra.cpp): the page geometry, reading a data table by
// column and named value, value axes and the SVG writer. Not for use
// outside src/host/plot_*.cpp and their tests.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/host.hpp"
#include "host/output_layer.hpp"
#include "run/missing.hpp"

namespace qvt::plotdetail {

inline constexpr double kWidth = 640, kHeight = 400;
inline constexpr double kLeft = 70, kRight = 20, kTop = 40, kBottom = 50;

inline std::string num(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.2f", v);
  return buf;
}

inline std::string tickText(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.6g", std::fabs(v) < 1e-12 ? 0.0 : v);
  return buf;
}

inline bool present(double v) { return !wzmis(v) && std::isfinite(v); }

inline int colIndex(const Table& t, std::string_view name) {
  for (std::size_t i = 0; i < t.cols.size(); ++i)
    if (t.cols[i].name == name) return static_cast<int>(i);
  return -1;
}

inline std::vector<double> column(const Table& t, std::string_view name) {
  std::vector<double> v;
  const int c = colIndex(t, name);
  if (c < 0) return v;
  for (const auto& row : t.rows) {
    const double* d = std::get_if<double>(&row[static_cast<std::size_t>(c)]);
    v.push_back(d != nullptr ? *d : kMissing);
  }
  return v;
}

inline std::string namedValue(const Table& t, const PlotGraph& g, std::string_view name) {
  for (const TableValue& v : g.values)
    if (v.name == name) return v.text;
  for (const TableValue& v : t.values)
    if (v.name == name) return v.text;
  return {};
}

// A value axis from lo to hi with "nice" ticks of step 1, 2 or 5 times a
// power of ten (Heckbert, "Nice numbers for graph labels", Graphics Gems, 1990).
struct Axis {
  double lo = 0, hi = 1, step = 0.2;
  double pos(double v, double p0, double p1) const { return p0 + (v - lo) / (hi - lo) * (p1 - p0); }
  // Tick i is lo + i * step for i from 0 to ticks(); counted, not summed, so
  // that a step lost in the rounding of lo can't stall the loop.
  int ticks() const {
    const double q = (hi - lo) / step;
    return q >= 0 && q < 1000 ? static_cast<int>(std::lround(q)) : 0;
  }
  double tick(int i) const { return lo + i * step; }
};

inline Axis niceAxis(double lo, double hi) {
  if (!std::isfinite(lo) || !std::isfinite(hi)) return {};
  // A range within a few units in the last place of its values (a constant
  // series back from a transformation) is drawn as flat: its step would be
  // below the spacing of doubles there.
  if (!(hi - lo > 1e-9 * std::max(std::fabs(lo), std::fabs(hi)))) {
    const double mid = lo / 2 + hi / 2;
    const double pad = mid != 0 ? std::fabs(mid) * 0.1 : 1;
    lo = mid - pad;
    hi = mid + pad;
  }
  const double raw = hi / 5 - lo / 5;  // (hi - lo) / 5 without overflow
  const double mag = std::pow(10.0, std::floor(std::log10(raw)));
  const double f = raw / mag;
  const double step = (f <= 1 ? 1 : f <= 2 ? 2 : f <= 5 ? 5 : 10) * mag;
  return {std::floor(lo / step) * step, std::ceil(hi / step) * step, step};
}

class Svg {
 public:
  explicit Svg(const std::string& title) {
    out_ = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + num(kWidth) + "\" height=\"" + num(kHeight) +
           "\" viewBox=\"0 0 " + num(kWidth) + " " + num(kHeight) + "\" font-family=\"sans-serif\" font-size=\"11\">\n";
    out_ += "<title>" + htmlEscape(title) + "</title>\n";
    text(kWidth / 2, 22, title, "middle", "font-size=\"14\"");
  }
  void text(double x, double y, std::string_view s, const char* anchor, const char* extra = "") {
    out_ += "<text x=\"" + num(x) + "\" y=\"" + num(y) + "\" text-anchor=\"" + anchor + "\" " + extra + ">" +
            htmlEscape(s) + "</text>\n";
  }
  void line(double x0, double y0, double x1, double y1, const char* style) {
    out_ += "<line x1=\"" + num(x0) + "\" y1=\"" + num(y0) + "\" x2=\"" + num(x1) + "\" y2=\"" + num(y1) +
            "\" " + style + "/>\n";
  }
  void rect(double x, double y, double w, double h, const char* style) {
    out_ += "<rect x=\"" + num(x) + "\" y=\"" + num(std::min(y, y + h)) + "\" width=\"" + num(std::max(w, 0.0)) +
            "\" height=\"" + num(std::fabs(h)) + "\" " + style + "/>\n";
  }
  void path(const std::string& points, const char* element, const char* style) {
    if (!points.empty()) out_ += std::string("<") + element + " points=\"" + points + "\" " + style + "/>\n";
  }
  void circle(double x, double y, const char* style) {
    out_ += "<circle cx=\"" + num(x) + "\" cy=\"" + num(y) + "\" r=\"2\" " + style + "/>\n";
  }
  // The value axis at the left with its ticks and grid, and the label.
  void yAxis(const Axis& a, std::string_view label) {
    for (int i = 0; i <= a.ticks(); ++i) {
      const double v = a.tick(i);
      const double y = a.pos(v, kHeight - kBottom, kTop);
      line(kLeft - 4, y, kWidth - kRight, y, "stroke=\"#ddd\"");
      text(kLeft - 6, y + 4, tickText(v), "end");
    }
    line(kLeft, kTop, kLeft, kHeight - kBottom, "stroke=\"black\"");
    text(14, (kTop + kHeight - kBottom) / 2, label, "middle",
         ("transform=\"rotate(-90 14 " + num((kTop + kHeight - kBottom) / 2) + ")\"").c_str());
  }
  void xAxis(std::string_view label) {
    line(kLeft, kHeight - kBottom, kWidth - kRight, kHeight - kBottom, "stroke=\"black\"");
    text((kLeft + kWidth - kRight) / 2, kHeight - 12, label, "middle");
  }
  std::string done() { return out_ + "</svg>\n"; }

 private:
  std::string out_;
};

// A drawn plot (a document of Svg) placed inside a larger picture at (x, y)
// and scaled by `scale`: its root element becomes a nested <svg> whose
// viewBox keeps the plot's own coordinates. Empty for an empty plot.
inline std::string embed(const std::string& doc, double x, double y, double scale) {
  const std::size_t eol = doc.find('\n');
  if (doc.empty() || eol == std::string::npos) return {};
  return "<svg x=\"" + num(x) + "\" y=\"" + num(y) + "\" width=\"" + num(kWidth * scale) + "\" height=\"" +
         num(kHeight * scale) + "\" viewBox=\"0 0 " + num(kWidth) + " " + num(kHeight) + "\">" + doc.substr(eol);
}

// The bars of the autocorrelations (ACF, PACF, IACF and their NORM forms,
// chosen by the graph's name) and of the white-noise probabilities of the
// "Error" column, as their single plots draw them (plot_svg.cpp).
std::string correlations(const Table& t, const PlotGraph& g);
std::string whiteNoise(const Table& t, const PlotGraph& g, bool logScale);

// The frequency plots (plot_spectra.cpp).
std::string periodogramPlot(const Table& t, const PlotGraph& g);
std::string spectralDensityPlot(const Table& t, const PlotGraph& g);
std::string correlationPanel(const Table& t, const PlotGraph& g);

}  // namespace qvt::plotdetail
