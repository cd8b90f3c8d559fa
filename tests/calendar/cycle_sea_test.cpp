// The cycle of an interval (zintsea, zintsea2), counts of intervals in a
// cycle, multiples of intervals and their simpler names. Expected cycles and
// counts are the calendar facts (12 months in a year, 7 days in a week), and
// the counts of working days in a year are counted day by day.

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::ymd;

std::string name(const INTERVAL& i) {
  char buf[64];
  int len = sizeof buf;
  if (zinti2s(buf, &len, &i) != 0) return "<bad>";
  return std::string(buf, static_cast<std::size_t>(len));
}

std::string tokenOf(const INTERVAL& i) { return std::string(i.token, static_cast<std::size_t>(i.tokenlen)); }

struct SeaCase {
  const char* interval;
  double date;
  int rc;
  const char* cycle;  // canonical text of the cycle interval ("" when none)
  int nseasons;
};

TEST(CycleSea, TableAndCountedMultipliers) {
  const double d0 = 0;
  const double mid = ymd(2005, 7, 14);
  const SeaCase table[] = {
      {"SECOND", d0, 0, "MINUTE", 60},     {"SECOND15", d0, 0, "MINUTE", 4},
      {"MINUTE", d0, 0, "HOUR", 60},       {"MINUTE20", mid, 0, "HOUR", 3},
      {"HOUR", d0, 0, "DTDAY", 24},        {"HOUR8", d0, 0, "DTDAY", 3},
      {"DAY", d0, 0, "WEEK1.", 7},         {"DTDAY", d0, 0, "DTWEEK", 7},
      {"WEEKDAY", d0, 0, "WEEK1.", 5},     {"WEEKDAY3", mid, 0, "WEEK1.", 5},
      {"WEEKDAY17W", d0, 0, "WEEK1.", 5},  {"WEEKDAY1W", d0, 0, "WEEK1.", 6},
      {"WEEKDAY1W4", mid, 0, "WEEK1.", 6}, {"WEEK", d0, 0, "YEAR", 52},
      {"WEEK", ymd(2003, 12, 28), 0, "YEAR", 52},  // a long Sunday-based year still gives 52
      {"WEEK2", d0, 0, "YEAR", 26},        {"WEEK26", d0, 0, "YEAR", 2},
      {"WEEKV", d0, 0, "YEARV", 52},       {"WEEKV13", d0, 0, "YEARV", 4},
      {"TENDAY", d0, 0, "YEAR", 36},       {"TENDAY18", d0, 0, "YEAR", 2},
      {"SEMIMONTH", d0, 0, "YEAR", 24},    {"SEMIMONTH8", d0, 0, "YEAR", 3},
      {"MONTH", d0, 0, "YEAR", 12},        {"DTMONTH", d0, 0, "DTYEAR", 12},
      {"MONTH2.2", mid, 0, "YEAR", 6},     {"MONTH6", d0, 0, "YEAR", 2},
      {"R445MON", d0, 0, "R445YR", 12},    {"R454MON3", d0, 0, "R454YR", 4},
      {"R544QTR", d0, 0, "R544YR", 4},     {"QTR", d0, 0, "YEAR", 4},
      {"QTR2", d0, 0, "YEAR", 2},          {"SEMIYEAR", d0, 0, "YEAR", 2},
      {"YEAR", d0, 0, "YEAR", 1},          {"R445YR", d0, 0, "R445YR", 1},
      {"YEARV", d0, 0, "YEARV", 1},
      // Counted: the grids nest in the cycle, one or more intervals each.
      {"MONTH12", mid, 0, "YEAR", 1},      {"QTR4", mid, 0, "YEAR", 1},
      {"HOUR24", mid * 86400, 0, "DTDAY", 1},
      // Counted and failing: the grids don't share the cycle's boundaries.
      {"QTR3", d0, 1, "", 0},              {"MONTH5", d0, 1, "", 0},
      {"MONTH5", mid, 1, "", 0},           {"WEEK3", d0, 1, "", 0},
      {"WEEK3", mid, 1, "", 0},            {"YEAR2", mid, 1, "", 0},
      {"DAY2", d0, 1, "", 0},              {"HOUR5", d0, 1, "", 0},
      {"TENDAY5", mid, 1, "", 0},          {"SECOND7", d0, 1, "", 0},
      // No cycle at all.
      {"OBS", d0, 1, "", 0},               {"OBS12", d0, 1, "", 0},
      {"NONE", d0, 2, "", 0},
  };
  for (const SeaCase& c : table) {
    const INTERVAL i = iv(c.interval);
    INTERVAL s;
    s.intcode = 99;  // must be cleared
    int ns = -7;
    EXPECT_EQ(zintsea(&i, c.date, &s, &ns), c.rc) << c.interval;
    EXPECT_EQ(ns, c.nseasons) << c.interval;
    if (c.rc == 0) {
      EXPECT_EQ(name(s), c.cycle) << c.interval;
      EXPECT_EQ(s.units, i.units) << c.interval;
    } else {
      EXPECT_EQ(s.intcode, 0) << c.interval;
    }
  }
}

