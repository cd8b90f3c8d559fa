// Accumulation (zinttim, zinttia, getvec), the median (zinttms) and the
// replacement of missing cells (zinttis).
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
const double D = skMissVal('D');

bool same(double a, double b) {
  if (wzmis(a) || wzmis(b)) return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
  return std::fabs(a - b) <= 1e-9 * std::max(1.0, std::fabs(b));
}

// The value a cell should get, worked from the list of its values (in the
// order of the observations, missing ones included) by the definitions.
double oracle(int code, const std::vector<double>& all) {
  std::vector<double> v;
  for (double x : all)
    if (!wzmis(x)) v.push_back(x);
  const auto n = static_cast<double>(v.size());
  double s = 0, q = 0;
  for (double x : v) {
    s += x;
    q += x * x;
  }
  switch (code) {
    case 0: return v.empty() ? M : (v.size() == 1 ? v[0] : D);
    case 1: return v.empty() ? M : s;
    case 2: return v.empty() ? M : s / n;
    case 3: return v.empty() ? M : v.front();
    case 4: return v.empty() ? M : v.back();
    case 5: return v.empty() ? M : *std::min_element(v.begin(), v.end());
    case 6: return v.empty() ? M : *std::max_element(v.begin(), v.end());
    case 7: {
      if (v.empty()) return M;
      std::sort(v.begin(), v.end());
      const std::size_t k = v.size();
      return k % 2 ? v[k / 2] : (v[k / 2 - 1] + v[k / 2]) / 2;
    }
    case 8: {
      if (v.size() < 2) return M;
      double m = s / n, c = 0;
      for (double x : v) c += (x - m) * (x - m);
      return std::sqrt(c / (n - 1));
    }
    case 9: return v.empty() ? M : q;
    case 10: {
      if (v.empty()) return M;
      double m = s / n, c = 0;
      for (double x : v) c += (x - m) * (x - m);
      return c;
    }
    case 11: return static_cast<double>(all.size());
    case 12: return n;
    case 13: return static_cast<double>(all.size() - v.size());
    default: return M;
  }
}

TEST(Zinttim, EveryCodeAgainstDirectComputation) {
  std::mt19937 rng(4242);
  for (int round = 0; round < 20; ++round) {
    const long T = 12, start = round % 3 == 0 ? 2 : 0;
    const long ntid = 30;
    std::uniform_int_distribution<long> cell(0, T + 3);  // some outside the cells
    std::uniform_int_distribution<int> value(-50, 50);
    std::vector<long> pos(ntid);
    std::vector<double> y(ntid);
    for (long i = 0; i < ntid; ++i) {
      pos[i] = cell(rng);
      y[i] = value(rng) % 7 == 0 ? M : value(rng) * 0.25;
    }
    std::map<long, std::vector<double>> byCell;
    for (long i = 0; i < ntid; ++i) byCell[pos[i]].push_back(y[i]);

    for (int code = 0; code <= 13; ++code) {
      std::vector<double> norm(T, 123.0);
      ASSERT_EQ(zinttim(pos.data(), ntid, y.data(), 1, start, T, 1, code, norm.data()), 0);
      for (long t = 0; t < T; ++t) {
        const auto it = byCell.find(start + t);
        const std::vector<double> vals = it == byCell.end() ? std::vector<double>{} : it->second;
        double want = oracle(code, vals);
        if (code >= 11 && vals.empty()) want = 0;
        EXPECT_TRUE(same(norm[t], want))
            << "code " << code << " cell " << t << " got " << norm[t] << " want " << want;
      }
    }
  }
}

TEST(Zinttim, CellEdgeCases) {
  struct Case {
    const char* what;
    int code;
    std::vector<double> vals;  // all in cell 0
    double want;
  };
  const Case cases[] = {
      {"AVERAGE of one value", 2, {7.1}, 7.1},
      {"AVERAGE over the one real value", 2, {M, 5.0}, 5.0},
      {"NONE: the third doesn't undo .D", 0, {1, 2, 3}, D},
      {"NONE: a missing second isn't a second value", 0, {4, M}, 4},
      {"USS of 3", 9, {3}, 9},
      {"STD of one value", 8, {3}, M},
      {"CSS of one value", 10, {3}, 0},
      {"STD of equal values", 8, {2.5, 2.5, 2.5}, 0},
      {"NOBS counts missing", 11, {M, 1, M}, 3},
      {"N skips missing", 12, {M, 1, M}, 1},
      {"NMISS", 13, {M, 1, M}, 2},
      {"FIRST skips a leading missing", 3, {M, 8, 9}, 8},
      {"LAST skips a trailing missing", 4, {8, 9, M}, 9},
      {"TOTAL of missing only", 1, {M, M}, M},
  };
  for (const auto& c : cases) {
    const std::vector<long> pos(c.vals.size(), 0);
    double norm[2] = {-1, -1};
    ASSERT_EQ(zinttim(pos.data(), static_cast<long>(pos.size()), c.vals.data(), 1, 0, 2, 1, c.code, norm), 0)
        << c.what;
    EXPECT_TRUE(same(norm[0], c.want)) << c.what << ": " << norm[0];
    // The empty cell: counts 0, everything else missing.
    EXPECT_TRUE(same(norm[1], c.code >= 11 ? 0.0 : M)) << c.what;
  }
}

