// Interval names, and counting and stepping on every grid: the cases worked
// by hand live in hand_cases.csv; a round trip ties steps and counts together.

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;
using testing::kDay;
using testing::name;
using testing::ymd;

std::string weekendDigits(const INTERVAL& i) {
  std::string s;
  for (int d = 0; d < 7; ++d)
    if (i.weekend[d]) s += static_cast<char>('1' + d);
  return s;
}

TEST(IntervalNames, GrammarAndCanonicalTextRoundTrip) {
  for (const auto& c : testing::handCases("name")) {
    SCOPED_TRACE(c.where());
    INTERVAL i;
    ASSERT_EQ(zintstr(c.s(1).data(), static_cast<int>(c.s(1).size()), &i), c.i(2));
    if (c.i(2) != 0) continue;
    // Units, code, multiplier, stored shift, canonical text, weekend, working days.
    const int code = i.intcode, working = i.nweekday;
    EXPECT_EQ(testing::str(i.units, code, i.intper, i.shiftper, name(i), weekendDigits(i), working),
              c.join(3, 9));
    EXPECT_EQ(testing::tokenOf(i), c.s(1));
    EXPECT_EQ(i.holidays, nullptr);
    // The canonical text parses back to the same record; DTOBS prints as
    // OBS and loses its units.
    INTERVAL b;
    ASSERT_EQ(zintstr(c.s(7).c_str(), -1, &b), 0);
    EXPECT_TRUE(i.intcode == kIntObs || b.units == i.units);
    EXPECT_EQ(testing::str(int{b.intcode}, b.intper, b.shiftper, std::string(b.weekend, 7)),
              testing::str(int{i.intcode}, i.intper, i.shiftper, std::string(i.weekend, 7)));
  }
}

TEST(IntervalNames, ArgumentsBuffersAndCodes) {
  INTERVAL i;
  EXPECT_EQ(zintstr(nullptr, 5, &i), 1001);
  EXPECT_EQ(zintstr("MONTH", 22, &i), 101);
  EXPECT_EQ(zintstr("ABCDEFGHIJKLMNOPQRSTUVWXYZ", -1, &i), 101);
  // Only len characters are read: "MONTH2" cut to 5 is MONTH.
  ASSERT_EQ(zintstr("MONTH2", 5, &i), 0);
  EXPECT_EQ(i.intper, 1);
  // The text is 13 characters; the terminator needs a 14th.
  const INTERVAL w = iv("WEEKDAY67W2.2");
  char buf[32];
  std::memset(buf, '#', sizeof buf);
  int len = 13;
  EXPECT_EQ(zinti2s(buf, &len, &w), 101);
  EXPECT_EQ(len, 13);
  EXPECT_EQ(std::string(buf, sizeof buf), std::string(sizeof buf, '#'));
  len = 14;
  EXPECT_EQ(zinti2s(buf, &len, &w), 0);
  EXPECT_STREQ(buf, "WEEKDAY67W2.2");
  EXPECT_EQ(zinti2s(nullptr, &len, &w), 1001);
  INTERVAL odd;  // an unknown code prints as NONE
  odd.intcode = 99;
  EXPECT_EQ(name(odd), "NONE");
  EXPECT_EQ(name(testing::customInterval()), "FISCAL");  // a custom interval prints its token
  for (const auto& c : testing::handCases("base")) {
    int l = -1;
    i = iv(c.s(1));
    EXPECT_EQ(zintbase(buf, &l, &i), 0);
    EXPECT_EQ(std::string(buf, static_cast<std::size_t>(l)), c.s(2)) << c.where();
  }
  // By code: the record is the one its canonical text parses to.
  for (int code : {0, 1, 10, 15, 20, 25, 27, 30, 31, 35, 40, 45, 46, 47, 48, 50, 51, 52, 53, 55, 60, 64}) {
    ASSERT_EQ(zintic(code, &i), 0) << code;
    EXPECT_EQ(i.intper * 100 + i.shiftper, 100) << code;
    const INTERVAL j = iv(name(i));
    EXPECT_EQ(j.intcode * 1000 + j.units, code * 1000 + i.units) << code;
    EXPECT_TRUE(code != kIntWeekday || (weekendDigits(i) + name(i) == "17WEEKDAY" && i.nweekday == 5));
  }
  // Retail years, custom, reserved and unknown codes have none.
  for (int code : {61, 65, 28, 2, 66, -1, 1000}) EXPECT_EQ(zintic(code, &i), 1) << code;
  for (const auto& c : testing::handCases("icms")) {
    ASSERT_EQ(zinticms(c.i(1), c.i(2), c.i(3), &i), c.i(4)) << c.where();
    EXPECT_TRUE(c.i(4) != 0 || name(i) == c.s(5)) << c.where() << " " << name(i);
  }
}

