// Completion of the OUT= series by USE=, REPLACEMISSING and REPLACEBACK, and
// the forecast columns of the summary row, on hand-built frames whose
// expected cells are worked out by hand from the period arithmetic.
#include "run/append.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "smoothing/esmfor.hpp"

namespace qvt {
namespace {

constexpr double M = kMissing;

// Cells equal, missing ones by their bits.
void expectCells(const std::vector<double>& got, const std::vector<double>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    SCOPED_TRACE(::testing::Message() << "cell " << i);
    if (wzmis(want[i])) EXPECT_TRUE(wzmis(got[i])) << got[i];
    else EXPECT_EQ(got[i], want[i]);
  }
}

// A frame of `nobs` periods with LEAD=3, the series `y` (tobs cells) and the
// used range worked out as the per-series run does it. The forecast vectors
// hold 100+i (predicted), 200+i (lower), 300+i (upper) for row i.
struct Frame {
  QVTCOM com;
  VAR var;
  FORSTMT f;
  std::vector<double> y, pred, lower, upper;
  FOR_OUT fore;

  Frame(std::vector<double> series, long nobs, int back, int use, bool repmiss, bool repback) : y(std::move(series)) {
    com.istmt.lead = 3;
    com.istmt.back = back;
    com.out.nobs = nobs;
    com.out.tobs = nobs + 3;
    f.use.code = use;
    f.replacemissing = repmiss;
    f.replaceback = repback;
    var.fstmt = &f;
    com.current.varptr = &var;
    const long N = nobs - back;
    long s = 0, e = N;
    while (s < N && wzmis(y[s])) ++s;
    while (e > s && wzmis(y[e - 1])) --e;
    com.current.start = s;
    com.current.nobs = e - s;
    com.current.lead = N - e + 3;
    fore.n = com.current.nobs + com.current.lead;
    for (long i = 0; i < fore.n; ++i) {
      pred.push_back(100.0 + static_cast<double>(i));
      lower.push_back(200.0 + static_cast<double>(i));
      upper.push_back(300.0 + static_cast<double>(i));
    }
    fore.predicted = pred.data();
    fore.lower = lower.data();
    fore.upper = upper.data();
  }
};

TEST(Append, UseReplaceMissingAndTheGrowingHorizon) {
  // Six periods, LEAD=3; the used range is periods 1..4 (s 1, n 4), period 3
  // is missing inside it and period 5 is a missing tail, so the horizon is 4
  // and the forecasts (rows 4..7 of fore) fill periods 5..8.
  const std::vector<double> y = {M, 1, 2, M, 4, M, M, M, M};
  struct Case {
    const char* name;
    int use;
    bool repmiss;
    std::vector<double> want;
  } cases[] = {
      {"none", kUseNone, true, {M, 1, 2, M, 4, M, M, M, M}},
      {"predict", kUsePredict, false, {M, 1, 2, M, 4, 104, 105, 106, 107}},
      {"predict, replace missing", kUsePredict, true, {M, 1, 2, 102, 4, 104, 105, 106, 107}},
      {"lower", kUseLower, false, {M, 1, 2, M, 4, 204, 205, 206, 207}},
      {"upper, replace missing", kUseUpper, true, {M, 1, 2, 302, 4, 304, 305, 306, 307}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Frame fr(y, 6, 0, c.use, c.repmiss, false);
    ASSERT_EQ(fr.com.current.start, 1);
    ASSERT_EQ(fr.com.current.nobs, 4);
    ASSERT_EQ(fr.com.current.lead, 4);
    append(&fr.com, &fr.fore, fr.y.data());
    expectCells(fr.y, c.want);
  }
}

TEST(Append, BackKeepsActualsUnlessReplaceBack) {
  // Six periods, BACK=2, LEAD=3: the fit range is periods 0..3 with values at
  // 1 and 2 (s 1, n 2, horizon 4 - 3 + 3 = 4); fore row i is period 1 + i.
  // OUT= has tobs - back = 7 useful cells: the BACK= periods 4 and 5 keep
  // their actuals and only LEAD - BACK = 1 forecast follows (row 5, period 6).
  // REPLACEBACK overwrites periods 3..5 (the missing end of the fit range
  // too) with rows 2..4.
  const std::vector<double> y = {M, 1, 2, M, 4, 5, M, M, M};
  Frame keep(y, 6, 2, kUsePredict, false, false);
  ASSERT_EQ(keep.com.current.nobs, 2);
  ASSERT_EQ(keep.com.current.lead, 4);
  append(&keep.com, &keep.fore, keep.y.data());
  expectCells(keep.y, {M, 1, 2, M, 4, 5, 105, M, M});

  Frame rep(y, 6, 2, kUsePredict, false, true);
  append(&rep.com, &rep.fore, rep.y.data());
  expectCells(rep.y, {M, 1, 2, 102, 103, 104, 105, M, M});
}

TEST(Summation, LastForecastSumsAndLeadCells) {
  const std::vector<double> y = {1, 2, 3, 4, 5, M, M, M};
  // LEAD=3 equal to STARTSUM=3: the summary is the last forecast (row 7).
  {
    Frame fr(y, 5, 0, kUseLower, false, false);
    std::vector<double> std(8, 9.0), forlead(3, 0.0);
    fr.fore.std = std.data();
    fr.com.outsum.forlead = forlead.data();
    fr.com.istmt.startsum = 3;
    EXPECT_EQ(summation(&fr.com, nullptr, &fr.fore), 0);
    EXPECT_EQ(fr.com.outsum.pred, 107);
    EXPECT_EQ(fr.com.outsum.lower, 207);
    EXPECT_EQ(fr.com.outsum.upper, 307);
    EXPECT_EQ(fr.com.outsum.std, 9);
    expectCells(forlead, {205, 206, 207});  // USE=LOWER: the lower limits of the leads
    // Under a transformation the limits of the last forecast don't stand.
    fr.com.current.trnscode = kTrnsLog;
    summation(&fr.com, nullptr, &fr.fore);
    EXPECT_EQ(fr.com.outsum.pred, 107);
    EXPECT_TRUE(wzmis(fr.com.outsum.lower) && wzmis(fr.com.outsum.upper) && wzmis(fr.com.outsum.std));
  }
  // A transformed series sums the forecasts from STARTSUM= on, skipping
  // missing ones; with all of them missing the sum is missing.
  {
    Frame fr(y, 5, 0, kUseNone, false, false);
    std::vector<double> forlead(3, 0.0);
    fr.com.outsum.forlead = forlead.data();
    fr.com.current.trnscode = kTrnsLog;
    fr.com.istmt.startsum = 2;
    fr.pred[6] = M;
    summation(&fr.com, nullptr, &fr.fore);
    EXPECT_EQ(fr.com.outsum.pred, 107);  // rows 6 and 7, row 6 missing
    expectCells(forlead, {M, M, M});     // USE=NONE leaves the lead cells missing
    fr.pred[7] = M;
    summation(&fr.com, nullptr, &fr.fore);
    EXPECT_TRUE(wzmis(fr.com.outsum.pred));
  }
  // No LEAD=: nothing to sum.
  {
    Frame fr(y, 5, 0, kUsePredict, false, false);
    fr.com.istmt.lead = 0;
    fr.com.outsum.pred = 1;
    summation(&fr.com, nullptr, &fr.fore);
    EXPECT_TRUE(wzmis(fr.com.outsum.pred));
  }
}

TEST(Summation, SumOfSimpleSmoothingForecastsAgainstTheDirectVariance) {
  // SES forecasts are flat, so the sum of leads 1..3 is 3 times the last
  // forecast. Its error variance, from the MA form e_k = sum_m psi_m a_(k-m)
  // with psi_0 = 1, psi_m = w: Var = s2 * sum_{i,j=1..3} sum_{m<min(i,j)}
  // psi_m psi_(m+|i-j|), written out directly here.
  const std::vector<double> x = {12, 15, 11, 14, 16, 13, 17, 15, 18, 16, 19, 17};
  const long n = static_cast<long>(x.size());
  INTERVAL intv;
  ASSERT_EQ(zintic(45, &intv), 0);
  WINMODEL* esm = nullptr;
  ASSERT_EQ(esmint(x.data(), n, &intv, 0.0, 0, 0, kModelSimple, -1, &esm), 0);
  ASSERT_GE(esmfit(esm), 0);
  const int lead = 3;
  std::vector<double> pred(n + lead, M), std(n + lead, M), lo(n + lead, M), up(n + lead, M);
  FOR_OUT fore;
  fore.predicted = pred.data();
  fore.std = std.data();
  fore.lower = lo.data();
  fore.upper = up.data();
  ASSERT_EQ(esmprd(esm, x.data(), n, 0.0, 0, 0.05, lead, &fore), 0);

  QVTCOM com;
  VAR var;
  FORSTMT f;
  var.fstmt = &f;
  com.current.varptr = &var;
  com.istmt.lead = lead;
  com.istmt.startsum = 1;
  com.current.nobs = n;
  com.current.lead = lead;
  summation(&com, esm, &fore);

  const double w = esm->parms.parms[0];
  const double s2 = esm->pest.mse;
  auto psi = [w](int m) { return m == 0 ? 1.0 : w; };
  double v = 0;
  for (int i = 1; i <= lead; ++i)
    for (int j = 1; j <= lead; ++j)
      for (int m = 0; m < std::min(i, j); ++m) v += psi(m) * psi(m + std::abs(i - j));
  EXPECT_NEAR(com.outsum.pred, 3 * pred[n], 1e-12 * std::fabs(pred[n]));
  EXPECT_NEAR(com.outsum.std, std::sqrt(v * s2), 1e-12 * std::sqrt(v * s2));
  const double z = 1.959963984540054;
  EXPECT_NEAR(com.outsum.upper - com.outsum.pred, z * com.outsum.std, 1e-9);
  EXPECT_NEAR(com.outsum.pred - com.outsum.lower, z * com.outsum.std, 1e-9);
  esmtrm(esm);
}

}  // namespace
}  // namespace qvt
