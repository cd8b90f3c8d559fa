// Season codes through the driver and the seasonal psi weights in esmsum.
//
// The calendar places a series in its cycle: a monthly series that starts
// in April has the season code 3 (January is 0). Fitting is invariant under
// a consistent relabelling of the seasons, so the codes show only where
// factors filed under one labelling meet observations coded under another:
// the forecast of a fitted model, a forecast series starting later than the
// fit, and the start values of a tail. The oracles are the kernels called
// with codes written out by hand, and psi weights from their closed form.

#include "model_oracle.hpp"

namespace qvt {
namespace {

// 1 April 2001 and 1 May 2001 as day counts from 1 January 1960: 41 years
// with 11 leap days to 2001-01-01 (14976 days), then 31 + 28 + 31 = 90, and
// 30 more for April.
constexpr double kApril2001 = 15066.0;
constexpr double kMay2001 = 15096.0;
constexpr long kN = 48;
constexpr int kNs = 12;
const int kSeasonalMethods[] = {kEsmSeasonal, kEsmAddWinters, kEsmWinters, kEsmMultSeasonal};

INTERVAL interval(const char* name) {
  INTERVAL i;
  EXPECT_EQ(zintstr(name, -1, &i), 0);
  return i;
}

// A positive monthly series with a pattern tied to the calendar month (the
// series starts in April, month index 3) and a little deterministic noise.
const std::vector<double> kY = [] {
  const double pattern[kNs] = {-9, -7, -2, 3, 6, 11, 14, 12, 5, -1, -6, -10};
  std::vector<double> y(kN);
  for (long t = 0; t < kN; ++t)
    y[t] = 100.0 + 0.25 * static_cast<double>(t) + pattern[(3 + t) % kNs] +
           1.5 * std::sin(1.7 * static_cast<double>(t) + 0.3);
  return y;
}();

std::vector<int> codesFrom(int first, long n) { return oracle::codes(std::size_t(n), kNs, first); }

double maxAbsDiff(const std::vector<double>& a, const std::vector<double>& b) {
  double d = 0;
  for (std::size_t i = 0; i < a.size(); ++i) d = std::fmax(d, std::fabs(a[i] - b[i]));
  return d;
}

// How far the driver's predictions lie from those of the method's kernel
// with the given codes, weights and state: the driver's result as it must
// come out when it hands the kernel those codes.
double kernelGap(const std::vector<double>& driver, const WINMODEL& m, const double* x, long n, int first,
                 const SMOOTHVALS& from, int startflg, int lead) {
  const ESMMODELSET* set = esmmodelset(m.spec.code);
  const std::vector<char> flags(static_cast<std::size_t>(n), 0);
  double scale = 0;
  for (long t = 0; t < n; ++t) scale = std::fmax(scale, std::fabs(x[t]));
  SMOOTHVALS state = from;
  std::vector<double> rows(static_cast<std::size_t>((n + lead) * set->rowlen));
  double mse = 0;
  EXPECT_EQ(set->prd(x, flags.data(), codesFrom(first, n).data(), scale, n, m.pest.parms.data(), m.additive,
                     state, 0, n - 1, lead, m.pest.mse, 0.05, startflg, &mse, rows.data()), 0);
  std::vector<double> p(static_cast<std::size_t>(n + lead));
  for (long t = 0; t < n + lead; ++t) p[t] = rows[t * set->rowlen + kRowPredicted];
  return maxAbsDiff(driver, p);
}

TEST(EsmSeasonCodes, MonthlyFromAprilFitsAsCodesGivenFromThree) {
  const INTERVAL month = interval("MONTH");
  constexpr int lead = 18;
  for (const int method : kSeasonalMethods) {
    // Through the driver with dates: the cycle and the codes from the calendar.
    Model a(kY.data(), kN, method, -1, 0, &month, kApril2001);
    ASSERT_EQ(a.rc, 0) << method;
    ASSERT_EQ(a.m->ts.nseasons, kNs) << method;
    EXPECT_EQ(a.m->ts.nstart, 3) << method;
    EXPECT_EQ(a.m->ts.scodes, codesFrom(3, kN)) << method;
    ASSERT_GE(esmfit(a.m), 0) << method;
    std::vector<double> pred(kN + lead);
    FOR_OUT out{.predicted = pred.data()};
    ASSERT_EQ(esmprd(a.m, kY.data(), kN, kApril2001, 0, 0.05, lead, &out), 0) << method;
    // The same series without a time ID, its codes overwritten from 3 by
    // hand, start values and fit redone, forecasts by the kernel with those
    // codes from the fitted start state.
    Model b(kY.data(), kN, method, kNs, 0, nullptr, 1.0);
    ASSERT_EQ(b.rc, 0) << method;
    EXPECT_EQ(b.m->ts.scodes, codesFrom(0, kN)) << method << ": by observation number";
    b.m->ts.scodes = codesFrom(3, kN);
    b.m->ts.nstart = 3;
    ASSERT_EQ(esmsvi(b.m), 0) << method;
    ASSERT_GE(esmfit(b.m), 0) << method;
    for (int i = 0; i < b.m->pest.nparms; ++i)
      EXPECT_NEAR(a.m->pest.parms[i], b.m->pest.parms[i], 1e-12) << method << " weight " << i;
    EXPECT_LT(kernelGap(pred, *b.m, kY.data(), kN, 3, b.m->startvals, 1, lead), 1e-9) << method;
    // The fitted factors read with codes from 0 (the position in the
    // cycle) put every month's factor on another month: the forecasts move.
    EXPECT_GT(kernelGap(pred, *b.m, kY.data(), kN, 0, b.m->startvals, 1, lead), 1.0) << method;

    // esmprd on the series from its second month: a start other than the
    // fit's backcasts from the start values, whose factors are filed by the
    // fit's codes, so the series must be coded from May (4).
    const long n = kN - 1;
    std::vector<double> p2(n + 12), date(p2.size());
    out = {.date = date.data(), .predicted = p2.data()};
    ASSERT_EQ(esmprd(a.m, kY.data() + 1, n, kMay2001, 0, 0.05, 12, &out), 0) << method;
    EXPECT_EQ(date[0], kMay2001) << method;
    EXPECT_LT(kernelGap(p2, *a.m, kY.data() + 1, n, 4, a.m->svi, 0, 12), 1e-9) << method;
    EXPECT_GT(kernelGap(p2, *a.m, kY.data() + 1, n, 0, a.m->svi, 0, 12), 0.5) << method;
  }
}

TEST(EsmSeasonCodes, WithoutCalendarTheCycleCountsObservations) {
  // No time ID, or an observation grid: the first observation is season 0
  // whatever its observation number, and the cycle has the count given;
  // asking for the interval's own cycle finds none there.
  const INTERVAL obs = interval("OBS");
  const INTERVAL none{};
  for (const INTERVAL* intv : {&none, &obs})
    for (const double first : {1.0, 7.0}) {
      Model a(kY.data(), kN, kEsmSeasonal, kNs, 0, intv, first);
      ASSERT_EQ(a.rc, 0) << first;
      EXPECT_EQ(a.m->ts.scodes, codesFrom(0, kN)) << first;
      EXPECT_EQ(Model(kY.data(), kN, kEsmSeasonal, -1, 0, intv, first).rc, -999) << first;
    }
}

TEST(EsmSeasonCodes, BackcastTailTakesTheSeasonOfItsFirstObservation) {
  // nbackcast 1: the start values come from the last nseasons + 1 (SEASONAL)
  // or nseasons + 2 (Winters) observations, whose first season is not 0.
  const std::vector<char> flags(kN, 0);
  const INTERVAL month = interval("MONTH");
  for (const int method : {kEsmSeasonal, kEsmAddWinters}) {
    Model a(kY.data(), kN, method, -1, 1, &month, kApril2001);
    ASSERT_EQ(a.rc, 0) << method;
    const long tail = method == kEsmSeasonal ? kNs + 1 : kNs + 2;
    const long start = kN - tail;
    const int first = static_cast<int>((3 + start) % kNs);  // 2 and 1: March, February
    double level = 0, trend = 0;
    std::vector<double> s(kNs, 0.0);
    const double* x = kY.data() + start;
    const int rc = method == kEsmSeasonal
                       ? zesssvi(x, flags.data(), tail, kNs, first, 1, &level, s.data())
                       : zwinsvi(x, flags.data(), tail, kNs, first, 1, 1, &level, &trend, s.data());
    ASSERT_EQ(rc, 0);
    EXPECT_NEAR(level, a.m->svi.level, 1e-10) << method;
    EXPECT_LT(maxAbsDiff(s, a.m->svi.sfactor), 1e-10) << method;
  }
}

TEST(EsmSeasonCodes, SeasonalKernelsRefuseMissingCodes) {
  // On a cycle of two or more seasons nothing can stand in for the codes.
  const double* y = kY.data();
  const std::vector<char> fl(kN, 0);
  std::vector<double> s(kNs, 0.0), rows(kN * 9);
  double level = 100, trend = 0, mse = 0;
  double pder[3];
  const double d[3] = {1e-6, 1e-6, 1e-6};
  EXPECT_EQ(zesssmo(y, fl.data(), 200, kN, kNs, 0.3, 0.2, &level, s.data(), nullptr, &mse), -999);
  EXPECT_EQ(zesinpd(y, fl.data(), 200, kN, kNs, 0, 0.3, 0.2, level, s.data(), nullptr, d, 0, pder), -999);
  EXPECT_TRUE(wzmis(pder[0]) && wzmis(pder[1]));
  EXPECT_EQ(zessprd(y, fl.data(), 200, kN, kNs, 0.3, 0.2, &level, s.data(), nullptr, 0, kN - 1, 3, 1.0, 0.05,
                    0, &mse, rows.data()), -999);
  EXPECT_EQ(zwinsmo(y, fl.data(), 200, kN, kNs, 1, 0.3, 0.1, 0.2, &level, &trend, s.data(), nullptr, &mse),
            -999);
  // The start-value entries of the method table likewise.
  SMOOTHVALS out{.sfactor = std::vector<double>(kNs, 0.0)};
  EXPECT_EQ(esmmodelset(kEsmSeasonal)->svi(y, fl.data(), nullptr, kN, kNs, 1, 1, out), -999);
  // A cycle of one season has only the code 0.
  double one = 0.0, l1 = 100;
  EXPECT_EQ(zesssmo(y, fl.data(), 200, kN, 1, 0.3, 0.2, &l1, &one, nullptr, &mse), 0);
}

}  // namespace
}  // namespace qvt