TEST(IntervalStep, HandWorked) {
  for (const std::string op : {"nx2", "ck2", "nx3", "ck3"}) {
    for (const auto& c : testing::handCases(op)) {
      const INTERVAL i = iv(c.s(1));
      const double got = op == "nx2"   ? zintnx2(i, c.x(2), c.x(3))
                         : op == "ck2" ? zintck2(i, c.x(2), c.x(3))
                         : op == "nx3" ? zintnx3(i, c.x(2), c.x(3), c.s(4).c_str(), nullptr)
                                       : zintck3(zintwiden(i), c.x(2), c.x(3));
      EXPECT_TRUE(c.same(got, op == "nx3" ? 5 : 4)) << c.where() << " got " << got;
    }
  }
  for (const auto& c : testing::handCases("shft")) {
    INTERVAL s;
    ASSERT_EQ(zintshft(iv(c.s(1)), &s), 0) << c.where();
    EXPECT_EQ(testing::str(name(s) + s.units, s.intper, s.shiftper), c.s(2) + c.s(3) + " 1 0") << c.where();
  }
  INTERVAL reserved;
  reserved.intcode = 38;
  INTERVAL s = iv("MONTH");
  EXPECT_EQ(zintshft(reserved, &s), 2);
  EXPECT_EQ(s.intcode + s.tokenlen, 0);
  // A null alignment is "B"; the cache of the shift interval is filled from
  // a cleared record, and a filled one is used as it stands: by days, March
  // 1 of a leap year is day 61 of the year, and day 61 of 2001 is March 2.
  const INTERVAL month = iv("MONTH"), year = iv("YEAR");
  EXPECT_EQ(zintnx3(month, ymd(2000, 1, 31), 1, nullptr, nullptr), ymd(2000, 2, 1));
  INTERVAL sub;
  EXPECT_EQ(zintnx3(year, ymd(2000, 3, 1), 1, "S", &sub), ymd(2001, 3, 1));
  EXPECT_EQ(name(sub), "MONTH");
  INTERVAL days = iv("DAY");
  EXPECT_EQ(zintnx3(year, ymd(2000, 3, 1), 1, "S", &days), ymd(2001, 3, 2));
}

// For every family, stepping k intervals and counting back gives k, a step
// lands on a boundary, and stepping back returns to the start.
TEST(IntervalStep, StepThenCountRoundTrip) {
  // 'd' dates, 's' seconds on a date grid, 't' time grid, 'o' numbers.
  const std::pair<const char*, char> families[] = {
      {"DAY3.2", 'd'},      {"WEEKDAY2.2", 'd'}, {"WEEKDAY67W", 'd'}, {"WEEK2.9", 'd'},
      {"WEEKV3.5", 'd'},    {"TENDAY4.3", 'd'},  {"SEMIMONTH5.2", 'd'}, {"MONTH7.5", 'd'},
      {"QTR2.5", 'd'},      {"SEMIYEAR.3", 'd'}, {"YEAR3.20", 'd'},   {"R454MON3.2", 'd'},
      {"R544QTR2.4", 'd'},  {"R454YR.5", 'd'},   {"YEARV3.60", 'd'},  {"DTWEEKDAY", 's'},
      {"DTR445YR", 's'},    {"DTSEMIMONTH3", 's'}, {"HOUR5.3", 't'},  {"MINUTE15.7", 't'},
      {"SECOND10.4", 't'},  {"OBS3", 'o'},       {"OBS3.2", 'x'},     {"NONE", 'o'}};
  const auto& rows = testing::dateOracle();
  for (const auto& [text, kind] : families) {
    const INTERVAL I = iv(text);
    const double tick = kind == 's' ? kDay : 1;  // the moment before a boundary
    for (std::size_t ri = 0; ri < rows.size(); ri += 7) {
      const auto& r = rows[ri];
      if (r.y < 1700 || r.y > 9000) continue;
      const double x = kind == 's'   ? r.day * kDay + 3723.5
                       : kind == 't' ? r.day * kDay + 3723.5 + r.d * 61.0 : r.day;
      const double b = zintnx2(I, x, 0);
      const bool starts = kind != 'x';  // OBS3.2 adds its shift past x
      SCOPED_TRACE(::testing::Message() << text << " at " << x);
      ASSERT_FALSE(wzmis(b));
      if (starts) {
        ASSERT_LE(b, x);
        ASSERT_GT(zintnx2(I, x, 1), x);
        ASSERT_EQ(zintck2(I, b, x), 0);
        ASSERT_EQ(zintck2(I, b - tick, b), 1);
      }
      for (double k : {-25, -7, -1, 0, 1, 2, 13, 25}) {
        const double y = zintnx2(I, x, k);
        ASSERT_EQ(zintck2(I, x, y), k) << k;
        ASSERT_EQ(zintck2(I, y, x), -k) << k;
        if (starts) {
          ASSERT_EQ(zintnx2(I, y, 0), y) << k;
          ASSERT_EQ(zintnx2(I, y, -k), b) << k;
        }
      }
    }
  }
}

