// The record scanner on hand-made files, with buffers small enough that every
// record crosses a buffer end somewhere.
#include "host/csv_scan.hpp"

#include "host_test_util.hpp"

namespace qvt {
namespace {

using Records = std::vector<std::vector<std::string>>;

// All records of the file, or the failing result as the single field of a
// last record "#<code>@<line>".
Records scanAll(const std::string& bytes, std::size_t buf, std::vector<long long>* lines = nullptr) {
  testing::TempDir dir;
  dir.write("f.csv", bytes);
  CsvScanner sc(buf);
  EXPECT_EQ(sc.open(dir.file("f.csv")), 0);
  Records out;
  for (;;) {
    const int r = sc.next();
    if (r == 0) break;
    if (r < 0) {
      out.push_back({"#" + std::to_string(r) + "@" + std::to_string(sc.line())});
      break;
    }
    std::vector<std::string> rec;
    for (auto f : sc.fields()) rec.emplace_back(f);
    out.push_back(std::move(rec));
    if (lines) lines->push_back(sc.line());
  }
  return out;
}

TEST(CsvScan, SameRecordsForEveryBufferSize) {
  struct Case {
    const char* name;
    std::string bytes;
    Records expect;
  };
  const Case cases[] = {
      {"no final line end", "a,b\n1,2", {{"a", "b"}, {"1", "2"}}},
      {"crlf", "a,b\r\n1,2\r\n", {{"a", "b"}, {"1", "2"}}},
      {"bom", "\xEF\xBB\xBF" "a,b\n1,2\n", {{"a", "b"}, {"1", "2"}}},
      {"empty fields", "a,b,c\n,,\n", {{"a", "b", "c"}, {"", "", ""}}},
      {"trailing comma at end of file", "a,b\n1,", {{"a", "b"}, {"1", ""}}},
      {"blank lines skipped", "a\n\n1\r\n\r\n2\n\n", {{"a"}, {"1"}, {"2"}}},
      {"quoted comma", "x\n\"1,5\"\n", {{"x"}, {"1,5"}}},
      {"doubled quotes", "x,y\n\"say \"\"hi\"\"\",z\n", {{"x", "y"}, {"say \"hi\"", "z"}}},
      {"only a doubled quote", "x\n\"\"\"\"\n", {{"x"}, {"\""}}},
      {"embedded line breaks", "x,y\n\"two\nlines\",\"and\r\ncrlf\"\n",
       {{"x", "y"}, {"two\nlines", "and\r\ncrlf"}}},
      {"quote inside an unquoted field", "x\nab\"c\n", {{"x"}, {"ab\"c"}}},
      {"long quoted field with quotes", "x\n\"" + std::string(40, 'q') + "\"\"" + std::string(40, 'r') + "\"\n",
       {{"x"}, {std::string(40, 'q') + "\"" + std::string(40, 'r')}}},
      {"unterminated quote", "x\n1\n\"abc\n", {{"x"}, {"1"}, {"#-1@3"}}},
      {"character after closing quote", "x,y\n\"ab\"c,1\n", {{"x", "y"}, {"#-2@2"}}},
      {"empty file", "", {}},
      {"only a bom", "\xEF\xBB\xBF", {}}};
  for (const Case& c : cases)
    for (const std::size_t buf : {16u, 17u, 19u, 64u, 1u << 20})
      EXPECT_EQ(scanAll(c.bytes, buf), c.expect) << c.name << " with buffer " << buf;
}

TEST(CsvScanLines, RecordsKnowTheirFirstLine) {
  std::vector<long long> lines;
  const Records r = scanAll("a\n1\n\n\"x\ny\nz\"\n2\r\n3", 16, &lines);
  ASSERT_EQ(r.size(), 5u);
  EXPECT_EQ(lines, (std::vector<long long>{1, 2, 4, 7, 8}));
}

// Blank lines before a record are counted once whatever the buffer cuts;
// those at the end of the file are not (they hide no record).
TEST(CsvScanLines, BlankLinesBeforeRecordsAreCounted) {
  const struct {
    std::string bytes;
    long long count, first;
  } cases[] = {{"a\n\n1\r\n\r\n2\n\n", 2, 2}, {"\n\na\n1\n", 2, 1}, {"a\n1\n\n\n", 0, 0},
               {"a\n" + std::string(30, '1') + "\n\n\n\n2", 3, 3}};
  for (const auto& c : cases) {
    for (const std::size_t buf : {16u, 17u, 19u, 64u}) {
      testing::TempDir dir;
      dir.write("f.csv", c.bytes);
      CsvScanner sc(buf);
      ASSERT_EQ(sc.open(dir.file("f.csv")), 0);
      while (sc.next() == 1) {
      }
      EXPECT_EQ(sc.blankLines(), c.count) << c.bytes << " with buffer " << buf;
      EXPECT_EQ(sc.firstBlankLine(), c.first) << c.bytes << " with buffer " << buf;
    }
  }
}

TEST(CsvScanLines, RewindReadsTheSameAgain) {
  testing::TempDir dir;
  dir.write("f.csv", "\xEF\xBB\xBFh\n1\n2\n");
  CsvScanner sc(16);
  ASSERT_EQ(sc.open(dir.file("f.csv")), 0);
  int n = 0;
  while (sc.next() == 1) ++n;
  EXPECT_EQ(n, 3);
  ASSERT_EQ(sc.rewind(), 0);
  ASSERT_EQ(sc.next(), 1);
  EXPECT_EQ(sc.fields()[0], "h");  // the byte-order mark is skipped again
  EXPECT_TRUE(sc.hadBom());
  CsvScanner none;
  EXPECT_EQ(none.open("/nonexistent/qvt/none.csv"), CsvScanner::kIoError);
  EXPECT_FALSE(none.ioError().empty());
}

}  // namespace
}  // namespace qvt
