// The frequency plots of the errors: the periodogram, its Bartlett-smoothed
// spectral density with chi-square limits, and the panel of the four
// correlation plots. The periodogram is computed here from the table's
// "Error" column; the axis ticks come ready-made as the named values of the
// graph (periods below the plot, fractions of pi above it).
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string>
#include <vector>

#include "host/output_layer.hpp"
#include "host/plot_draw.hpp"
#include "host/plot_svg.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using namespace plotdetail;

constexpr double kPi = std::numbers::pi;

// A named value as a number; missing when it doesn't read as one (".").
double numberOf(const Table& t, const PlotGraph& g, std::string_view name) {
  const std::string s = namedValue(t, g, name);
  char* end = nullptr;
  const double v = std::strtod(s.c_str(), &end);
  return end != s.c_str() && std::isfinite(v) ? v : kMissing;
}

// The templates' escapes of the tick labels, as UTF-8 characters.
std::string unescape(std::string s) {
  const std::pair<std::string_view, std::string_view> kEscapes[] = {
      {"(*ESC*){unicode '221e'x}", "\xE2\x88\x9E"}, {"(*ESC*){unicode pi}", "\xCF\x80"}};
  for (const auto& [from, to] : kEscapes)
    for (std::size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size()))
      s.replace(at, from.size(), to);
  return s;
}

// A tick list pair: values blank-separated, labels between double quotes.
struct Ticks {
  std::vector<double> at;
  std::vector<std::string> text;
};

Ticks ticksOf(const Table& t, const PlotGraph& g, std::string_view values, std::string_view labels) {
  Ticks k;
  const std::string v = namedValue(t, g, values), l = namedValue(t, g, labels);
  const char* p = v.c_str();
  for (char* end = nullptr;; p = end) {
    const double x = std::strtod(p, &end);
    if (end == p) break;
    k.at.push_back(x);
  }
  for (std::size_t open = l.find('"'); open != std::string::npos; open = l.find('"', open + 1)) {
    const std::size_t close = l.find('"', open + 1);
    if (close == std::string::npos) break;
    k.text.push_back(unescape(l.substr(open + 1, close - open - 1)));
    open = close;
  }
  return k;
}

// The plot area of a frequency plot: x from 0 to maxf, the value axis of a,
// the period ticks below, the frequency ticks above and a dashed mark at the
// seasonal frequency when there is one.
struct FrequencyFrame {
  double maxf = kPi;
  Axis a;
  double x(double w) const { return kLeft + w / maxf * (kWidth - kLeft - kRight); }
  double y(double v) const { return a.pos(v, kHeight - kBottom, kTop); }
};

FrequencyFrame frequencyFrame(Svg& svg, const Table& t, const PlotGraph& g, double vmin, double vmax) {
  FrequencyFrame f;
  const double mf = numberOf(t, g, "MaxFreq");
  f.maxf = present(mf) && mf > 0 ? mf : kPi;
  f.a = niceAxis(vmin, vmax);
  svg.yAxis(f.a, g.label);
  svg.xAxis("Period");
  const auto draw = [&](const Ticks& k, double tickY, double textY) {
    // The tick values come with three decimals, so the last one may pass
    // the end of the axis by half a unit of the third (3.142 for pi).
    for (std::size_t i = 0; i < k.at.size() && i < k.text.size(); ++i) {
      if (k.at[i] < 0 || k.at[i] > f.maxf + 5e-4) continue;
      const double x = f.x(std::min(k.at[i], f.maxf));
      svg.line(x, tickY, x, tickY + (textY > tickY ? 4 : -4), "stroke=\"black\"");
      svg.text(x, textY, k.text[i], "middle");
    }
  };
  draw(ticksOf(t, g, "TickValList", "TickDispList"), kHeight - kBottom, kHeight - kBottom + 16);
  svg.line(kLeft, kTop, kWidth - kRight, kTop, "stroke=\"black\"");
  draw(ticksOf(t, g, "FreqValList", "FreqDispList"), kTop, kTop - 6);
  const double sf = numberOf(t, g, "SeasFreq");
  if (present(sf) && sf > 0 && sf <= f.maxf)
    svg.line(f.x(sf), kTop, f.x(sf), kHeight - kBottom, "stroke=\"#b03030\" stroke-dasharray=\"4 3\"");
  return f;
}

std::string polyline(const FrequencyFrame& f, const std::vector<double>& w, const std::vector<double>& v) {
  std::string p;
  for (std::size_t i = 0; i < w.size(); ++i)
    if (w[i] <= f.maxf) p += num(f.x(w[i])) + "," + num(f.y(v[i])) + " ";
  return p;
}

// The Fourier frequencies 2 pi k / n of the ordinates k = first..size-1.
std::vector<double> fourier(std::size_t size, std::size_t first, long n) {
  std::vector<double> w;
  for (std::size_t k = first; k < size; ++k)
    w.push_back(2 * kPi * static_cast<double>(k) / static_cast<double>(n));
  return w;
}

