
#include <cstring>
#include "calendar_fixture.hpp"

namespace qvt {
namespace {

INTERVAL parse(const std::string& s, int* rc) {
  INTERVAL i;
  *rc = zintstr(s.data(), static_cast<int>(s.size()), &i);
  return i;
}

std::string canonical(const INTERVAL& i) {
  char buf[64];
  int len = sizeof buf;
  EXPECT_EQ(zinti2s(buf, &len, &i), 0);
  EXPECT_EQ(buf[len], '\0');
  return std::string(buf, static_cast<std::size_t>(len));
}

// Weekend days as a string of Sunday-first digits, e.g. "17".
std::string weekendDigits(const INTERVAL& i) {
  std::string s;
  for (int d = 0; d < 7; ++d)
    if (i.weekend[d]) s += static_cast<char>('1' + d);
  return s;
}

struct NameCase {
  const char* text;
  int rc;
  char units;
  int code, mult, shift;  // shift as stored, from 0
  const char* canon;       // canonical text; for WEEKDAY also checks the weekend
  const char* weekend = "";
  int nweekday = 0;
};

const NameCase kNames[] = {
    // Case does not matter; every spelling of the table.
    {"month", 0, 'd', kIntMonth, 1, 0, "MONTH"},
    {"Month", 0, 'd', kIntMonth, 1, 0, "MONTH"},
    {"MONTHLY", 0, 'd', kIntMonth, 1, 0, "MONTH"},
    {"Months", 0, 'd', kIntMonth, 1, 0, "MONTH"},
    {"mon", 0, 'd', kIntMonth, 1, 0, "MONTH"},
    {"NONE", 0, 'u', kIntNone, 1, 0, "NONE"},
    {"OBS", 0, 'o', kIntObs, 1, 0, "OBS"},
    {"SEC", 0, 's', kIntSecond, 1, 0, "SECOND"},
    {"seconds", 0, 's', kIntSecond, 1, 0, "SECOND"},
    {"MIN", 0, 's', kIntMinute, 1, 0, "MINUTE"},
    {"Minutes", 0, 's', kIntMinute, 1, 0, "MINUTE"},
    {"HR", 0, 's', kIntHour, 1, 0, "HOUR"},
    {"hourly", 0, 's', kIntHour, 1, 0, "HOUR"},
    {"HOURS", 0, 's', kIntHour, 1, 0, "HOUR"},
    {"DAILY", 0, 'd', kIntDay, 1, 0, "DAY"},
    {"days", 0, 'd', kIntDay, 1, 0, "DAY"},
    {"WEEKDAYS", 0, 'd', kIntWeekday, 1, 0, "WEEKDAY", "17", 5},
    {"weekly", 0, 'd', kIntWeek, 1, 0, "WEEK1."},
    {"WEEKS", 0, 'd', kIntWeek, 1, 0, "WEEK1."},
    {"WEEKV", 0, 'd', kIntWeekV, 1, 0, "WEEKV"},
    {"TENDAY", 0, 'd', kIntTenday, 1, 0, "TENDAY"},
    {"SEMIMONTHLY", 0, 'd', kIntSemimonth, 1, 0, "SEMIMONTH"},
    {"semimonths", 0, 'd', kIntSemimonth, 1, 0, "SEMIMONTH"},
    {"SEMIMON", 0, 'd', kIntSemimonth, 1, 0, "SEMIMONTH"},
    {"QUARTER", 0, 'd', kIntQtr, 1, 0, "QTR"},
    {"quarterly", 0, 'd', kIntQtr, 1, 0, "QTR"},
    {"QUARTERS", 0, 'd', kIntQtr, 1, 0, "QTR"},
    {"QTRLY", 0, 'd', kIntQtr, 1, 0, "QTR"},
    {"QTRS", 0, 'd', kIntQtr, 1, 0, "QTR"},
    {"SEMIYEARLY", 0, 'd', kIntSemiyear, 1, 0, "SEMIYEAR"},
    {"SEMIYEARS", 0, 'd', kIntSemiyear, 1, 0, "SEMIYEAR"},
    {"SEMIYR", 0, 'd', kIntSemiyear, 1, 0, "SEMIYEAR"},
    {"SemiAnnual", 0, 'd', kIntSemiyear, 1, 0, "SEMIYEAR"},
    {"SEMIANN", 0, 'd', kIntSemiyear, 1, 0, "SEMIYEAR"},
    {"YEARS", 0, 'd', kIntYear, 1, 0, "YEAR"},
    {"YEARLY", 0, 'd', kIntYear, 1, 0, "YEAR"},
    {"YR", 0, 'd', kIntYear, 1, 0, "YEAR"},
    {"ANNUAL", 0, 'd', kIntYear, 1, 0, "YEAR"},
    {"ANNUALLY", 0, 'd', kIntYear, 1, 0, "YEAR"},
    {"ANNUALS", 0, 'd', kIntYear, 1, 0, "YEAR"},
    {"YEARV", 0, 'd', kIntYearV, 1, 0, "YEARV"},
    // Retail names: the digits belong to the name.
    {"R445YR", 0, 'd', kIntR445Yr, 1, 0, "R445YR"},
    {"R454YR", 0, 'd', kIntR454Yr, 1, 0, "R454YR"},
    {"r544yr", 0, 'd', kIntR544Yr, 1, 0, "R544YR"},
    {"R445QTR", 0, 'd', kIntR445Qtr, 1, 0, "R445QTR"},
    {"r454qtr2.3", 0, 'd', kIntR454Qtr, 2, 2, "R454QTR2.3"},
    {"R544QTR.3", 0, 'd', kIntR544Qtr, 1, 2, "R544QTR.3"},
    {"R544QTR.4", 2, 0, 0, 0, 0, nullptr},
    {"R445MON", 0, 'd', kIntR445Mon, 1, 0, "R445MON"},
    {"R454MON12", 0, 'd', kIntR454Mon, 12, 0, "R454MON12."},
    {"DTR544MON", 0, 's', kIntR544Mon, 1, 0, "DTR544MON"},
    {"R455YR", 103, 0, 0, 0, 0, nullptr},
    {"R445", 103, 0, 0, 0, 0, nullptr},
    {"R445Y", 103, 0, 0, 0, 0, nullptr},
    {"445", 0, 'o', kIntObs, 445, 0, "OBS445."},
    // Bare numbers stand for OBS.
    {"5", 0, 'o', kIntObs, 5, 0, "OBS5."},
    {"OBS5", 0, 'o', kIntObs, 5, 0, "OBS5."},
    {"5.", 0, 'o', kIntObs, 5, 0, "OBS5."},
    {".", 0, 'o', kIntObs, 1, 0, "OBS"},
    {"0", 1, 0, 0, 0, 0, nullptr},
    {"2.2", 2, 0, 0, 0, 0, nullptr},
    {".2", 2, 0, 0, 0, 0, nullptr},
    {"5W", 102, 0, 0, 0, 0, nullptr},
    {"OBS2.2", 0, 'o', kIntObs, 2, 1, "OBS2.2"},
    {"OBS.2", 2, 0, 0, 0, 0, nullptr},
    // Datetime prefixes; "T" is no prefix before "E".
    {"DTMONTH", 0, 's', kIntMonth, 1, 0, "DTMONTH"},
    {"tmonth", 0, 's', kIntMonth, 1, 0, "DTMONTH"},
    {"DTDAY", 0, 's', kIntDay, 1, 0, "DTDAY"},
    {"TENDAY2", 0, 'd', kIntTenday, 2, 0, "TENDAY2."},
    {"DTTENDAY", 0, 's', kIntTenday, 1, 0, "DTTENDAY"},
    {"TTENDAY", 0, 's', kIntTenday, 1, 0, "DTTENDAY"},
    {"DTSECOND", 0, 's', kIntSecond, 1, 0, "SECOND"},
    {"DTHOUR2.2", 0, 's', kIntHour, 2, 1, "HOUR2.2"},
    {"DTOBS", 0, 's', kIntObs, 1, 0, "OBS"},
    {"DTWEEK", 0, 's', kIntWeek, 1, 0, "DTWEEK"},
    {"DT", 103, 0, 0, 0, 0, nullptr},
    {"T", 103, 0, 0, 0, 0, nullptr},
    {"DTX", 103, 0, 0, 0, 0, nullptr},
    // Multiplier and shift; the shift limit is multiplier times the factor.
    {"MONTH3", 0, 'd', kIntMonth, 3, 0, "MONTH3."},
    {"MONTH3.", 0, 'd', kIntMonth, 3, 0, "MONTH3."},
    {"MONTH2.", 0, 'd', kIntMonth, 2, 0, "MONTH2."},
    {"MONTH.3", 2, 0, 0, 0, 0, nullptr},
    {"MONTH.1", 0, 'd', kIntMonth, 1, 0, "MONTH"},
    {"MONTH3.3", 0, 'd', kIntMonth, 3, 2, "MONTH3.3"},
    {"MONTH3.4", 2, 0, 0, 0, 0, nullptr},
    {"MONTH0", 1, 0, 0, 0, 0, nullptr},
    {"MONTH.0", 2, 0, 0, 0, 0, nullptr},
    {"MONTH2147483647", 0, 'd', kIntMonth, 2147483647, 0, "MONTH2147483647."},
    {"MONTH2147483648", 1, 0, 0, 0, 0, nullptr},
    {"MONTH99999999999", 1, 0, 0, 0, 0, nullptr},
    {"DAY3.2", 0, 'd', kIntDay, 3, 1, "DAY3.2"},
    {"WEEK", 0, 'd', kIntWeek, 1, 0, "WEEK1."},
    {"WEEK1.", 0, 'd', kIntWeek, 1, 0, "WEEK1."},
    {"WEEK.3", 0, 'd', kIntWeek, 1, 2, "WEEK1.3"},
    {"WEEK.7", 0, 'd', kIntWeek, 1, 6, "WEEK1.7"},
    {"WEEK.8", 2, 0, 0, 0, 0, nullptr},
    {"WEEK2.14", 0, 'd', kIntWeek, 2, 13, "WEEK2.14"},
    {"WEEK2.15", 2, 0, 0, 0, 0, nullptr},
    {"WEEKV.7", 0, 'd', kIntWeekV, 1, 6, "WEEKV.7"},
    {"QTR.3", 0, 'd', kIntQtr, 1, 2, "QTR.3"},
    {"QTR.4", 2, 0, 0, 0, 0, nullptr},
    {"SEMIYEAR.6", 0, 'd', kIntSemiyear, 1, 5, "SEMIYEAR.6"},
    {"YEAR.4", 0, 'd', kIntYear, 1, 3, "YEAR.4"},
    {"YEAR.12", 0, 'd', kIntYear, 1, 11, "YEAR.12"},
    {"YEAR.13", 2, 0, 0, 0, 0, nullptr},
    {"YEARV.52", 0, 'd', kIntYearV, 1, 51, "YEARV.52"},
    {"YEARV.53", 2, 0, 0, 0, 0, nullptr},
    {"YEARV2.60", 0, 'd', kIntYearV, 2, 59, "YEARV2.60"},
    {"HOUR.2", 2, 0, 0, 0, 0, nullptr},
    {"HOUR24.24", 0, 's', kIntHour, 24, 23, "HOUR24.24"},
    // Working weeks.
    {"WEEKDAY", 0, 'd', kIntWeekday, 1, 0, "WEEKDAY", "17", 5},
    {"WEEKDAY17W", 0, 'd', kIntWeekday, 1, 0, "WEEKDAY", "17", 5},
    {"weekday71w", 0, 'd', kIntWeekday, 1, 0, "WEEKDAY", "17", 5},
    {"WEEKDAY1W", 0, 'd', kIntWeekday, 1, 0, "WEEKDAY1W", "1", 6},
    {"WEEKDAY123456W", 0, 'd', kIntWeekday, 1, 0, "WEEKDAY123456W", "123456", 1},
    {"WEEKDAY667W", 0, 'd', kIntWeekday, 1, 0, "WEEKDAY67W", "67", 5},
    {"WEEKDAY67W2.2", 0, 'd', kIntWeekday, 2, 1, "WEEKDAY67W2.2", "67", 5},
    {"WEEKDAY67W2.3", 2, 0, 0, 0, 0, nullptr},
    {"DTWEEKDAY3W", 0, 's', kIntWeekday, 1, 0, "DTWEEKDAY3W", "3", 6},
    {"WEEKDAY17W.2", 2, 0, 0, 0, 0, nullptr},
    {"WEEKDAYW", 102, 0, 0, 0, 0, nullptr},
    {"WEEKDAY8W", 102, 0, 0, 0, 0, nullptr},
    {"WEEKDAY0W", 102, 0, 0, 0, 0, nullptr},
    {"WEEKDAY1234567W", 102, 0, 0, 0, 0, nullptr},
    {"WEEKDAY12W3W", 103, 0, 0, 0, 0, nullptr},
    {"WEEK2W", 102, 0, 0, 0, 0, nullptr},
    {"MONTH1W", 102, 0, 0, 0, 0, nullptr},
    // Malformed and unknown.
    {"MONTH..", 102, 0, 0, 0, 0, nullptr},
    {"MONTH1.2.3", 102, 0, 0, 0, 0, nullptr},
    {"MONTH2.X", 102, 0, 0, 0, 0, nullptr},
    {"MONTHX", 103, 0, 0, 0, 0, nullptr},
    {"MONTH-1", 103, 0, 0, 0, 0, nullptr},
    {"MONTH 2", 103, 0, 0, 0, 0, nullptr},
    {"X", 103, 0, 0, 0, 0, nullptr},
    {"FORTNIGHT", 103, 0, 0, 0, 0, nullptr},
    {"NONE2", 103, 0, 0, 0, 0, nullptr},
    {"NONE.", 103, 0, 0, 0, 0, nullptr},
    {"NONEW", 103, 0, 0, 0, 0, nullptr},
    {"WEEKDAYSW", 102, 0, 0, 0, 0, nullptr},
    {"DTWEEKDAYW", 102, 0, 0, 0, 0, nullptr},
    // Lengths: 21 characters is the most.
    {"", 101, 0, 0, 0, 0, nullptr},
    {"MONTH0000000000000001", 0, 'd', kIntMonth, 1, 0, "MONTH"},
    {"MONTH00000000000000001", 101, 0, 0, 0, 0, nullptr},
    {"XXXXXXXXXXXXXXXXXXXXXX", 101, 0, 0, 0, 0, nullptr},
};

TEST(IntervalNames, Grammar) {
  for (const NameCase& c : kNames) {
    SCOPED_TRACE(c.text);
    int rc = -7;
    const INTERVAL i = parse(c.text, &rc);
    ASSERT_EQ(rc, c.rc);
    if (rc != 0) continue;
    EXPECT_EQ(i.units, c.units);
    EXPECT_EQ(i.intcode, c.code);
    EXPECT_EQ(i.intper, c.mult);
    EXPECT_EQ(i.shiftper, c.shift);
    EXPECT_EQ(std::string(i.token, static_cast<std::size_t>(i.tokenlen)), c.text);
    EXPECT_EQ(i.holidays, nullptr);
    EXPECT_EQ(canonical(i), c.canon);
    if (c.code == kIntWeekday) {
      EXPECT_EQ(weekendDigits(i), c.weekend);
      EXPECT_EQ(i.nweekday, c.nweekday);
    } else {
      EXPECT_EQ(weekendDigits(i), "");
    }
  }
}

// The canonical text parses back to the same record.
TEST(IntervalNames, CanonicalTextRoundTrip) {
  for (const NameCase& c : kNames) {
    int rc = 0;
    const INTERVAL a = parse(c.text, &rc);
    if (rc != 0) continue;
    const std::string text = canonical(a);
    const INTERVAL b = parse(text, &rc);
    ASSERT_EQ(rc, 0) << c.text << " -> " << text;
    // DTSECOND prints as SECOND and DTOBS as OBS: the units of the time
    // codes are seconds either way, but an OBS grid loses its prefix.
    if (a.intcode != kIntObs) {
      EXPECT_EQ(a.units, b.units) << text;
    }
    EXPECT_EQ(a.intcode, b.intcode) << text;
    EXPECT_EQ(a.intper, b.intper) << text;
    EXPECT_EQ(a.shiftper, b.shiftper) << text;
    EXPECT_EQ(a.nweekday, b.nweekday) << text;
    EXPECT_EQ(std::memcmp(a.weekend, b.weekend, 7), 0) << text;
  }
}

TEST(IntervalNames, NullsLengthsAndTermination) {
  INTERVAL i;
  EXPECT_EQ(zintstr(nullptr, 5, &i), 1001);
  EXPECT_EQ(zintstr("MONTH", 5, nullptr), 1001);
  EXPECT_EQ(zintstr("MONTH", 0, &i), 101);
  EXPECT_EQ(zintstr("MONTH", 22, &i), 101);
  // A negative length measures a terminated text.
  ASSERT_EQ(zintstr("qtr4", -1, &i), 0);
  EXPECT_EQ(i.intcode, kIntQtr);
  EXPECT_EQ(i.intper, 4);
  EXPECT_EQ(i.tokenlen, 4);
  EXPECT_EQ(zintstr("ABCDEFGHIJKLMNOPQRSTUVWXYZ", -1, &i), 101);
  EXPECT_EQ(zintstr("", -1, &i), 101);
  // Only len characters are read: "MONTH2" cut to 5 is MONTH.
  ASSERT_EQ(zintstr("MONTH2", 5, &i), 0);
  EXPECT_EQ(i.intper, 1);
}

TEST(IntervalNames, BufferTooSmallLeavesItAlone) {
  int rc = 0;
  const INTERVAL i = parse("WEEKDAY67W2.2", &rc);
  ASSERT_EQ(rc, 0);
  char buf[32];
  std::memset(buf, '#', sizeof buf);
  int len = 13;  // the text is 13 characters; the terminator needs a 14th
  EXPECT_EQ(zinti2s(buf, &len, &i), 101);
  EXPECT_EQ(len, 13);
  for (char c : buf) ASSERT_EQ(c, '#');
  len = 14;
  EXPECT_EQ(zinti2s(buf, &len, &i), 0);
  EXPECT_EQ(len, 13);
  EXPECT_STREQ(buf, "WEEKDAY67W2.2");
  EXPECT_EQ(zinti2s(nullptr, &len, &i), 1001);
  // An unknown code prints as NONE.
  INTERVAL odd;
  odd.intcode = 99;
  odd.intper = 1;
  len = 32;
  ASSERT_EQ(zinti2s(buf, &len, &odd), 0);
  EXPECT_STREQ(buf, "NONE");
}

TEST(IntervalNames, BaseName) {
  struct Case {
    const char* text;
    const char* base;
  };
  const Case cases[] = {{"MONTH3.2", "MONTH"}, {"DTMONTH", "DTMONTH"}, {"DTSECOND", "SECOND"},
                        {"DTHOUR", "HOUR"},    {"WEEKDAY1W2", "WEEKDAY"}, {"qtrly", "QTR"},
                        {"DTR445YR", "DTR445YR"}, {"WEEK", "WEEK"}, {"7", "OBS"}};
  for (const auto& c : cases) {
    int rc = 0;
    const INTERVAL i = parse(c.text, &rc);
    ASSERT_EQ(rc, 0) << c.text;
    char buf[32];
    int l = -1;
    EXPECT_EQ(zintbase(buf, &l, &i), 0);
    EXPECT_EQ(std::string(buf, static_cast<std::size_t>(l)), c.base) << c.text;
  }
}

TEST(IntervalNames, ByCode) {
  const int known[] = {0, 1, 10, 15, 20, 25, 27, 30, 31, 35, 40, 45, 46, 47, 48, 50, 51, 52, 53, 55, 60, 64};
  for (int code : known) {
    INTERVAL i;
    ASSERT_EQ(zintic(code, &i), 0) << code;
    EXPECT_EQ(i.intcode, code);
    EXPECT_EQ(i.intper, 1);
    EXPECT_EQ(i.shiftper, 0);
    // The record is the one its canonical text parses to.
    int rc = 0;
    const INTERVAL j = parse(canonical(i), &rc);
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(j.intcode, code);
    EXPECT_EQ(j.units, i.units);
  }
  INTERVAL w;
  ASSERT_EQ(zintic(kIntWeekday, &w), 0);
  EXPECT_EQ(w.nweekday, 5);
  EXPECT_EQ(weekendDigits(w), "17");
  // Retail years parse but have no interval by code; reserved and custom
  // codes have none either.
  for (int code : {61, 62, 63, 65, 28, 29, 38, 43, 49, 54, 58, 2, 26, 66, -1, 127, 1000}) {
    INTERVAL i;
    EXPECT_EQ(zintic(code, &i), 1) << code;
  }
  int rc = 0;
  parse("R454YR", &rc);
  EXPECT_EQ(rc, 0);
}

TEST(IntervalNames, ByCodeMultiplierAndShift) {
  struct Case {
    int code, m, s, rc;
    const char* canon;
  };
  const Case cases[] = {
      {kIntMonth, 3, 2, 0, "MONTH3.2"},  {kIntMonth, 0, 0, 0, "MONTH"},
      {kIntMonth, 0, 1, 0, "MONTH"},     {kIntMonth, 2, 0, 0, "MONTH2."},
      {kIntWeek, 0, 0, 0, "WEEK1."},     {kIntWeek, 1, 7, 0, "WEEK1.7"},
      {kIntWeek, 1, 8, 2, nullptr},      {kIntWeekday, 2, 2, 0, "WEEKDAY2.2"},
      {kIntMonth, -1, 0, 1, nullptr},    {kIntMonth, 0, -1, 2, nullptr},
      {kIntMonth, -1, -1, 1, nullptr},   {kIntR454Yr, 1, 1, 103, nullptr},
      {kIntCustom, 1, 0, 103, nullptr},  {kIntNone, 2, 0, 103, nullptr},
      {kIntYear, 1, 13, 2, nullptr},     {kIntDay, 2147483647, 0, 0, "DAY2147483647."},
  };
  for (const auto& c : cases) {
    INTERVAL i;
    ASSERT_EQ(zinticms(c.code, c.m, c.s, &i), c.rc) << c.code << ' ' << c.m << ' ' << c.s;
    if (c.rc == 0) {
      EXPECT_EQ(canonical(i), c.canon);
    }
  }
}

}  // namespace
}  // namespace qvt
