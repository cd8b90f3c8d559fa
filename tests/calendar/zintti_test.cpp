// Time IDs on a grid: positions (zinttip) and their messages, cell classes,
// accumulation, replacement of missing cells, statistics by period and
// season, and the inference of an interval. Expected values are counted by
// hand from the calendar fields or computed by the definitions.

#include <map>
#include <numeric>
#include <random>

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::name;
using testing::same;
using testing::ymd;

const double M = kMissing, D = skMissVal('D');

TEST(Zinttip, PositionsAgainstHandCounts) {
  // Months from the calendar fields; Sunday weeks from day -5 (1959-12-27).
  const auto monthIndex = [](double d) {
    int m = 0, dd = 0, y = 0;
    hostDateToMdy(d, &m, &dd, &y);
    return y * 12 + m - 1;
  };
  std::mt19937 rng(20261122);
  std::uniform_int_distribution<int> day(-2000, 20000);
  std::vector<double> tid(40);
  for (auto& t : tid) t = day(rng);
  const double base = ymd(1970, 3, 17);
  for (const char* name : {"MONTH", "WEEK"}) {
    for (const char* align : {"B", "E", "M", "S"}) {
      std::vector<long> pos(tid.size());
      long maxpos = -7, want = 0;
      EXPECT_EQ(zinttip(iv(name), align, tid.data(), 40, base, 0, pos.data(), &maxpos, nullptr, nullptr), 3);
      for (std::size_t i = 0; i < tid.size(); ++i) {
        const double w = name[0] == 'M' ? monthIndex(tid[i]) - monthIndex(base)
                                        : std::floor((tid[i] + 5) / 7) - std::floor((base + 5) / 7);
        EXPECT_EQ(pos[i], w) << name << " " << align << " " << tid[i];
        want = std::max(want, pos[i]);
      }
      EXPECT_EQ(maxpos, want);
    }
  }
}

