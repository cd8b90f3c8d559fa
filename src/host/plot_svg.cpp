// SVG renderers of the plots. A plot reads its data table by column name
// and draws one of three pictures: lines over time with a confidence band,
// bars by lag (the autocorrelations of the errors), or a histogram; the
// frequency plots and the panel of correlations are drawn by
// plot_spectra.cpp. A plot name without a renderer draws nothing.
#include "host/plot_svg.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

#include "host/output_layer.hpp"
#include "host/plot_draw.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using namespace plotdetail;

double xAt(std::size_t i, std::size_t n) {
  return kLeft + (n > 1 ? static_cast<double>(i) / static_cast<double>(n - 1) : 0.5) * (kWidth - kLeft - kRight);
}

// Lines over the rows: a band between two columns, lines, and points of the
// actual values; a missing value breaks a line and the band.
struct Lines {
  std::string lower, upper;         // the band, when both are named
  std::vector<std::string> lines;   // drawn as lines
  std::string points;               // drawn as points
  bool zero = false;                // a reference line at 0
};

std::string timeLines(const Table& t, const PlotGraph& g, const Lines& want) {
  const std::size_t n = t.rows.size();
  std::vector<std::vector<double>> series;
  for (const std::string& c : want.lines) series.push_back(column(t, c));
  const std::vector<double> lo = column(t, want.lower), hi = column(t, want.upper), pts = column(t, want.points);
  double vmin = want.zero ? 0 : INFINITY, vmax = want.zero ? 0 : -INFINITY;
  for (const auto* s : {&lo, &hi, &pts})
    for (double v : *s)
      if (present(v)) vmin = std::min(vmin, v), vmax = std::max(vmax, v);
  for (const auto& s : series)
    for (double v : s)
      if (present(v)) vmin = std::min(vmin, v), vmax = std::max(vmax, v);
  if (n == 0 || !std::isfinite(vmin)) return {};
  const Axis a = niceAxis(vmin, vmax);
  const auto y = [&](double v) { return a.pos(v, kHeight - kBottom, kTop); };
  Svg svg(g.title);
  svg.yAxis(a, g.label);

  // The time axis: about six labelled rows, in the ID's format when there is one.
  int tc = -1;
  for (const char* c : {"Time", "DemandTime", "Obs"})
    if (tc < 0) tc = colIndex(t, c);
  const std::size_t every = std::max<std::size_t>(1, (n + 5) / 6);
  for (std::size_t i = 0; i < n; i += every) {
    svg.line(xAt(i, n), kHeight - kBottom, xAt(i, n), kHeight - kBottom + 4, "stroke=\"black\"");
    if (tc >= 0) {
      const auto& cell = t.rows[i][static_cast<std::size_t>(tc)];
      svg.text(xAt(i, n), kHeight - kBottom + 16, renderCell(cell, t.cols[static_cast<std::size_t>(tc)]), "middle");
    }
  }
  svg.xAxis(tc >= 0 ? t.cols[static_cast<std::size_t>(tc)].label : "Obs");
  if (want.zero) svg.line(kLeft, y(0), kWidth - kRight, y(0), "stroke=\"gray\" stroke-dasharray=\"4 3\"");

  if (!lo.empty() && !hi.empty()) {
    for (std::size_t i = 0; i < n;) {
      std::size_t j = i;
      while (j < n && present(lo[j]) && present(hi[j])) ++j;
      if (j == i + 1) {  // a band of one row has no area: an error bar
        svg.line(xAt(i, n), y(hi[i]), xAt(i, n), y(lo[i]), "stroke=\"#8fb3dc\" stroke-width=\"3\"");
      } else if (j > i) {
        std::string p;
        for (std::size_t k = i; k < j; ++k) p += num(xAt(k, n)) + "," + num(y(hi[k])) + " ";
        for (std::size_t k = j; k-- > i;) p += num(xAt(k, n)) + "," + num(y(lo[k])) + " ";
        svg.path(p, "polygon", "fill=\"#cfe0f3\" stroke=\"none\"");
      }
      i = j + 1;
    }
  }
  static const char* const kColours[] = {"#1f5fa8", "#b03030", "#2f8f2f"};
  for (std::size_t s = 0; s < series.size(); ++s) {
    const std::string style = std::string("fill=\"none\" stroke=\"") + kColours[s % 3] + "\" stroke-width=\"1.5\"";
    std::string p;
    std::size_t run = 0;  // points in p: a line of one point is drawn as a dot
    for (std::size_t i = 0; i <= n; ++i) {
      if (i < n && present(series[s][i])) {
        p += num(xAt(i, n)) + "," + num(y(series[s][i])) + " ";
        ++run;
      } else {
        if (run == 1) {
          const std::string fill = std::string("fill=\"") + kColours[s % 3] + "\"";
          svg.circle(xAt(i - 1, n), y(series[s][i - 1]), fill.c_str());
        } else {
          svg.path(p, "polyline", style.c_str());
        }
        p.clear();
        run = 0;
      }
    }
  }
  for (std::size_t i = 0; i < pts.size(); ++i)
    if (present(pts[i])) svg.circle(xAt(i, n), y(pts[i]), "fill=\"black\"");
  return svg.done();
}