long countPresent(const std::vector<double>& x) { return std::count_if(x.begin(), x.end(), present); }

}  // namespace

std::vector<double> plotPeriodogram(const std::vector<double>& x, bool centre) {
  std::vector<double> v;
  for (double e : x)
    if (present(e)) v.push_back(e);
  const std::size_t n = v.size();
  if (n < 2) return {};
  if (centre) {
    long double sum = 0;
    for (double e : v) sum += e;
    const double mean = static_cast<double>(sum / static_cast<long double>(n));
    for (double& e : v) e -= mean;
  }
  // exp(-i w_k t) = cos - i sin of the angle 2 pi (k t mod n) / n: the
  // product is reduced exactly in integers, so that a long series loses
  // no accuracy to large angles, and the table holds the n angles.
  std::vector<double> c(n), s(n);
  for (std::size_t j = 0; j < n; ++j) {
    const double a = 2 * kPi * static_cast<double>(j) / static_cast<double>(n);
    c[j] = std::cos(a);
    s[j] = std::sin(a);
  }
  // Scaled by 2/n rather than the 1/n of Brockwell and Davis: an ordinate
  // inside (0, pi) is then the regression sum of squares of the pair
  // cos(w_k t), sin(w_k t), and the ordinates k = 1..floor(n/2) add up to the sum of squares of the
  // centred series (the ordinate at pi counted half for an even n).
  std::vector<double> ord(n / 2 + 1);
  for (std::size_t k = 0; k < ord.size(); ++k) {
    double re = 0, im = 0;
    std::size_t at = 0;  // k t mod n
    for (std::size_t t = 0; t < n; ++t, at = (at + k) % n) {
      re += v[t] * c[at];
      im -= v[t] * s[at];
    }
    ord[k] = 2 * (re * re + im * im) / static_cast<double>(n);
  }
  return ord;
}

std::vector<double> plotBartlett(const std::vector<double>& ord, long n, int m, bool centred,
                                 std::vector<double>* edf) {
  if (n < 2 || m < 0 || ord.size() != static_cast<std::size_t>(n / 2 + 1)) return {};
  const double total = static_cast<double>(m + 1) * static_cast<double>(m + 1);
  std::vector<double> out(ord.size()), weight(ord.size(), 0.0);
  if (edf != nullptr) edf->assign(ord.size(), 0.0);
  std::vector<std::size_t> used;
  for (std::size_t k = 0; k < ord.size(); ++k) {
    // The weights gathered on the distinct ordinates the window covers: a
    // real series has I(-w) = I(w) and I(2 pi - w) = I(w).
    used.clear();
    for (long j = -m; j <= m; ++j) {
      long i = ((static_cast<long>(k) + j) % n + n) % n;
      i = std::min(i, n - i);
      if (centred && i == 0) i = 1;
      const auto u = static_cast<std::size_t>(i);
      if (weight[u] == 0) used.push_back(u);
      weight[u] += static_cast<double>(m + 1 - std::labs(j)) / total;
    }
    // The ordinates are independent, I(w) ~ f chi2_2 / 2 inside (0, pi) and
    // f chi2_1 at 0 and pi, whose variance is twice as large; the average
    // is then near f chi2_nu / nu with nu = 2 (sum c)^2 / sum c^2 var, the
    // equivalent degrees of freedom of Brockwell and Davis, 10.4.
    double sum = 0, var = 0;
    for (std::size_t u : used) {
      sum += weight[u] * ord[u];
      var += weight[u] * weight[u] * (u == 0 || 2 * static_cast<long>(u) == n ? 2 : 1);
      weight[u] = 0;
    }
    out[k] = sum;
    if (edf != nullptr) (*edf)[k] = 2 / var;
  }
  return out;
}

double plotChiSquareQuantile(double p, double df) {
  if (!(p > 0 && p < 1) || !(df > 0) || !std::isfinite(df)) return kMissing;
  // The upper tail falls from 1 at 0: find a bound above the quantile, then
  // halve the bracket until it no longer shrinks.
  const double tail = 1 - p;
  double lo = 0, hi = std::max(df, 1.0);
  for (int i = 0; i < 2000 && plotChiSquareTail(hi, df) > tail; ++i) lo = hi, hi *= 2;
  for (int i = 0; i < 200; ++i) {
    const double mid = (lo + hi) / 2;
    if (mid <= lo || mid >= hi) break;
    (plotChiSquareTail(mid, df) > tail ? lo : hi) = mid;
  }
  return (lo + hi) / 2;
}

