// Informats: values worked out by hand, malformed text, and round trips
// through the formats that write what they read.

#include <cstdint>
#include <random>
#include <vector>

#include "host/format_read.hpp"
#include "host_test_util.hpp"

namespace qvt {
namespace {

using Reader = int (*)(std::string_view, double*);

// Day numbers by hand: 2020-01-01 is 21915 (sixty years, fifteen leap days);
// 2024-03-31 is 23376 (2024-01-01) + 31 + 29 + 30 = 23466.
constexpr double kJan2020 = 21915.0;
constexpr double kMar31_2024 = 23466.0;

struct Good {
  const char* text;
  double expect;
};

struct Bad {
  const char* text;
  int rc;
};

void checkGood(Reader read, const Good& g) {
  double v = -12345.0;
  ASSERT_EQ(read(g.text, &v), kReadOk) << "[" << g.text << "]";
  EXPECT_EQ(v, g.expect) << "[" << g.text << "]";
}

void checkBad(Reader read, const Bad& b) {
  double v = -12345.0;
  EXPECT_EQ(read(b.text, &v), b.rc) << "[" << b.text << "]";
  EXPECT_EQ(v, -12345.0) << "value written on failure for [" << b.text << "]";
}

int dateLit(std::string_view t, double* v) { return readDateLiteral(t, v); }
int datetimeLit(std::string_view t, double* v) { return readDatetimeLiteral(t, v); }

TEST(FormatRead, IsoDate) {
  const Good good[] = {
      {"2024-03-31", kMar31_2024},  {"2020-01-01", kJan2020},   {" 2020-01-01 ", kJan2020},
      {"1960-01-01", 0.0},          {"2020-02-29", kJan2020 + 59}, {"1582-01-01", -138061.0},
      {"20000-12-26", 6589335.0},
  };
  for (const auto& g : good) checkGood(readIsoDate, g);
  const Bad bad[] = {
      {"2024-02-30", kReadField}, {"2021-02-29", kReadField}, {"1900-02-29", kReadField},
      {"2024-13-01", kReadField}, {"2024-00-10", kReadField}, {"2024-01-00", kReadField},
      {"2024-04-31", kReadField}, {"1581-12-31", kReadRange}, {"20000-12-27", kReadRange},
      {"2024-3-31", kReadSyntax}, {"2024-03-31x", kReadSyntax}, {"", kReadSyntax},
      {"2024/03/31", kReadSyntax}, {"+2024-03-31", kReadSyntax}, {"24-03-31", kReadSyntax},
      {"2024-03-311", kReadSyntax}, {"202400-03-31", kReadSyntax}, {"2024-03", kReadSyntax},
  };
  for (const auto& b : bad) checkBad(readIsoDate, b);
}

TEST(FormatRead, IsoTimeAndDatetime) {
  const double at = kMar31_2024 * 86400.0 + 48600.0;  // 2,027,511,000
  EXPECT_EQ(at, 2027511000.0);
  const Good times[] = {
      {"13:30:00", 48600.0}, {"13:30", 48600.0}, {"00:00:00", 0.0}, {"23:59:59", 86399.0},
      {"13:30:00.25", 48600.25}, {"13:30:00.5", 48600.5},
  };
  for (const auto& g : times) checkGood(readIsoTime, g);
  const Bad badTimes[] = {
      {"25:00", kReadField}, {"24:00:00", kReadField}, {"13:60", kReadField}, {"13:30:60", kReadField},
      {"1:30", kReadSyntax}, {"13:3", kReadSyntax}, {"13:30:00.", kReadSyntax}, {"-1:00", kReadSyntax},
      {"13", kReadSyntax}, {"13:30:0", kReadSyntax}, {"13:30:00Z", kReadSyntax},
  };
  for (const auto& b : badTimes) checkBad(readIsoTime, b);
  const Good datetimes[] = {
      {"2024-03-31T13:30:00", at}, {"2024-03-31 13:30:00", at}, {"2024-03-31T13:30", at},
      {"2024-03-31t13:30", at},    {"2024-03-31T13:30:00.5", at + 0.5}, {"1959-12-31T23:59:59", -1.0},
  };
  for (const auto& g : datetimes) checkGood(readIsoDatetime, g);
  const Bad badDatetimes[] = {
      {"2024-03-31T24:00:00", kReadField}, {"2021-02-29T00:00:00", kReadField},
      {"2024-03-31T13:60", kReadField},    {"2024-03-31T", kReadSyntax},
      {"2024-03-31T13:30:00Z", kReadSyntax}, {"2024-03-31", kReadSyntax},
      {"2024-03-31TT13:30", kReadSyntax},  {"1581-12-31T00:00", kReadRange},
  };
  for (const auto& b : badDatetimes) checkBad(readIsoDatetime, b);
}

TEST(FormatRead, Literals) {
  const Good dates[] = {
      {"01JAN2020", kJan2020}, {"1JAN20", kJan2020},   {"1jan2020", kJan2020}, {"01Jan2020", kJan2020},
      {"01JAN60", 0.0},        {"31DEC39", 29219.0},   // 2040-01-01 is 21915 + 7300 + 5
      {"01JAN40", -7305.0},    {"29FEB00", 14669.0},   {"31mar2024", kMar31_2024},
  };
  for (const auto& g : dates) checkGood(dateLit, g);
  const Bad badDates[] = {
      {"29FEB2021", kReadField}, {"31APR2020", kReadField}, {"32JAN2020", kReadField},
      {"00JAN2020", kReadField}, {"01JAN1581", kReadRange}, {"01XYZ2020", kReadSyntax},
      {"01JAN202", kReadSyntax}, {"001JAN2020", kReadSyntax}, {"JAN2020", kReadSyntax},
      {"01JA2020", kReadSyntax}, {"", kReadSyntax},          {"01JAN2020x", kReadSyntax},
      {"01-JAN-2020", kReadSyntax}, {"01JAN202400", kReadSyntax},
  };
  for (const auto& b : badDates) checkBad(dateLit, b);

  // The cutoff decides the century: 45 is 1945 from 1940 on, 2045 from 1950 on.
  double v = 0;
  ASSERT_EQ(readDateLiteral("01JAN45", &v), kReadOk);
  EXPECT_EQ(v, -5478.0);
  ASSERT_EQ(readDateLiteral("01JAN45", &v, 1950), kReadOk);
  EXPECT_EQ(v, 31047.0);
  ASSERT_EQ(readDateLiteral("01JAN50", &v, 1950), kReadOk);
  EXPECT_EQ(v, hostMdyToDate(1, 1, 1950));

  const Good times[] = {
      {"13:30", 48600.0}, {"9:05", 32700.0}, {"13:30:00.5", 48600.5}, {"09:05:07", 32707.0}, {"0:00", 0.0},
  };
  for (const auto& g : times) checkGood(readTimeLiteral, g);
  const Bad badTimes[] = {
      {"25:00", kReadField}, {"13:61", kReadField}, {"13:5", kReadSyntax}, {"13:30:", kReadSyntax},
      {"130:00", kReadSyntax}, {":30", kReadSyntax}, {"13.30", kReadSyntax},
  };
  for (const auto& b : badTimes) checkBad(readTimeLiteral, b);

  const double at = kJan2020 * 86400.0 + 48600.0;
  const Good datetimes[] = {
      {"01JAN2020:13:30:00", at}, {"01JAN20:13:30", at}, {"01JAN2020 13:30", at},
      {"01jan2020:13:30:00.5", at + 0.5}, {"1JAN2020:0:00", kJan2020 * 86400.0},
  };
  for (const auto& g : datetimes) checkGood(datetimeLit, g);
  const Bad badDatetimes[] = {
      {"01JAN2020:25:00", kReadField}, {"31APR2020:00:00", kReadField}, {"01JAN2020", kReadSyntax},
      {"01JAN2020:", kReadSyntax},     {"01JAN2020:13", kReadSyntax},  {"01JAN2020::13:30", kReadSyntax},
  };
  for (const auto& b : badDatetimes) checkBad(datetimeLit, b);
}

TEST(FormatRead, IsoValueTellsTheKind) {
  struct Row {
    const char* text;
    int rc;
    TemporalKind kind;
    double value;
  };
  const Row rows[] = {
      {"2024-03-31", kReadOk, TemporalKind::Date, kMar31_2024},
      {"2024-03-31T13:30:00", kReadOk, TemporalKind::Datetime, 2027511000.0},
      {"2024-03-31 13:30", kReadOk, TemporalKind::Datetime, 2027511000.0},
      {"13:30:00", kReadOk, TemporalKind::Time, 48600.0},
      {"2021-02-29", kReadField, TemporalKind::None, 0},
      {"-5", kReadSyntax, TemporalKind::None, 0},
      {"12", kReadSyntax, TemporalKind::None, 0},
      {"1e-3", kReadSyntax, TemporalKind::None, 0},
      {"abc", kReadSyntax, TemporalKind::None, 0},
      {"", kReadSyntax, TemporalKind::None, 0},
  };
  for (const auto& r : rows) {
    double v = 0;
    TemporalKind k = TemporalKind::Date;
    EXPECT_EQ(readIsoValue(r.text, &v, &k), r.rc) << r.text;
    EXPECT_EQ(k, r.kind) << r.text;
    if (r.rc == kReadOk) {
      EXPECT_EQ(v, r.value) << r.text;
    }
  }
}

bool sameBits(double a, double b) { return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b); }

// Days of 1582..9999 written by E8601DA and DATE9. and read back: a stride
// of 31 days (prime to 7, so every weekday and month turns up) over the
// whole range, and every day of years with the edge cases of the leap rule.
TEST(FormatRead, DatesRoundTrip) {
  std::vector<double> days;
  for (double d = hostMdyToDate(1, 1, 1582); d <= hostMdyToDate(12, 31, 9999); d += 31) days.push_back(d);
  for (int y : {1582, 1600, 1900, 1959, 1960, 2000, 2024, 9999})
    for (double d = hostMdyToDate(1, 1, y); d <= hostMdyToDate(12, 31, y); d += 1) days.push_back(d);
  for (double d : days) {
    double back = 0;
    ASSERT_EQ(readIsoDate(renderFormat(d, "E8601DA", 10), &back), kReadOk) << d;
    ASSERT_EQ(back, d);
    ASSERT_EQ(readDateLiteral(renderFormat(d, "DATE", 9), &back), kReadOk) << d;
    ASSERT_EQ(back, d);
    ASSERT_EQ(readIsoDate(isoDateText(d), &back), kReadOk) << d;
    ASSERT_EQ(back, d);
  }
  double back = 0;
  ASSERT_EQ(readIsoDate(isoDateText(kLastDate), &back), kReadOk);
  EXPECT_EQ(back, kLastDate);
  EXPECT_EQ(isoDateText(kFirstDate - 1), "");
  EXPECT_EQ(isoDateText(std::nan("")), "");
  EXPECT_EQ(isoDateText(kJan2020 + 0.75), "2020-01-01");
}

TEST(FormatRead, DatetimesAndTimesRoundTrip) {
  std::mt19937_64 rng(20240331);
  const double lo = hostMdyToDate(1, 1, 1582) * 86400.0;
  const double hi = (hostMdyToDate(12, 31, 9999) + 1) * 86400.0;
  std::uniform_real_distribution<double> anyReal(lo, hi);
  std::uniform_int_distribution<int> ms(0, 999);
  for (int i = 0; i < 5000; ++i) {
    const double whole = std::floor(anyReal(rng));
    double back = 0;
    ASSERT_EQ(readIsoDatetime(renderFormat(whole, "E8601DT", 19), &back), kReadOk) << whole;
    ASSERT_EQ(back, whole);
    ASSERT_EQ(readDatetimeLiteral(renderFormat(whole, "DATETIME", 18), &back), kReadOk) << whole;
    ASSERT_EQ(back, whole);
    // Milliseconds: the reader adds the fraction as a double, as 0.123 is.
    const double milli = whole + ms(rng) / 1000.0;
    ASSERT_EQ(readIsoDatetime(renderFormat(milli, "E8601DT", 23, 3), &back), kReadOk) << milli;
    ASSERT_EQ(back, milli) << renderFormat(milli, "E8601DT", 23, 3);
    // Any double at all comes back to the bit through the ISO writer.
    const double any = anyReal(rng);
    const std::string text = isoDatetimeText(any);
    ASSERT_EQ(readIsoDatetime(text, &back), kReadOk) << text;
    ASSERT_TRUE(sameBits(back, any)) << text << " " << back << " " << any;
  }
  std::uniform_real_distribution<double> dayReal(0.0, 86400.0);
  for (int i = 0; i < 5000; ++i) {
    const double t = dayReal(rng);
    const double whole = std::floor(t);
    double back = 0;
    ASSERT_EQ(readTimeLiteral(renderFormat(whole, "TIME", 8), &back), kReadOk) << whole;
    ASSERT_EQ(back, whole);
    ASSERT_EQ(readIsoTime(renderFormat(whole, "E8601TM", 8), &back), kReadOk) << whole;
    ASSERT_EQ(back, whole);
    const std::string text = isoTimeText(t);
    ASSERT_EQ(readIsoTime(text, &back), kReadOk) << text;
    ASSERT_TRUE(sameBits(back, t)) << text;
  }
  EXPECT_EQ(isoTimeText(86400.0), "");
  EXPECT_EQ(isoTimeText(-0.5), "");
  EXPECT_EQ(isoTimeText(48600.0), "13:30:00");
  EXPECT_EQ(isoDatetimeText(-0.5), "1959-12-31T23:59:59.5");
  EXPECT_EQ(isoDatetimeText(2027511000.25), "2024-03-31T13:30:00.25");
}

// Whatever the text, a reader returns one of its codes, writes only on
// success, and what it writes is a finite value inside the calendar.
TEST(FormatRead, NeverUndefinedOnGarbage) {
  std::mt19937 rng(7);
  const std::string alphabet = "0123456789-:T .JANjanFEBxZ+";
  std::uniform_int_distribution<std::size_t> pickChar(0, alphabet.size() - 1);
  std::uniform_int_distribution<int> pickLen(0, 24);
  const Reader readers[] = {readIsoDate, readIsoTime, readIsoDatetime, dateLit, readTimeLiteral, datetimeLit};
  for (int i = 0; i < 20000; ++i) {
    std::string s;
    for (int n = pickLen(rng); n > 0; --n) s += alphabet[pickChar(rng)];
    for (Reader r : readers) {
      double v = -1e300;
      const int rc = r(s, &v);
      ASSERT_TRUE(rc == kReadOk || rc == kReadSyntax || rc == kReadField || rc == kReadRange) << s;
      if (rc == kReadOk) {
        ASSERT_TRUE(std::isfinite(v)) << s;
        ASSERT_GE(v, kFirstDate * 86400.0) << s;
      } else {
        ASSERT_EQ(v, -1e300) << s;
      }
    }
  }
  // Digit runs far longer than any field never overflow.
  double v = 0;
  EXPECT_EQ(readIsoDate(std::string(400, '9'), &v), kReadSyntax);
  EXPECT_EQ(readTimeLiteral("99999999999999999999:00", &v), kReadSyntax);
  EXPECT_EQ(readIsoTime("13:30:00." + std::string(500, '7'), &v), kReadOk);
  EXPECT_NEAR(v, 48600.7777777, 1e-6);
}

}  // namespace
}  // namespace qvt
