// Plots: the tick lists and the confidence text against values worked by
// hand or by an independent script; which data tables and graphs appear
// for which PLOT= flags; the renderers' autocorrelations against direct
// textbook formulas.
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "../common/shared.hpp"
#include "host/plot_svg.hpp"
#include "layer_host.hpp"
#include "report/qvtg.hpp"

namespace qvt {
namespace {

using testing::value;
const std::string kInf = "\"(*ESC*){unicode '221e'x}\"";

// Expected lists from oracle/plot_ticks.py, which applies the tick rules to
// math.pi step by step (floats, "%5.3f", the label rule).
TEST(PlotTicks, PeriodList) {
  const double pi = std::numbers::pi;
  const struct { long n; int seasonality; double maxfreq; const char* values; std::string labels; } cases[] = {
      // n 2 acts as n 4: two ticks, 0 and pi.
      {2, 0, pi, "0.000 3.142", kInf + " \"2\""},
      // Season 12: the tick nearest to pi/6 moves there and reads 12.
      {100, 12, pi, "0.000 0.286 0.524 0.857 1.142 1.428 1.714 1.999 2.285 2.570 2.856 3.142",
       kInf + " \"22\" \"12\" \"7.3\" \"5.5\" \"4.4\" \"3.7\" \"3.1\" \"2.8\" \"2.4\" \"2.2\" \"2\""},
      // No season (and a maximum above pi read as pi): evenly spaced.
      {100, 0, 7.0, "0.000 0.286 0.571 0.857 1.142 1.428 1.714 1.999 2.285 2.570 2.856 3.142",
       kInf + " \"22\" \"11\" \"7.3\" \"5.5\" \"4.4\" \"3.7\" \"3.1\" \"2.8\" \"2.4\" \"2.2\" \"2\""},
      // Far from both neighbours: the lower takes it, the upper is removed.
      {100, 4, pi, "0.000 0.286 0.571 0.857 1.142 1.571 1.999 2.285 2.570 2.856 3.142",
       kInf + " \"22\" \"11\" \"7.3\" \"5.5\" \"4\" \"3.1\" \"2.8\" \"2.4\" \"2.2\" \"2\""},
      {10, 7, pi, "0.000 0.898 2.356 3.142", kInf + " \"7\" \"2.7\" \"2\""},
      // Below the first tick with a season of 53 or more: unchanged.
      {100, 60, pi, "0.000 0.286 0.571 0.857 1.142 1.428 1.714 1.999 2.285 2.570 2.856 3.142",
       kInf + " \"22\" \"11\" \"7.3\" \"5.5\" \"4.4\" \"3.7\" \"3.1\" \"2.8\" \"2.4\" \"2.2\" \"2\""},
      // Within 0.1 above the lower neighbour (1.999): the lower one moves.
      {30, 3, pi, "0.000 0.286 0.571 0.857 1.142 1.428 1.714 2.094 2.285 2.570 2.856 3.142",
       kInf + " \"22\" \"11\" \"7.3\" \"5.5\" \"4.4\" \"3.7\" \"3\" \"2.8\" \"2.4\" \"2.2\" \"2\""},
      // Below the last tick: the one before takes it and the last goes.
      {6, 3, pi, "0.000 2.094", kInf + " \"3\""},
      // Within 0.1 above the lower neighbour, on a half axis.
      {100, 12, pi / 2, "0.000 0.143 0.286 0.524 0.571 0.714 0.857 1.000 1.142 1.285 1.428 1.571",
       kInf + " \"44\" \"22\" \"12\" \"11\" \"8.8\" \"7.3\" \"6.3\" \"5.5\" \"4.9\" \"4.4\" \"4\""},
  };
  for (const auto& c : cases) {
    u_slabel tvl, tdl;
    double sf = 0;
    EXPECT_EQ(ztsGetPeriodTickList(c.n, c.seasonality, c.maxfreq, &tvl, &tdl, &sf), 0);
    EXPECT_EQ(tvl.str(), c.values) << c.n << " " << c.seasonality;
    EXPECT_EQ(tdl.str(), c.labels) << c.n << " " << c.seasonality;
    if (c.seasonality > 0)
      EXPECT_DOUBLE_EQ(sf, 2 * pi / c.seasonality);
    else
      EXPECT_TRUE(wzmis(sf));
  }
}

// By hand: at pi the fraction is 1/1; at pi/2, 1/1 is 0.5 off so it is
// refined to 1/2; at 0.35 pi 0/1 and 1/2 are 0.35 and 0.15 off, both above
// 0.35 pi * 0.1 = 0.110, and 1/4 (0.1 off) is taken.
TEST(PlotTicks, FrequencyList) {
  const std::string p = "(*ESC*){unicode pi}";
  const double pi = std::numbers::pi;
  const struct { double maxfreq; const char* values; std::string labels; } cases[] = {
      {pi, " 0.000 0.785 1.571 2.356 3.141",
       "\"0\" \"" + p + "/4\" \"" + p + "/2\" \"3" + p + "/4\" \"" + p + "\""},
      {pi / 2, " 0.000 0.393 0.785 1.178 1.571",
       "\"0\" \"" + p + "/8\" \"" + p + "/4\" \"3" + p + "/8\" \"" + p + "/2\""},
      {0.35 * pi, " 0.000 0.196 0.393 0.589 0.785",
       "\"0\" \"" + p + "/16\" \"" + p + "/8\" \"3" + p + "/16\" \"" + p + "/4\""},
  };
  for (const auto& c : cases) {
    u_slabel tvl, tdl;
    EXPECT_EQ(ztsGetFrequencyTickList(7, 12, c.maxfreq, &tvl, &tdl), 0);
    EXPECT_EQ(tvl.str(), c.values) << c.maxfreq;
    EXPECT_EQ(tdl.str(), c.labels) << c.maxfreq;
  }
}

TEST(PlotTicks, ConfidenceAndLags) {
  // 100 - floor(100 alpha + 0.4999999999), alpha held to [0.01, 0.99]; one
  // digit padded to two places.
  const std::pair<double, const char*> conf[] = {{0.05, "95"},  {kMissing, "95"}, {0.001, "99"}, {0.999, " 1"},
                                                 {0.095, "91"}, {0.905, "10"},    {0.915, " 9"}, {0.2, "80"}};
  for (auto [a, s] : conf) {
    char c[3] = "xx";
    qvtocl(a, c);
    EXPECT_STREQ(c, s) << a;
  }
  // 24 without a cycle, else 3 * season held to [24, 120], then at most nobs / 2.
  const long lags[][3] = {{0, 100, 24}, {12, 10, 5}, {12, 1000, 36}, {52, 1000, 120}, {4, 1000, 24}, {1, 11, 5}};
  for (const auto& l : lags) EXPECT_EQ(plotLags(static_cast<int>(l[0]), l[1]), l[2]) << l[0] << " " << l[1];
}

// Ten periods fitted, two forecasts; no ID, season length 12.
struct PlotFixture : ::testing::Test {
  testing::LayerHost h;
  QVTCOM com;
  double pred[12], act[12], lo[12], hi[12], err[12];
  FOR_OUT fore;
  void SetUp() override {
    com.host = &h;
    com.current.var.set("units");
    com.current.nobs = 10;
    com.istmt.seasonality = 12;
    com.out.nobs = 10;
    com.out.tobs = 12;
    for (int i = 0; i < 12; ++i) {
      pred[i] = 10 + i, lo[i] = 8 + i, hi[i] = 12 + i;
      act[i] = i < 10 ? 10.5 + i : kMissing;
      err[i] = i < 10 ? 0.5 : kMissing;
    }
    fore = FOR_OUT{0.05, 12, nullptr, act, pred, err, hi, lo};
  }
};

TEST_F(PlotFixture, GraphsByFlagAndModel) {
  qvtgmod(&com, &fore, 1, 1);  // no flag: nothing at all
  EXPECT_TRUE(h.tables.empty());
  com.plot.models = com.plot.trends = com.plot.seasons = com.plot.acf = 1;
  qvtgmod(&com, &fore, 1, 1);  // simple smoothing: no trend, no season
  qvtgmod(&com, &fore, 7, 3);  // Winters: both
  com.plot.none = 1;
  qvtgmod(&com, &fore, 7, 3);
  ASSERT_EQ(h.tables.size(), 2u);
  EXPECT_EQ(h.names(true), (std::vector<std::string>{"ModelPlot", "ErrorACFPlot", "ErrorACFNORMPlot", "ModelPlot",
                                                  "TrendStatePlot", "SeasonStatePlot", "ErrorACFPlot",
                                                  "ErrorACFNORMPlot"}));
  const Table& t = h.tables[1];
  EXPECT_TRUE(t.head.hidden);
  EXPECT_EQ(t.head.templ, "QVT.QVT.Forecasts");
  EXPECT_EQ(t.graphs[0].templ, "QVT.QVT.Graphics.ModelPlot");
  EXPECT_EQ(t.cols.back().name, "Season");
  EXPECT_EQ(t.rows.size(), 10u);
  EXPECT_EQ(value(t, "NLags"), "5");  // 36 lags held to 10 / 2
  EXPECT_EQ(value(t, "IDTYPE"), "LINEAR");
  EXPECT_EQ(value(t, "IntegerTime"), "TRUE");
  EXPECT_EQ(value(t, "Lead"), "2");
}

TEST_F(PlotFixture, ForecastRowsAndLimits) {
  com.plot.forecasts = com.plot.forecastsonly = 1;
  com.print.internal = 1;
  for (int type : {2, 1, 0}) qvtgfor(&com, &fore, 1, type);
  ASSERT_EQ(h.tables.size(), 2u);  // no MODELFORECASTS flag: type 2 draws nothing
  EXPECT_EQ(h.names(true), (std::vector<std::string>{"ForecastsPlot", "ForecastsOnlyPlot"}));
  const Table& all = h.tables[0];
  const Table& only = h.tables[1];
  EXPECT_FALSE(all.head.hidden);
  ASSERT_EQ(all.rows.size(), 12u);
  ASSERT_EQ(only.rows.size(), 2u);
  // Columns Obs, Predict, Lower, Upper, Actual: limits only from the first forecast.
  EXPECT_TRUE(wzmis(std::get<double>(all.rows[9][2])));
  EXPECT_EQ(std::get<double>(all.rows[10][2]), 18);
  EXPECT_EQ(std::get<double>(only.rows[0][0]), 11);
  EXPECT_EQ(std::get<double>(only.rows[1][3]), 23);
  EXPECT_EQ(value(only, "Horizon"), "11");
}

// Two demands in the sample, one held out, and the next one forecast.
TEST_F(PlotFixture, DemandRowsAndGraphsByFlag) {
  IDSERIES ids;
  ids.nsample = 2;
  ids.nholdout = 1;
  ids.time = {10, 13, 15, 19};
  ids.intv.data = {3, 2, 4};
  IDMODEL idm;
  idm.ids = &ids;
  idm.modused = kIdmUsedCroston;
  idm.intv.forecast.predict = {3, 2.5, 2.2};
  idm.intv.forecast.forecast = 3.5;
  qvtgdem(&com, &idm);  // no flag
  com.plot.models = com.plot.forecastsonly = 1;
  qvtgdem(&com, &idm);
  idm.modused = kIdmUsedAverage;
  com.plot.models = 0;
  com.plot.errors = 1;
  qvtgdem(&com, &idm);
  ASSERT_EQ(h.tables.size(), 2u);
  EXPECT_EQ(h.names(true), (std::vector<std::string>{"DemandIntervalPlot", "DemandIntervalHistogram", "DemandSizePlot",
                                                  "DemandSizeHistogram", "DemandForecastsPlot", "DemandErrorsPlot",
                                                  "DemandForecastsPlot"}));
  const Table& t = h.tables[0];
  ASSERT_EQ(t.rows.size(), 4u);
  // Index, DemandTime, ActualInterval, PredictedInterval, ...: the last row
  // predicts beyond the data, where no actual interval is known.
  EXPECT_EQ(std::get<double>(t.rows[3][0]), 4);
  EXPECT_EQ(std::get<double>(t.rows[3][1]), 19);
  EXPECT_TRUE(wzmis(std::get<double>(t.rows[3][2])));
  EXPECT_EQ(std::get<double>(t.rows[3][3]), 3.5);
  EXPECT_EQ(std::get<double>(t.rows[1][3]), 2.5);
  EXPECT_TRUE(wzmis(std::get<double>(h.tables[1].rows[1][3])));  // the average form fits no interval model
}

// Direct formulas in long double: r_k = c_k / c_0 over all pairs; phi_kk
// as the last coefficient of the order-k Yule-Walker system solved by
// Gaussian elimination; the inverse autocorrelations as the correlations
// of the moving average with coefficients 1, -phi_1, ..., -phi_p.
TEST(PlotStats, CorrelationsAgainstDirectFormulas) {
  std::vector<double> x;
  unsigned s = 12345;
  double prev = 0;
  for (int t = 0; t < 60; ++t) {
    s = s * 1103515245u + 12345u;
    prev = 0.6 * prev + static_cast<double>((s >> 16) % 1000) / 100.0;
    x.push_back(prev);
  }
  const int p = 6;
  const std::vector<double> r = plotAcf(x, p);
  ASSERT_EQ(r.size(), 7u);
  long double mean = 0;
  for (double v : x) mean += v;
  mean /= x.size();
  std::vector<long double> c(p + 1, 0);
  for (int k = 0; k <= p; ++k)
    for (std::size_t t = 0; t + k < x.size(); ++t) c[k] += (x[t] - mean) * (x[t + k] - mean);
  for (int k = 0; k <= p; ++k) EXPECT_NEAR(r[k], static_cast<double>(c[k] / c[0]), 1e-12) << k;

  // The Yule-Walker equations of order k, solved directly; phi[j] for j >= 1.
  const auto yuleWalker = [&](int k) {
    std::vector<testing::LRow> a(k, testing::LRow(k + 1));
    for (int i = 0; i < k; ++i) {
      for (int j = 0; j < k; ++j) a[i][j] = r[std::abs(i - j)];
      a[i][k] = r[i + 1];
    }
    std::vector<long double> phi(1, 0);
    for (const auto& row : testing::gaussJordan(a)) phi.push_back(row[0]);
    return phi;
  };
  const std::vector<double> pacf = plotPacf(r);
  ASSERT_EQ(pacf.size(), 7u);
  for (int k = 1; k <= p; ++k) EXPECT_NEAR(pacf[k], static_cast<double>(yuleWalker(k)[k]), 1e-10) << k;

  const std::vector<long double> phi = yuleWalker(p);
  std::vector<long double> ma(p + 1, 1);
  for (int j = 1; j <= p; ++j) ma[j] = -phi[j];
  const std::vector<double> iacf = plotIacf(r);
  ASSERT_EQ(iacf.size(), 7u);
  long double g0 = 0;
  for (long double m : ma) g0 += m * m;
  for (int k = 1; k <= p; ++k) {
    long double gk = 0;
    for (int j = 0; j + k <= p; ++j) gk += ma[j] * ma[j + k];
    EXPECT_NEAR(iacf[k], static_cast<double>(gk / g0), 1e-10) << k;
  }
  EXPECT_TRUE(plotAcf({1.0, kMissing, 1.0}, 2).empty());  // c_0 = 0
}

// Chi-square tails: the 5% and 95% points of published tables (1 and 10
// degrees of freedom), and exp(-x/2) for 2; both branches are reached.
// Ljung-Box probabilities of Q_k = m (m + 2) sum r_j^2 / (m - j) by the
// closed forms of 1 and 2 degrees of freedom: erfc(sqrt(Q/2)), exp(-Q/2).
TEST(PlotStats, WhiteNoiseProbabilities) {
  const double tails[][3] = {{3.841459, 1, 0.05}, {18.307038, 10, 0.05}, {3.940299, 10, 0.95},
                             {1, 2, std::exp(-0.5)}, {10, 2, std::exp(-5.0)}};
  for (const auto& c : tails) EXPECT_NEAR(plotChiSquareTail(c[0], c[1]), c[2], 1e-6) << c[0] << " " << c[1];
  const std::vector<double> p = plotWhiteNoise({1, 0.3, -0.2, 0.1}, 50, 1);
  ASSERT_EQ(p.size(), 4u);
  EXPECT_TRUE(wzmis(p[1]));  // no degree of freedom left
  const long double q2 = 50.0L * 52 * (0.09L / 49 + 0.04L / 48), q3 = q2 + 50.0L * 52 * 0.01L / 47;
  EXPECT_NEAR(p[2], static_cast<double>(std::erfc(std::sqrt(q2 / 2))), 1e-12);
  EXPECT_NEAR(p[3], static_cast<double>(std::exp(-q3 / 2)), 1e-12);
}

}  // namespace
}  // namespace qvt