// Bars from a baseline of 0, one for each lag, and a dashed limit at lim
// (and at -lim when two-sided).
std::string lagBars(const PlotGraph& g, const std::vector<double>& v, int first, double lim, const char* xlabel,
                    bool twoSided = true) {
  if (v.size() <= static_cast<std::size_t>(first)) return {};
  double vmin = std::min({0.0, lim, twoSided ? -lim : 0.0}), vmax = std::max({0.0, lim, twoSided ? -lim : 0.0});
  for (std::size_t k = static_cast<std::size_t>(first); k < v.size(); ++k)
    vmin = std::min(vmin, v[k]), vmax = std::max(vmax, v[k]);
  const Axis a = niceAxis(vmin, vmax);
  const auto y = [&](double x) { return a.pos(x, kHeight - kBottom, kTop); };
  Svg svg(g.title);
  svg.yAxis(a, g.label);
  svg.xAxis(xlabel);
  const std::size_t n = v.size();
  const double w = (kWidth - kLeft - kRight) / static_cast<double>(n + 1);
  for (std::size_t k = static_cast<std::size_t>(first); k < n; ++k) {
    const double x = kLeft + w * (static_cast<double>(k) + 0.75);
    svg.rect(x, y(0), w * 0.5, y(v[k]) - y(0), "fill=\"#1f5fa8\"");
    if (k % 5 == 0 || n <= 13) svg.text(x + w * 0.25, kHeight - kBottom + 16, std::to_string(k), "middle");
  }
  svg.line(kLeft, y(0), kWidth - kRight, y(0), "stroke=\"black\"");
  for (double l : {lim, -lim}) {
    if (l != 0) svg.line(kLeft, y(l), kWidth - kRight, y(l), "stroke=\"gray\" stroke-dasharray=\"4 3\"");
    if (!twoSided) break;
  }
  return svg.done();
}

// A histogram of the values present, with Sturges' number of bins.
std::string histogram(const Table& t, const PlotGraph& g, std::string_view col) {
  std::vector<double> v;
  for (double x : column(t, col))
    if (present(x)) v.push_back(x);
  if (v.empty()) return {};
  const auto [mn, mx] = std::minmax_element(v.begin(), v.end());
  const Axis xa = niceAxis(*mn, *mx);
  const int bins = static_cast<int>(std::ceil(std::log2(static_cast<double>(v.size())))) + 1;
  const double width = (xa.hi - xa.lo) / bins;
  std::vector<int> count(static_cast<std::size_t>(bins), 0);
  for (double x : v) ++count[static_cast<std::size_t>(std::clamp(static_cast<int>((x - xa.lo) / width), 0, bins - 1))];
  const Axis ya = niceAxis(0, *std::max_element(count.begin(), count.end()));
  Svg svg(g.title);
  svg.yAxis(ya, "Count");
  svg.xAxis(g.label);
  for (int b = 0; b < bins; ++b) {
    const double x0 = xa.pos(xa.lo + b * width, kLeft, kWidth - kRight);
    const double x1 = xa.pos(xa.lo + (b + 1) * width, kLeft, kWidth - kRight);
    const double y0 = ya.pos(0, kHeight - kBottom, kTop);
    svg.rect(x0, y0, x1 - x0, ya.pos(count[static_cast<std::size_t>(b)], kHeight - kBottom, kTop) - y0,
             "fill=\"#1f5fa8\" stroke=\"white\"");
  }
  for (int i = 0; i <= xa.ticks(); ++i)
    svg.text(xa.pos(xa.tick(i), kLeft, kWidth - kRight), kHeight - kBottom + 16, tickText(xa.tick(i)), "middle");
  return svg.done();
}

}  // namespace

