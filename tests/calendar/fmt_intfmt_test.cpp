// Default formats of intervals. Each expected name and width pair below is
// read off the rules of the format choice by hand, for intervals parsed from
// their text.

#include "calendar_fixture.hpp"

#include <cstring>

namespace qvt {
namespace {

using testing::iv;
using testing::ymd;

struct Out {
  std::string name;
  int w1 = -1;
  int w2 = -1;
};

// The out fields start from a sentinel so that a field left unset shows.
template <class F>
Out run(F&& f) {
  char name[16];
  std::memset(name, '#', sizeof name);
  short nl = -1, w1 = -1, w2 = -1;
  f(name, &nl, &w1, &w2);
  Out o;
  if (nl >= 0) o.name.assign(name, static_cast<std::size_t>(nl));
  else o.name = "<unset>";
  o.w1 = w1;
  o.w2 = w2;
  return o;
}

Out fmt(const INTERVAL* i) {
  return run([&](char* n, short* l, short* a, short* b) { zintfmt(i, n, l, a, b); });
}

struct Case {
  const char* interval;
  const char* name;
  int w1;
  int w2;
};

TEST(IntFmt, ByIntervalCode) {
  const Case cases[] = {
      {"SECOND", "DATETIME", 16, 16},   {"MINUTE", "DATETIME", 13, 13},
      {"MINUTE2.2", "DATETIME", 16, 16}, {"HOUR", "DATETIME", 10, 10},
      {"DTHOUR", "DATETIME", 10, 10},   {"HOUR3.3", "DATETIME", 13, 13},
      {"DAY", "DATE", 9, 7},            {"DTDAY", "DTDATE", 9, 7},
      {"WEEKDAY", "DATE", 9, 7},        {"DTWEEKDAY", "DTDATE", 9, 7},
      {"WEEK", "WEEKDATX", 17, 15},     {"DTWEEK", "DTWKDATX", 17, 15},
      {"WEEKV", "WEEKV", 9, 7},         {"DTWEEKV", "DTWEEKV", 9, 7},
      {"TENDAY", "DATE", 9, 7},         {"SEMIMONTH", "DATE", 9, 7},
      {"DTSEMIMONTH", "DTDATE", 9, 7},  {"MONTH", "MONYY", 7, 5},
      {"DTMONTH", "DTMONYY", 7, 5},     {"MONTH3.2", "MONYY", 7, 5},
      {"R445MON", "WEEKV", 9, 7},       {"R544QTR", "WEEKV", 9, 7},
      {"QTR", "YYQC", 6, 4},            {"QTR.2", "MONYY", 7, 5},
      {"DTQTR", "DTYYQC", 6, 4},        {"DTQTR.3", "DTMONYY", 7, 5},
      {"SEMIYEAR", "MONYY", 7, 5},      {"YEAR", "YEAR", 4, 2},
      {"YEAR.3", "MONYY", 7, 5},        {"DTYEAR", "DTYEAR", 4, 2},
      {"R454YR", "WEEKV", 9, 7},        {"YEARV", "WEEKV", 9, 7},
      {"DTYEARV", "DTWEEKV", 9, 7},     {"OBS", "F", 6, 4},
      {"OBS3", "F", 6, 4},              {"7", "F", 6, 4},
      {"NONE", "D", 9, 7},
  };
  for (const Case& c : cases) {
    const INTERVAL i = iv(c.interval);
    const Out o = fmt(&i);
    EXPECT_EQ(o.name, c.name) << c.interval;
    EXPECT_EQ(o.w1, c.w1) << c.interval;
    EXPECT_EQ(o.w2, c.w2) << c.interval;
  }
}

TEST(IntFmt, NullAndNoneInEveryVariant) {
  const INTERVAL none{};  // intcode 0
  for (const INTERVAL* p : {static_cast<const INTERVAL*>(nullptr), &none}) {
    const Out outs[] = {
        fmt(p),
        run([&](char* n, short* l, short* a, short* b) { zintfmm(p, 0.0, n, l, a, b); }),
        run([&](char* n, short* l, short* a, short* b) { zintfmp(p, 0.0, 7200.0, n, l, a, b); }),
        run([&](char* n, short* l, short* a, short* b) { zintfmd(p, n, l, a, b); }),
    };
    for (const Out& o : outs) {
      EXPECT_EQ(o.name, "D");
      EXPECT_EQ(o.w1, 9);
      EXPECT_EQ(o.w2, 7);
    }
  }
}

TEST(IntFmt, CustomWithoutCalendarLeavesFields) {
  INTERVAL c{};
  c.units = 'd';
  c.intcode = static_cast<char>(kIntCustom);
  c.intper = 1;
  std::memcpy(c.token, "FISCAL", 6);
  c.tokenlen = 6;
  const Out o = fmt(&c);
  EXPECT_EQ(o.name, "<unset>");
  EXPECT_EQ(o.w1, -1);
  EXPECT_EQ(o.w2, -1);
}

TEST(IntFmm, TimeOfDayOnTimeGrids) {
  struct MCase {
    const char* interval;
    double idval;
    const char* name;
    int w1;
    int w2;
  };
  const MCase cases[] = {
      {"HOUR", 0.0, "TIME", 10, 8},
      {"HOUR", 86400.0, "TIME", 10, 8},        // the upper end is inside: 0 + 1 * 86400
      {"HOUR", 86401.0, "DATETIME", 10, 10},
      {"HOUR", -1.0, "DATETIME", 10, 10},
      {"HOUR2", 172800.0, "TIME", 10, 8},      // 2 * 86400
      {"HOUR2.2", 3600.0, "TIME", 13, 8},
      {"MINUTE", 600.0, "TIME", 10, 8},
      {"SECOND", 5.0, "TIME", 10, 8},
      {"DAY", 0.0, "DATE", 9, 7},              // not a time grid
  };
  for (const MCase& c : cases) {
    const INTERVAL i = iv(c.interval);
    const Out o = run([&](char* n, short* l, short* a, short* b) { zintfmm(&i, c.idval, n, l, a, b); });
    EXPECT_EQ(o.name, c.name) << c.interval << " " << c.idval;
    EXPECT_EQ(o.w1, c.w1) << c.interval << " " << c.idval;
    EXPECT_EQ(o.w2, c.w2) << c.interval << " " << c.idval;
  }
  const INTERVAL h = iv("HOUR");
  const Out m = run([&](char* n, short* l, short* a, short* b) { zintfmm(&h, kMissing, n, l, a, b); });
  EXPECT_EQ(m.name, "DATETIME");
}

TEST(IntFmp, ElapsedTimeRanges) {
  // Worked by hand: nper = intervals between the two values; seconds =
  // intper * nper * (1, 60 or 3600); md, hd = digits - 1 of minutes, hours.
  struct PCase {
    const char* interval;
    double minval, maxval;
    const char* name;
    int w1, w2;
  };
  const PCase cases[] = {
      // 2 hours of minutes: nper 120, minutes 120 (md 2), hours 2 (hd 0).
      {"MINUTE", 0.0, 7200.0, "HHMM", 5, 5},
      // 2000 minutes: nper > 1000, hours 33 (hd 1): hd + 3.
      {"MINUTE", 0.0, 120000.0, "HHMM", 4, 4},
      // 200 hours of minutes: nper 12000, hours 200 (hd 2).
      {"MINUTE", 0.0, 720000.0, "HHMM", 5, 5},
      // 90 seconds: minutes 1 (md 0): MMSS 5 5.
      {"SECOND", 0.0, 90.0, "MMSS", 5, 5},
      // 900 seconds: nper 900, minutes 15 (md 1): MMSS 5 5.
      {"SECOND", 0.0, 900.0, "MMSS", 5, 5},
      // SECOND10 over 9000 s: nper 900, minutes 150 (md 2), hours 2: MMSS md + 3.
      {"SECOND10", 0.0, 9000.0, "MMSS", 5, 5},
      // SECOND10 over 99000 s: nper 9900 > 1000, hours 27 (hd 1): TIME hd + 6.
      {"SECOND10", 0.0, 99000.0, "TIME", 7, 7},
      // 5 hours: nper 5, hours 5 (hd 0): HHMM 3 and 0.
      {"HOUR", 0.0, 18000.0, "HHMM", 3, 0},
      // 5000 hours: nper 5000 > 1000, hd 3: HOUR 3 3.
      {"HOUR", 0.0, 18000000.0, "HOUR", 3, 3},
      // minval above 2 * (0 + 86400): no elapsed branch.
      {"HOUR", 172801.0, 200000.0, "DATETIME", 10, 10},
      // The "DT" prefix turns the branch off.
      {"DTMINUTE", 0.0, 7200.0, "DATETIME", 13, 13},
  };
  for (const PCase& c : cases) {
    const INTERVAL i = iv(c.interval);
    const Out o = run([&](char* n, short* l, short* a, short* b) {
      zintfmp(&i, c.minval, c.maxval, n, l, a, b);
    });
    EXPECT_EQ(o.name, c.name) << c.interval << " " << c.maxval;
    EXPECT_EQ(o.w1, c.w1) << c.interval << " " << c.maxval;
    EXPECT_EQ(o.w2, c.w2) << c.interval << " " << c.maxval;
  }
  const INTERVAL m = iv("MINUTE");
  const Out o = run([&](char* n, short* l, short* a, short* b) { zintfmp(&m, kMissing, 60.0, n, l, a, b); });
  EXPECT_EQ(o.name, "DATETIME");
}

TEST(IntFmp, WidthsCappedAtTwenty) {
  // SECOND over 1e20 s: hours about 2.8e16, hd 16: TIME 22, cut to 20.
  const INTERVAL i = iv("SECOND");
  const Out o = run([&](char* n, short* l, short* a, short* b) { zintfmp(&i, 0.0, 1e20, n, l, a, b); });
  EXPECT_EQ(o.name, "TIME");
  EXPECT_EQ(o.w1, 20);
  EXPECT_EQ(o.w2, 20);
}

TEST(IntFmd, ByMultiplier) {
  const Case cases[] = {
      {"SECOND", "MMSS", 5, 5},      {"SECOND5", "MMSS", 5, 5},     {"SECOND6", "MMSS", 6, 5},
      {"SECOND15", "MMSS", 6, 5},    {"SECOND16", "TIME", 8, 5},    {"SECOND86399", "TIME", 8, 5},
      {"SECOND86400", "DATETIME", 16, 16},
      {"MINUTE15", "HHMM", 6, 5},    {"MINUTE16", "HHMM", 7, 5},    {"MINUTE60", "HHMM", 7, 5},
      {"MINUTE61", "HHMM", 7, 6},    {"MINUTE1439", "HHMM", 7, 6},  {"MINUTE1440", "DATETIME", 13, 13},
      {"HOUR4", "HHMM", 10, 8},      {"HOUR5", "HHMM", 11, 8},      {"HOUR23", "HHMM", 11, 8},
      {"HOUR24", "DATETIME", 10, 10}, {"DTHOUR", "DATETIME", 10, 10},
      {"TMINUTE", "HHMM", 6, 5},     {"MONTH", "MONYY", 7, 5},
  };
  for (const Case& c : cases) {
    const INTERVAL i = iv(c.interval);
    const Out o = run([&](char* n, short* l, short* a, short* b) { zintfmd(&i, n, l, a, b); });
    EXPECT_EQ(o.name, c.name) << c.interval;
    EXPECT_EQ(o.w1, c.w1) << c.interval;
    EXPECT_EQ(o.w2, c.w2) << c.interval;
  }
}

}  // namespace
}  // namespace qvt
