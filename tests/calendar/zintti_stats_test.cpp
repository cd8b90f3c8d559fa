// Statistics of raw values: getstats, by period (zinttts), by season
// (zinttss), joined (zinttgs).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <vector>

#include "calendar/zintti.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

const double M = kMissing;

void near(double got, double want, const char* what) {
  if (wzmis(want)) {
    EXPECT_TRUE(wzmis(got)) << what << ": " << got;
    return;
  }
  ASSERT_FALSE(wzmis(got)) << what;
  EXPECT_NEAR(got, want, 1e-9 * std::max(1.0, std::fabs(want))) << what;
}

// The statistics worked by their definitions (two-pass, sorted median).
ZINT_STATS direct(const std::vector<double>& all) {
  ZINT_STATS s;
  std::vector<double> v;
  for (double x : all)
    if (!wzmis(x)) v.push_back(x);
  s.nobs = static_cast<long>(all.size());
  s.n = static_cast<long>(v.size());
  s.nmiss = s.nobs - s.n;
  if (v.empty()) return s;
  std::sort(v.begin(), v.end());
  const double n = static_cast<double>(v.size());
  double sum = 0, uss = 0;
  for (double x : v) {
    sum += x;
    uss += x * x;
  }
  const double mean = sum / n;
  double css = 0;
  for (double x : v) css += (x - mean) * (x - mean);
  s.min = v.front();
  s.max = v.back();
  s.range = s.max - s.min;
  s.sum = sum;
  s.mean = mean;
  s.uss = uss;
  s.css = css;
  if (v.size() >= 2) {
    s.var = css / (n - 1);
    s.std = std::sqrt(s.var);
  }
  const std::size_t k = v.size();
  s.median = k % 2 ? v[k / 2] : (v[k / 2 - 1] + v[k / 2]) / 2;
  return s;
}

void expectStats(const ZINT_STATS& got, const ZINT_STATS& want, const std::string& what) {
  EXPECT_EQ(got.nobs, want.nobs) << what;
  EXPECT_EQ(got.n, want.n) << what;
  EXPECT_EQ(got.nmiss, want.nmiss) << what;
  near(got.min, want.min, (what + " min").c_str());
  near(got.max, want.max, (what + " max").c_str());
  near(got.range, want.range, (what + " range").c_str());
  near(got.sum, want.sum, (what + " sum").c_str());
  near(got.mean, want.mean, (what + " mean").c_str());
  near(got.uss, want.uss, (what + " uss").c_str());
  near(got.css, want.css, (what + " css").c_str());
  near(got.var, want.var, (what + " var").c_str());
  near(got.std, want.std, (what + " std").c_str());
  near(got.median, want.median, (what + " median").c_str());
}

TEST(Getstats, AgainstDefinitions) {
  std::mt19937 rng(31);
  std::uniform_real_distribution<double> u(-100, 100);
  for (int len : {1, 2, 3, 4, 7, 20}) {
    for (int withMissing : {0, 1}) {
      std::vector<double> x(static_cast<std::size_t>(len));
      for (std::size_t i = 0; i < x.size(); ++i) x[i] = (withMissing && i % 3 == 1) ? M : u(rng);
      const ZINT_STATS want = direct(x);
      std::vector<double> work(x.size());
      ZINT_STATS got;
      const int rc = getstats(x.data(), len, work.data(), &got);
      expectStats(got, want, "len " + std::to_string(len) + " missing " + std::to_string(withMissing));
      EXPECT_EQ(rc, 0);
      EXPECT_EQ(got.nextr, 0);
    }
  }
}

