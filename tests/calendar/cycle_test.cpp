// Seasonal cycles: the cycle of an interval, counts, multiples, season codes
// and steps in phase with a cycle. Expected codes come from an independent
// reading of the calendar: weekdays and months from the Gregorian
// primitives, week years from the Sunday (or Monday) on or before January 4.

#include <functional>

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::ivx;
using testing::name;
using testing::firstWeek;
using testing::weekday0;
using testing::weekPos;
using testing::weekYear;
using testing::ymd;

// The codes against a slow formula of the step t.
void expectCodes(const char* text, double start, int scode, int ns, int n,
                 const std::function<int(int)>& want) {
  int rc = 0;
  const auto v = testing::codes(iv(text), start, scode, n, &ns, &rc);
  ASSERT_EQ(rc, 0) << text;
  for (int t = 0; t < n; ++t) EXPECT_EQ(v[static_cast<std::size_t>(t)], want(t)) << text << " t=" << t;
}

TEST(Cycle, HandWorkedTables) {
  for (const std::string op : {"sea", "sea2"}) {
    for (const auto& c : testing::handCases(op)) {
      const INTERVAL i = iv(c.s(1));
      INTERVAL s;
      s.intcode = 99;  // must be cleared
      int ns = op == "sea" ? -7 : c.i(2);
      EXPECT_EQ(op == "sea" ? zintsea(&i, c.x(2), &s, &ns) : zintsea2(&i, 0, &s, &ns), c.i(3)) << c.where();
      EXPECT_EQ(ns, c.i(5)) << c.where();
      // The cycle in i's units; zintsea clears it on failure.
      const std::string want = c.i(3) == 0 ? c.s(4) + i.units : op == "sea" ? std::string("NONE") + '\0' : "";
      EXPECT_TRUE(want.empty() || name(s) + s.units == want) << c.where() << " " << name(s);
    }
  }
  for (const auto& c : testing::handCases("calc")) {
    const INTERVALX i = ivx(c.s(1)), s = ivx(c.s(2));
    int ns = -1;
    EXPECT_EQ(zintsea_calc_nseasons(&i, c.x(3), &s, &ns), c.i(4)) << c.where();
    EXPECT_EQ(ns, c.i(5)) << c.where();
  }
  for (const auto& c : testing::handCases("mult")) {
    const INTERVALX i = ivx(c.s(1));
    INTERVALX out;
    EXPECT_EQ(zintmult(&i, c.i(2), &out, c.i(3)), 0) << c.where();
    EXPECT_EQ(name(out) + "|" + testing::tokenOf(out), c.s(4) + "|" + c.s(4)) << c.where();
    const INTERVAL back = iv(testing::tokenOf(out));  // the result parses back to itself
    EXPECT_EQ(name(back) + back.units, name(out) + out.units) << c.where();
  }
  for (const auto& c : testing::handCases("rsimp")) {
    INTERVALX i = ivx(c.s(1));
    EXPECT_EQ(zintrsimp(&i), c.i(2)) << c.where();
    EXPECT_EQ(name(i), c.s(3)) << c.where();
    EXPECT_EQ(testing::tokenOf(i), c.i(4) ? c.s(3) : c.s(1)) << c.where();
  }
  for (const auto& c : testing::handCases("scd")) {
    const std::vector<double> codes = c.xs(7);
    const std::vector<int> want(codes.begin(), codes.end());
    int ns = c.i(4), rc = -7;
    const long n = static_cast<long>(want.size());
    EXPECT_EQ(testing::codes(iv(c.s(1)), c.x(2), c.i(3), n, &ns, &rc), want) << c.where();
    EXPECT_EQ(rc, c.i(5)) << c.where();
    EXPECT_TRUE(c.s(6).empty() || ns == c.i(6)) << c.where() << " seasons " << ns;
  }
  for (const char* op : {"nxseas", "ckseas"}) {
    for (const auto& c : testing::handCases(op)) {
      INTERVALX x = ivx(c.s(1));
      x.nseasons = c.i(2);
      const std::string a = c.s(3);
      INTERVALX align = ivx(a == "-" ? "DAY" : a.substr(0, a.find(':')));
      if (a.find(':') != std::string::npos) align.nseasons = std::stoi(a.substr(a.find(':') + 1));
      const INTERVALX* ap = a == "-" ? nullptr : &align;
      const double got =
          op[0] == 'n' ? zintnx_seas(&x, c.x(4), c.x(5), ap) : zintck_seas(&x, c.x(4), c.x(5), ap);
      EXPECT_TRUE(c.same(got, 6)) << c.where() << " got " << got;
    }
  }
}

