// Informats: the hand-worked table format_read.txt, the century cutoff,
// round trips through the formats that write what they read, and garbage.
#include <map>
#include <random>

#include "host/format_read.hpp"
#include "host_test_util.hpp"

namespace qvt {
namespace {

using Reader = int (*)(std::string_view, double*);

int dateLit(std::string_view t, double* v) { return readDateLiteral(t, v); }
int datetimeLit(std::string_view t, double* v) { return readDatetimeLiteral(t, v); }

const std::map<std::string, Reader> kReaders = {
    {"isodate", readIsoDate}, {"isotime", readIsoTime},         {"isodatetime", readIsoDatetime},
    {"date", dateLit},        {"time", readTimeLiteral},        {"datetime", datetimeLit}};

// What a reader makes of a text it must accept; NaN when it refuses it.
double readOk(Reader read, const std::string& text) {
  double v = std::nan("");
  EXPECT_EQ(read(text, &v), kReadOk) << text;
  return v;
}

TEST(FormatRead, ReadsTheHandWorkedTable) {
  const std::map<std::string, int> results = {
      {"ok", kReadOk}, {"syntax", kReadSyntax}, {"field", kReadField}, {"range", kReadRange}};
  const auto rows = testing::loadCases("format_read.txt");
  ASSERT_GT(rows.size(), 60u);
  for (const auto& r : rows) {
    SCOPED_TRACE(r.back() + ": [" + r[1] + "]");
    double v = -12345.0;
    ASSERT_EQ(kReaders.at(r[0])(r[1], &v), results.at(r[2]));
    // The value is written on success only.
    EXPECT_EQ(v, r[2] == "ok" ? std::stod(r[3]) : -12345.0);
  }
  // The cutoff decides the century: 45 is 1945 from 1940 on, 2045 from 1950 on.
  double v = 0;
  ASSERT_EQ(readDateLiteral("01JAN45", &v), kReadOk);
  EXPECT_EQ(v, -5478.0);
  ASSERT_EQ(readDateLiteral("01JAN45", &v, 1950), kReadOk);
  EXPECT_EQ(v, 31047.0);
  ASSERT_EQ(readDateLiteral("01JAN50", &v, 1950), kReadOk);
  EXPECT_EQ(v, -3652.0);
}

TEST(FormatRead, IsoValueTellsTheKind) {
  struct Row {
    const char* text;
    int rc;
    TemporalKind kind;
    double value;
  };
  const Row rows[] = {
      {"2024-03-31", kReadOk, TemporalKind::Date, 23466.0},
      {"2024-03-31 13:30", kReadOk, TemporalKind::Datetime, 2027511000.0},
      {"13:30:00", kReadOk, TemporalKind::Time, 48600.0},
      {"2021-02-29", kReadField, TemporalKind::None, 0},
      {"-5", kReadSyntax, TemporalKind::None, 0},
      {"12", kReadSyntax, TemporalKind::None, 0},
      {"", kReadSyntax, TemporalKind::None, 0},
  };
  for (const auto& r : rows) {
    double v = 0;
    TemporalKind k = TemporalKind::Date;
    EXPECT_EQ(readIsoValue(r.text, &v, &k), r.rc) << r.text;
    EXPECT_EQ(k, r.kind) << r.text;
    EXPECT_EQ(v, r.value) << r.text;
  }
}

// Days of 1582..9999 written by E8601DA and DATE9. and read back: a stride
// of 31 days (prime to 7, so every weekday and month turns up) over the
// whole range, and every day of years with the edge cases of the leap rule.
TEST(FormatRead, DatesRoundTrip) {
  std::vector<double> days;
  for (double d = hostMdyToDate(1, 1, 1582); d <= hostMdyToDate(12, 31, 9999); d += 31) days.push_back(d);
  for (int y : {1582, 1600, 1900, 1959, 1960, 2000, 2024, 9999})
    for (double d = hostMdyToDate(1, 1, y); d <= hostMdyToDate(12, 31, y); d += 1) days.push_back(d);
  for (double d : days) {
    ASSERT_EQ(readOk(readIsoDate, renderFormat(d, "E8601DA", 10)), d);
    ASSERT_EQ(readOk(dateLit, renderFormat(d, "DATE", 9)), d);
    ASSERT_EQ(readOk(readIsoDate, isoDateText(d)), d);
  }
  EXPECT_EQ(readOk(readIsoDate, isoDateText(kLastDate)), kLastDate);
  EXPECT_EQ(isoDateText(kFirstDate - 1), "");
  EXPECT_EQ(isoDateText(std::nan("")), "");
  EXPECT_EQ(isoDateText(21915.75), "2020-01-01");
}

TEST(FormatRead, DatetimesAndTimesRoundTrip) {
  std::mt19937_64 rng(20240331);
  std::uniform_real_distribution<double> anyReal(-138061 * 86400.0, 2936550.0 * 86400.0);  // 1582 .. 9999
  std::uniform_int_distribution<int> ms(0, 999);
  for (int i = 0; i < 5000; ++i) {
    const double whole = std::floor(anyReal(rng));
    ASSERT_EQ(readOk(readIsoDatetime, renderFormat(whole, "E8601DT", 19)), whole);
    ASSERT_EQ(readOk(datetimeLit, renderFormat(whole, "DATETIME", 18)), whole);
    // Milliseconds: the reader adds the fraction as a double, as 0.123 is.
    const double milli = whole + ms(rng) / 1000.0;
    ASSERT_EQ(readOk(readIsoDatetime, renderFormat(milli, "E8601DT", 23, 3)), milli);
    // Any double at all comes back to the bit through the ISO writer.
    const double any = anyReal(rng);
    ASSERT_EQ(testing::bits(readOk(readIsoDatetime, isoDatetimeText(any))), testing::bits(any));
    const double t = std::fmod(any - anyReal.a(), 86400.0);
    ASSERT_EQ(readOk(readTimeLiteral, renderFormat(std::floor(t), "TIME", 8)), std::floor(t));
    ASSERT_EQ(readOk(readIsoTime, renderFormat(std::floor(t), "E8601TM", 8)), std::floor(t));
    ASSERT_EQ(testing::bits(readOk(readIsoTime, isoTimeText(t))), testing::bits(t)) << t;
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
  for (int i = 0; i < 20000; ++i) {
    std::string s;
    for (int n = pickLen(rng); n > 0; --n) s += alphabet[pickChar(rng)];
    for (const auto& [name, read] : kReaders) {
      double v = -1e300;
      const int rc = read(s, &v);
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