TEST(Getstats, DegenerateSets) {
  ZINT_STATS s;
  EXPECT_EQ(getstats(nullptr, 3, nullptr, nullptr), -99);
  EXPECT_EQ(getstats(nullptr, 3, nullptr, &s), 1);
  EXPECT_EQ(s.nobs, 0);
  EXPECT_TRUE(wzmis(s.mean));

  // All missing: counts only.
  double allMiss[] = {M, M};
  double work[4];
  EXPECT_EQ(getstats(allMiss, 2, work, &s), 1);
  EXPECT_EQ(s.nobs, 2);
  EXPECT_EQ(s.n, 0);
  EXPECT_EQ(s.nmiss, 2);
  EXPECT_TRUE(wzmis(s.min) && wzmis(s.sum) && wzmis(s.median));

  // One value 3: uss 9, css 0, var and std missing.
  double one[] = {3};
  EXPECT_EQ(getstats(one, 1, work, &s), 0);
  EXPECT_EQ(s.uss, 9);
  EXPECT_EQ(s.css, 0);
  EXPECT_TRUE(wzmis(s.var) && wzmis(s.std));
  EXPECT_EQ(s.median, 3);

  // Equal values whose mean rounds: 0.1 * 3 / 3 isn't 0.1, but css is 0.
  for (double v : {0.1, 1e-300, 7.0, -3.3e150}) {
    double eq[] = {v, v, v, M};
    ASSERT_EQ(getstats(eq, 4, work, &s), 0) << v;
    EXPECT_EQ(s.css, 0) << v;
    EXPECT_EQ(s.std, 0) << v;
    EXPECT_EQ(s.var, 0) << v;
    EXPECT_EQ(s.range, 0) << v;
    EXPECT_EQ(s.median, v) << v;
  }
  // All zeros: uss, css, var, std 0.
  double zeros[] = {0, 0};
  EXPECT_EQ(getstats(zeros, 2, work, &s), 0);
  EXPECT_EQ(s.uss, 0);
  EXPECT_EQ(s.std, 0);
}

TEST(Getstats, OverflowFlags) {
  ZINT_STATS s;
  double work[4];
  // The sum overflows: sum, mean and the dispersion are not given; uss fails too.
  double big[] = {8e307, 8e307, 1};
  EXPECT_EQ(getstats(big, 3, work, &s), 1);
  EXPECT_EQ(s.sumfail, 1);
  EXPECT_EQ(s.sum2fail, 1);
  EXPECT_TRUE(wzmis(s.sum) && wzmis(s.mean) && wzmis(s.uss) && wzmis(s.std));
  EXPECT_EQ(s.max, 8e307);
  EXPECT_EQ(s.median, 8e307);
  EXPECT_EQ(s.nextr, 2) << "beyond 1.34e154 / 3";

  // Only the squares overflow: sum and mean stand, uss and css don't.
  double wide[] = {2e154, -2e154};
  EXPECT_EQ(getstats(wide, 2, work, &s), 1);
  EXPECT_EQ(s.sumfail, 0);
  EXPECT_EQ(s.sum2fail, 1);
  EXPECT_EQ(s.sum, 0);
  EXPECT_EQ(s.mean, 0);
  EXPECT_TRUE(wzmis(s.uss) && wzmis(s.css) && wzmis(s.var));
}

// Random positions with duplicates, gaps, positions outside the frame and
// missing values; the oracle collects the values by cell.
struct Raw {
  std::vector<long> pos;
  std::vector<double> x;
};
Raw makeRaw(unsigned seed, long ntid, long cells, bool sorted) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<long> p(0, cells + 2);
  std::uniform_int_distribution<int> v(-40, 40);
  Raw r;
  for (long i = 0; i < ntid; ++i) {
    r.pos.push_back(p(rng));
    r.x.push_back(v(rng) % 5 == 0 ? M : v(rng) * 0.5);
  }
  if (sorted) std::sort(r.pos.begin(), r.pos.end());
  return r;
}

TEST(Zinttts, ByPeriodSortedAndNot) {
  for (unsigned seed = 1; seed <= 6; ++seed) {
    const long ntid = 50, T = 9, start = seed % 2 ? 0 : 2;
    for (int notsorted : {0, 1}) {
      const Raw r = makeRaw(seed, ntid, T + start, notsorted == 0);
      std::map<long, std::vector<double>> byCell;
      for (long i = 0; i < ntid; ++i) byCell[r.pos[i]].push_back(r.x[i]);
      std::vector<double> work(2 * ntid);
      std::vector<ZINT_STATS> stats(static_cast<std::size_t>(start + T));
      const long rc = zinttts(r.x.data(), r.pos.data(), ntid, start, T, notsorted, work.data(), stats.data());
      long empties = 0;
      for (long t = start; t < start + T; ++t) {
        const std::vector<double> vals = byCell.count(t) ? byCell[t] : std::vector<double>{};
        bool none = true;
        for (double v : vals) none = none && wzmis(v);
        empties += none ? 1 : 0;
        expectStats(stats[t], direct(vals), "seed " + std::to_string(seed) + " cell " + std::to_string(t));
      }
      EXPECT_EQ(rc, empties) << "getstats answers 1 for a period without values";
    }
  }
  ZINT_STATS s;
  double w[2];
  const long p[] = {0};
  const double x[] = {1};
  EXPECT_EQ(zinttts(x, p, 1, 0, 1, 0, nullptr, &s), -99);
  EXPECT_EQ(zinttts(x, p, 0, 0, 1, 0, w, &s), -99);
  EXPECT_EQ(zinttts(x, p, 1, -1, 1, 0, w, &s), -99);
}