namespace plotdetail {

std::string periodogramPlot(const Table& t, const PlotGraph& g) {
  const std::vector<double> e = column(t, "Error");
  const std::vector<double> ord = plotPeriodogram(e, true);
  if (ord.size() < 2) return {};
  // The ordinate at 0 of a centred series is 0 by construction: left out.
  const std::vector<double> w = fourier(ord.size(), 1, countPresent(e));
  const std::vector<double> v(ord.begin() + 1, ord.end());
  Svg svg(g.title);
  const FrequencyFrame f = frequencyFrame(svg, t, g, 0, *std::max_element(v.begin(), v.end()));
  for (std::size_t i = 0; i < w.size(); ++i)
    if (w[i] <= f.maxf) svg.line(f.x(w[i]), f.y(0), f.x(w[i]), f.y(v[i]), "stroke=\"#1f5fa8\"");
  svg.path(polyline(f, w, v), "polyline", "fill=\"none\" stroke=\"#1f5fa8\" stroke-width=\"1.5\"");
  return svg.done();
}

std::string spectralDensityPlot(const Table& t, const PlotGraph& g) {
  // The engine names the Bartlett kernel only; another name draws nothing
  // rather than a density under a kernel that it didn't ask for.
  const std::string kernel = namedValue(t, g, "Kernel");
  if (!kernel.empty() && kernel != "KERNBART") return {};
  const std::vector<double> e = column(t, "Error");
  const double madj = numberOf(t, g, "MeanAdj");
  const bool centre = present(madj) && madj != 0;
  const std::vector<double> ord = plotPeriodogram(e, centre);
  if (ord.size() < 2) return {};
  const long n = countPresent(e);
  // Decided here: the half-width m = floor(sqrt(n)) ordinates, the rule of
  // thumb that lets the window widen while its share of the band, m / n,
  // still shrinks, so that the estimate is consistent.
  std::vector<double> edf;
  std::vector<double> f =
      plotBartlett(ord, n, static_cast<int>(std::sqrt(static_cast<double>(n))), centre, &edf);
  // The density of the ordinates' scale 2/n: f(w) = I(w) / (4 pi), which is
  // sigma^2 / (2 pi) for white noise of variance sigma^2.
  for (double& x : f) x /= 4 * kPi;
  // Limits nu f / chi2(1 - alpha/2, nu) and nu f / chi2(alpha/2, nu) at the
  // ALPHA= of the plot; Decided here: an alpha that gives no two-sided
  // limits (missing, not in (0, 1]) draws the density alone.
  const double alpha = numberOf(t, g, "Alpha");
  std::vector<double> lo, hi;
  if (present(alpha) && alpha > 0 && alpha <= 1)
    for (std::size_t k = 0; k < f.size(); ++k) {
      lo.push_back(edf[k] * f[k] / plotChiSquareQuantile(1 - alpha / 2, edf[k]));
      hi.push_back(edf[k] * f[k] / plotChiSquareQuantile(alpha / 2, edf[k]));
    }
  const std::vector<double> w = fourier(f.size(), 0, n);
  double vmax = *std::max_element(f.begin(), f.end());
  for (double x : hi) vmax = std::max(vmax, x);
  Svg svg(g.title);
  const FrequencyFrame fr = frequencyFrame(svg, t, g, 0, vmax);
  if (!hi.empty()) {
    std::string band = polyline(fr, w, hi);
    for (std::size_t k = w.size(); k-- > 0;)
      if (w[k] <= fr.maxf) band += num(fr.x(w[k])) + "," + num(fr.y(lo[k])) + " ";
    svg.path(band, "polygon", "fill=\"#cfe0f3\" stroke=\"none\"");
  }
  svg.path(polyline(fr, w, f), "polyline", "fill=\"none\" stroke=\"#1f5fa8\" stroke-width=\"1.5\"");
  return svg.done();
}

std::string correlationPanel(const Table& t, const PlotGraph& g) {
  // The four plots at three quarters of their size, two by two under the
  // panel's title, each drawn by the routine of its single plot.
  constexpr double kScale = 0.75, kHead = 36;
  const struct {
    const char* name;
    const char* title;
  } parts[] = {{"ErrorACFPlot", "Autocorrelations"},
               {"ErrorPACFPlot", "Partial Autocorrelations"},
               {"ErrorIACFPlot", "Inverse Autocorrelations"},
               {"ErrorWhiteNoiseProbPlot", "White Noise Probabilities"}};
  std::string body;
  for (std::size_t i = 0; i < 4; ++i) {
    const PlotGraph sub{parts[i].name, g.templ, parts[i].title, parts[i].title, g.values, g.groups};
    const std::string doc = i < 3 ? correlations(t, sub) : whiteNoise(t, sub, false);
    body += embed(doc, static_cast<double>(i % 2) * kWidth * kScale,
                  kHead + static_cast<double>(i / 2) * kHeight * kScale, kScale);
  }
  if (body.empty()) return {};
  const double w = 2 * kWidth * kScale, h = kHead + 2 * kHeight * kScale;
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + num(w) + "\" height=\"" + num(h) +
         "\" viewBox=\"0 0 " + num(w) + " " + num(h) +
         "\" font-family=\"sans-serif\" font-size=\"11\">\n<title>" + htmlEscape(g.title) + "</title>\n<text x=\"" +
         num(w / 2) + "\" y=\"24\" text-anchor=\"middle\" font-size=\"15\">" + htmlEscape(g.title) + "</text>\n" +
         body + "</svg>\n";
}

}  // namespace plotdetail
}  // namespace qvt
