// idmprd and idmeval on a model record filled by hand: the spreading over
// the time grid worked out period by period on paper, and the statistics
// of fit against ztssfme called on the vectors each range selects.
#include "intermittent/idmodel.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "run/missing.hpp"
#include "stats/fitstats.hpp"

namespace qvt {
namespace {

const double M = kMissing;

bool same(double a, double b) { return wzmis(a) ? wzmis(b) != 0 : !wzmis(b) && a == b; }

// Two demands: 4 at t = 1 and 6 at t = 4 of six periods, so intv =
// {2, 3, 2}; rates 1, 1.5 and 2 forecast at the demands and beyond.
struct Fixture {
  IDSERIES ids;
  IDMODEL m;
  explicit Fixture(double base) {
    ids.base = base;
    ids.intv.data = {2, 3, 2};
    ids.size.data = {4, 6, M};
    m.ids = &ids;
    m.n = 2;
    m.nsample = 2;
    m.results.predict = {1, 1.5, 2};
    m.results.std = {0.5, 0.5, 0.5};
    m.results.lower = {0, 0.5, 1};
    m.results.upper = {2, 2.5, 3};
  }
};

TEST(Idmprd, SpreadsRatesAndStockOverTheGrid) {
  // By hand, T = 6, lead 2: the stock grows by the rate each period and
  // drops by the demand in the period of the demand; the third rate holds
  // from the last demand to the end of the horizon. The base shifts
  // predictions and limits, never the stock. With back 2 and lead 1 the
  // grid ends at 6 - 2 + 1 = 5, and nothing behind it is written.
  const std::vector<double> pred = {1, 1, 1.5, 1.5, 1.5, 2, 2, 2};
  const std::vector<double> stock = {1, -2, -0.5, 1, -3.5, -1.5, 0.5, 2.5};
  const struct {
    double base;
    long back, lead, nper;
  } cases[] = {{0, 0, 2, 8}, {10, 0, 2, 8}, {0, 2, 1, 5}};
  for (const auto& c : cases) {
    Fixture f(c.base);
    std::vector<double> p(8, -1), res(8, -1), lev(8, -1);
    FOR_OUT out{.predicted = p.data(), .residual = res.data(), .level = lev.data()};
    ASSERT_EQ(idmprd(&f.m, nullptr, 6, c.back, M, 0, c.lead, 0.05, &out), 0);
    EXPECT_EQ(out.n, c.nper);
    for (int t = 0; t < 8; ++t) {
      const bool on = t < c.nper;
      EXPECT_TRUE(same(p[t], on ? pred[t] + c.base : -1)) << c.base << " " << c.back << " " << t;
      EXPECT_TRUE(same(lev[t], on ? stock[t] : -1)) << c.base << " " << c.back << " " << t;
      EXPECT_TRUE(same(res[t], !on ? -1 : t < 6 ? stock[t] : M)) << c.base << " " << c.back << " " << t;
    }
  }
  Fixture f(0.0);
  FOR_OUT out;
  EXPECT_EQ(idmprd(&f.m, nullptr, 6, -1, M, 0, 1, 0.05, &out), kIdmBadArg);
  EXPECT_EQ(idmprd(nullptr, nullptr, 6, 0, M, 0, 1, 0.05, &out), kIdmBadArg);
}

TEST(Idmeval, RangesAgainstZtssfmeOnHandSlicedVectors) {
  // Six demands: fit sample 3, hold-out 2, back 1.
  IDSERIES ids;
  ids.size.data = {4, 6, 5, 7, 3, 8, M};
  ids.adem.data = {2, 3, 1, 3.5, 1.5, 2, M};
  IDMODEL m;
  m.ids = &ids;
  m.n = 6;
  m.nsample = 3;
  m.nholdout = 2;
  m.nback = 1;
  m.totparms = 2;
  m.results.actual = ids.adem.data.data();
  m.results.predict = {2.5, 2.4, 2.6, 2.2, 2.8, 2.1, 2.1};
  m.results.stock = {1, M, 2, 0.5, 1.5, -1, M};
  m.work.assign(7, 0.0);
  const std::vector<double> sized = {5, M, 7, 7.5, 4.5, 7, M};  // size + stock, by hand
  struct Row {
    int sflag, vflag;
    long start, len, k;
    double base;
  } rows[] = {
      {0, 0, 1, 2, 2, M}, {0, 1, 1, 4, 2, M}, {0, 2, 5, 1, 0, 1.5}, {0, 3, 3, 2, 0, 1},
      {1, 0, 1, 2, 2, M}, {1, 1, 1, 4, 2, M}, {1, 2, 5, 1, 0, 3}, {1, 3, 3, 2, 0, 1},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(::testing::Message() << "sflag " << r.sflag << " vflag " << r.vflag);
    const double* a = (r.sflag ? ids.size.data : ids.adem.data).data() + r.start;
    const double* p = (r.sflag ? sized : m.results.predict).data() + r.start;
    SF_STATS want, got;
    // A statistic that can't be formed (too few errors) makes ztssfme's
    // result negative while the others stand; idmeval reports it as a failure
    // of its range.
    const int rc = ztssfme(r.base, a, p, r.len, r.k, &want) < 0 ? (r.vflag == 2 ? -61 : -60) : 0;
    if (want.dfe < 0) want.dfe = 0;
    EXPECT_EQ(idmeval(&m, r.sflag, r.vflag, &got), rc);
    EXPECT_EQ(got.dfe, want.dfe);
    EXPECT_DOUBLE_EQ(got.sse, want.sse);
    EXPECT_TRUE(same(got.mrae, want.mrae));  // relative to the random walk from the base
  }
  SF_STATS s;
  EXPECT_EQ(idmeval(nullptr, 0, 0, &s), kIdmBadArg);
}

}  // namespace
}  // namespace qvt
