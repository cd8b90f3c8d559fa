// Date, time and datetime formats against values worked out by hand, and
// week numbers against Python's datetime.

#include <cstdio>
#include "host_test_util.hpp"

namespace qvt {
namespace {

struct Case {
  double value;
  const char* format;
  const char* expect;  // without the blanks on the left
};

void expectRendered(const Case& c) {
  FormatSpec spec;
  ASSERT_EQ(parseFormatSpec(c.format, &spec), kFormatOk) << c.format;
  ASSERT_NE(findFormat(spec.name), nullptr) << c.format;
  const int width = spec.width > 0 ? spec.width : findFormat(spec.name)->defaultWidth;
  std::string out;
  EXPECT_EQ(renderValue(c.value, spec, &out), 0) << c.format;
  ASSERT_EQ(static_cast<int>(out.size()), width) << c.format << " of " << c.value << ": [" << out << "]";
  const auto first = out.find_first_not_of(' ');
  const std::string shown = first == std::string::npos ? "" : out.substr(first);
  EXPECT_EQ(shown, c.expect) << c.format << " of " << c.value << ": [" << out << "]";
}

double ymd(int y, int m, int d) { return hostMdyToDate(m, d, y); }
double dt(int y, int m, int d, int hh, int mm, double ss) { return ymd(y, m, d) * 86400.0 + hh * 3600 + mm * 60 + ss; }

// 2020-01-01 is day 21915: sixty years of 365 days and fifteen leap days.
TEST(FormatTemporal, Anchor) { EXPECT_EQ(ymd(2020, 1, 1), 21915.0); }

TEST(FormatTemporal, DateForms) {
  const double jan1 = 21915.0;  // Wednesday 2020-01-01
  const Case cases[] = {
      {jan1, "DATE9.", "01JAN2020"},
      {jan1, "DATE7.", "01JAN20"},
      {jan1, "DATE.", "01JAN20"},
      {jan1, "DATE5.", "01JAN"},
      {jan1, "DATE11.", "01-JAN-2020"},
      {jan1, "DATE10.", "01JAN2020"},
      {jan1, "DATE4.", "****"},
      {jan1 + 0.9, "DATE9.", "01JAN2020"},      // a fraction of a day is the same day
      {-0.5, "DATE9.", "31DEC1959"},            // floor, not toward zero
      {ymd(1999, 12, 31) + 1, "DATE9.", "01JAN2000"},
      {ymd(2020, 2, 29), "DATE9.", "29FEB2020"},
      {ymd(2000, 2, 29), "DATE9.", "29FEB2000"},
      {ymd(1900, 2, 28) + 1, "DATE9.", "01MAR1900"},  // 1900 is not leap
      {ymd(1582, 1, 1), "DATE9.", "01JAN1582"},
      {ymd(1582, 1, 1) - 1, "DATE9.", "*********"},   // before the calendar
      {1e10, "DATE9.", "*********"},
      {jan1, "MONYY5.", "JAN20"},
      {jan1, "MONYY7.", "JAN2020"},
      {jan1, "MONYY6.", "JAN20"},
      {ymd(2020, 12, 31), "YYQ6.", "2020Q4"},
      {ymd(2020, 12, 31), "YYQ4.", "20Q4"},
      {ymd(2021, 4, 1), "YYQ6.", "2021Q2"},
      {ymd(2020, 12, 31), "YYQC6.", "2020:4"},
      {ymd(2020, 9, 30), "YYQC4.", "20:3"},
      {jan1, "YEAR4.", "2020"},
      {jan1, "YEAR2.", "20"},
      {jan1, "YEAR3.", "20"},
      {ymd(2005, 7, 9), "E8601DA.", "2005-07-09"},
      {ymd(1582, 1, 1), "E8601DA10.", "1582-01-01"},
      {ymd(2005, 7, 9), "E8601DA9.", "*********"},
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatTemporal, WeekdayForms) {
  const double d = ymd(1999, 12, 31);  // a Friday
  const Case cases[] = {
      {d, "WEEKDATE29.", "Friday, December 31, 1999"},
      {d, "WEEKDATE17.", "Fri, Dec 31, 1999"},
      {d, "WEEKDATE16.", "Fri, Dec 31, 99"},
      {d, "WEEKDATE3.", "Fri"},
      {d, "WEEKDATX29.", "Friday, 31 December 1999"},
      {d, "WEEKDATX16.", "Fri, 31 Dec 1999"},
      {d, "WEEKDATX15.", "Fri, 31 Dec 99"},
      {ymd(2020, 1, 1), "WEEKDATX17.", "Wed, 1 Jan 2020"},
      {ymd(2024, 9, 8), "WEEKDATE.", "Sunday, September 8, 2024"},
      {d, "WEEKDATE2.", "**"},
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatTemporal, WeekNumbers) {
  const Case cases[] = {
      // ISO 8601: the year of the week's Thursday.
      {ymd(2010, 1, 3), "WEEKV11.", "2009-W53-07"},
      {ymd(2010, 1, 4), "WEEKV11.", "2010-W01-01"},
      {ymd(1582, 1, 1), "WEEKV11.", "1581-W53-05"},   // 1581 began on a Thursday
      {ymd(2020, 1, 1), "WEEKV11.", "2020-W01-03"},
      {ymd(2020, 1, 1), "WEEKV9.", "2020W0103"},
      {ymd(2020, 1, 1), "WEEKV7.", "20W0103"},
      {ymd(2020, 1, 1), "WEEKV5.", "20W01"},
      {ymd(2020, 1, 1), "WEEKV3.", "W01"},
      {ymd(2020, 1, 1), "WEEKV2.", "**"},
      // Sunday-based: days before the first Sunday are week 00, Sunday is day 1.
      {ymd(2020, 1, 1), "WEEKU11.", "2020-W00-04"},
      {ymd(2020, 1, 5), "WEEKU11.", "2020-W01-01"},
      // Monday-based: Monday is day 1, Sunday day 7.
      {ymd(2020, 1, 1), "WEEKW11.", "2020-W00-03"},
      {ymd(2020, 1, 6), "WEEKW11.", "2020-W01-01"},
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatTemporal, NumericDateVariants) {
  const double d = ymd(2020, 3, 7);
  const Case cases[] = {
      {d, "YYMMDD10.", "2020-03-07"}, {d, "YYMMDD8.", "20-03-07"},  {d, "YYMMDD.", "20-03-07"},
      {d, "YYMMDD6.", "200307"},      {d, "YYMMDD5.", "20-03"},     {d, "YYMMDD4.", "2003"},
      {d, "YYMMDD2.", "20"},          {d, "YYMMDDN8.", "20200307"}, {d, "YYMMDDN6.", "200307"},
      {d, "YYMMDDS10.", "2020/03/07"}, {d, "YYMMDDP8.", "20.03.07"}, {d, "YYMMDDB10.", "2020 03 07"},
      {d, "YYMMDDC10.", "2020:03:07"}, {d, "YYMMDDD10.", "2020-03-07"}, {d, "YYMMDDD5.", "20-03"},
      {d, "MMDDYY10.", "03/07/2020"}, {d, "MMDDYY8.", "03/07/20"},  {d, "MMDDYY6.", "030720"},
      {d, "MMDDYY5.", "03/07"},       {d, "MMDDYYN8.", "03072020"}, {d, "MMDDYYD10.", "03-07-2020"},
      {d, "DDMMYY10.", "07/03/2020"}, {d, "DDMMYYP10.", "07.03.2020"}, {d, "DDMMYYD8.", "07-03-20"},
      {d, "DDMMYYS8.", "07/03/20"},   {d, "DDMMYYB10.", "07 03 2020"}, {d, "DDMMYYN6.", "070320"},
      {d, "YYMMDD1.", "*"},
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatTemporal, Datetimes) {
  const double x = dt(2020, 1, 1, 13, 30, 45);
  const double late = ymd(2020, 1, 1) * 86400.0 - 0.4;  // 2019-12-31 23:59:59.6
  const Case cases[] = {
      {x, "DATETIME18.", "01JAN2020:13:30:45"},
      {x, "DATETIME16.", "01JAN20:13:30:45"},
      {x, "DATETIME.", "01JAN20:13:30:45"},
      {x, "DATETIME20.", "01JAN2020:13:30:45"},
      {x, "DATETIME13.", "01JAN20:13:31"},     // 45 seconds round the minute up
      {x, "DATETIME10.", "01JAN20:14"},
      {x, "DATETIME7.", "01JAN20"},
      {x, "DATETIME6.", "******"},
      {x + 0.5, "DATETIME21.2", "01JAN2020:13:30:45.50"},
      {late, "DATETIME18.", "01JAN2020:00:00:00"},  // the carry runs into the date
      {late, "DTDATE9.", "31DEC2019"},              // the day it falls in
      {late, "DATETIME7.", "31DEC19"},
      {-1.0, "DATETIME18.", "31DEC1959:23:59:59"},
      // The smallest negative double: x / 86400 underflows to -0, yet the
      // value lies before midnight of 1960-01-01.
      {std::nextafter(0.0, -1.0), "DTDATE9.", "31DEC1959"},
      {std::nextafter(0.0, -1.0), "DATETIME18.", "01JAN1960:00:00:00"},
      {x, "DTDATE9.", "01JAN2020"},
      {x, "DTDATE.", "01JAN20"},
      {x, "DTMONYY7.", "JAN2020"},
      {x, "DTYYQC6.", "2020:1"},
      {x, "DTYEAR4.", "2020"},
      {x, "DTWKDATX.", "Wednesday, 1 January 2020"},
      {x, "DTWEEKV11.", "2020-W01-03"},
      {dt(2010, 1, 3, 23, 0, 0), "DTWEEKV9.", "2009W5307"},
      {x, "E8601DT.", "2020-01-01T13:30:45"},
      {x, "E8601DT16.", "2020-01-01T13:31"},
      {x + 0.25, "E8601DT23.3", "2020-01-01T13:30:45.250"},
      {1e300, "DATETIME18.", "******************"},
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatTemporal, Times) {
  const double t = 13 * 3600 + 30 * 60 + 45;  // 13:30:45
  const Case cases[] = {
      {t, "TIME8.", "13:30:45"},
      {3600.0, "TIME8.", "1:00:00"},
      {t, "TIME5.", "13:31"},
      {t, "TIME2.", "14"},
      {t + 0.125, "TIME11.2", "13:30:45.13"},
      {t + 0.125, "TIME10.2", "13:30:45.1"},   // one decimal less before fewer fields
      {-3661.0, "TIME8.", "-1:01:01"},
      {360000.0, "TIME8.", "100:00"},          // elapsed hours pass 24
      {360000.0, "TIME9.", "100:00:00"},
      {t, "HHMM5.", "13:31"},
      {t - 16, "HHMM5.", "13:30"},             // 13:30:29
      {t, "HHMM7.1", "13:30.8"},               // 810.75 minutes
      {86399.9, "HHMM5.", "24:00"},
      {t, "HHMM2.", "14"},
      {t, "MMSS6.", "810:45"},
      {t, "MMSS5.", "811"},
      {95.0, "MMSS5.", "1:35"},
      {t, "HOUR2.", "14"},
      {t, "HOUR4.1", "13.5"},
      {5400.0, "HOUR.", "2"},
      {dt(2020, 1, 1, 13, 30, 45), "TOD8.", "13:30:45"},
      {3600.0, "TOD8.", "01:00:00"},
      {t, "TOD5.", "13:31"},
      {-1.0, "TOD8.", "23:59:59"},
      {86399.6, "TOD8.", "00:00:00"},
      {t, "E8601TM.", "13:30:45"},
      {3600.0, "E8601TM8.", "01:00:00"},
      {t + 0.5, "E8601TM10.1", "13:30:45.5"},
      {1e300, "TIME8.", "********"},
  };
  for (const auto& c : cases) expectRendered(c);
}

TEST(FormatTemporal, MissingKinds) {
  const char* formats[] = {"DATE9.", "DATETIME18.", "TIME8.", "WEEKV11.", "YYMMDDN8.", "TOD5."};
  const char codes[] = {'.', '_', 'A', 'M', 'Z'};
  for (const char* f : formats)
    for (char c : codes) {
      const std::string want(1, c);
      expectRendered({skMissVal(c), f, want.c_str()});
    }
}

// Week numbers against Python's datetime (the calendar's date oracle, dense
// around year ends): ISO 8601 week dates, strftime's %U with Sunday as day 1
// and %W with Monday as day 1.
TEST(FormatTemporal, WeeksAgainstDatetimeOracle) {
  const auto text = [](int y, int w, int d) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%04d-W%02d-%02d", y, w, d);
    return std::string(buf);
  };
  const auto rows = testing::loadDateOracle();
  ASSERT_GT(rows.size(), 3000u);
  for (const auto& r : rows) {
    ASSERT_EQ(renderFormat(r.day, "WEEKV", 11), text(r.isoy, r.isow, r.isod)) << r.day;
    ASSERT_EQ(renderFormat(r.day, "WEEKU", 11), text(r.y, r.wu, r.wday)) << r.day;
    ASSERT_EQ(renderFormat(r.day, "WEEKW", 11), text(r.y, r.ww, r.isod)) << r.day;
  }
}

}  // namespace
}  // namespace qvt
