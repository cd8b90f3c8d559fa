#include <complex>
#include <numbers>

#include "host/plot_draw.hpp"
#include "host/output_layer.hpp"
#include "host/plot_svg.hpp"
#include "host_test_util.hpp"

namespace qvt {
namespace {

// A random series with missing cells, against the direct sum
// (2/n) |sum_t e_t exp(-i 2 pi k t / n)|^2 over the n values present, in
// long double, for an odd and an even count, centred and not; and
// Parseval's identity: the ordinates k >= 1 of the centred series (the one
// at pi halved for an even n) add up to its sum of squares.
TEST(PlotSpectra, PeriodogramAgainstDirectSumAndParseval) {
  for (int len : {40, 44}) {
    std::vector<double> x;
    std::vector<long double> v;
    for (int t = 0; t < len; ++t) {
      const double e = 5 * std::sin(0.37 * t * t) + t % 7;  // irregular, with a mean of about 3
      x.push_back(t % 9 == 4 ? kMissing : e);
      if (t % 9 != 4) v.push_back(e);
    }
    const long n = static_cast<long>(v.size());
    long double mean = 0, ss = 0;
    for (long double e : v) mean += e / n;
    for (long double e : v) ss += (e - mean) * (e - mean);
    for (bool centre : {false, true}) {
      const std::vector<double> ord = plotPeriodogram(x, centre);
      ASSERT_EQ(ord.size(), static_cast<std::size_t>(n / 2 + 1)) << n;
      long double sum = 0;
      for (long k = 0; k <= n / 2; ++k) {
        std::complex<long double> z = 0;
        for (long t = 0; t < n; ++t)
          z += (v[t] - (centre ? mean : 0)) *
               std::polar(1.0L, -2 * std::numbers::pi_v<long double> * k * t / n);
        const long double want = 2 * std::norm(z) / n;
        EXPECT_NEAR(ord[k], static_cast<double>(want), 1e-9 * (1 + ord[k])) << n << " " << k;
        if (k >= 1) sum += ord[k] * (2 * k == n ? 0.5L : 1.0L);
      }
      EXPECT_TRUE(!centre || std::fabs(static_cast<double>(sum - ss)) < 1e-9 * static_cast<double>(ss)) << n;
    }
  }
  EXPECT_TRUE(plotPeriodogram({3.0, kMissing}, true).empty());
}

// 3 cos(2 pi 5 t / 24): its sum against exp(-i w_5 t) is 24 * 3 / 2, so
// I(w_5) = (2/24) 36^2 = 108 = n A^2 / 2, and every other ordinate is 0.
TEST(PlotSpectra, PureCosineHasOneOrdinate) {
  std::vector<double> x;
  for (int t = 0; t < 24; ++t) x.push_back(3 * std::cos(2 * std::numbers::pi * 5 * t / 24));
  const std::vector<double> ord = plotPeriodogram(x, true);
  ASSERT_EQ(ord.size(), 13u);
  for (std::size_t k = 0; k < ord.size(); ++k) EXPECT_NEAR(ord[k], k == 5 ? 108 : 0, 1e-9) << k;
}

// A constant periodogram stays constant at every frequency, for any
// half-width (one wider than the band too), centred or not. Then by hand,
// ordinates I_k = (k + 1)^2 of n = 8, m = 1, weights 1/4 1/2 1/4:
// inside, k = 2: (4 + 2 * 9 + 16) / 4 = 9.5, nu = 2 / (3/8) = 16/3; at 0
// the mirror gives I_1 the weight 1/2: (1 + 4) / 2, nu = 2 / (2/4 + 1/4)
// (I_0 counts twice, a chi-square of 1 degree); centred, I_0 gives way to
// I_1: 4, nu = 2; at pi, k = 4, I_5 mirrors to I_3: (25 + 16) / 2, nu 8/3.
TEST(PlotSpectra, BartlettSmoothing) {
  for (long n : {7L, 8L})
    for (int m : {0, 1, 3, 9})
      for (bool centred : {false, true}) {
        const std::vector<double> f =
            plotBartlett(std::vector<double>(n / 2 + 1, 2.5), n, m, centred, nullptr);
        ASSERT_EQ(f.size(), static_cast<std::size_t>(n / 2 + 1));
        for (double v : f) EXPECT_NEAR(v, 2.5, 1e-12) << n << " " << m << " " << centred;
      }
  const std::vector<double> ord = {1, 4, 9, 16, 25};
  const double cases[][4] = {{0, 2, 9.5, 16 / 3.}, {0, 0, 2.5, 8 / 3.}, {1, 0, 4, 2}, {0, 4, 20.5, 8 / 3.}};
  for (const auto& c : cases) {  // centred, k, value, nu
    std::vector<double> edf;
    const std::vector<double> f = plotBartlett(ord, 8, 1, c[0] != 0, &edf);
    ASSERT_EQ(f.size(), 5u);
    EXPECT_NEAR(f[static_cast<std::size_t>(c[1])], c[2], 1e-12) << c[1] << " " << c[0];
    EXPECT_NEAR(edf[static_cast<std::size_t>(c[1])], c[3], 1e-12) << c[1] << " " << c[0];
  }
  EXPECT_TRUE(plotBartlett(ord, 10, 1, false, nullptr).empty());  // 10 values have 6 ordinates
  EXPECT_TRUE(plotBartlett(ord, 8, -1, false, nullptr).empty());
}

// Quantiles of published chi-square tables (to their six figures), and
// 2 ln 2, the median of 2 degrees of freedom, whose tail is exp(-x/2).
TEST(PlotSpectra, ChiSquareQuantile) {
  const double table[][3] = {{0.975, 10, 20.4832},
                             {0.025, 10, 3.24697},
                             {0.95, 1, 3.84146},
                             {0.99, 30, 50.8922},
                             {0.5, 2, 2 * std::log(2.0)}};
  for (const auto& c : table)
    EXPECT_NEAR(plotChiSquareQuantile(c[0], c[1]), c[2], 5e-6 * c[2]) << c[0] << " " << c[1];
  for (const auto& bad : {std::pair(0.0, 3.0), std::pair(1.0, 3.0), std::pair(0.5, 0.0)})
    EXPECT_TRUE(wzmis(plotChiSquareQuantile(bad.first, bad.second))) << bad.first << " " << bad.second;
}

}  // namespace
}  // namespace qvt