TEST(Cycle, BadArgumentsAndCustomIntervals) {
  const INTERVAL m = iv("MONTH");
  INTERVAL s;
  int ns = 5;
  EXPECT_EQ(zintsea(nullptr, 0, &s, &ns), 2);
  EXPECT_EQ(ns, 0);
  EXPECT_EQ(zintsea(&m, 0, nullptr, &ns), 2);
  INTERVAL reserved = m;
  reserved.intcode = 28;
  EXPECT_EQ(zintsea(&reserved, 0, &s, &ns), 1);
  const INTERVALX mx = ivx("MONTH");
  EXPECT_EQ(zintsea_calc_nseasons(&mx, 0, nullptr, &ns), 2);
  EXPECT_EQ(zintsea_calc_nseasons(nullptr, 0, &mx, &ns), 2);
  INTERVALX out;
  EXPECT_EQ(zintmult(nullptr, 2, &out, 0), 2);
  EXPECT_EQ(zintmult(&mx, 2, nullptr, 0), 2);
  EXPECT_EQ(zintmult(&mx, 0, &out, 0), 2);
  const INTERVALX big = ivx("MONTH2000000000");
  EXPECT_EQ(zintmult(&big, 2, &out, 0), 2);
  EXPECT_EQ(zintrsimp(nullptr), 2);
  int buf[3];
  EXPECT_EQ(zintscd(m, 0, 0, 3, nullptr, &ns), -1);
  EXPECT_EQ(zintscd(m, 0, 0, -1, buf, &ns), -1);
  EXPECT_EQ(zintscd2(nullptr, 0, 0, 3, buf, &ns), -1);
  EXPECT_TRUE(wzmis(zintnx_seas(nullptr, 0, 1, nullptr)));
  EXPECT_TRUE(wzmis(zintck_seas(nullptr, 0, 1, nullptr)));
  // A custom interval without its calendar has no cycle; with a count, a
  // season index that can't be read counts as the first.
  const INTERVAL c = testing::customInterval();
  EXPECT_EQ(zintsea(&c, 0, &s, &ns), 1);
  EXPECT_EQ(ns, 0);
  int rc = 0;
  ns = -1;
  EXPECT_EQ(testing::codes(c, 0, 0, 3, &ns, &rc), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(rc, 1);
  ns = 3;
  EXPECT_EQ(testing::codes(c, 0, 0, 4, &ns, &rc), (std::vector<int>{0, 1, 2, 0}));
  EXPECT_EQ(rc, 0);
}

TEST(CycleCodes, AgainstSlowFormulas) {
  for (const auto& c : testing::handCases("scdtime")) {
    const double start = c.x(2), step = c.x(4), period = c.x(5);
    expectCodes(c.s(1).c_str(), start, 0, c.i(3), 30, [&](int t) {
      const double x = std::floor(start / step) * step + t * step;
      return static_cast<int>((x - std::floor(x / period) * period) / step);
    });
  }
}

TEST(CycleCodes, WeeksInTheYearOfJanuary4) {
  for (const auto& c : testing::handCases("scdweek")) {
    const double start = std::floor(c.x(2) / (c.s(1)[0] == 'D' ? 86400.0 : 1.0));
    const int ns = c.i(3), scode = c.i(4);
    expectCodes(c.s(1).c_str(), c.x(2), scode, ns, 110, [&](int t) {
      const int pos = weekPos(start + 7 * t, c.i(5));
      return pos == 52 && ns == 52 ? (scode > ns ? 0 : scode) : pos % ns;
    });
  }
  // A shift of 83 on a 13-week grid: plain weeks from the week of January 4,
  // divided by 13; the long year's 53rd week (quotient 4) takes scode.
  const INTERVAL w13 = iv("WEEK13.84");
  expectCodes("WEEK13.84", ymd(2003, 6, 1), 3, 4, 12, [&](int t) {
    const double d = zintnx2(w13, ymd(2003, 6, 1), t);
    return std::min(weekPos(d - weekday0(d), 0) / 13, 3);
  });
}

TEST(CycleCodes, RecordWithOrWithoutItsCycle) {
  const double start = ymd(2001, 3, 1);
  int ref[8], got[8];
  int ns = 12;
  ASSERT_EQ(zintscd(iv("MONTH"), start, 0, 8, ref, &ns), 0);
  INTERVALX year = ivx("YEAR"), m = ivx("MONTH"), bare = ivx("MONTH"), m4 = ivx("MONTH");
  m.sinterval = &year;
  m.nseasons = 12;
  for (INTERVALX* x : {&m, &bare}) {
    ns = 12;
    ASSERT_EQ(zintscd2(x, start, 0, 8, got, &ns), 0);
    EXPECT_EQ(std::vector<int>(got, got + 8), std::vector<int>(ref, ref + 8));
  }
  // scode -2 keeps the count in the record; four months from January 1960
  // make the cycle, so the codes are the month of the year modulo 4.
  ns = 4;
  ASSERT_EQ(zintscd2(&m4, start, -2, 8, got, &ns), 0);
  EXPECT_EQ(m4.nseasons, 4);
  for (int t = 0; t < 8; ++t) EXPECT_EQ(got[t], (2 + t) % 4) << t;
}

TEST(CycleCodes, DummyRows) {
  std::vector<double> row(53, -1.0);
  // A week inside the year: one element set, nothing past nseasons - 1.
  zintscy(iv("WEEK"), 5, ymd(2003, 2, 2), 52, 0, row.data(), nullptr);
  for (int k = 0; k < 52; ++k) EXPECT_EQ(row[static_cast<std::size_t>(k)], k == 5 ? 1.0 : k == 51 ? -1.0 : 0.0);
  // The last season is the reference: nothing set.
  zintscy(iv("WEEK"), 51, ymd(2003, 2, 2), 52, 0, row.data(), nullptr);
  for (int k = 0; k < 52; ++k) EXPECT_EQ(row[static_cast<std::size_t>(k)], k == 51 ? -1.0 : 0.0) << k;
  // Without intercept the last season has its own column.
  std::fill(row.begin(), row.end(), -1.0);
  zintscy(iv("MONTH"), 11, ymd(2003, 12, 1), 12, 1, row.data(), nullptr);
  for (int k = 0; k < 13; ++k) EXPECT_EQ(row[static_cast<std::size_t>(k)], k == 11 ? 1.0 : k == 12 ? -1.0 : 0.0);
  // The long week of 2003 runs from Sunday 2003-12-28 to 2004-01-03; the
  // next Sunday is 2004-01-04, so 3 of its 7 days lie in 2004.
  double partial = kMissing;
  zintscy(iv("WEEK"), 52, ymd(2003, 12, 28), 52, 1, row.data(), &partial);
  EXPECT_DOUBLE_EQ(partial, 3.0 / 7.0);
  EXPECT_DOUBLE_EQ(row[0], 3.0 / 7.0);
  EXPECT_DOUBLE_EQ(row[51], 4.0 / 7.0);
  EXPECT_EQ(std::count(row.begin() + 1, row.begin() + 51, 0.0), 50);
  double given = 0.25;  // a given part is used as it is
  zintscy(iv("WEEK"), 52, ymd(2003, 12, 28), 52, 0, row.data(), &given);
  EXPECT_DOUBLE_EQ(row[0], 0.25);
  const std::vector<double> before = row;  // degenerate sizes write nothing
  zintscy(iv("WEEK"), 0, 0, 1, 0, row.data(), nullptr);
  zintscy(iv("WEEK"), 0, 0, 0, 0, nullptr, nullptr);
  EXPECT_EQ(row, before);
}

TEST(CycleCounts, WorkingDaysInYearsAndSemimonths) {
  // The year of a weekday grid starts on its first working day on or after
  // January 1; the count is the working days up to the next such start.
  const INTERVALX year = ivx("YEAR"), semi = ivx("SEMIMONTH");
  for (const char* text : {"WEEKDAY", "WEEKDAY1W", "WEEKDAY67W"}) {
    const INTERVALX i = ivx(text);
    const auto slow = [&](double a, double b) {
      while (i.weekend[weekday0(a)]) ++a;
      while (i.weekend[weekday0(b)]) ++b;
      int n = 0;
      for (double d = a; d < b; ++d) n += i.weekend[weekday0(d)] ? 0 : 1;
      return n;
    };
    for (int y : {1999, 2000, 2004, 2012, 2016, 2021}) {
      int ns = 0;
      ASSERT_EQ(zintsea_calc_nseasons(&i, ymd(y, 6, 30), &year, &ns), 0) << text << y;
      EXPECT_EQ(ns, slow(ymd(y, 1, 1), ymd(y + 1, 1, 1))) << text << y;
      ASSERT_EQ(zintsea_calc_nseasons(&i, ymd(y, 3, 20), &semi, &ns), 0) << text << y;
      EXPECT_EQ(ns, slow(ymd(y, 3, 16), ymd(y, 4, 1))) << text << y;
    }
  }
}

TEST(CycleSet, CycleOfAMultipleAndFromWhatTheCallerGives) {
  INTERVALX year = ivx("YEAR"), month = ivx("MONTH");
  month.sinterval = &year;
  month.nseasons = 12;
  for (const auto& c : testing::handCases("multcycle")) {
    INTERVALX place, out;
    out.sinterval = &place;
    ASSERT_EQ(zintmult(&month, 3, &out, c.i(1)), 0);
    EXPECT_EQ(testing::str(name(out), name(place), out.nseasons), "QTR " + c.join(2, 3));
  }
  INTERVALX self = ivx("WEEK");  // a result and its source may be one record
  ASSERT_EQ(zintmult(&self, 52, &self, 0), 0);
  EXPECT_EQ(name(self), "YEAR");
  for (const auto& c : testing::handCases("seaset")) {
    INTERVALX x = ivx(c.s(1));
    INTERVALX s = c.s(2).empty() ? INTERVALX{} : ivx(c.s(2));
    int ns = c.i(3);
    EXPECT_EQ(zintsea_set(&x, ymd(2005, 7, 14), &s, &ns), c.i(4)) << c.where();
    if (c.i(4) != 0) continue;
    EXPECT_EQ(testing::str(testing::tokenOf(s), ns), c.join(5, 6)) << c.where();
    EXPECT_EQ(x.nseasons, c.i(6)) << c.where();
  }
  INTERVALX place, d = ivx("DAY");  // the record's own cycle place is filled too
  d.sinterval = &place;
  EXPECT_EQ(zintsea_set(&d, 0, nullptr, nullptr), 0);
  EXPECT_EQ(name(place) + std::to_string(d.nseasons), "WEEK1.7");
  EXPECT_EQ(zintsea_set(nullptr, 0, &place, nullptr), 2);
}

TEST(CycleSteps, SundayYearsAgainstJanuary4) {
  for (double d = ymd(1995, 1, 1); d < ymd(2013, 1, 1); d += 3) {
    int year = 0;
    double ds1 = 0;
    const double ds0 = zintyrse(d, &year, &ds1);
    const int y = weekYear(d, 0);
    ASSERT_EQ(year, y) << d;
    EXPECT_EQ(ds0, firstWeek(y, 0)) << d;
    EXPECT_EQ(ds1, firstWeek(y + 1, 0)) << d;
  }
  int year = 0;
  EXPECT_EQ(zintyrse(ymd(2002, 12, 29), &year, nullptr), ymd(2002, 12, 29));
  EXPECT_EQ(year, 2003);
  EXPECT_TRUE(wzmis(zintyrse(kMissing, &year, nullptr)));
  // Inside a year a folded week step is a plain week step.
  const INTERVALX w = ivx("WEEK"), yr = ivx("YEAR");
  INTERVALX w53 = ivx("WEEK");
  w53.nseasons = 53;
  for (double d = firstWeek(2005, 0) + 7; d < firstWeek(2005, 0) + 45 * 7; d += 7) {
    for (int n : {0, 1, 5}) {
      EXPECT_EQ(zintnx_seas(&w, d, n, nullptr), d + 7 * n) << d << " " << n;
      EXPECT_EQ(zintck_seas(&w, d, d + 7 * n, nullptr), n) << d << " " << n;
    }
  }
  // Years on weeks: the Sunday year of the date, moved to the next one from
  // its 52nd week on; it starts a week early after a long year.
  const auto longYear = [](int y) { return firstWeek(y + 1, 0) - firstWeek(y, 0) == 371; };
  for (double d = ymd(1996, 1, 1); d < ymd(2011, 1, 1); d += 5) {
    int y = weekYear(d, 0);
    if (d >= firstWeek(y, 0) + 51 * 7) ++y;
    ASSERT_EQ(zintnx_seas(&yr, d, 0, &w), firstWeek(y, 0) - (longYear(y - 1) ? 7 : 0)) << d;
    EXPECT_EQ(zintnx_seas(&yr, d, 0, &w53), firstWeek(weekYear(d, 0), 0)) << d;
    for (int k : {-2, 1, 3}) EXPECT_EQ(zintck_seas(&yr, d, zintnx_seas(&yr, d, k, &w), &w), k) << d << " " << k;
  }
}

}  // namespace
}  // namespace qvt