TEST(Zinttip, OrderFirstLastAndEdges) {
  const INTERVAL month = iv("MONTH");
  // March 10, March 31, May 2; a missing base takes the first: March 1.
  std::vector<double> tid = {ymd(2001, 3, 10), ymd(2001, 3, 31), ymd(2001, 5, 2)};
  long pos[3] = {};
  long maxpos = 0;
  double first = 0, last = 0;
  EXPECT_EQ(zinttip(month, "B", tid.data(), 3, M, 0, pos, &maxpos, &first, &last), 2);
  EXPECT_EQ(std::vector<double>({double(pos[0]), double(pos[1]), double(pos[2]), double(maxpos), first, last}),
            std::vector<double>({0, 0, 2, 2, ymd(2001, 3, 1), ymd(2001, 5, 1)}));
  EXPECT_EQ(zinttip(month, "E", tid.data(), 3, M, 0, pos, &maxpos, &first, &last), 2);
  EXPECT_EQ(first * 100000 + last, ymd(2001, 3, 31) * 100000 + ymd(2001, 5, 31));
  tid[1] = ymd(2001, 4, 1);
  EXPECT_EQ(zinttip(month, "B", tid.data(), 3, M, 0, pos, &maxpos, &first, &last), 1);
  // A given sort is returned without looking; positions are still made.
  EXPECT_EQ(zinttip(month, "B", tid.data(), 3, M, 2, pos, &maxpos, &first, &last), 2);
  EXPECT_EQ(pos[1], 1);
  // Positions before the base are negative; maxpos stays at least 0.
  EXPECT_EQ(zinttip(month, "B", tid.data(), 3, ymd(2002, 1, 1), 0, pos, &maxpos, &first, &last), 1);
  EXPECT_EQ(pos[0] * 1000 + maxpos, -10000);
  // One time ID: 1 whatever sort says; none: 1 with the outs initialised.
  EXPECT_EQ(zinttip(month, "B", tid.data(), 1, M, 3, pos, &maxpos, &first, &last), 1);
  EXPECT_EQ(zinttip(month, "B", tid.data(), 0, M, 0, pos, &maxpos, &first, &last), 1);
  EXPECT_TRUE(maxpos == 0 && wzmis(first) && wzmis(last));
  for (const auto& c : testing::handCases("tip")) {
    const double two[] = {c.x(3), c.x(4)};
    const double base = c.s(1) == "OBS" ? 0 : M;
    EXPECT_EQ(zinttip(iv(c.s(1)), c.s(2).c_str(), two, 2, base, 0, pos, &maxpos, &first, &last), c.i(5))
        << c.where();
  }
  ASSERT_NE(hostWeekday(6589335), 7.0) << "the last week's case needs a last day that isn't a Saturday";
  const INTERVAL custom = testing::customInterval();
  EXPECT_EQ(zinttip(custom, "B", tid.data(), 0, M, 0, pos, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(zinttip(custom, "B", tid.data(), 2, M, 0, pos, nullptr, nullptr, nullptr), -5);
}

TEST(ZinttipErr, MessageNumbers) {
  const INTERVAL month = iv("MONTH");
  INTERVAL custom = month;
  custom.intcode = kIntCustom;
  const u_sname var("DATE"), mem("SALES");
  for (const auto& c : testing::handCases("tiperr")) {
    SCOPED_TRACE(c.where());
    const INTERVAL& intv = c.i(2) ? custom : month;
    testing::RecordingHost h, s1;
    EXPECT_EQ(zinttipErr(h, &var, "WORK", &mem, intv, c.i(1)), 1020);
    ASSERT_EQ(h.msgs.size(), 1u);
    EXPECT_EQ(h.msgs[0].group * 10000 + h.msgs[0].number, 882 * 10000 + c.i(3));
    EXPECT_NE(catalogFind(882, c.i(3)), nullptr);
    EXPECT_NE(catalogFind(882, c.i(4)), nullptr);
    std::string args;
    for (const auto& a : h.msgs[0].args) args += std::get<std::string>(a) + " ";
    EXPECT_EQ(args, c.i(3) == 1004 ? "" : "DATE WORK SALES MONTH ");
    // A name unknown: the short form, without arguments.
    EXPECT_EQ(zinttipErr(s1, &var, nullptr, &mem, intv, c.i(1)), 1020);
    ASSERT_EQ(s1.msgs.size(), 1u);
    EXPECT_EQ(s1.msgs[0].number * 100 + static_cast<int>(s1.msgs[0].args.size()), c.i(4) * 100);
  }
  for (int rc : {0, 3}) {  // not below 0: no message
    testing::RecordingHost h;
    EXPECT_EQ(zinttipErr(h, &var, "WORK", &mem, month, rc), 0);
    EXPECT_TRUE(h.msgs.empty());
  }
}

TEST(Zinttic, ClassesAndCounts) {
  for (const auto& c : testing::handCases("tic")) {
    std::vector<long> pos;
    for (double p : c.xs(1)) pos.push_back(static_cast<long>(p));
    std::string flags(static_cast<std::size_t>(c.i(2)), '\0');
    long ndups = -1, ngaps = -1;
    EXPECT_EQ(zinttic(pos.data(), static_cast<long>(pos.size()), c.i(2), flags.data(), &ndups, &ngaps), c.i(3))
        << c.where();
    for (auto& f : flags) f = static_cast<char>('0' + f);
    EXPECT_EQ(testing::str(ndups, ngaps, flags), c.join(4, 6)) << c.where();
  }
  // A position outside the cells stops at once, counted up to it.
  const long pos[] = {0, 0, 3, 1}, neg[] = {-1};
  std::string flags(3, '\0');
  long ndups = 0, ngaps = 0;
  EXPECT_EQ(zinttic(pos, 4, 3, flags.data(), &ndups, &ngaps), -99);
  EXPECT_EQ(ndups, 1);
  EXPECT_EQ(zinttic(neg, 1, 3, flags.data(), &ndups, &ngaps), -99);
}

// The statistics by their definitions: two passes, a sorted median.
ZINT_STATS direct(const std::vector<double>& all) {
  ZINT_STATS s;
  std::vector<double> v;
  std::copy_if(all.begin(), all.end(), std::back_inserter(v), [](double x) { return !wzmis(x); });
  s.nobs = static_cast<long>(all.size());
  s.n = static_cast<long>(v.size());
  s.nmiss = s.nobs - s.n;
  if (v.empty()) return s;
  std::sort(v.begin(), v.end());
  s.min = v.front();
  s.max = v.back();
  s.range = s.max - s.min;
  s.sum = std::accumulate(v.begin(), v.end(), 0.0);
  s.uss = std::inner_product(v.begin(), v.end(), v.begin(), 0.0);
  const auto n = static_cast<double>(v.size());
  s.mean = s.sum / n;
  s.css = 0;
  for (double x : v) s.css += (x - s.mean) * (x - s.mean);
  s.var = n >= 2 ? s.css / (n - 1) : kMissing;
  s.std = n >= 2 ? std::sqrt(s.var) : kMissing;
  const std::size_t k = v.size();
  s.median = k % 2 ? v[k / 2] : (v[k / 2 - 1] + v[k / 2]) / 2;
  return s;
}

void expectStats(const ZINT_STATS& got, const ZINT_STATS& want, const std::string& what) {
  EXPECT_EQ(testing::str(got.nobs, got.n, got.nmiss), testing::str(want.nobs, want.n, want.nmiss)) << what;
  for (auto f : {&ZINT_STATS::min, &ZINT_STATS::max, &ZINT_STATS::range, &ZINT_STATS::sum, &ZINT_STATS::mean,
                 &ZINT_STATS::uss, &ZINT_STATS::css, &ZINT_STATS::var, &ZINT_STATS::std, &ZINT_STATS::median})
    EXPECT_TRUE(same(got.*f, want.*f)) << what << ": got " << got.*f << ", want " << want.*f;
}

// Random positions with duplicates, gaps, positions past the frame and
// missing values; returned, the values at each position in observation order.
std::map<long, std::vector<double>> makeRaw(unsigned seed, long ntid, long cells, bool sorted,
                                            std::vector<long>& pos, std::vector<double>& x) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<long> p(0, cells + 2);
  std::uniform_int_distribution<int> v(-40, 40);
  pos.clear();
  x.clear();
  for (long i = 0; i < ntid; ++i) {
    pos.push_back(p(rng));
    x.push_back(v(rng) % 5 == 0 ? M : v(rng) * 0.5);
  }
  if (sorted) std::sort(pos.begin(), pos.end());
  std::map<long, std::vector<double>> byCell;
  for (std::size_t i = 0; i < pos.size(); ++i) byCell[pos[i]].push_back(x[i]);
  return byCell;
}

// The value of a cell by ACCUMULATE= code, from its values in the order of
// the observations, missing ones included.
double accumulated(int code, const std::vector<double>& all) {
  const ZINT_STATS s = direct(all);
  std::vector<double> v;
  std::copy_if(all.begin(), all.end(), std::back_inserter(v), [](double x) { return !wzmis(x); });
  if (code == 0) return v.empty() ? M : v.size() == 1 ? v[0] : D;
  if (code == 3 || code == 4) return v.empty() ? M : code == 3 ? v.front() : v.back();
  const double values[] = {0,     s.sum, s.mean, 0,     0,     s.min,
                           s.max, s.median, s.std, s.uss, s.css, static_cast<double>(s.nobs),
                           static_cast<double>(s.n), static_cast<double>(s.nmiss)};
  return values[code];
}

TEST(Zinttim, EveryCodeAgainstTheDefinitions) {
  std::vector<long> pos;
  std::vector<double> y;
  for (unsigned round = 0; round < 20; ++round) {
    const long T = 12, start = round % 3 == 0 ? 2 : 0;
    auto byCell = makeRaw(round, 30, T + 1, false, pos, y);  // some positions past the cells
    for (int code = 0; code <= 13; ++code) {
      std::vector<double> norm(T, 123.0);
      ASSERT_EQ(zinttim(pos.data(), 30, y.data(), 1, start, T, 1, code, norm.data()), 0);
      for (long t = 0; t < T; ++t) {
        const double want = accumulated(code, byCell[start + t]);
        EXPECT_TRUE(same(norm[t], want)) << "code " << code << " cell " << t << " got " << norm[t];
      }
    }
  }
  for (const auto& c : testing::handCases("tim")) {
    const std::vector<double> vals = c.xs(2);
    const std::vector<long> cell(vals.size(), 0);
    double norm[2] = {-1, -1};
    ASSERT_EQ(zinttim(cell.data(), static_cast<long>(cell.size()), vals.data(), 1, 0, 2, 1, c.i(1), norm), 0);
    EXPECT_TRUE(same(norm[0], c.x(3))) << c.where() << ": " << norm[0];
    EXPECT_TRUE(same(norm[1], c.i(1) >= 11 ? 0.0 : M)) << c.where();  // the empty cell
  }
}

TEST(Zinttim, LayoutsRefusalsAndOverflow) {
  const long pos[] = {0, 1, 1};
  // Variables a = {1, 2, 4}, b = {10, 20, 40}; TOTAL in either layout.
  const double rows[] = {1, 10, 2, 20, 4, 40}, cols[] = {1, 2, 4, 10, 20, 40};
  double nr[4], nc[4];
  ASSERT_EQ(zinttim(pos, 3, rows, 2, 0, 2, 0, 1, nr), 0);
  ASSERT_EQ(zinttim(pos, 3, cols, 2, 0, 2, 1, 1, nc), 0);
  EXPECT_EQ(std::vector<double>(nr, nr + 4), (std::vector<double>{1, 10, 6, 60}));
  EXPECT_EQ(std::vector<double>(nc, nc + 4), (std::vector<double>{1, 6, 10, 60}));
  double norm[1];
  const double y[] = {1, 2};
  EXPECT_EQ(zinttim(nullptr, 2, y, 1, 0, 1, 1, 1, norm), -99);
  EXPECT_EQ(zinttim(pos, 2, y, 1, -1, 1, 1, 1, norm), -99);
  // Adding to a cell past half the largest double is refused, not rounded
  // to infinity; the cell keeps what it held. Two terms within the limit
  // always have a finite sum, which is kept. A value too large to square.
  const long zero[] = {0, 0, 0};
  const double big[] = {8e307, 8e307, 1}, wide[] = {2e154};
  EXPECT_EQ(zinttim(zero, 2, big, 1, 0, 1, 1, 1, norm), 0);
  EXPECT_EQ(norm[0], 1.6e308);
  EXPECT_EQ(zinttim(zero, 3, big, 1, 0, 1, 1, 1, norm), -2);
  EXPECT_EQ(norm[0], 1.6e308);
  for (auto [code, rc] : {std::pair{9, -2}, {10, -2}, {1, 0}})
    EXPECT_EQ(zinttim(zero, 1, wide, 1, 0, 1, 1, code, norm), rc) << code;
  // One observation at a time: outside the cells, a missing value skipped.
  const double ym[] = {M, 5};
  double cells[3] = {M, M, M};
  long npos[3] = {};
  EXPECT_EQ(zinttia(7, 1, ym, 1, 0, 3, 1, 1, cells, nullptr, npos), 0);
  EXPECT_EQ(zinttia(0, 0, ym, 1, 0, 3, 1, 1, cells, nullptr, npos), 1);
  EXPECT_EQ(zinttia(1, 1, ym, 1, 0, 3, 1, 1, cells, nullptr, npos), 0);
  EXPECT_TRUE(wzmis(cells[0]) && cells[1] == 5 && npos[1] == 1);
  // The values of one cell.
  const long p4[] = {3, 1, 3, 3};
  const double y4[] = {1, 2, 3, 4};
  double vec[4] = {};
  EXPECT_EQ(getvec(p4, 4, y4, 1, 1, 0, 3, vec), 3);
  EXPECT_EQ(std::vector<double>(vec, vec + 3), (std::vector<double>{1, 3, 4}));
  EXPECT_EQ(getvec(p4, 4, y4, 1, 1, 0, 2, vec), 0);
  EXPECT_EQ(getvec(p4, 4, y4, 1, 1, 1, 3, vec), -99);
  EXPECT_EQ(getvec(nullptr, 4, y4, 1, 1, 0, 3, vec), -99);
}

// The medians of random sets are checked through getstats below; the mean
// of a middle pair near the largest double must not overflow.
TEST(Zinttms, MedianOfExtremes) {
  double extreme[] = {1.7e308, 1.6e308}, m = 0;
  EXPECT_EQ(zinttms(2, extreme, nullptr, &m), 0);
  EXPECT_DOUBLE_EQ(m, 1.65e308);
}

TEST(Zinttis, EveryCode) {
  const std::vector<double> y = {M, 4, M, 1, 7, M, 2};
  for (const auto& c : testing::handCases("tis")) {
    const std::vector<double> want = c.xs(3);
    for (bool inPlace : {false, true}) {
      std::vector<double> in = y, out(y.size(), -1);
      double* dst = inPlace ? in.data() : out.data();
      double valueset = 0;
      long numset = 0;
      EXPECT_EQ(zinttis(in.data(), 7, c.i(1), c.x(2), dst, &valueset, &numset), c.i(5)) << c.where();
      EXPECT_TRUE(std::equal(want.begin(), want.end(), dst, same)) << c.where() << " in place " << inPlace;
      EXPECT_TRUE(same(valueset, c.x(4)) && numset == 3) << c.where();
      EXPECT_TRUE(inPlace || std::equal(y.begin(), y.end(), in.begin(), same)) << "y untouched";
    }
  }
  std::vector<double> tail = {1, M};  // a trailing missing cell stays with NEXT
  EXPECT_EQ(zinttis(tail.data(), 2, 10, 0, tail.data(), nullptr, nullptr), 0);
  EXPECT_TRUE(wzmis(tail[1]));
  // No value to go by: rc 1, and every code but a given number leaves the cells missing.
  double valueset = 5;
  long numset = 5;
  std::vector<double> all;
  for (int code : {2, 3, 4, 5, 6, 9, 10, 100}) {
    all = {M, M};
    const double want = code == 100 ? 7 : M;
    EXPECT_EQ(zinttis(all.data(), 2, code, 7, all.data(), &valueset, &numset), 1) << code;
    EXPECT_TRUE(same(all[0], want) && same(all[1], want) && same(valueset, want) && numset == 2) << code;
  }
  EXPECT_EQ(zinttis(nullptr, 2, 2, 0, all.data(), &valueset, &numset), -1);
  EXPECT_TRUE(wzmis(valueset) && numset == -1);
  EXPECT_EQ(zinttis(all.data(), 0, 2, 0, all.data(), nullptr, nullptr), -1);
}

// getstats on random sets is checked cell by cell through zinttts.
TEST(Stats, AgainstTheDefinitions) {
  std::vector<long> pos;
  std::vector<double> x, work(100);
  for (unsigned seed = 1; seed <= 6; ++seed) {
    const long ntid = 50, T = 9, start = seed % 2 ? 0 : 2;
    for (int notsorted : {0, 1}) {
      auto byCell = makeRaw(seed, ntid, T + start, notsorted == 0, pos, x);
      std::vector<ZINT_STATS> stats(static_cast<std::size_t>(start + T));
      const long rc = zinttts(x.data(), pos.data(), ntid, start, T, notsorted, work.data(), stats.data());
      long empties = 0;  // getstats answers 1 for a period without values
      for (long t = start; t < start + T; ++t) {
        const ZINT_STATS want = direct(byCell[t]);
        empties += want.n == 0;
        expectStats(stats[t], want, "seed " + std::to_string(seed) + " cell " + std::to_string(t));
      }
      EXPECT_EQ(rc, empties);
    }
  }
  ZINT_STATS s;
  EXPECT_EQ(zinttts(x.data(), pos.data(), 1, 0, 1, 0, nullptr, &s), -99);
  EXPECT_EQ(zinttts(x.data(), pos.data(), 1, -1, 1, 0, work.data(), &s), -99);
  // By season: codes 0..3 by cell; season 4 is empty.
  makeRaw(77, 60, 12, false, pos, x);
  std::vector<int> scodes(15);
  for (std::size_t c = 0; c < scodes.size(); ++c) scodes[c] = static_cast<int>(c % 4);
  std::map<int, std::vector<double>> bySeason;
  for (long i = 0; i < 60; ++i)
    if (pos[i] >= 1 && pos[i] < 13) bySeason[scodes[pos[i]]].push_back(x[i]);
  std::vector<ZINT_STATS> seasons(5);
  work.resize(120);
  EXPECT_EQ(zinttss(x.data(), pos.data(), 60, 1, 12, 5, scodes.data(), work.data(), seasons.data()), 1);
  for (int k = 0; k < 5; ++k) expectStats(seasons[k], direct(bySeason[k]), "season " + std::to_string(k));
  EXPECT_EQ(zinttss(x.data(), pos.data(), 60, 1, 12, 5, nullptr, work.data(), seasons.data()), -99);
  // Joined periods equal the whole, but the median is the caller's.
  makeRaw(5, 40, 8, true, pos, x);
  std::vector<ZINT_STATS> local(8);
  zinttts(x.data(), pos.data(), 40, 0, 8, 0, work.data(), local.data());
  std::vector<double> inFrame;
  for (long i = 0; i < 40; ++i)
    if (pos[i] < 8) inFrame.push_back(x[i]);
  ZINT_STATS want = direct(inFrame), g;
  want.median = 1.25;
  EXPECT_EQ(zinttgs(local.data(), 8, 1.25, &g), 0);
  expectStats(g, want, "joined");
}

TEST(Stats, DegenerateSetsAndOverflow) {
  ZINT_STATS s;
  double work[4];
  EXPECT_EQ(getstats(nullptr, 3, nullptr, nullptr), -99);
  EXPECT_EQ(getstats(nullptr, 3, nullptr, &s), 1);
  EXPECT_TRUE(s.nobs == 0 && wzmis(s.mean));
  double allMiss[] = {M, M};  // counts only
  EXPECT_EQ(getstats(allMiss, 2, work, &s), 1);
  expectStats(s, direct({M, M}), "all missing");
  // Equal values whose mean rounds: 0.1 * 3 / 3 isn't 0.1, but css is 0.
  for (double v : {0.1, 1e-300, 7.0, -3.3e150}) {
    double eq[] = {v, v, v, M};
    ASSERT_EQ(getstats(eq, 4, work, &s), 0) << v;
    EXPECT_TRUE(s.css == 0 && s.std == 0 && s.var == 0 && s.range == 0 && s.median == v) << v;
  }
  // The sum overflows: sum, mean, dispersion and uss are not given; two
  // values lie beyond the extreme limit 1.34e154 / 3.
  double big[] = {8e307, 8e307, 1};
  EXPECT_EQ(getstats(big, 3, work, &s), 1);
  EXPECT_TRUE(s.sumfail == 1 && s.sum2fail == 1 && s.nextr == 2 && s.max == 8e307 && s.median == 8e307);
  EXPECT_TRUE(wzmis(s.sum) && wzmis(s.mean) && wzmis(s.uss) && wzmis(s.std));
  // The sums are tested before each term is added: two terms within half
  // the largest double still add up, the third would not.
  double twoBig[] = {8e307, 8e307}, twoSq[] = {9e153, 9e153};
  EXPECT_EQ(getstats(twoBig, 2, work, &s), 1);
  EXPECT_TRUE(s.sumfail == 0 && s.sum == 1.6e308 && s.mean == 8e307 && s.sum2fail == 1);
  EXPECT_EQ(getstats(twoSq, 2, work, &s), 0);
  EXPECT_TRUE(s.sum2fail == 0 && s.uss == 2 * (9e153 * 9e153) && s.css == 0);
  // Only the squares overflow: sum and mean stand.
  double wide[] = {2e154, -2e154};
  EXPECT_EQ(getstats(wide, 2, work, &s), 1);
  EXPECT_TRUE(s.sumfail == 0 && s.sum2fail == 1 && s.sum == 0 && s.mean == 0);
  EXPECT_TRUE(wzmis(s.uss) && wzmis(s.css) && wzmis(s.var));
  // Joining only empty records: -1, statistics missing, counts kept.
  std::vector<ZINT_STATS> empty(3);
  double oneMiss[] = {M};
  getstats(oneMiss, 1, work, &empty[1]);
  ZINT_STATS g;
  EXPECT_EQ(zinttgs(empty.data(), 3, 2.0, &g), -1);
  EXPECT_TRUE(g.nobs == 1 && g.nmiss == 1 && wzmis(g.min) && wzmis(g.max) && wzmis(g.mean));
  EXPECT_TRUE(wzmis(g.std) && wzmis(g.median));
  EXPECT_EQ(zinttgs(empty.data(), 0, 2.0, &g), -1);
  EXPECT_EQ(zinttgs(nullptr, 3, 2.0, &g), -99);
  EXPECT_EQ(zinttgs(empty.data(), -1, 2.0, &g), -99);
  // A joined sum too large to square leaves css missing: -2.
  std::vector<ZINT_STATS> huge(3);
  for (auto& h : huge) {
    double one[] = {5e153};  // its square fits, and so do three of them
    getstats(one, 1, work, &h);
  }
  EXPECT_EQ(zinttgs(huge.data(), 3, 0, &g), -2);
  EXPECT_DOUBLE_EQ(g.sum, 1.5e154);
  EXPECT_DOUBLE_EQ(g.uss, 7.5e307);
  EXPECT_TRUE(wzmis(g.css) && wzmis(g.var));
}

TEST(Zintget, IntervalOfThreeTimeIds) {
  for (const auto& c : testing::handCases("zintget")) {
    INTERVAL i;
    INTINFO info;
    const double d1 = c.x(1), d2 = c.x(2);
    ASSERT_EQ(zintget(d1, d2, c.x(3), &i, &info), 0) << c.where();
    // Token, code, multiplier (0 reads as 1), stored shift and units.
    const int code = i.intcode, mult = std::max(i.intper, 1);  // a multiplier 0 reads as 1
    EXPECT_EQ(testing::str(testing::tokenOf(i), code, mult, i.shiftper, i.units), c.join(4, 8)) << c.where();
    // The inferred grid really spaces the triple one interval apart.
    EXPECT_TRUE(i.intcode == kIntObs || zintnx2(i, d2, 0) == zintnx2(i, d1, 1)) << c.where();
  }
  INTERVAL i;
  INTINFO info;
  ASSERT_EQ(zintget(ymd(2000, 1, 1), ymd(2000, 2, 1), ymd(2000, 3, 1), &i, &info), 0);
  EXPECT_EQ(info.nseasons * 100 + info.sinterval.intcode, 12 * 100 + kIntYear);
  EXPECT_TRUE(info.formatl > 0 && info.formatw > 0);
  ASSERT_EQ(zintget(14000, 14001, 14002, &i, nullptr), 0) << "info may be null";
  for (const auto& c : testing::handCases("zintgetbad")) {
    i.intcode = kIntMonth;
    EXPECT_EQ(zintget(c.x(1), c.x(2), c.x(3), &i, &info), c.i(4)) << c.where();
    EXPECT_EQ(name(i) + i.units + std::to_string(i.intper), "NONEu1") << c.where();
  }
}

TEST(Zintget, CandidatesOfAVector) {
  // Six months, then four quarters: triples at 0, 3 and 7 give MONTH, MONTH
  // and QTR. Without duplicates MONTH misses 3 pairs, QTR 4; with duplicates
  // allowed QTR has no error.
  const std::vector<double> tid = {ymd(2000, 1, 1), ymd(2000, 2, 1),  ymd(2000, 3, 1), ymd(2000, 4, 1),
                                   ymd(2000, 5, 1), ymd(2000, 6, 1),  ymd(2000, 7, 1), ymd(2000, 10, 1),
                                   ymd(2001, 1, 1), ymd(2001, 4, 1)};
  INTERVAL out[3];
  ASSERT_EQ(zinttig(tid.data(), 10, 0, 3, out), 2);
  EXPECT_EQ(out[0].intcode * 100 + out[1].intcode, kIntMonth * 100 + kIntQtr);
  ASSERT_EQ(zinttig(tid.data(), 10, 1, 3, out), 2);
  EXPECT_EQ(out[0].intcode * 100 + out[1].intcode, kIntQtr * 100 + kIntMonth);
  ASSERT_EQ(zinttig(tid.data(), 10, 0, 1, out), 1);
  EXPECT_EQ(out[0].intcode, kIntMonth);
  EXPECT_EQ(zinttig(tid.data(), 10, 0, 0, out), 0);
  EXPECT_EQ(zinttig(tid.data(), 2, 0, 3, out), -1);
  // Unsorted: sorted on a copy, the caller's vector is left as it was.
  std::vector<double> shuffled = {tid[2], tid[0], tid[3], tid[1]};
  const std::vector<double> before = shuffled;
  ASSERT_EQ(zinttiu(shuffled.data(), 4, 0, 2, out), 1);
  EXPECT_EQ(out[0].intcode, kIntMonth);
  EXPECT_EQ(shuffled, before);
  shuffled[2] = M;
  EXPECT_EQ(zinttiu(shuffled.data(), 4, 0, 2, out), -2);
  // A date hint in the first record turns on the calendar's limits.
  std::vector<double> far = {1, 2, 3, 7000000};
  out[0] = INTERVAL{};
  out[0].intcode = kIntMonth;
  EXPECT_EQ(zinttiu(far.data(), 4, 0, 2, out), -3);
  out[0] = INTERVAL{};
  EXPECT_NE(zinttiu(far.data(), 4, 0, 2, out), -3) << "without the hint no limit applies";
  EXPECT_EQ(zinttiu(tid.data(), 2, 0, 2, out), -1);
}

}  // namespace
}  // namespace qvt