TEST(CycleSea, BadArguments) {
  const INTERVAL m = iv("MONTH");
  INTERVAL s;
  int ns = 5;
  EXPECT_EQ(zintsea(nullptr, 0, &s, &ns), 2);
  EXPECT_EQ(ns, 0);
  EXPECT_EQ(zintsea(&m, 0, nullptr, &ns), 2);
  EXPECT_EQ(zintsea(&m, 0, &s, nullptr), 2);
  INTERVAL reserved = m;
  reserved.intcode = 28;
  EXPECT_EQ(zintsea(&reserved, 0, &s, &ns), 1);
  // A missing date: the cycle that holds day 0 decides.
  const INTERVAL m5 = iv("MONTH5");
  EXPECT_EQ(zintsea(&m5, kMissing, &s, &ns), 1);
  const INTERVAL m12 = iv("MONTH12");
  EXPECT_EQ(zintsea(&m12, kMissing, &s, &ns), 0);
  EXPECT_EQ(ns, 1);
}

TEST(CycleSea, CustomWithoutCalendarHasNoCycle) {
  INTERVAL c{};
  c.units = 'd';
  c.intcode = static_cast<char>(kIntCustom);
  c.intper = 1;
  c.token[0] = 'F';
  c.token[1] = 'Y';
  c.tokenlen = 2;
  INTERVAL s;
  int ns = 0;
  EXPECT_EQ(zintsea(&c, 0, &s, &ns), 1);
  EXPECT_EQ(ns, 0);
}

TEST(CycleSea2, DifferencesFromZintsea) {
  struct Case {
    const char* interval;
    int nsIn;
    int rc;
    const char* cycle;
    int ns;
  };
  const Case cases[] = {
      {"OBS", 0, 0, "OBS", 1},      {"OBS7", 0, 0, "OBS7.", 1},
      {"WEEK", 0, 0, "YEAR", 52},   {"WEEK", 53, 0, "YEAR", 53},  {"WEEK", 52, 0, "YEAR", 52},
      {"WEEK2", 53, 0, "YEAR", 26}, {"WEEKV", 0, 0, "YEARV", 53}, {"WEEKV", 52, 0, "YEARV", 52},
      {"WEEKV", 53, 0, "YEARV", 53}, {"MONTH", 53, 0, "YEAR", 12}, {"MONTH5", 0, 1, "", 0},
  };
  for (const Case& c : cases) {
    const INTERVAL i = iv(c.interval);
    INTERVAL s;
    int ns = c.nsIn;
    EXPECT_EQ(zintsea2(&i, 0, &s, &ns), c.rc) << c.interval << " " << c.nsIn;
    EXPECT_EQ(ns, c.ns) << c.interval << " " << c.nsIn;
    if (c.rc == 0) {
      EXPECT_EQ(name(s), c.cycle) << c.interval;
    }
  }
}

// ---------------------------------------------------------------------------

// Working days of a weekend pattern between two dates, day by day.
int workingDaysSlow(double from, double to, const INTERVAL& wd) {
  int n = 0;
  for (double d = from; d < to; d += 1) {
    const int idx = static_cast<int>(hostWeekday(d)) - 1;  // 0 Sunday
    n += wd.weekend[idx] == 0 ? 1 : 0;
  }
  return n;
}

