// The tick lists of the frequency axes of the periodogram and the spectral
// density, and the confidence text of the plots. The lists are the graph
// templates' own list texts: values blank-separated, labels quoted.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>

#include "report/qvtg.hpp"
#include "run/missing.hpp"
#include "stats/numeric.hpp"

namespace qvt {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kMaxTicks = 12;
// The templates' escapes for the infinity sign and for pi.
constexpr const char* kInfinity = "(*ESC*){unicode '221e'x}";
constexpr const char* kPiText = "(*ESC*){unicode pi}";

// A maximum frequency outside (0, pi) means the whole axis up to pi.
double axisTop(double maxfreq) noexcept {
  return wzmis(maxfreq) || !(maxfreq > 0) || maxfreq >= kPi ? kPi : maxfreq;
}

// Appends both pieces, or neither: a list that no longer has room for its
// next piece ends, with its partner, as it stands.
bool append(std::string& vals, std::string& labels, const std::string& v, const std::string& l) {
  if (vals.size() + v.size() > static_cast<std::size_t>(kLabelLen) ||
      labels.size() + l.size() > static_cast<std::size_t>(kLabelLen))
    return false;
  vals += v;
  labels += l;
  return true;
}

std::string printed(const char* fmt, double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, fmt, v);
  return buf;
}

// The label of a frequency is the period it stands for, whole when it is
// within 0.1 above a whole number; frequency 0 is the infinite period.
std::string periodLabel(double w) {
  if (w <= 0) return kInfinity;
  const double t = 2 * kPi / w;
  if (std::fabs(std::floor(t) - t) < 0.1) return std::to_string(static_cast<long>(t));
  return printed("%.1f", t);
}

}  // namespace

void qvtocl(double alpha, char* calpha) noexcept {
  if (calpha == nullptr) return;
  const double a = wzmis(alpha) || std::isnan(alpha) ? 0.05 : std::clamp(alpha, 0.01, 0.99);
  const int p = 100 - static_cast<int>(std::floor(100 * a + 0.4999999999));
  std::snprintf(calpha, 3, p < 10 ? " %1i" : "%2i", p);
}

int ztsGetPeriodTickList(long n, int seasonality, double maxfreq, u_slabel* tvl, u_slabel* tdl,
                         double* seasFreqOut) noexcept {
  maxfreq = axisTop(maxfreq);
  const double seasFreq = seasonality >= 1 ? 2 * kPi / seasonality : kMissing;
  const long half = std::max(n, 4L) / 2;
  int j = static_cast<int>(std::min<long>(kMaxTicks, half));
  const double delx = j >= 2 ? maxfreq / (j - 1) : maxfreq;
  double w[kMaxTicks];
  double at = 0;
  for (int i = 0; i < j; ++i, at += delx) w[i] = at;

  // The seasonal frequency takes the place of the tick nearest above it,
  // or of the one below when that is closer than 0.1, so that the season's
  // period is read off the axis.
  if (!wzmis(seasFreq) && seasFreq <= maxfreq && j > 1) {
    int i = 1;
    while (i < j && !(w[i] > seasFreq)) ++i;
    if (i == 1) {
      if (seasonality < 53) w[1] = seasFreq;
    } else if (i < j) {
      if (seasFreq - w[i - 1] < 0.1) {
        w[i - 1] = seasFreq;
      } else if (i == j - 1) {
        w[i - 1] = seasFreq;
        --j;
      } else if (w[i] - seasFreq >= 0.1) {
        w[i - 1] = seasFreq;
        std::copy(w + i + 1, w + j, w + i);
        --j;
      } else {
        w[i] = seasFreq;
      }
    }
  }

  std::string vals, labels;
  for (int i = 0; i < j; ++i) {
    const bool last = i == j - 1;
    const std::string v = printed(last ? "%5.3f" : "%5.3f ", w[i]);
    const std::string l = "\"" + periodLabel(w[i]) + (last ? "\"" : "\" ");
    if (!append(vals, labels, v, l)) break;
  }
  if (tvl != nullptr) tvl->set(vals);
  if (tdl != nullptr) tdl->set(labels);
  if (seasFreqOut != nullptr) *seasFreqOut = seasFreq;
  return 0;
}

int ztsGetFrequencyTickList(long, int, double maxfreq, u_slabel* tvl, u_slabel* tdl) noexcept {
  // Decided here: a maximum outside (0, pi) is read as pi, as the period
  // list reads it; below 0 the search for the fraction would never end.
  maxfreq = axisTop(maxfreq);
  const double f = maxfreq / kPi;
  long top = static_cast<long>(std::floor(f + 0.5));
  long bot = 1;
  // The coarsest power-of-two fraction of pi within a tenth of maxfreq.
  // Since maxfreq > 0 the bound is positive and halving bot closes in on f.
  while (std::fabs(static_cast<double>(top) / static_cast<double>(bot) - f) >= maxfreq * 0.1) {
    bot *= 2;
    top = static_cast<long>(std::floor(f * static_cast<double>(bot) + 0.5));
  }
  // The values are written with this factor, a little below pi, so that
  // the last tick at pi prints as 3.141 and stays inside the axis.
  constexpr double kTickPi = 3.141492653589793;
  std::string vals, labels = "\"0\"";
  for (double k : {0.0, 0.25, 0.5, 0.75, 1.0})
    vals += printed(" %5.3f", (k * static_cast<double>(top) / static_cast<double>(bot)) * kTickPi);
  for (long jj = 1; jj <= 4; ++jj) {
    long num = jj * top, den = 4 * bot;
    const long g = zgcd(num, den);
    if (g > 1) {
      num /= g;
      den /= g;
    }
    std::string l;
    if (num == 1 && den == 1)
      l = kPiText;
    else if (num == 1)
      l = std::string(kPiText) + "/" + std::to_string(den);
    else
      l = std::to_string(num) + kPiText + "/" + std::to_string(den);
    labels += " \"" + l + "\"";
  }
  if (tvl != nullptr) tvl->set(vals);
  if (tdl != nullptr) tdl->set(labels);
  return 0;
}

long plotLags(int seasonality, long nobs) noexcept {
  const long lags = seasonality < 2 ? 24 : std::clamp(3L * seasonality, 24L, 120L);
  return std::min(lags, nobs / 2);
}

}  // namespace qvt