namespace qvt {
namespace {

// The value axis must cover the data with a handful of ticks whatever the
// range: flat ones, one within an ulp of its values (a constant series
// back from a log, which once drew ticks forever), tiny and huge ones.
TEST(PlotAxis, CoversTheRangeWithAFewTicks) {
  using plotdetail::Axis;
  using plotdetail::niceAxis;
  const double lastBelow5 = std::nextafter(5.0, 0.0);
  const struct { double lo, hi; } cases[] = {
      {0, 1},       {3, 3},        {lastBelow5, 5}, {0, 0},      {-7, -7},
      {1e-300, 2e-300}, {-1e300, 1e300}, {-0.5, 12.25}, {1e15, 1e15 + 2},
  };
  for (const auto& c : cases) {
    const Axis a = niceAxis(c.lo, c.hi);
    EXPECT_LE(a.lo, c.lo) << c.lo << " " << c.hi;
    EXPECT_GE(a.hi, c.hi) << c.lo << " " << c.hi;
    EXPECT_TRUE(a.ticks() >= 2 && a.ticks() <= 12) << c.lo << " " << c.hi << ": " << a.ticks();
    EXPECT_NE(a.tick(0), a.tick(1)) << c.lo << " " << c.hi;
  }
}

}  // namespace
}  // namespace qvt

namespace qvt {
namespace {

// A line through one point and a band of one row have no length or area:
// a forecasts plot of LEAD=1 once came out blank. The point shows as a dot
// in the line's colour and the band as an error bar; longer runs stay lines.
TEST(PlotLines, RunsOfOnePointAreDrawn) {
  const auto draw = [](const std::vector<std::vector<double>>& rows) {
    Table t;
    for (const char* c : {"Predict", "Lower", "Upper"}) {
      TableColumn col;
      col.name = col.label = c;
      t.cols.push_back(col);
    }
    for (const auto& r : rows) t.rows.push_back({r[0], r[1], r[2]});
    PlotGraph g;
    g.name = "ForecastsOnlyPlot";
    g.title = "Forecasts";
    return renderGraphSvg(t, g);
  };
  const auto count = [](const std::string& svg, const std::string& what) {
    std::size_t n = 0;
    for (std::size_t at = svg.find(what); at != std::string::npos; at = svg.find(what, at + 1)) ++n;
    return n;
  };
  const std::string one = draw({{5, 4, 6}});
  EXPECT_EQ(count(one, "<circle"), 1u);
  EXPECT_EQ(count(one, "<polyline"), 0u);
  EXPECT_EQ(count(one, "<polygon"), 0u);
  EXPECT_EQ(count(one, "stroke=\"#8fb3dc\""), 1u);  // the error bar
  // A missing row splits the runs: one of two points, one of one.
  const std::string split = draw({{5, 4, 6}, {6, 5, 7}, {kMissing, kMissing, kMissing}, {7, 6, 8}});
  EXPECT_EQ(count(split, "<polyline"), 1u);
  EXPECT_EQ(count(split, "<polygon"), 1u);
  EXPECT_EQ(count(split, "<circle"), 1u);
  EXPECT_EQ(count(split, "stroke=\"#8fb3dc\""), 1u);
}

}  // namespace
}  // namespace qvt