TEST(Zinttim, RefusalsAndOverflow) {
  const long pos[] = {0, 0};
  const double y[] = {1, 2};
  double norm[1];
  EXPECT_EQ(zinttim(nullptr, 2, y, 1, 0, 1, 1, 1, norm), -99);
  EXPECT_EQ(zinttim(pos, 0, y, 1, 0, 1, 1, 1, norm), -99);
  EXPECT_EQ(zinttim(pos, 2, y, 0, 0, 1, 1, 1, norm), -99);
  EXPECT_EQ(zinttim(pos, 2, y, 1, 0, 0, 1, 1, norm), -99);
  EXPECT_EQ(zinttim(pos, 2, y, 1, -1, 1, 1, 1, norm), -99);

  // A sum past half the largest double is refused, not rounded to infinity.
  const double big[] = {8e307, 8e307};
  EXPECT_EQ(zinttim(pos, 2, big, 1, 0, 1, 1, 1, norm), -2);
  EXPECT_EQ(norm[0], 8e307) << "the cell keeps what it held";
  // A value too large to square.
  const double wide[] = {2e154};
  EXPECT_EQ(zinttim(pos, 1, wide, 1, 0, 1, 1, 9, norm), -2);
  EXPECT_EQ(zinttim(pos, 1, wide, 1, 0, 1, 1, 10, norm), -2);
  EXPECT_EQ(zinttim(pos, 1, wide, 1, 0, 1, 1, 1, norm), 0) << "summing it is fine";
}

TEST(Zinttim, TwoVariablesInEitherLayout) {
  const long pos[] = {0, 1, 1};
  // Variables a = {1, 2, 4}, b = {10, 20, 40}; TOTAL.
  const double rows[] = {1, 10, 2, 20, 4, 40};
  const double cols[] = {1, 2, 4, 10, 20, 40};
  double nr[4], nc[4];
  ASSERT_EQ(zinttim(pos, 3, rows, 2, 0, 2, 0, 1, nr), 0);
  ASSERT_EQ(zinttim(pos, 3, cols, 2, 0, 2, 1, 1, nc), 0);
  EXPECT_EQ(std::vector<double>(nr, nr + 4), (std::vector<double>{1, 10, 6, 60}));
  EXPECT_EQ(std::vector<double>(nc, nc + 4), (std::vector<double>{1, 6, 10, 60}));
}

TEST(Zinttia, SkipsAndFlags) {
  const double y[] = {M, 5};
  double norm[3] = {M, M, M};
  long npos[3] = {};
  EXPECT_EQ(zinttia(7, 1, y, 1, 0, 3, 1, 1, norm, nullptr, npos), 0) << "outside the cells";
  EXPECT_EQ(zinttia(0, 0, y, 1, 0, 3, 1, 1, norm, nullptr, npos), 1) << "a missing value";
  EXPECT_TRUE(wzmis(norm[0]));
  EXPECT_EQ(zinttia(1, 1, y, 1, 0, 3, 1, 1, norm, nullptr, npos), 0);
  EXPECT_EQ(norm[1], 5);
  EXPECT_EQ(npos[1], 1);
}

TEST(Getvec, GathersOneCell) {
  const long pos[] = {3, 1, 3, 3};
  const double y[] = {1, 2, 3, 4};
  double vec[4] = {};
  EXPECT_EQ(getvec(pos, 4, y, 1, 1, 0, 3, vec), 3);
  EXPECT_EQ(std::vector<double>(vec, vec + 3), (std::vector<double>{1, 3, 4}));
  EXPECT_EQ(getvec(pos, 4, y, 1, 1, 0, 2, vec), 0);
  EXPECT_EQ(getvec(pos, 4, y, 1, 1, 1, 3, vec), -99);
  EXPECT_EQ(getvec(nullptr, 4, y, 1, 1, 0, 3, vec), -99);
}

// ---------------------------------------------------------------------------
// zinttms