TEST(IntervalStep, WhatCantBeCountedIsMissing) {
  const double bad[] = {kMissing, skMissVal('Z'), std::numeric_limits<double>::quiet_NaN(),
                        -std::numeric_limits<double>::infinity()};
  for (const char* text : {"NONE", "OBS2.2", "WEEKDAY", "MONTH", "R445YR", "YEARV", "DTDAY", "HOUR"}) {
    const INTERVAL I = iv(text);
    const double good = I.units == 's' ? 1000.0 * kDay : 1000.0;
    for (double b : bad) {
      EXPECT_TRUE(wzmis(zintck2(I, b, good))) << text;
      EXPECT_TRUE(wzmis(zintck2(I, good, b))) << text;
      EXPECT_TRUE(wzmis(zintnx2(I, b, 1))) << text;
      EXPECT_TRUE(wzmis(zintnx2(I, good, b))) << text;
      EXPECT_TRUE(wzmis(zintnx3(I, good, b, "E", nullptr))) << text;
    }
  }
  // Units that don't fit the code, reserved codes, a week without working
  // days, and a custom interval without its calendar.
  INTERVAL m = iv("MONTH"), o = iv("OBS"), h = iv("HOUR"), w = iv("WEEKDAY");
  m.units = 'o';
  o.units = 'd';
  h.units = 'u';
  for (char& d : w.weekend) d = 1;
  std::vector<INTERVAL> wrong{m, o, h, w, testing::customInterval()};
  for (int code : {2, 38, 66, -5})
    for (char units : {'d', 's'}) {
      INTERVAL r;
      r.intcode = static_cast<char>(code);
      r.units = units;
      r.intper = 1;
      wrong.push_back(r);
    }
  for (const INTERVAL& r : wrong) {
    EXPECT_TRUE(wzmis(zintck2(r, 1, 100))) << int{r.intcode} << r.units;
    EXPECT_TRUE(wzmis(zintnx2(r, 100, 1))) << int{r.intcode} << r.units;
    EXPECT_TRUE(wzmis(zintnx3(r, 100, 1, "S", nullptr))) << int{r.intcode} << r.units;
  }
  const INTERVAL c = testing::customInterval();
  EXPECT_TRUE(wzmis(zintnx2(c, skMissVal('M'), 1)));
  EXPECT_TRUE(wzmis(zintck2(c, skMissVal('I'), 100)));
  EXPECT_TRUE(wzmis(zintnx3(c, 100, 1, "E", nullptr)));
  // Counting a time grid on date values: days become seconds; stepping
  // needs seconds.
  INTERVAL minuteOnDays = iv("MINUTE");
  minuteOnDays.units = 'd';
  EXPECT_EQ(zintck2(minuteOnDays, 0, 1), 1440.0);
  EXPECT_TRUE(wzmis(zintnx2(minuteOnDays, 0, 1)));
  // A multiplier below 1 counts as 1.
  INTERVAL z = iv("MONTH");
  z.intper = 0;
  EXPECT_EQ(zintnx2(z, ymd(2000, 5, 5), 1), ymd(2000, 6, 1));
  EXPECT_EQ(zintck2(z, ymd(2000, 5, 5), ymd(2000, 7, 1)), 2.0);
}

}  // namespace
}  // namespace qvt