namespace plotdetail {

std::string correlations(const Table& t, const PlotGraph& g) {
  const std::vector<double> e = column(t, "Error");
  int nlags = std::atoi(namedValue(t, g, "NLags").c_str());
  if (nlags < 1) nlags = 1;
  const std::vector<double> r = plotAcf(e, nlags);
  if (r.empty()) return {};
  const long m = std::count_if(e.begin(), e.end(), present);
  const double se = 1 / std::sqrt(static_cast<double>(m));
  const std::string_view name = g.name;
  std::vector<double> v = name.starts_with("ErrorACF") ? r : name.starts_with("ErrorPACF") ? plotPacf(r) : plotIacf(r);
  // The NORM plots show each correlation in units of its white-noise
  // standard error 1 / sqrt(m), against the limits +-2.
  const bool norm = name.find("NORM") != std::string_view::npos;
  if (norm)
    for (double& x : v) x /= se;
  return lagBars(g, v, 1, norm ? 2 : 2 * se, "Lag");
}

// Bars of the white-noise probabilities, or of their common logarithms,
// against the 5% level; lags without degrees of freedom stay empty.
std::string whiteNoise(const Table& t, const PlotGraph& g, bool logScale) {
  const std::vector<double> e = column(t, "Error");
  const int nlags = std::max(1, std::atoi(namedValue(t, g, "NLags").c_str()));
  const int nparms = std::max(0, std::atoi(namedValue(t, g, "NParms").c_str()));
  const std::vector<double> r = plotAcf(e, nlags);
  if (r.empty()) return {};
  std::vector<double> p = plotWhiteNoise(r, std::count_if(e.begin(), e.end(), present), nparms);
  for (double& x : p) x = !present(x) ? 0 : logScale ? std::log10(std::max(x, 1e-300)) : x;
  return lagBars(g, p, 1, logScale ? std::log10(0.05) : 0.05, "Lag", false);
}

}  // namespace plotdetail

std::vector<double> plotAcf(const std::vector<double>& x, int nlags) {
  double sum = 0;
  long m = 0;
  for (double v : x)
    if (present(v)) sum += v, ++m;
  if (m < 2 || nlags < 0) return {};
  const double mean = sum / static_cast<double>(m);
  const std::size_t n = x.size();
  std::vector<double> c(static_cast<std::size_t>(nlags) + 1, 0.0);
  for (std::size_t k = 0; k < c.size(); ++k)
    for (std::size_t t = 0; t + k < n; ++t)
      if (present(x[t]) && present(x[t + k])) c[k] += (x[t] - mean) * (x[t + k] - mean);
  if (!(c[0] > 0)) return {};
  for (std::size_t k = c.size(); k-- > 0;) c[k] /= c[0];
  return c;
}

namespace {

// The Durbin-Levinson recursion over autocorrelations r[0 .. p]: the
// coefficients phi[1 .. p] of the order-p autoregression, and in partial
// (when given) the partial autocorrelations, 1 at lag 0.
std::vector<double> durbinLevinson(const std::vector<double>& r, std::vector<double>* partial) {
  const std::size_t p = r.empty() ? 0 : r.size() - 1;
  std::vector<double> phi(p + 1, 0.0), prev(p + 1, 0.0);
  if (partial != nullptr) partial->assign(r.empty() ? 0 : 1, 1.0);
  double v = 1;  // the innovation variance over c_0 of the fit so far
  for (std::size_t k = 1; k <= p; ++k) {
    double num = r[k];
    for (std::size_t j = 1; j < k; ++j) num -= prev[j] * r[k - j];
    const double kk = v > 0 ? num / v : 0;
    phi[k] = kk;
    for (std::size_t j = 1; j < k; ++j) phi[j] = prev[j] - kk * prev[k - j];
    v *= 1 - kk * kk;
    prev = phi;
    if (partial != nullptr) partial->push_back(kk);
  }
  return phi;
}

}  // namespace

std::vector<double> plotPacf(const std::vector<double>& r) {
  std::vector<double> out;
  durbinLevinson(r, &out);
  return out;
}

std::vector<double> plotIacf(const std::vector<double>& r) {
  // The autocorrelations of the dual process of the order-p autoregression.
  const std::size_t p = r.empty() ? 0 : r.size() - 1;
  const std::vector<double> phi = durbinLevinson(r, nullptr);
  double den = 1;
  for (std::size_t j = 1; j <= p; ++j) den += phi[j] * phi[j];
  std::vector<double> out(r.empty() ? 0 : p + 1, 1.0);
  for (std::size_t k = 1; k <= p; ++k) {
    double s = -phi[k];
    for (std::size_t j = 1; j + k <= p; ++j) s += phi[j] * phi[j + k];
    out[k] = s / den;
  }
  return out;
}

