// Positions of time IDs (zinttip), their messages (zinttipErr) and cell
// classes (zinttic).
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "calendar/interval.hpp"
#include "calendar/zintti.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"
#include "zintti_recording_host.hpp"

namespace qvt {
namespace {

INTERVAL iv(const char* text) {
  INTERVAL i;
  EXPECT_EQ(zintstr(text, -1, &i), 0) << text;
  return i;
}

double date(int y, int m, int d) { return hostMdyToDate(m, d, y); }

// ---------------------------------------------------------------------------
// zinttip

// Months counted by hand from the calendar fields.
long monthIndex(double d) {
  int m = 0, dd = 0, y = 0;
  hostDateToMdy(d, &m, &dd, &y);
  return y * 12L + (m - 1);
}
// Sunday-based weeks: day -5 (1959-12-27) is a Sunday.
long weekIndex(double d) { return static_cast<long>(std::floor((d + 5) / 7)); }

TEST(Zinttip, MonthAndWeekAgainstHandCounts) {
  std::mt19937 rng(20261122);
  std::uniform_int_distribution<int> day(-2000, 20000);
  for (const char* name : {"MONTH", "WEEK"}) {
    const INTERVAL intv = iv(name);
    std::vector<double> tid(40);
    for (auto& t : tid) t = day(rng);
    const double base = date(1970, 3, 17);
    for (const char* align : {"B", "E", "M", "S"}) {
      std::vector<long> pos(tid.size());
      long maxpos = -7;
      double first = 0, last = 0;
      const int rc = zinttip(intv, align, tid.data(), static_cast<long>(tid.size()), base, 0,
                             pos.data(), &maxpos, &first, &last);
      EXPECT_EQ(rc, 3) << "random dates aren't in order";
      long expectMax = 0;
      for (std::size_t i = 0; i < tid.size(); ++i) {
        const long want = name[0] == 'M' ? monthIndex(tid[i]) - monthIndex(base)
                                         : weekIndex(tid[i]) - weekIndex(base);
        EXPECT_EQ(pos[i], want) << name << " " << align << " tid " << tid[i];
        expectMax = std::max(expectMax, want);
      }
      EXPECT_EQ(maxpos, expectMax);
    }
  }
}

TEST(Zinttip, CountsAgreeWithIntervalCounting) {
  std::mt19937 rng(7);
  struct Case {
    const char* name;
    double lo, hi, base;
  };
  const Case cases[] = {
      {"MONTH", -5000, 30000, 100},
      {"WEEK", -5000, 30000, -3},
      {"WEEKDAY", -5000, 30000, 12000},
      {"DTHOUR", 0, 1.5e9, 3.3e8},
  };
  for (const auto& c : cases) {
    const INTERVAL intv = iv(c.name);
    std::uniform_real_distribution<double> u(c.lo, c.hi);
    std::vector<double> tid(60);
    for (auto& t : tid) t = std::floor(u(rng));
    std::sort(tid.begin(), tid.end());
    std::vector<long> pos(tid.size());
    long maxpos = 0;
    const int rc = zinttip(intv, "B", tid.data(), static_cast<long>(tid.size()), c.base, 0,
                           pos.data(), &maxpos, nullptr, nullptr);
    EXPECT_TRUE(rc == 1 || rc == 2) << c.name << " sorted input, rc " << rc;
    for (std::size_t i = 0; i < tid.size(); ++i)
      EXPECT_EQ(static_cast<double>(pos[i]), zintck2(intv, c.base, tid[i])) << c.name << " " << tid[i];
    EXPECT_EQ(maxpos, std::max(0L, pos.back()));
  }
}

TEST(Zinttip, MissingBaseTakesFirstAndOrderCodes) {
  const INTERVAL month = iv("MONTH");
  // March 10, March 31, May 2 (ascending); base missing -> March 1.
  std::vector<double> tid = {date(2001, 3, 10), date(2001, 3, 31), date(2001, 5, 2)};
  std::vector<long> pos(3);
  long maxpos = 0;
  double first = 0, last = 0;
  EXPECT_EQ(zinttip(month, "B", tid.data(), 3, kMissing, 0, pos.data(), &maxpos, &first, &last), 2);
  EXPECT_EQ(pos, (std::vector<long>{0, 0, 2}));
  EXPECT_EQ(maxpos, 2);
  EXPECT_EQ(first, date(2001, 3, 1));
  EXPECT_EQ(last, date(2001, 5, 1));

  // End alignment: first and last are month ends.
  EXPECT_EQ(zinttip(month, "E", tid.data(), 3, kMissing, 0, pos.data(), &maxpos, &first, &last), 2);
  EXPECT_EQ(first, date(2001, 3, 31));
  EXPECT_EQ(last, date(2001, 5, 31));

  // Strictly ascending without ties.
  tid[1] = date(2001, 4, 1);
  EXPECT_EQ(zinttip(month, "B", tid.data(), 3, kMissing, 0, pos.data(), &maxpos, &first, &last), 1);
  // A given sort is returned without looking; the positions are still made.
  EXPECT_EQ(zinttip(month, "B", tid.data(), 3, kMissing, 2, pos.data(), &maxpos, &first, &last), 2);
  EXPECT_EQ(pos, (std::vector<long>{0, 1, 2}));
  // Positions before the base are negative, maxpos stays at least 0.
  EXPECT_EQ(zinttip(month, "B", tid.data(), 3, date(2002, 1, 1), 0, pos.data(), &maxpos, &first, &last), 1);
  EXPECT_EQ(pos, (std::vector<long>{-10, -9, -8}));
  EXPECT_EQ(maxpos, 0);
}

TEST(Zinttip, EdgeResults) {
  const INTERVAL month = iv("MONTH");
  const INTERVAL week = iv("WEEK");
  const INTERVAL hour = iv("DTHOUR");
  long pos[3] = {};
  long maxpos = 5;
  double first = 0, last = 0;

  // One time ID: 1, whatever sort says.
  const double one[] = {date(2000, 6, 15)};
  EXPECT_EQ(zinttip(month, "B", one, 1, kMissing, 3, pos, &maxpos, &first, &last), 1);
  EXPECT_EQ(pos[0], 0);
  // None: 1, outs initialised.
  EXPECT_EQ(zinttip(month, "B", one, 0, kMissing, 0, pos, &maxpos, &first, &last), 1);
  EXPECT_EQ(maxpos, 0);
  EXPECT_TRUE(wzmis(first) && wzmis(last));

  struct Case {
    const char* what;
    const INTERVAL& intv;
    const char* align;
    double t0, t1;
    int rc;
  };
  const Case cases[] = {
      {"missing ID", month, "B", date(2000, 1, 1), kMissing, -1},
      {"special missing ID", month, "B", skMissVal('A'), date(2000, 1, 1), -1},
      {"before the calendar", month, "B", -138062, 0, -2},
      {"first day of the calendar", month, "B", -138061, 0, 1},
      {"past the calendar", month, "B", 0, 6589336, -2},
      {"last day of the calendar", month, "B", 0, 6589335, 1},
      // The week of the last day ends past day 6589335 when it isn't a Saturday.
      {"end of the last week", week, "E", 0, 6589335, -2},
      {"begin of the last week", week, "B", 0, 6589335, 1},
      {"datetime before the calendar", hour, "B", -11928470401.0, 0, -2},
      {"datetime past the calendar", hour, "B", 0, 569318630400.0, -2},
  };
  for (const auto& c : cases) {
    const double tid[] = {c.t0, c.t1};
    EXPECT_EQ(zinttip(c.intv, c.align, tid, 2, kMissing, 0, pos, &maxpos, &first, &last), c.rc) << c.what;
  }
  EXPECT_NE(hostWeekday(6589335), 7.0) << "the last-week case needs a last day that isn't a Saturday";

  // Positions beyond 2^53: seconds counted from far before.
  const INTERVAL second = iv("OBS");  // observation numbers: no calendar limits apply
  const double far[] = {0, 1.0e16};
  EXPECT_EQ(zinttip(second, "B", far, 2, 0, 0, pos, &maxpos, &first, &last), -4);
  const double farther[] = {0, 1.0e19};
  EXPECT_EQ(zinttip(second, "B", farther, 2, 0, 0, pos, &maxpos, &first, &last), -3);
}

TEST(Zinttip, CustomIntervalWithoutCalendar) {
  INTERVAL custom;
  custom.units = 'd';
  custom.intcode = kIntCustom;
  custom.intper = 1;
  const char name[] = "FISCAL";
  std::copy(name, name + 6, custom.token);
  custom.tokenlen = 6;
  long pos[2] = {};
  const double tid[] = {1, 2};
  EXPECT_EQ(zinttip(custom, "B", tid, 0, kMissing, 0, pos, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(zinttip(custom, "B", tid, 2, kMissing, 0, pos, nullptr, nullptr, nullptr), -5);
}

// ---------------------------------------------------------------------------
// zinttipErr

TEST(ZinttipErr, MessageNumbers) {
  INTERVAL month = iv("MONTH");
  INTERVAL custom = month;
  custom.intcode = kIntCustom;
  const u_sname var("DATE"), mem("SALES");
  struct Case {
    int rc;
    bool isCustom;
    int full, brief;
  };
  const Case cases[] = {
      {-1, false, 1012, 1032}, {-1, true, 1012, 1032},  {-2, true, 1015, 1035},
      {-2, false, 1016, 1036}, {-3, false, 1004, 1004}, {-4, true, 1004, 1004},
      {-5, true, 1022, 1042},  {-5, false, 1020, 1040}, {-6, false, 1017, 1037},
      {-99, true, 1017, 1037},
  };
  for (const auto& c : cases) {
    const INTERVAL& intv = c.isCustom ? custom : month;
    testing::ZinttiHost h;
    EXPECT_EQ(zinttipErr(h, &var, "WORK", &mem, intv, c.rc), 1020);
    ASSERT_EQ(h.msgs.size(), 1u) << c.rc;
    EXPECT_EQ(h.msgs[0].group, 882);
    EXPECT_EQ(h.msgs[0].number, c.full) << c.rc;
    if (c.full == 1004) {
      EXPECT_TRUE(h.msgs[0].args.empty());
    } else {
      ASSERT_EQ(h.msgs[0].args.size(), 4u);
      EXPECT_EQ(std::get<std::string>(h.msgs[0].args[0]), "DATE");
      EXPECT_EQ(std::get<std::string>(h.msgs[0].args[1]), "WORK");
      EXPECT_EQ(std::get<std::string>(h.msgs[0].args[2]), "SALES");
      EXPECT_EQ(std::get<std::string>(h.msgs[0].args[3]), "MONTH");
    }
    EXPECT_TRUE(h.hasCatalogueRow(0)) << c.full;

    // Any of the four unknown: the short form, without arguments.
    testing::ZinttiHost s1, s2, s3;
    EXPECT_EQ(zinttipErr(s1, nullptr, "WORK", &mem, intv, c.rc), 1020);
    EXPECT_EQ(zinttipErr(s2, &var, nullptr, &mem, intv, c.rc), 1020);
    EXPECT_EQ(zinttipErr(s3, &var, "WORK", nullptr, intv, c.rc), 1020);
    for (const auto* s : {&s1, &s2, &s3}) {
      ASSERT_EQ(s->msgs.size(), 1u);
      EXPECT_EQ(s->msgs[0].number, c.brief) << c.rc;
      EXPECT_TRUE(s->msgs[0].args.empty());
      EXPECT_TRUE(s->hasCatalogueRow(0)) << c.brief;
    }
  }
  // Not below 0: no message, 0.
  for (int rc : {0, 1, 2, 3}) {
    testing::ZinttiHost h;
    EXPECT_EQ(zinttipErr(h, &var, "WORK", &mem, month, rc), 0);
    EXPECT_TRUE(h.msgs.empty());
  }
}

// ---------------------------------------------------------------------------
// zinttic

TEST(Zinttic, ClassesAndCounts) {
  struct Case {
    const char* what;
    std::vector<long> pos;
    long nobs;
    int rc;
    long ndups, ngaps;
    std::string flags;  // one digit a cell
  };
  const Case cases[] = {
      {"one each", {1, 2, 3}, 5, 0, 0, 0, "31114"},
      {"a gap", {0, 2}, 3, 1, 0, 1, "101"},
      {"three in a cell: two surplus", {1, 1, 1, 3}, 5, -1, 2, 1, "32014"},
      {"duplicates outrank gaps", {0, 0, 4}, 5, -1, 1, 3, "20001"},
      {"unordered", {4, 0, 2, 0}, 5, -1, 1, 2, "20101"},
      {"single cell", {0}, 1, 0, 0, 0, "1"},
      {"no observation", {}, 3, 0, 0, 0, "333"},
  };
  for (const auto& c : cases) {
    std::string flags(static_cast<std::size_t>(c.nobs), '\0');
    long ndups = -1, ngaps = -1;
    EXPECT_EQ(zinttic(c.pos.data(), static_cast<long>(c.pos.size()), c.nobs, flags.data(), &ndups, &ngaps),
              c.rc)
        << c.what;
    EXPECT_EQ(ndups, c.ndups) << c.what;
    EXPECT_EQ(ngaps, c.ngaps) << c.what;
    for (auto& f : flags) f = static_cast<char>('0' + f);
    EXPECT_EQ(flags, c.flags) << c.what;
  }
}

TEST(Zinttic, PositionOutsideTheCellsStopsAtOnce) {
  const long pos[] = {0, 0, 3, 1};
  std::string flags(3, '\0');
  long ndups = 0, ngaps = 0;
  EXPECT_EQ(zinttic(pos, 4, 3, flags.data(), &ndups, &ngaps), -99);
  EXPECT_EQ(ndups, 1) << "counted up to the bad position";
  const long neg[] = {-1};
  EXPECT_EQ(zinttic(neg, 1, 3, flags.data(), &ndups, &ngaps), -99);
}

}  // namespace
}  // namespace qvt