TEST(Zinttss, BySeason) {
  const long ntid = 60, T = 12;
  const Raw r = makeRaw(77, ntid, T, false);
  std::vector<int> scodes(T + 3);
  for (std::size_t c = 0; c < scodes.size(); ++c) scodes[c] = static_cast<int>(c % 4);
  std::map<int, std::vector<double>> bySeason;
  for (long i = 0; i < ntid; ++i)
    if (r.pos[i] >= 1 && r.pos[i] < 1 + T) bySeason[scodes[r.pos[i]]].push_back(r.x[i]);
  std::vector<double> work(2 * ntid);
  std::vector<ZINT_STATS> stats(5);
  EXPECT_EQ(zinttss(r.x.data(), r.pos.data(), ntid, 1, T, 5, scodes.data(), work.data(), stats.data()), 1)
      << "only season 4 is empty";
  for (int s = 0; s < 5; ++s) expectStats(stats[s], direct(bySeason[s]), "season " + std::to_string(s));
  EXPECT_EQ(zinttss(r.x.data(), r.pos.data(), ntid, 1, T, 5, nullptr, work.data(), stats.data()), -99);
}

TEST(Zinttgs, JoinEqualsTheWhole) {
  const Raw r = makeRaw(5, 40, 8, true);
  std::vector<double> work(80);
  std::vector<ZINT_STATS> local(8);
  zinttts(r.x.data(), r.pos.data(), 40, 0, 8, 0, work.data(), local.data());
  std::vector<double> inFrame;
  for (long i = 0; i < 40; ++i)
    if (r.pos[i] < 8) inFrame.push_back(r.x[i]);
  ZINT_STATS want = direct(inFrame);
  ZINT_STATS g;
  EXPECT_EQ(zinttgs(local.data(), 8, 1.25, &g), 0);
  want.median = 1.25;  // the median is the caller's
  expectStats(g, want, "joined");

  // Only empty records: -1, statistics missing, counts kept.
  std::vector<ZINT_STATS> empty(3);
  double allMiss[] = {M};
  getstats(allMiss, 1, work.data(), &empty[1]);
  EXPECT_EQ(zinttgs(empty.data(), 3, 2.0, &g), -1);
  EXPECT_EQ(g.nobs, 1);
  EXPECT_EQ(g.nmiss, 1);
  EXPECT_TRUE(wzmis(g.min) && wzmis(g.max) && wzmis(g.mean) && wzmis(g.std) && wzmis(g.median));
  EXPECT_EQ(zinttgs(empty.data(), 0, 2.0, &g), -1);
  EXPECT_EQ(zinttgs(nullptr, 3, 2.0, &g), -99);
  EXPECT_EQ(zinttgs(empty.data(), -1, 2.0, &g), -99);

  // A joined sum too large to square leaves css missing: -2.
  std::vector<ZINT_STATS> huge(3);
  for (auto& h : huge) {
    double one[] = {5e153};  // its square fits, and so do three of them
    getstats(one, 1, work.data(), &h);
  }
  EXPECT_EQ(zinttgs(huge.data(), 3, 0, &g), -2);
  EXPECT_DOUBLE_EQ(g.sum, 1.5e154);
  EXPECT_DOUBLE_EQ(g.uss, 7.5e307);
  EXPECT_TRUE(wzmis(g.css) && wzmis(g.var));
}

}  // namespace
}  // namespace qvt