double plotChiSquareTail(double x, double df) {
  if (!(df > 0) || !(x > 0)) return df > 0 && x <= 0 ? 1 : kMissing;
  const double a = df / 2, z = x / 2;
  const double front = std::exp(-z + a * std::log(z) - std::lgamma(a));
  if (z < a + 1) {
    // The series of the lower tail P(a, z).
    double term = 1 / a, sum = term;
    for (int n = 1; n < 1000 && std::fabs(term) > std::fabs(sum) * 1e-16; ++n) sum += term *= z / (a + n);
    return std::max(0.0, 1 - sum * front);
  }
  // The continued fraction of the upper tail by the modified Lentz method.
  constexpr double kTiny = 1e-300;
  double b = z + 1 - a, c = 1 / kTiny, d = 1 / b, h = d;
  for (int i = 1; i < 1000; ++i) {
    const double an = -i * (i - a);
    b += 2;
    d = an * d + b;
    d = std::fabs(d) < kTiny ? kTiny : d;
    c = b + an / c;
    c = std::fabs(c) < kTiny ? kTiny : c;
    d = 1 / d;
    const double del = d * c;
    h *= del;
    if (std::fabs(del - 1) < 1e-16) break;
  }
  return front * h;
}

std::vector<double> plotWhiteNoise(const std::vector<double>& r, long m, int nparms) {
  std::vector<double> p(r.size(), kMissing);
  double q = 0;
  for (std::size_t k = 1; k < r.size() && static_cast<long>(k) < m; ++k) {
    q += r[k] * r[k] / static_cast<double>(m - static_cast<long>(k));
    const long df = static_cast<long>(k) - nparms;
    if (df >= 1)
      p[k] = plotChiSquareTail(static_cast<double>(m) * static_cast<double>(m + 2) * q, static_cast<double>(df));
  }
  return p;
}

std::string renderGraphSvg(const Table& data, const PlotGraph& g) {
  const std::string_view n = g.name;
  if (n == "ModelPlot" || n == "ForecastsPlot" || n == "ForecastsOnlyPlot" || n == "ModelForecastsPlot")
    return timeLines(data, g, {"Lower", "Upper", {"Predict"}, "Actual", false});
  if (n == "LevelStatePlot") return timeLines(data, g, {"", "", {"Level"}, "", false});
  if (n == "TrendStatePlot") return timeLines(data, g, {"", "", {"Trend"}, "", true});
  if (n == "SeasonStatePlot") return timeLines(data, g, {"", "", {"Season"}, "", true});
  if (n == "ErrorPlot") return timeLines(data, g, {"", "", {}, "Error", true});
  if (n == "ErrorHistogram") return histogram(data, g, "Error");
  if (n.starts_with("ErrorACF") || n.starts_with("ErrorPACF") || n.starts_with("ErrorIACF"))
    return correlations(data, g);
  if (n == "ErrorWhiteNoiseProbPlot") return whiteNoise(data, g, false);
  if (n == "ErrorWhiteNoiseLogProbPlot") return whiteNoise(data, g, true);
  if (n == "ErrorCorrelationPlots") return correlationPanel(data, g);
  if (n == "ErrorPeriodogram") return periodogramPlot(data, g);
  if (n == "ErrorSpectralDensityPlot") return spectralDensityPlot(data, g);
  if (n == "StockingLevelPlot")
    return timeLines(data, g, {"StockingLower", "StockingUpper", {"StockingPredict", "StockingLevel"}, "Actual", false});
  if (n == "StockingAveragePlot")
    return timeLines(data, g, {"AverageLower", "AverageUpper", {"AveragePredict"}, "AverageActual", false});
  if (n == "DemandForecastsPlot") return timeLines(data, g, {"Lower", "Upper", {"Predict"}, "Actual", false});
  if (n == "DemandErrorsPlot") return timeLines(data, g, {"", "", {}, "Error", true});
  if (n == "DemandIntervalPlot") return timeLines(data, g, {"", "", {"PredictedInterval"}, "ActualInterval", false});
  if (n == "DemandSizePlot") return timeLines(data, g, {"", "", {"PredictedSize"}, "ActualSize", false});
  if (n == "DemandIntervalHistogram") return histogram(data, g, "ActualInterval");
  if (n == "DemandSizeHistogram") return histogram(data, g, "ActualSize");
  return {};
}

}  // namespace qvt
