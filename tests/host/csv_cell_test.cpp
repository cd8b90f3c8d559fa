// Cells of CSV files: what text stands for which value, and back.
#include <map>

#include "host/csv_cell.hpp"
#include "host_test_util.hpp"

namespace qvt {
namespace {

using testing::bits;

TEST(CsvCell, HandWorkedCells) {
  const std::map<std::string, CellKind> kinds = {
      {"Missing", CellKind::Missing}, {"Number", CellKind::Number}, {"Date", CellKind::Date},
      {"DateTime", CellKind::DateTime}, {"Time", CellKind::Time}, {"Text", CellKind::Text}};
  const auto rows = testing::loadCases("csv_cells.txt");
  ASSERT_GT(rows.size(), 35u);
  for (const auto& r : rows) {
    SCOPED_TRACE(r.back() + ": [" + r[1] + "]");
    const CellKind kind = kinds.at(r[2]);
    if (r[0] != "write") {
      double v = 12345.0;
      EXPECT_EQ(csvClassify(r[1], &v), kind);
      if (kind != CellKind::Text) {
        EXPECT_EQ(bits(v), bits(testing::caseValue(r[3]))) << v;
      }
    }
    if (r[0] != "read") {
      std::string out;
      csvAppendNumber(out, testing::caseValue(r[3]), kind);
      EXPECT_EQ(out, r[1]);
    }
  }
}

TEST(CsvCell, FormatKinds) {
  const std::pair<const char*, CellKind> cases[] = {
      {"date7.", CellKind::Date}, {"DTWKDATX.", CellKind::DateTime}, {"HHMM5.", CellKind::Time},
      {"F8.2", CellKind::Number}, {"", CellKind::Number},           {"DATEX9.", CellKind::Number}};
  for (const auto& [format, kind] : cases) EXPECT_EQ(csvFormatKind(format), kind) << format;
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
  for (const CellKind k : {CellKind::Number, CellKind::Date, CellKind::DateTime, CellKind::Time}) {
    for (const double v : values) {
      std::string t;
      csvAppendNumber(t, v, k);
      double back = 0;
      ASSERT_TRUE(csvParseAs(t, k, &back)) << t;
      EXPECT_EQ(bits(back), bits(v)) << "kind " << static_cast<int>(k) << " text " << t;
    }
  }
}

TEST(CsvCell, QuotingAndUtf8) {
  const std::pair<const char*, const char*> quoted[] = {
      {"plain", "plain"}, {"", ""}, {"a,b", "\"a,b\""}, {"say \"hi\"", "\"say \"\"hi\"\"\""},
      {"two\nlines", "\"two\nlines\""}, {"cr\r", "\"cr\r\""}, {" lead", " lead"}};
  for (const auto& [in, want] : quoted) {
    std::string out;
    csvAppendText(out, in);
    EXPECT_EQ(out, want);
  }
  const std::pair<std::string, std::size_t> utf8[] = {
      {"caf\xC3\xA9 \xE2\x82\xAC longer than eight", 27},
      {"\xF0\x9F\x98\x80", 4},
      {"ab\xC3", 2},            // cut short
      {"ab\xC0\xAF", 2},        // overlong '/'
      {"\xED\xA0\x80", 0},      // a surrogate
      {"\xF4\x90\x80\x80", 0},  // above U+10FFFF
      {"12345678\xFF", 8},      // bad byte after an ASCII word
  };
  for (const auto& [s, valid] : utf8) EXPECT_EQ(utf8ValidPrefix(s), valid) << s;
}

}  // namespace
}  // namespace qvt