TEST(Zinttms, MedianBySelection) {
  std::mt19937 rng(99);
  std::uniform_real_distribution<double> u(-1e3, 1e3);
  for (long n = 1; n <= 40; ++n) {
    std::vector<double> y(static_cast<std::size_t>(n));
    for (auto& v : y) v = std::round(u(rng));
    std::vector<double> sorted = y;
    std::sort(sorted.begin(), sorted.end());
    const auto k = static_cast<std::size_t>(n);
    const double want = n % 2 ? sorted[k / 2] : (sorted[k / 2 - 1] + sorted[k / 2]) / 2;
    double m = 0;
    std::vector<double> copy = y;
    ASSERT_EQ(zinttms(n, copy.data(), nullptr, &m), 0);
    EXPECT_EQ(m, want) << n;
    // With missing values mixed in and a work vector: y stays as it was.
    std::vector<double> mixed = y;
    mixed.insert(mixed.begin() + n / 2, M);
    mixed.push_back(skMissVal('Z'));
    const std::vector<double> before = mixed;
    std::vector<double> work(mixed.size());
    ASSERT_EQ(zinttms(static_cast<long>(mixed.size()), mixed.data(), work.data(), &m), 0);
    EXPECT_EQ(m, want) << n;
    for (std::size_t i = 0; i < mixed.size(); ++i) EXPECT_TRUE(same(mixed[i], before[i]));
  }
  double m = 0;
  double allMiss[] = {M, M};
  double work[2];
  EXPECT_EQ(zinttms(2, allMiss, work, &m), -1);
  EXPECT_TRUE(wzmis(m));
  EXPECT_EQ(zinttms(0, allMiss, work, &m), -99);
  EXPECT_EQ(zinttms(2, nullptr, work, &m), -99);
  double extreme[] = {1.7e308, 1.6e308};
  EXPECT_EQ(zinttms(2, extreme, nullptr, &m), 0);
  EXPECT_DOUBLE_EQ(m, 1.65e308) << "the mean of the middle pair doesn't overflow";
}

// ---------------------------------------------------------------------------
// zinttis

TEST(Zinttis, EveryCode) {
  //                          0  1  2  3  4  5  6
  const std::vector<double> y = {M, 4, M, 1, 7, M, 2};
  struct Case {
    int code;
    double value;  // what the missing cells take (cells 0, 2, 5)
    std::vector<double> want;
    double valueset;
    int rc;
  };
  const Case cases[] = {
      {2, 0, {3.5, 4, 3.5, 1, 7, 3.5, 2}, 3.5, 0},
      {3, 0, {4, 4, 4, 1, 7, 4, 2}, 4, 0},
      {4, 0, {2, 4, 2, 1, 7, 2, 2}, 2, 0},
      {5, 0, {1, 4, 1, 1, 7, 1, 2}, 1, 0},
      {6, 0, {7, 4, 7, 1, 7, 7, 2}, 7, 0},
      {7, 0, {3, 4, 3, 1, 7, 3, 2}, 3, 1},  // the median path answers 1
      {9, 0, {M, 4, 4, 1, 7, 7, 2}, 2, 0},  // a leading missing cell stays
      {10, 0, {4, 4, 1, 1, 7, 2, 2}, 4, 0},
      {100, -8, {-8, 4, -8, 1, 7, -8, 2}, -8, 0},
      {0, 0, {0, 4, 0, 1, 7, 0, 2}, 0, 0},
  };
  for (const auto& c : cases) {
    for (bool inPlace : {false, true}) {
      std::vector<double> in = y, out(y.size(), -1);
      double* dst = inPlace ? in.data() : out.data();
      double valueset = 0;
      long numset = 0;
      EXPECT_EQ(zinttis(in.data(), 7, c.code, c.value, dst, &valueset, &numset), c.rc) << c.code;
      for (std::size_t i = 0; i < y.size(); ++i)
        EXPECT_TRUE(same(dst[i], c.want[i])) << "code " << c.code << " cell " << i << " in place " << inPlace;
      EXPECT_TRUE(same(valueset, c.valueset)) << c.code;
      EXPECT_EQ(numset, 3) << c.code;
      if (!inPlace) {
        for (std::size_t i = 0; i < y.size(); ++i) EXPECT_TRUE(same(in[i], y[i])) << "y untouched";
      }
    }
  }
  // A trailing missing cell stays missing with NEXT.
  std::vector<double> tail = {1, M};
  EXPECT_EQ(zinttis(tail.data(), 2, 10, 0, tail.data(), nullptr, nullptr), 0);
  EXPECT_TRUE(wzmis(tail[1]));
}

TEST(Zinttis, DegenerateInput) {
  std::vector<double> all = {M, M};
  double valueset = 5;
  long numset = 5;
  for (int code : {2, 3, 4, 5, 6, 9, 10}) {
    std::vector<double> y = all;
    EXPECT_EQ(zinttis(y.data(), 2, code, 0, y.data(), &valueset, &numset), 1) << code;
    EXPECT_TRUE(wzmis(y[0]) && wzmis(y[1])) << code;
    EXPECT_TRUE(wzmis(valueset));
    EXPECT_EQ(numset, 2);
  }
  EXPECT_EQ(zinttis(all.data(), 2, 100, 7, all.data(), &valueset, &numset), 1);
  EXPECT_EQ(all[0], 7);
  EXPECT_EQ(zinttis(nullptr, 2, 2, 0, all.data(), &valueset, &numset), -1);
  EXPECT_TRUE(wzmis(valueset));
  EXPECT_EQ(numset, -1);
  EXPECT_EQ(zinttis(all.data(), 0, 2, 0, all.data(), nullptr, nullptr), -1);
}

}  // namespace
}  // namespace qvt
