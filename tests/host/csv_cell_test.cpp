// Cells of CSV files: what text stands for which value, and back.
#include "host/csv_cell.hpp"
#include "host_test_util.hpp"

namespace qvt {
namespace {

std::uint64_t bits(double x) { return std::bit_cast<std::uint64_t>(x); }

// Day numbers worked by hand (and checked against Python's datetime):
// 1960-01-01 to 2024-01-01 is 64*365 + 16 leap days = 23376; March 31 is the
// 91st day of 2024, so 2024-03-31 is day 23466.
struct ClassifyCase {
  const char* text;
  CellKind kind;
  double value;  // ignored for Text
};

class Classify : public ::testing::TestWithParam<ClassifyCase> {};

TEST_P(Classify, KindAndValue) {
  const auto& c = GetParam();
  double v = 12345.0;
  EXPECT_EQ(csvClassify(c.text, &v), c.kind) << c.text;
  if (c.kind != CellKind::Text) {
    EXPECT_EQ(bits(v), bits(c.value)) << c.text << " gave " << v;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, Classify,
    ::testing::Values(
        ClassifyCase{"", CellKind::Missing, kMissing}, ClassifyCase{"   ", CellKind::Missing, kMissing},
        ClassifyCase{".", CellKind::Missing, kMissing}, ClassifyCase{".A", CellKind::Missing, skMissVal('A')},
        ClassifyCase{".z", CellKind::Missing, skMissVal('Z')}, ClassifyCase{"._", CellKind::Missing, skMissVal('_')},
        ClassifyCase{"12", CellKind::Number, 12.0}, ClassifyCase{" -0.5 ", CellKind::Number, -0.5},
        ClassifyCase{"+4", CellKind::Number, 4.0}, ClassifyCase{"1e-3", CellKind::Number, 0.001},
        ClassifyCase{".5", CellKind::Number, 0.5}, ClassifyCase{"-0", CellKind::Number, -0.0},
        ClassifyCase{"4.9406564584124654e-324", CellKind::Number, 4.9406564584124654e-324},
        ClassifyCase{"inf", CellKind::Number, std::numeric_limits<double>::infinity()},
        ClassifyCase{"nan", CellKind::Text, 0}, ClassifyCase{"-nan", CellKind::Text, 0},
        ClassifyCase{"1e400", CellKind::Text, 0}, ClassifyCase{"0x1A", CellKind::Text, 0},
        ClassifyCase{"1,5", CellKind::Text, 0}, ClassifyCase{"abc", CellKind::Text, 0},
        ClassifyCase{".AB", CellKind::Text, 0}, ClassifyCase{"-", CellKind::Text, 0},
        ClassifyCase{"2024-03-31", CellKind::Date, 23466.0}, ClassifyCase{"1960-01-01", CellKind::Date, 0.0},
        ClassifyCase{"1959-12-31", CellKind::Date, -1.0}, ClassifyCase{"1582-01-01", CellKind::Date, -138061.0},
        ClassifyCase{"2000-02-29", CellKind::Date, 14669.0}, ClassifyCase{"1900-02-29", CellKind::Text, 0},
        ClassifyCase{"2024-13-01", CellKind::Text, 0}, ClassifyCase{"1581-12-31", CellKind::Text, 0},
        ClassifyCase{"2024-3-31", CellKind::Text, 0},
        ClassifyCase{"2024-03-31T13:30:00", CellKind::DateTime, 2027511000.0},
        ClassifyCase{"2024-03-31 13:30:00", CellKind::DateTime, 2027511000.0},
        ClassifyCase{"2024-03-31T13:30", CellKind::DateTime, 2027511000.0},
        ClassifyCase{"2024-03-31T13:30:00.25", CellKind::DateTime, 2027511000.25},
        ClassifyCase{"1959-12-31T23:59:59", CellKind::DateTime, -1.0},
        ClassifyCase{"2024-03-31T24:00:00", CellKind::Text, 0}, ClassifyCase{"2024-03-31T13:60", CellKind::Text, 0},
        ClassifyCase{"2024-03-31T13:30:00Z", CellKind::Text, 0},
        ClassifyCase{"13:30:00", CellKind::Time, 48600.0}, ClassifyCase{"7:05", CellKind::Time, 25500.0},
        ClassifyCase{"100:00:00.5", CellKind::Time, 360000.5}, ClassifyCase{"00:00:00", CellKind::Time, 0.0},
        ClassifyCase{"13:3", CellKind::Text, 0}, ClassifyCase{"12:61:00", CellKind::Text, 0}));

TEST(CsvCell, JoinKindsIsALattice) {
  using K = CellKind;
  EXPECT_EQ(csvJoinKinds(K::Missing, K::Missing), K::Missing);
  EXPECT_EQ(csvJoinKinds(K::Missing, K::Date), K::Date);
  EXPECT_EQ(csvJoinKinds(K::Date, K::Missing), K::Date);
  EXPECT_EQ(csvJoinKinds(K::Date, K::Date), K::Date);
  EXPECT_EQ(csvJoinKinds(K::Date, K::Number), K::Text);
  EXPECT_EQ(csvJoinKinds(K::Number, K::Time), K::Text);
  EXPECT_EQ(csvJoinKinds(K::DateTime, K::Date), K::Text);
  EXPECT_EQ(csvJoinKinds(K::Text, K::Missing), K::Text);
  EXPECT_EQ(csvJoinKinds(K::Text, K::Number), K::Text);
}

TEST(CsvCell, FormatKinds) {
  struct Case {
    const char* format;
    CellKind kind;
  } cases[] = {{"DATE9.", CellKind::Date},      {"date7.", CellKind::Date},
               {"E8601DA10.", CellKind::Date},  {"E8601DA.", CellKind::Date},
               {"YYMMDDN8.", CellKind::Date},   {"MONYY7.", CellKind::Date},
               {"WEEKV9.", CellKind::Date},     {"DATETIME19.", CellKind::DateTime},
               {"E8601DT.", CellKind::DateTime}, {"DTWKDATX.", CellKind::DateTime},
               {"TIME8.", CellKind::Time},      {"HHMM5.", CellKind::Time},
               {"BEST12.", CellKind::Number},   {"F8.2", CellKind::Number},
               {"8.2", CellKind::Number},       {"", CellKind::Number},
               {"DATEX9.", CellKind::Number}};
  for (const auto& c : cases) EXPECT_EQ(csvFormatKind(c.format), c.kind) << c.format;
}

// Written text, checked by hand.
TEST(CsvCell, WrittenText) {
  struct Case {
    double v;
    CellKind kind;
    const char* text;
  } cases[] = {
      {kMissing, CellKind::Number, ""},
      {skMissVal('A'), CellKind::Number, ".A"},
      {skMissVal('Z'), CellKind::Date, ".Z"},
      {skMissVal('_'), CellKind::Number, "._"},
      {std::numeric_limits<double>::quiet_NaN(), CellKind::Number, ""},
      {0.1, CellKind::Number, "0.1"},
      {-0.0, CellKind::Number, "-0"},
      {1e21, CellKind::Number, "1e+21"},
      {23466.0, CellKind::Date, "2024-03-31"},
      {-138061.0, CellKind::Date, "1582-01-01"},
      {23466.5, CellKind::Date, "23466.5"},  // no ISO form for half a day
      {-0.0, CellKind::Date, "-0"},
      {-138062.0, CellKind::Date, "-138062"},  // before the calendar
      {2027511000.0, CellKind::DateTime, "2024-03-31T13:30:00"},
      {2027511000.25, CellKind::DateTime, "2024-03-31T13:30:00.25"},
      {-1.0, CellKind::DateTime, "1959-12-31T23:59:59"},
      {48600.0, CellKind::Time, "13:30:00"},
      {360000.5, CellKind::Time, "100:00:00.5"},
      {5.0, CellKind::Time, "00:00:05"},
      {-5.0, CellKind::Time, "-5"},
  };
  for (const auto& c : cases) {
    std::string out;
    csvAppendNumber(out, c.v, c.kind);
    EXPECT_EQ(out, c.text) << c.v;
  }
}

// Every written value reads back to the same bits under its column kind.
TEST(CsvCell, RoundTripBitForBit) {
  const double values[] = {0.0, -0.0, 1.0, -1.0, 0.1, 1.0 / 3.0, 2.0 / 3.0 * 1e-300,
                           4.9406564584124654e-324, 2.2250738585072009e-308,  // subnormals
                           1.7976931348623157e308, 123456789.12345678, 9007199254740993.0,
                           23466.0, 23466.5, 2027511000.123456789, 86399.999999, 1e-7,
                           -2027511000.5, 6589335.0, 6589336.0, kMissing, skMissVal('Q'),
                           skMissVal('_'), std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity()};
  const CellKind kinds[] = {CellKind::Number, CellKind::Date, CellKind::DateTime, CellKind::Time};
  for (const CellKind k : kinds) {
    for (const double v : values) {
      std::string t;
      csvAppendNumber(t, v, k);
      double back = 0;
      ASSERT_TRUE(csvParseAs(t, k, &back)) << t;
      EXPECT_EQ(bits(back), bits(v)) << "kind " << static_cast<int>(k) << " text " << t;
    }
  }
}

TEST(CsvCell, QuotingFollowsRfc4180) {
  struct Case {
    const char* in;
    const char* out;
  } cases[] = {{"plain", "plain"},     {"", ""},           {"a,b", "\"a,b\""},
               {"say \"hi\"", "\"say \"\"hi\"\"\""}, {"two\nlines", "\"two\nlines\""},
               {"cr\r", "\"cr\r\""},  {" lead", " lead"}};
  for (const auto& c : cases) {
    std::string out;
    csvAppendText(out, c.in);
    EXPECT_EQ(out, c.out);
  }
}

TEST(CsvCell, Utf8Validation) {
  struct Case {
    std::string s;
    std::size_t valid;
  } cases[] = {
      {"plain ascii text longer than eight", 34},
      {"caf\xC3\xA9", 5},
      {"\xE2\x82\xAC euro", 8},
      {"\xF0\x9F\x98\x80", 4},
      {"ab\xC3", 2},               // cut short
      {"ab\xC0\xAF", 2},           // overlong '/'
      {"\xED\xA0\x80", 0},         // a surrogate
      {"\xF4\x90\x80\x80", 0},     // above U+10FFFF
      {"12345678\xFF", 8},         // bad byte after an ASCII word
      {"\x80", 0},
  };
  for (const auto& c : cases) EXPECT_EQ(utf8ValidPrefix(c.s), c.valid) << c.s;
}

}  // namespace
}  // namespace qvt
