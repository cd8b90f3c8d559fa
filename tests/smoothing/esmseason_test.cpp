// Season codes through the driver and the seasonal psi weights in esmsum.
//
// The calendar places a series in its cycle: a monthly series that starts
// in April has the season code 3 (January is 0). Fitting is invariant under
// a consistent relabelling of the seasons, so the codes show only where
// factors filed under one labelling meet observations coded under another:
// the forecast of a fitted model, a forecast series starting later than the
// fit, and the start values of a tail. The oracles are the kernels called
// with codes written out by hand, and psi weights from their closed form.

#include <algorithm>
#include <cstdlib>
#include "model_oracle.hpp"

namespace qvt {
namespace {

struct Owned {
  WINMODEL* m = nullptr;
  ~Owned() { esmtrm(m); }
};

// 1 April 2001 and 1 May 2001 as day counts from 1 January 1960: 41 years
// with 11 leap days to 2001-01-01 (14976 days), then 31 + 28 + 31 = 90, and
// 30 more for April.
constexpr double kApril2001 = 15066.0;
constexpr double kMay2001 = 15096.0;
constexpr long kN = 48;
constexpr int kNs = 12;

INTERVAL monthly() {
  INTERVAL i;
  EXPECT_EQ(zintstr("MONTH", -1, &i), 0);
  return i;
}

// A positive monthly series with a pattern tied to the calendar month (the
// series starts in April, month index 3) and a little deterministic noise.
std::vector<double> series() {
  const double pattern[kNs] = {-9, -7, -2, 3, 6, 11, 14, 12, 5, -1, -6, -10};
  std::vector<double> y(kN);
  for (long t = 0; t < kN; ++t) {
    const double noise = 1.5 * std::sin(1.7 * static_cast<double>(t) + 0.3);
    y[static_cast<std::size_t>(t)] = 100.0 + 0.25 * static_cast<double>(t) +
                                     pattern[(3 + t) % kNs] + noise;
  }
  return y;
}

std::vector<int> codesFrom(int first, long n) {
  std::vector<int> c(static_cast<std::size_t>(n));
  for (long t = 0; t < n; ++t) c[static_cast<std::size_t>(t)] = static_cast<int>((first + t) % kNs);
  return c;
}

// Predictions of the method's kernel with the given codes, weights and
// state: the driver's result as it must come out when it hands the kernel
// those codes.
std::vector<double> kernelPredictions(const WINMODEL& m, const double* x, long n,
                                      const std::vector<int>& codes, const SMOOTHVALS& from,
                                      int startflg, int lead) {
  const ESMMODELSET* set = esmmodelset(m.spec.code);
  std::vector<char> flags(static_cast<std::size_t>(n), 0);
  double lo = x[0], hi = x[0];
  for (long t = 0; t < n; ++t) {
    lo = std::fmin(lo, x[t]);
    hi = std::fmax(hi, x[t]);
  }
  SMOOTHVALS state = from;
  std::vector<double> rows(static_cast<std::size_t>((n + lead) * set->rowlen));
  double mse = 0;
  const int rc = set->prd(x, flags.data(), codes.data(), std::fmax(std::fabs(lo), std::fabs(hi)),
                          n, m.pest.parms.data(), m.additive, state, 0, n - 1, lead, m.pest.mse,
                          0.05, startflg, &mse, rows.data());
  EXPECT_EQ(rc, 0);
  std::vector<double> p(static_cast<std::size_t>(n + lead));
  for (long t = 0; t < n + lead; ++t)
    p[static_cast<std::size_t>(t)] = rows[static_cast<std::size_t>(t * set->rowlen + kRowPredicted)];
  return p;
}

double maxAbsDiff(const std::vector<double>& a, const std::vector<double>& b) {
  double d = 0;
  for (std::size_t i = 0; i < a.size(); ++i) d = std::fmax(d, std::fabs(a[i] - b[i]));
  return d;
}

struct MethodCase {
  const char* name;
  int method;
};
const MethodCase kSeasonalMethods[] = {{"SEASONAL", kEsmSeasonal},
                                       {"ADDWINTERS", kEsmAddWinters},
                                       {"WINTERS", kEsmWinters},
                                       {"MULTSEASONAL", kEsmMultSeasonal}};

TEST(EsmSeasonCodes, MonthlyFromAprilFitsAsCodesGivenFromThree) {
  const auto y = series();
  const INTERVAL month = monthly();
  const INTERVAL none{};
  constexpr int lead = 18;
  for (const auto& c : kSeasonalMethods) {
    // Through the driver with dates: the cycle and the codes from the calendar.
    Owned a;
    ASSERT_EQ(esmint(y.data(), kN, &month, kApril2001, -1, 0, c.method, 0, &a.m), 0) << c.name;
    ASSERT_EQ(a.m->ts.nseasons, kNs) << c.name;
    EXPECT_EQ(a.m->ts.nstart, 3) << c.name;
    EXPECT_EQ(a.m->ts.scodes, codesFrom(3, kN)) << c.name;
    ASSERT_GE(esmfit(a.m), 0) << c.name;
    std::vector<double> pred(static_cast<std::size_t>(kN + lead));
    FOR_OUT out;
    out.predicted = pred.data();
    ASSERT_EQ(esmprd(a.m, y.data(), kN, kApril2001, 0, 0.05, lead, &out), 0) << c.name;

    // The same series without a time ID, its codes overwritten from 3 by
    // hand, start values and fit redone, forecasts by the kernel with those
    // codes from the fitted start state.
    Owned b;
    ASSERT_EQ(esmint(y.data(), kN, &none, 1.0, kNs, 0, c.method, 0, &b.m), 0) << c.name;
    EXPECT_EQ(b.m->ts.scodes, codesFrom(0, kN)) << c.name << ": by observation number";
    b.m->ts.scodes = codesFrom(3, kN);
    b.m->ts.nstart = 3;
    ASSERT_EQ(esmsvi(b.m), 0) << c.name;
    ASSERT_GE(esmfit(b.m), 0) << c.name;
    for (int i = 0; i < b.m->pest.nparms; ++i)
      EXPECT_NEAR(a.m->pest.parms[static_cast<std::size_t>(i)],
                  b.m->pest.parms[static_cast<std::size_t>(i)], 1e-12)
          << c.name << " weight " << i;
    const auto given = kernelPredictions(*b.m, y.data(), kN, codesFrom(3, kN), b.m->startvals, 1,
                                         lead);
    EXPECT_LT(maxAbsDiff(pred, given), 1e-9) << c.name;

    // The fitted factors read with codes from 0 (the position in the
    // cycle) put every month's factor on another month: the forecasts move.
    const auto positional = kernelPredictions(*b.m, y.data(), kN, codesFrom(0, kN),
                                              b.m->startvals, 1, lead);
    EXPECT_GT(maxAbsDiff(pred, positional), 1.0) << c.name;
  }
}

TEST(EsmSeasonCodes, WithoutCalendarTheCycleCountsObservations) {
  // No time ID, or an observation grid: the first observation is season 0
  // whatever its observation number, and the cycle has the count given.
  const auto y = series();
  INTERVAL obs;
  ASSERT_EQ(zintstr("OBS", -1, &obs), 0);
  const INTERVAL none{};
  struct Case {
    const char* name;
    const INTERVAL* intv;
    double first;
  };
  const Case cases[] = {{"none", &none, 1.0}, {"none later", &none, 7.0}, {"OBS", &obs, 1.0},
                        {"OBS later", &obs, 7.0}};
  for (const auto& c : cases) {
    Owned a;
    ASSERT_EQ(esmint(y.data(), kN, c.intv, c.first, kNs, 0, kEsmSeasonal, 0, &a.m), 0) << c.name;
    EXPECT_EQ(a.m->ts.scodes, codesFrom(0, kN)) << c.name;
    // Asking for the interval's own cycle finds none there.
    Owned b;
    EXPECT_EQ(esmint(y.data(), kN, c.intv, c.first, -1, 0, kEsmSeasonal, 0, &b.m), -999) << c.name;
  }
}

TEST(EsmSeasonCodes, ForecastSeriesStartingLaterIsCodedFromItsOwnStart) {
  // esmprd on the series from its second month: a start other than the
  // fit's backcasts from the start values, whose factors are filed by the
  // fit's codes, so the series must be coded from May (4).
  const auto y = series();
  const INTERVAL month = monthly();
  constexpr int lead = 12;
  const long n = kN - 1;
  for (const auto& c : kSeasonalMethods) {
    Owned a;
    ASSERT_EQ(esmint(y.data(), kN, &month, kApril2001, -1, 0, c.method, 0, &a.m), 0) << c.name;
    ASSERT_GE(esmfit(a.m), 0) << c.name;
    std::vector<double> pred(static_cast<std::size_t>(n + lead));
    std::vector<double> date(pred.size());
    FOR_OUT out;
    out.predicted = pred.data();
    out.date = date.data();
    ASSERT_EQ(esmprd(a.m, y.data() + 1, n, kMay2001, 0, 0.05, lead, &out), 0) << c.name;
    EXPECT_EQ(date[0], kMay2001) << c.name;
    const auto may = kernelPredictions(*a.m, y.data() + 1, n, codesFrom(4, n), a.m->svi, 0, lead);
    EXPECT_LT(maxAbsDiff(pred, may), 1e-9) << c.name;
    const auto positional =
        kernelPredictions(*a.m, y.data() + 1, n, codesFrom(0, n), a.m->svi, 0, lead);
    EXPECT_GT(maxAbsDiff(pred, positional), 0.5) << c.name;
  }
}

TEST(EsmSeasonCodes, BackcastTailTakesTheSeasonOfItsFirstObservation) {
  // nbackcast 1: the start values come from the last nseasons + 1 (SEASONAL)
  // or nseasons + 2 (Winters) observations, whose first season is not 0.
  const auto y = series();
  const std::vector<char> flags(static_cast<std::size_t>(kN), 0);
  const INTERVAL month = monthly();
  struct Case {
    const char* name;
    int method;
    long tail;
  };
  const Case cases[] = {{"SEASONAL", kEsmSeasonal, kNs + 1}, {"ADDWINTERS", kEsmAddWinters, kNs + 2}};
  for (const auto& c : cases) {
    Owned a;
    ASSERT_EQ(esmint(y.data(), kN, &month, kApril2001, -1, 0, c.method, 1, &a.m), 0) << c.name;
    const long start = kN - c.tail;
    const int first = static_cast<int>((3 + start) % kNs);  // 2 and 1: March, February
    ASSERT_NE(first, 0);
    for (const int nstart : {first, 0}) {
      double level = 0, trend = 0;
      std::vector<double> s(kNs, 0.0);
      if (c.method == kEsmSeasonal) {
        ASSERT_EQ(zesssvi(y.data() + start, flags.data() + start, c.tail, kNs, nstart, 1, &level,
                          s.data()),
                  0);
      } else {
        ASSERT_EQ(zwinsvi(y.data() + start, flags.data() + start, c.tail, kNs, nstart, 1, 1,
                          &level, &trend, s.data()),
                  0);
      }
      double diff = std::fabs(level - a.m->svi.level);
      for (int k = 0; k < kNs; ++k)
        diff = std::fmax(diff, std::fabs(s[static_cast<std::size_t>(k)] -
                                         a.m->svi.sfactor[static_cast<std::size_t>(k)]));
      if (nstart == first) EXPECT_LT(diff, 1e-10) << c.name;
      else EXPECT_GT(diff, 1.0) << c.name << ": factors filed from season 0";
    }
  }
}

TEST(EsmSeasonCodes, SeasonalKernelsRefuseMissingCodes) {
  // On a cycle of two or more seasons nothing can stand in for the codes.
  const auto y = series();
  const std::vector<char> flags(static_cast<std::size_t>(kN), 0);
  std::vector<double> s(kNs, 0.0), rows(static_cast<std::size_t>(kN * 9));
  double level = 100, trend = 0, mse = 0;
  double pder[3];
  const double d[3] = {1e-6, 1e-6, 1e-6};
  EXPECT_EQ(zesssmo(y.data(), flags.data(), 200, kN, kNs, 0.3, 0.2, &level, s.data(), nullptr,
                    &mse),
            -999);
  EXPECT_EQ(zesinpd(y.data(), flags.data(), 200, kN, kNs, 0, 0.3, 0.2, level, s.data(), nullptr,
                    d, 0, pder),
            -999);
  EXPECT_TRUE(wzmis(pder[0]) && wzmis(pder[1]));
  EXPECT_EQ(zessprd(y.data(), flags.data(), 200, kN, kNs, 0.3, 0.2, &level, s.data(), nullptr, 0,
                    kN - 1, 3, 1.0, 0.05, 0, &mse, rows.data()),
            -999);
  EXPECT_EQ(zwinsmo(y.data(), flags.data(), 200, kN, kNs, 1, 0.3, 0.1, 0.2, &level, &trend,
                    s.data(), nullptr, &mse),
            -999);
  EXPECT_EQ(zwinprd(y.data(), flags.data(), 200, kN, kNs, 0, 0.3, 0.1, 0.2, &level, &trend,
                    s.data(), nullptr, 0, kN - 1, 3, 1.0, 0.05, 0, &mse, rows.data()),
            -999);
  // The start-value entries of the method table likewise.
  SMOOTHVALS out;
  out.sfactor.assign(kNs, 0.0);
  EXPECT_EQ(esmmodelset(kEsmSeasonal)->svi(y.data(), flags.data(), nullptr, kN, kNs, 1, 1, out),
            -999);
  EXPECT_EQ(esmmodelset(kEsmWinters)->svi(y.data(), flags.data(), nullptr, kN, kNs, 1, 0, out),
            -999);
  // A cycle of one season has only the code 0.
  double one = 0.0;
  level = 100;
  EXPECT_EQ(zesssmo(y.data(), flags.data(), 200, kN, 1, 0.3, 0.2, &level, &one, nullptr, &mse), 0);
}

// psi weights from their closed form: w (plus j w g in Winters), plus
// (1 - w) d at each multiple of the cycle.
std::vector<double> psiByHand(const WINMODEL& m, int n) {
  const auto& w = m.parms.parms;
  const bool winters = m.spec.code != kEsmSeasonal;
  const double d = winters ? w[2] : w[1];
  std::vector<double> p(static_cast<std::size_t>(n));
  p[0] = 1.0;
  for (int j = 1; j < n; ++j) {
    double v = w[0] + (winters ? j * w[0] * w[1] : 0.0);
    if (j % kNs == 0) v += (1.0 - w[0]) * d;
    p[static_cast<std::size_t>(j)] = v;
  }
  return p;
}

TEST(EsmSum, AdditiveSeasonalVarianceBeyondOneCycle) {
  const auto y = series();
  const INTERVAL month = monthly();
  constexpr int lead = 30;  // two and a half cycles of 12
  for (const int method : {kEsmSeasonal, kEsmAddWinters}) {
    Owned a;
    ASSERT_EQ(esmint(y.data(), kN, &month, kApril2001, -1, 0, method, 0, &a.m), 0) << method;
    ASSERT_GE(esmfit(a.m), 0) << method;
    std::vector<double> pred(static_cast<std::size_t>(kN + lead));
    FOR_OUT out;
    out.predicted = pred.data();
    ASSERT_EQ(esmprd(a.m, y.data(), kN, kApril2001, 0, 0.05, lead, &out), 0) << method;
    const double* fc = pred.data() + kN;
    const double mse = a.m->pest.mse;
    const auto psi = psiByHand(*a.m, lead);

    struct Range {
      int start, lead;
    };
    for (const Range r : {Range{30, 30}, Range{13, 13}, Range{25, 25}, Range{12, 12},
                          Range{20, 30}, Range{1, 30}}) {
      // Slow direct double sum of the covariances of the lead errors.
      double v = 0;
      for (int i = r.start; i <= r.lead; ++i)
        for (int j = r.start; j <= r.lead; ++j) {
          const int lo = std::min(i, j), gap = std::abs(i - j);
          for (int k = 0; k < lo; ++k)
            v += psi[static_cast<std::size_t>(k)] * psi[static_cast<std::size_t>(k + gap)];
        }
      double sstd = 0, spred = 0;
      ASSERT_EQ(esmsum(a.m, fc, r.lead, r.start, 0.05, &spred, &sstd, nullptr, nullptr), 0);
      EXPECT_NEAR(sstd * sstd, mse * v, 1e-10 * mse * v) << method << " " << r.start << ".." << r.lead;
    }

    // start = lead: se2 times the sum of the first lead squared weights, and
    // the seasonal terms at 12 and 24 make a difference the test can see.
    double with = 0, without = 0;
    for (int j = 0; j < lead; ++j) {
      with += psi[static_cast<std::size_t>(j)] * psi[static_cast<std::size_t>(j)];
      const double plain = psi[static_cast<std::size_t>(j)] -
                           (j > 0 && j % kNs == 0
                                ? (1.0 - a.m->parms.parms[0]) *
                                      a.m->parms.parms[method == kEsmSeasonal ? 1 : 2]
                                : 0.0);
      without += plain * plain;
    }
    double sstd = 0;
    ASSERT_EQ(esmsum(a.m, fc, lead, lead, 0.05, nullptr, &sstd, nullptr, nullptr), 0);
    EXPECT_NEAR(sstd, std::sqrt(mse * with), 1e-10 * std::sqrt(mse * with)) << method;
    EXPECT_GT(std::fabs(with - without), 1e-6 * with) << method;
    // ADDWINTERS' lead rows carry the same psi sum.
    if (method == kEsmAddWinters) {
      std::vector<double> sd(static_cast<std::size_t>(kN + lead));
      FOR_OUT o2;
      o2.std = sd.data();
      ASSERT_EQ(esmprd(a.m, y.data(), kN, kApril2001, 0, 0.05, lead, &o2), 0);
      EXPECT_NEAR(sd[static_cast<std::size_t>(kN + lead - 1)], sstd, 1e-10 * sstd);
    }
  }
}

}  // namespace
}  // namespace qvt