TEST(CycleCalcNseasons, CountsInOneCycle) {
  struct Case {
    const char* interval;
    const char* cycle;
    double date;
    int rc;
    int ns;
  };
  const double mid = ymd(2005, 7, 14);
  const Case cases[] = {
      {"MONTH", "YEAR", mid, 0, 12},  {"QTR", "YEAR", mid, 0, 4},     {"DAY", "WEEK", mid, 0, 7},
      {"MONTH", "QTR", mid, 0, 3},    {"HOUR", "DTDAY", 0, 0, 24},    {"TENDAY", "YEAR", mid, 0, 36},
      {"WEEK", "YEAR", mid, 0, 52},   {"WEEK", "YEAR", ymd(2003, 12, 28), 0, 52},
      {"WEEKDAY", "WEEK", mid, 0, 5}, {"WEEKDAY1W", "WEEK", mid, 0, 6},
      {"MONTH5", "YEAR", mid, 1, 0},  {"MONTH", "WEEK", mid, 1, 0},   {"DAY2", "WEEK", mid, 1, 0},
  };
  for (const Case& c : cases) {
    INTERVALX i = zintwiden(iv(c.interval));
    const INTERVALX s = zintwiden(iv(c.cycle));
    int ns = -1;
    EXPECT_EQ(zintsea_calc_nseasons(&i, c.date, &s, &ns), c.rc) << c.interval << " in " << c.cycle;
    EXPECT_EQ(ns, c.ns) << c.interval << " in " << c.cycle;
  }
  // Without a cycle there is nothing to count.
  INTERVALX m = zintwiden(iv("MONTH"));
  int ns = 0;
  EXPECT_EQ(zintsea_calc_nseasons(&m, 0, nullptr, &ns), 2);
  EXPECT_EQ(zintsea_calc_nseasons(nullptr, 0, &m, &ns), 2);
}

TEST(CycleCalcNseasons, WorkingDaysInYearsAndSemimonths) {
  // The year of a weekday grid starts on its first working day on or after
  // January 1; the count is the working days up to the next such start.
  for (const char* wdText : {"WEEKDAY", "WEEKDAY17W", "WEEKDAY1W", "WEEKDAY67W"}) {
    const INTERVAL wd = iv(wdText);
    INTERVALX i = zintwiden(wd);
    const INTERVALX year = zintwiden(iv("YEAR"));
    const INTERVALX semi = zintwiden(iv("SEMIMONTH"));
    for (int y : {1999, 2000, 2004, 2012, 2016, 2021}) {
      int ns = 0;
      ASSERT_EQ(zintsea_calc_nseasons(&i, ymd(y, 6, 30), &year, &ns), 0) << wdText << " " << y;
      // The first working days of the two years bound the cycle.
      double a = ymd(y, 1, 1), b = ymd(y + 1, 1, 1);
      while (wd.weekend[static_cast<int>(hostWeekday(a)) - 1]) a += 1;
      while (wd.weekend[static_cast<int>(hostWeekday(b)) - 1]) b += 1;
      EXPECT_EQ(ns, workingDaysSlow(a, b, wd)) << wdText << " " << y;

      ASSERT_EQ(zintsea_calc_nseasons(&i, ymd(y, 3, 20), &semi, &ns), 0) << wdText << " " << y;
      a = ymd(y, 3, 16);
      b = ymd(y, 4, 1);
      while (wd.weekend[static_cast<int>(hostWeekday(a)) - 1]) a += 1;
      while (wd.weekend[static_cast<int>(hostWeekday(b)) - 1]) b += 1;
      EXPECT_EQ(ns, workingDaysSlow(a, b, wd)) << wdText << " " << y;
    }
  }
}

// ---------------------------------------------------------------------------

