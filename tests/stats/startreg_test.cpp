// Start-value regressions against ordinary least squares computed directly:
// the design matrix (t, t^2, season dummies or a constant) is built here from
// the usable observations and its normal equations solved by Gauss-Jordan in
// long double. Multiplicative factors are checked against per-season lines
// and on hand-worked repairs.
#include "stats/startreg.hpp"

#include "dense_oracle.hpp"

namespace qvt {
namespace {

using namespace testing_dense;

const double kNo = std::nan("");  // an output not asked for

double tOf(long i) { return static_cast<double>(i + 1); }

// A small series with a trend, a seasonal pattern and irregular noise; the
// flagged values are never read, so they are set to nonsense.
std::vector<double> series(long n, int ns, const std::vector<char>& f, double quad = 0.0) {
  const double pattern[] = {3.0, -1.0, 0.5, -2.5, 1.25, -0.75, 2.0};
  const double noise[] = {0.31, -0.12, 0.07, -0.44, 0.25, 0.02, -0.3, 0.18, -0.05, 0.4, -0.21};
  std::vector<double> y(n);
  for (long i = 0; i < n; ++i) {
    const double trend = 10.0 + 0.8 * tOf(i) + quad * tOf(i) * tOf(i);
    y[i] = f[i] ? 1e300 : trend + pattern[i % std::max(ns, 1)] + noise[i % 11];
  }
  return y;
}

double* ask(bool wanted, double* p) { return wanted ? p : nullptr; }

// Each output against its expected value: missing where the value is, else
// within tol relative (absolute below 1); a plain NaN expects nothing.
void expectOutputs(const std::vector<std::pair<double, double>>& gotWant, double tol) {
  for (std::size_t k = 0; k < gotWant.size(); ++k) {
    const auto [g, w] = gotWant[k];
    if (wzmis(w)) {
      EXPECT_EQ(wzmis(g), 1) << "output " << k;
    } else if (!std::isnan(w)) {
      EXPECT_NEAR(g, w, tol * std::fmax(1.0, std::fabs(w))) << "output " << k;
    }
  }
}

TEST(AdditiveStart, MatchesLeastSquares) {
  // Columns t and t^2 as asked, then one dummy per season with data when
  // ns > 2 (centred on their mean over all ns seasons when the trend is
  // there, on the mean of the data when not), else the constant.
  struct Case { long n; int ns; bool c, t, q; std::vector<long> flagged; };
  const Case cases[] = {
      {2, 0, 1, 1, 0, {}}, {23, 0, 1, 1, 0, {0, 5, 22}}, {4, 0, 1, 0, 0, {2}}, {3, 0, 0, 1, 0, {}},
      {14, 4, 1, 0, 0, {2, 9}}, {14, 4, 0, 0, 0, {2, 9}}, {15, 4, 1, 1, 0, {0, 7, 14}},
      {15, 4, 0, 1, 0, {0, 7, 14}}, {9, 3, 1, 1, 0, {8}},
      {12, 4, 1, 1, 0, {1, 5, 9}},  // season 1 empty: rc 1, its term missing
      {10, 2, 1, 1, 0, {}},  // two seasons: no seasonal terms
      {25, 0, 1, 1, 1, {4, 17}}, {25, 4, 0, 1, 1, {4, 17}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.n << " ns " << c.ns << " c" << c.c << " t" << c.t << " q" << c.q);
    std::vector<char> f(c.n, 0);
    for (long i : c.flagged) f[i] = 1;
    const auto y = series(c.n, c.ns, f, c.q ? 0.03 : 0.0);
    const bool dummies = c.ns > 2;
    std::vector<int> col(std::max(c.ns, 1), -1);
    std::size_t p = c.t + c.q;
    for (long i = 0; i < c.n; ++i)
      if (dummies && !f[i] && col[i % c.ns] < 0) col[i % c.ns] = static_cast<int>(p++);
    if (!dummies && c.c) ++p;
    auto row = [&](long i) {
      LRow x(p + 1, 0.0L);
      std::size_t k = 0;
      if (c.t) x[k++] = tOf(i);
      if (c.q) x[k++] = tOf(i) * tOf(i);
      if (dummies && col[i % c.ns] >= 0) x[col[i % c.ns]] = 1.0L;
      if (!dummies && c.c) x[k] = 1.0L;
      return x;
    };
    std::vector<LRow> a(p, LRow(p + 1, 0.0L));
    long double sumY = 0, used = 0;
    for (long i = 0; i < c.n; ++i) {
      if (f[i]) continue;
      const LRow x = row(i);
      for (std::size_t r = 0; r < p; ++r)
        for (std::size_t k = 0; k < p; ++k) a[r][k] += x[r] * x[k];
      for (std::size_t r = 0; r < p; ++r) a[r][p] += x[r] * y[i];
      sumY += y[i];
      used += 1;
    }
    const auto sol = gaussJordan(a);
    std::vector<double> b(p);
    for (std::size_t r = 0; r < p; ++r) b[r] = static_cast<double>(sol[r][0]);
    double cc = 5, tc = 5, qc = 5;
    std::vector<double> sd(c.ns, 5.0), res(c.n, 5.0);
    const int rc = ztsrdmy(y.data(), f.data(), c.n, c.ns, ask(c.c, &cc), ask(c.t, &tc), ask(c.q, &qc),
                           c.ns ? sd.data() : nullptr, res.data());
    const bool empty = std::count(col.begin(), col.end(), -1) > 0 && dummies;
    ASSERT_EQ(rc, empty ? 1 : 0);
    std::vector<std::pair<double, double>> checks;  // (got, want)
    std::size_t k = 0;
    if (c.t) checks.emplace_back(tc, b[k++]);
    if (c.q) checks.emplace_back(qc, b[k++]);
    if (!dummies && c.c) checks.emplace_back(cc, b[k]);
    double centre = 0.0;
    for (int s = 0; dummies && s < c.ns; ++s) centre += col[s] < 0 ? 0.0 : b[col[s]] / c.ns;
    if (dummies && !c.t) centre = static_cast<double>(sumY / used);
    if (dummies && c.c) checks.emplace_back(cc, centre);
    for (int s = 0; s < c.ns; ++s) {
      checks.emplace_back(sd[s], !dummies || col[s] < 0 ? kM : b[col[s]] - c.c * centre);
    }
    for (long i = 0; i < c.n; ++i) {
      const LRow x = row(i);
      long double fit = 0;
      for (std::size_t r = 0; r < p; ++r) fit += x[r] * b[r];
      checks.emplace_back(res[i], f[i] ? kM : static_cast<double>(y[i] - fit));
    }
    expectOutputs(checks, c.q ? 1e-8 : 1e-10);
  }
}

TEST(StartRegressions, HandWorkedCasesAndFailures) {
  // kNo: output not asked for. Every output starts at 5: ztsrdmy sets what it
  // is given to missing first, ztsrsdm writes nothing before a success.
  struct Case { const char* what; bool mult; int ns; std::vector<double> y; std::vector<char> f; int rc;
                double cc, tc, qc; std::vector<double> sd; };
  const std::vector<char> none(8, 1);
  const Case cases[] = {
      {"less than a cycle", 0, 5, {3, 9, 1e300, 6}, {0, 0, 1, 0}, 1, 6, 0, kNo, {-3, 3, kM, 0, kM}},
      {"n = ns, no constant", 0, 4, {3, 9, 1e300, 6}, {0, 0, 1, 0}, 1, kNo, kNo, kNo, {3, 9, kM, 6}},
      // Usable t = 2 (season 1), 4 (season 0), 6 (season 2): the values are the terms.
      {"one value a season", 0, 3, {1, 2, 3, 4, 5, 6}, {1, 0, 1, 0, 1, 0}, 1, 4, 0, kNo, {0, -2, 2}},
      {"one usable value: a flat line", 0, 0, {0, 5.5, 0, 0}, {1, 0, 1, 1}, 0, 5.5, 0, kNo, {}},
      {"nothing asked", 0, 3, {1, 2, 3}, {}, -3, kNo, kNo, kNo, {}},
      {"quadratic without linear", 0, 0, {1, 2, 3}, {}, -3, kM, kNo, kM, {}},
      {"one value, no seasons", 0, 0, {1}, {}, -2, kM, kM, kNo, {}},
      {"nothing usable", 0, 0, {1, 2, 3}, {1, 1, 1}, -2, kM, kM, kNo, {}},
      {"nothing usable, seasons", 0, 3, {1, 2, 3}, {1, 1, 1}, -2, kM, kNo, kNo, {kM, kM, kM}},
      {"nothing usable, trend", 0, 4, std::vector<double>(8, 1), none, -2, kM, kM, kNo, {kM, kM, kM, kM}},
      {"nothing usable, no trend", 0, 4, std::vector<double>(8, 1), none, -2, kM, kNo, kNo, {kM, kM, kM, kM}},
      // Season 0 at t = 1, 3, 5: -10, 0, 10 (slope 5, intercept -15, line at
      // 1: -10); season 1: 30 each. T = 2.5, C = 7.5, D = 10: raw factors -1
      // and 3. The first repair, intercept / C = -2, is no nearer to 1; the
      // second, slope / T = 2, is (slope / C would be 2/3). 2 and 3 average 2.5.
      {"repaired factor", 1, 2, {-10, 30, 0, 30, 10, 30}, {}, 0, 7.5, 2.5, kNo, {0.8, 1.2}},
      // Season 0: -10 at t = 1, 4, 7; season 1: 30, 0, -30 (slope -10,
      // intercept 50); season 2: 60, 30, 0 (slope -10, intercept 90).
      // T = -20/3, C = 130/3, D = 110/3: raw factors -30/110, 120/110, 240/110.
      // Repairs of season 0: intercept / C = -30/130 is nearer to 1 and taken;
      // slope / T = 0 nearer still; n / (st T + n C) = -30 / (12 (-20/3) + 130)
      // = -0.6 is not. 0 is still not positive, so the season takes the
      // smallest positive factor capped at 1, that is 1: 1, 120/110, 240/110.
      {"unrepairable factor", 1, 3, {-10, 30, 60, -10, 0, 30, -10, -30, 0}, {}, 0, 130.0 / 3, -20.0 / 3, kNo,
       {330.0 / 470, 360.0 / 470, 720.0 / 470}},
      {"mult less than a cycle", 1, 4, {2, 6, 4}, {}, 0, 4, 0, kNo, {0.5, 1.5, 1, kM}},
      {"mult n = ns", 1, 3, {2, 6, 4}, {}, 0, 4, kNo, kNo, {0.5, 1.5, 1}},
      {"mult one value", 1, 2, {8}, {}, 0, 8, 0, kNo, {1, 1}},
      {"mult one value, trend only", 1, 2, {8}, {}, 0, kNo, 8, kNo, {}},
      // Season 2 empty, the others (10 + t) times 1.1, 0.9 and 1: rc 1, the
      // factors still averaging 1.
      {"mult empty season", 1, 4, {12.1, 10.8, 1e300, 14, 16.5, 14.4, 1e300, 18}, {0, 0, 1, 0, 0, 0, 1, 0}, 1,
       10, 1, kNo, {1.1, 0.9, kM, 1}},
      {"mult nothing usable", 1, 2, std::vector<double>(6, 1), std::vector<char>(6, 1), -2, 5, 5, kNo, {5, 5}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const long n = static_cast<long>(c.y.size());
    const std::vector<char> f = c.f.empty() ? std::vector<char>(n, 0) : c.f;
    double cc = 5, tc = 5, qc = 5;
    std::vector<double> sd(c.sd.size(), 5.0);
    double* sdp = sd.empty() ? nullptr : sd.data();
    const bool askC = !std::isnan(c.cc) || wzmis(c.cc), askT = !std::isnan(c.tc) || wzmis(c.tc);
    const int rc = c.mult ? ztsrsdm(c.y.data(), f.data(), n, c.ns, ask(askC, &cc), ask(askT, &tc), sdp, nullptr)
                          : ztsrdmy(c.y.data(), f.data(), n, c.ns, ask(askC, &cc), ask(askT, &tc),
                                    ask(!std::isnan(c.qc) || wzmis(c.qc), &qc), sdp, nullptr);
    EXPECT_EQ(rc, c.rc);
    std::vector<std::pair<double, double>> all = {{cc, c.cc}, {tc, c.tc}, {qc, c.qc}};
    for (std::size_t s = 0; s < sd.size(); ++s) all.emplace_back(sd[s], c.sd[s]);
    expectOutputs(all, 1e-13);
  }
}

TEST(StartRegressions, MultiplicativeFactorsAgreeWithPerSeasonLeastSquares) {
  // Per-season lines by least squares on each season's usable points: T and
  // C are the mean slope and intercept, and a season's factor is its line at
  // t = 1 over T + C, normalised to average 1.
  const long n = 22;
  const int ns = 3;
  std::vector<char> f(n, 0);
  f[2] = f[10] = 1;
  const auto y = series(n, ns, f);
  double slope[ns], icpt[ns], tt = 0, c0 = 0;
  for (int k = 0; k < ns; ++k) {
    long double st = 0, sy = 0, stt = 0, sty = 0, m = 0;
    for (long i = k; i < n; i += ns) {
      if (f[i]) continue;
      const long double t = tOf(i);
      st += t;
      sy += y[i];
      stt += t * t;
      sty += t * y[i];
      m += 1;
    }
    slope[k] = static_cast<double>((m * sty - st * sy) / (m * stt - st * st));
    icpt[k] = static_cast<double>((sy - slope[k] * st) / m);
    tt += slope[k] / ns;
    c0 += icpt[k] / ns;
  }
  double g = 0;
  for (int k = 0; k < ns; ++k) g += (slope[k] + icpt[k]) / (tt + c0) / ns;
  // Without the trend the level only scales the factors, normalised away.
  for (bool trend : {true, false}) {
    double cc = 0, tc = 0, sd[ns];
    std::vector<double> res(n);
    ASSERT_EQ(ztsrsdm(y.data(), f.data(), n, ns, &cc, ask(trend, &tc), sd, res.data()), 0);
    if (trend) {
      EXPECT_NEAR(tc, tt, 1e-10);
    }
    EXPECT_NEAR(cc, c0, 1e-10);
    for (int k = 0; k < ns; ++k) EXPECT_NEAR(sd[k], (slope[k] + icpt[k]) / (tt + c0) / g, 1e-12) << k;
    // The fit is the mean line (its level alone without the trend) times the factor.
    const double slopeFit = trend ? tt : 0.0;
    for (long i = 0; i < n; ++i) {
      const double fac = (slope[i % ns] + icpt[i % ns]) / (tt + c0) / g;
      EXPECT_EQ(wzmis(res[i]), f[i] ? 1 : 0) << i;
      EXPECT_NEAR(f[i] ? 0.0 : res[i], f[i] ? 0.0 : y[i] - (c0 + slopeFit * tOf(i)) * fac, 1e-9) << i;
    }
  }
}

}  // namespace
}  // namespace qvt