TEST(CycleMult, NamesOfMultiples) {
  struct Case {
    const char* interval;
    int k;
    int flags;
    const char* result;
  };
  const Case cases[] = {
      {"WEEK", 52, 0, "YEAR"},           {"WEEK", 104, 0, "YEAR2."},      {"WEEK", 53, 0, "YEAR"},
      {"WEEK", 26, 0, "WEEK26."},        {"WEEK.3", 52, 0, "YEAR"},      {"DTWEEK", 52, 0, "DTYEAR"},
      {"WEEK2", 26, 0, "YEAR"},          {"WEEK", 52, kMultNoWeekYear, "WEEK52."},
      {"WEEKV", 53, 0, "YEARV"},         {"WEEKV", 106, 0, "YEARV2."},    {"WEEKV", 104, 0, "YEARV2."},
      {"WEEKV", 52, kMultNoWeekYear, "YEARV"},  // the retail rule names it then
      {"WEEKV", 52, kMultNoWeekYear | kMultNoRetail, "WEEKV52."},
      {"R445MON", 12, 0, "R445YR"},      {"R445MON", 3, 0, "R445QTR"},   {"R454MON", 6, 0, "R454QTR2."},
      {"R544MON", 24, 0, "R544YR2."},     {"R445MON", 12, kMultNoRetail, "R445MON12."},
      {"R445QTR", 4, 0, "R445YR"},       {"R445QTR", 2, 0, "R445QTR2."},
      {"OBS", 4, 0, "OBS4."},             {"MONTH2", 3, 0, "MONTH6."},     {"DAY", 1, 0, "DAY"},
      {"MONTH2.2", 3, 0, "MONTH6.2"},
  };
  for (const Case& c : cases) {
    const INTERVALX i = zintwiden(iv(c.interval));
    INTERVALX out;
    EXPECT_EQ(zintmult(&i, c.k, &out, c.flags), 0) << c.interval << " x " << c.k;
    EXPECT_EQ(name(out), c.result) << c.interval << " x " << c.k;
    EXPECT_EQ(tokenOf(out), c.result) << c.interval << " x " << c.k;
    // The result parses back to itself.
    INTERVAL back;
    ASSERT_EQ(zintstr(out.token, out.tokenlen, &back), 0) << tokenOf(out);
    EXPECT_EQ(back.intcode, out.intcode);
    EXPECT_EQ(back.intper, out.intper);
    EXPECT_EQ(back.shiftper, out.shiftper);
    EXPECT_EQ(back.units, out.units);
  }
}

TEST(CycleMult, BadArgumentsAndOverflow) {
  const INTERVALX m = zintwiden(iv("MONTH"));
  INTERVALX out;
  EXPECT_EQ(zintmult(nullptr, 2, &out, 0), 2);
  EXPECT_EQ(zintmult(&m, 2, nullptr, 0), 2);
  EXPECT_EQ(zintmult(&m, 0, &out, 0), 2);
  EXPECT_EQ(zintmult(&m, -3, &out, 0), 2);
  const INTERVALX big = zintwiden(iv("MONTH2000000000"));
  EXPECT_EQ(zintmult(&big, 2, &out, 0), 2);
}

TEST(CycleMult, CycleOfTheMultiple) {
  INTERVALX year = zintwiden(iv("YEAR"));
  INTERVALX month = zintwiden(iv("MONTH"));
  month.sinterval = &year;
  month.nseasons = 12;

  // Derived from the new record: MONTH3 has the cycle YEAR of 4.
  INTERVALX place;
  INTERVALX out;
  out.sinterval = &place;
  ASSERT_EQ(zintmult(&month, 3, &out, kMultCycleDerive), 0);
  EXPECT_EQ(name(out), "MONTH3.");
  EXPECT_EQ(name(place), "YEAR");
  EXPECT_EQ(out.nseasons, 4);

  // Copied with the count divided: 12 / 3.
  INTERVALX place2;
  INTERVALX out2;
  out2.sinterval = &place2;
  ASSERT_EQ(zintmult(&month, 3, &out2, 0), 0);
  EXPECT_EQ(name(place2), "YEAR");
  EXPECT_EQ(out2.nseasons, 4);

  // Copied with the cycle's multiplier scaled: YEAR3, count kept.
  INTERVALX place3;
  INTERVALX out3;
  out3.sinterval = &place3;
  ASSERT_EQ(zintmult(&month, 3, &out3, kMultCycleScale), 0);
  EXPECT_EQ(name(place3), "YEAR3.");
  EXPECT_EQ(out3.nseasons, 12);

  // A result and its source may be the same record.
  INTERVALX self = zintwiden(iv("WEEK"));
  ASSERT_EQ(zintmult(&self, 52, &self, 0), 0);
  EXPECT_EQ(name(self), "YEAR");
}

TEST(CycleRsimp, Rewrites) {
  struct Case {
    const char* interval;
    int rc;
    const char* result;  // canonical text after the call
    bool changed;        // a rewritten record carries the new text as its token
  };
  const Case cases[] = {
      {"WEEKV52", 0, "YEARV", true},       {"WEEKV104", 0, "YEARV2.", true},
      {"WEEKV53", 0, "YEARV", true},       {"WEEKV5", 0, "WEEKV5.", false},
      {"WEEKV52.8", 0, "YEARV.2", true},   {"WEEKV52.3", 0, "YEARV", true},
      {"R454MON24", 0, "R454YR2.", true},  {"R544MON6", 0, "R544QTR2.", true},
      {"R445MON5", 0, "R445MON5.", false}, {"R445MON12.4", 0, "R445YR.4", true},
      {"R445QTR8", 0, "R445YR2.", true},   {"R445QTR3", 0, "R445QTR3.", false},
      {"R445YR", 0, "R445YR", false},      {"YEARV2", 0, "YEARV2.", false},
      {"MONTH12", 1, "MONTH12.", false},   {"WEEK52", 1, "WEEK52.", false},
      {"DTWEEKV52", 0, "DTYEARV", true},
  };
  for (const Case& c : cases) {
    INTERVALX i = zintwiden(iv(c.interval));
    EXPECT_EQ(zintrsimp(&i), c.rc) << c.interval;
    EXPECT_EQ(name(i), c.result) << c.interval;
    EXPECT_EQ(tokenOf(i), c.changed ? c.result : c.interval) << c.interval;
  }
  EXPECT_EQ(zintrsimp(nullptr), 2);
}

// ---------------------------------------------------------------------------

TEST(CycleSeaSet, FromWhatTheCallerGives) {
  const double mid = ymd(2005, 7, 14);
  {  // nothing given: derived
    INTERVALX w = zintwiden(iv("WEEK"));
    INTERVALX s;
    int ns = 0;
    EXPECT_EQ(zintsea_set(&w, mid, &s, &ns), 0);
    EXPECT_EQ(name(s), "YEAR");
    EXPECT_EQ(ns, 52);
    EXPECT_EQ(w.nseasons, 52);
  }
  {  // a name, in lower case: counted, and the token comes back upper case
    INTERVALX m = zintwiden(iv("MONTH"));
    INTERVALX s = zintwiden(iv("year"));
    int ns = 0;
    EXPECT_EQ(zintsea_set(&m, mid, &s, &ns), 0);
    EXPECT_EQ(tokenOf(s), "YEAR");
    EXPECT_EQ(ns, 12);
    EXPECT_EQ(m.nseasons, 12);
  }
  {  // a name and a count that agree, and one that doesn't
    INTERVALX m = zintwiden(iv("MONTH"));
    INTERVALX s = zintwiden(iv("QTR"));
    int ns = 3;
    EXPECT_EQ(zintsea_set(&m, mid, &s, &ns), 0);
    EXPECT_EQ(ns, 3);
    INTERVALX s2 = zintwiden(iv("QTR"));
    int bad = 5;
    EXPECT_EQ(zintsea_set(&m, mid, &s2, &bad), 2);
  }
  {  // a name whose grid the interval doesn't nest in
    INTERVALX m = zintwiden(iv("MONTH5"));
    INTERVALX s = zintwiden(iv("YEAR"));
    int ns = 0;
    EXPECT_EQ(zintsea_set(&m, mid, &s, &ns), 1);
  }
  {  // an OBS name fixes the count to its multiplier
    INTERVALX o = zintwiden(iv("OBS"));
    INTERVALX s = zintwiden(iv("OBS4"));
    int ns = 0;
    EXPECT_EQ(zintsea_set(&o, 0, &s, &ns), 0);
    EXPECT_EQ(ns, 4);
    EXPECT_EQ(name(s), "OBS4.");
    INTERVALX s2 = zintwiden(iv("OBS4"));
    int other = 3;
    EXPECT_EQ(zintsea_set(&o, 0, &s2, &other), 2);
  }
  {  // a count of 1 makes the interval its own cycle
    INTERVALX q = zintwiden(iv("QTR"));
    INTERVALX s;
    int ns = 1;
    EXPECT_EQ(zintsea_set(&q, 0, &s, &ns), 0);
    EXPECT_EQ(name(s), "QTR");
  }
  {  // the record's own cycle place is filled too
    INTERVALX place;
    INTERVALX d = zintwiden(iv("DAY"));
    d.sinterval = &place;
    EXPECT_EQ(zintsea_set(&d, mid, nullptr, nullptr), 0);
    EXPECT_EQ(name(place), "WEEK1.");
    EXPECT_EQ(d.nseasons, 7);
  }
  {  // NONE and null
    INTERVALX n{};
    INTERVALX s;
    int ns = 9;
    EXPECT_EQ(zintsea_set(&n, 0, &s, &ns), 0);
    EXPECT_EQ(name(s), "NONE");
    EXPECT_EQ(ns, 0);
    EXPECT_EQ(zintsea_set(nullptr, 0, &s, &ns), 2);
  }
}

}  // namespace
}  // namespace qvt
