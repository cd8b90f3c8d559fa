// Parsing of format texts, the format table, and the BEST stand-in.
#include "host_test_util.hpp"

namespace qvt {
namespace {

TEST(FormatSpec, ParsesNameWidthDecimals) {
  struct Row {
    const char* text;
    const char* name;
    int width;
    int decimals;
  };
  const Row rows[] = {
      {"DATE9.", "DATE", 9, -1},       {"MONYY7.", "MONYY", 7, -1},   {"BEST12.", "BEST", 12, -1},
      {"F8.2", "F", 8, 2},             {"8.2", "F", 8, 2},            {"8.", "F", 8, -1},
      {"COMMA10.2", "COMMA", 10, 2},   {"PERCENT8.1", "PERCENT", 8, 1}, {"PVALUE6.4", "PVALUE", 6, 4},
      {"E10.", "E", 10, -1},           {"YYMMDDN8.", "YYMMDDN", 8, -1}, {"YYMMDD10.", "YYMMDD", 10, -1},
      {"E8601DA.", "E8601DA", 0, -1},  {"E8601DA10.", "E8601DA", 10, -1}, {"E8601DT19.3", "E8601DT", 19, 3},
      {"DATETIME20.", "DATETIME", 20, -1}, {"TIME8.", "TIME", 8, -1}, {"date9.", "DATE", 9, -1},
      {"  DATE9.  ", "DATE", 9, -1},   {"DATE", "DATE", 0, -1},       {"DATE.", "DATE", 0, -1},
      {"BEST.2", "BEST", 0, 2},        {"$CHAR10.", "$CHAR", 10, -1}, {"best12.0", "BEST", 12, 0},
      {"YEAR4", "YEAR", 4, -1},        {"$10.", "$", 10, -1},
  };
  for (const auto& r : rows) {
    FormatSpec s;
    ASSERT_EQ(parseFormatSpec(r.text, &s), kFormatOk) << r.text;
    EXPECT_EQ(s.name, r.name) << r.text;
    EXPECT_EQ(s.width, r.width) << r.text;
    EXPECT_EQ(s.decimals, r.decimals) << r.text;
  }
}

TEST(FormatSpec, RejectsMalformed) {
  struct Row {
    const char* text;
    int rc;
  };
  const Row rows[] = {
      {"", kFormatEmpty},        {"   ", kFormatEmpty},      {"8", kFormatSyntax},
      {".2", kFormatSyntax},     {"DATE9.x", kFormatSyntax}, {"DATE 9.", kFormatSyntax},
      {"DATE9..", kFormatSyntax}, {"F8.2.", kFormatSyntax},  {"$", kFormatSyntax},
      {"$.", kFormatSyntax},     {"8ABC.", kFormatSyntax},
      {"D-ATE9.", kFormatSyntax}, {"DATE0.", kFormatRange},  {"DATE201.", kFormatRange},
      {"F8.32", kFormatRange},   {"F99999999999999999999.", kFormatRange},
      {"ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFG9.", kFormatSyntax},  // 33-character name
  };
  for (const auto& r : rows) {
    FormatSpec s{"UNTOUCHED", 5, 1};
    EXPECT_EQ(parseFormatSpec(r.text, &s), r.rc) << "[" << r.text << "]";
    EXPECT_EQ(s.name, "UNTOUCHED") << r.text;
  }
}

TEST(FormatSpec, TextRoundTrip) {
  const char* texts[] = {"DATE9.", "BEST12.2", "DATE.", "BEST.2", "E8601DT19.3", "F8.", "$CHAR10."};
  for (const char* t : texts) {
    FormatSpec s;
    ASSERT_EQ(parseFormatSpec(t, &s), kFormatOk);
    EXPECT_EQ(formatSpecText(s), t);
  }
}

TEST(FormatSpec, TableRows) {
  struct Row {
    const char* name;
    FormatKind kind;
    int defaultWidth;
  };
  const Row rows[] = {
      {"BEST", FormatKind::Numeric, 12},  {"DATE", FormatKind::Date, 7},
      {"MONYY", FormatKind::Date, 5},     {"YYQC", FormatKind::Date, 4},
      {"WEEKV", FormatKind::Date, 11},    {"DATETIME", FormatKind::Datetime, 16},
      {"DTWEEKV", FormatKind::Datetime, 11}, {"TIME", FormatKind::Time, 8},
      {"HHMM", FormatKind::Time, 5},      {"E8601DA", FormatKind::Date, 10},
      {"E8601DT", FormatKind::Datetime, 19}, {"YYMMDDN", FormatKind::Date, 8},
  };
  for (const auto& r : rows) {
    const FormatInfo* f = findFormat(r.name);
    ASSERT_NE(f, nullptr) << r.name;
    EXPECT_EQ(f->kind, r.kind) << r.name;
    EXPECT_EQ(f->defaultWidth, r.defaultWidth) << r.name;
    EXPECT_LE(f->minWidth, f->defaultWidth) << r.name;
    EXPECT_LE(f->defaultWidth, f->maxWidth) << r.name;
  }
  EXPECT_EQ(findFormat("date"), nullptr);  // names are looked up as parsed: upper case
  EXPECT_EQ(findFormat("DOLLAR"), nullptr);
  EXPECT_EQ(findFormat(""), nullptr);
}

// Every row renders a value at its minimum width without stars, and below
// its minimum width (where there is one) with stars only.
TEST(FormatSpec, MinimumWidthIsTight) {
  const char* names[] = {"DATE", "MONYY", "YYQ", "YYQC", "YEAR", "WEEKDATE", "WEEKDATX", "WEEKV", "WEEKU",
                         "WEEKW", "YYMMDD", "YYMMDDN", "MMDDYY", "DDMMYYS", "E8601DA"};
  for (const char* n : names) {
    const FormatInfo* f = findFormat(n);
    ASSERT_NE(f, nullptr) << n;
    const std::string at = renderFormat(21915.0, n, f->minWidth);
    EXPECT_EQ(at.find('*'), std::string::npos) << n << " at " << f->minWidth << ": " << at;
    if (f->minWidth > 1) {
      EXPECT_EQ(renderFormat(21915.0, n, f->minWidth - 1), std::string(f->minWidth - 1, '*')) << n;
    }
  }
}

TEST(FormatSpec, UnknownNamesRenderAsBest) {
  FormatSpec s;
  ASSERT_EQ(parseFormatSpec("DOLLAR10.2", &s), kFormatOk);
  std::string out;
  EXPECT_EQ(renderValue(1234.5, s, &out), 1);
  EXPECT_EQ(out, "    1234.5");  // BEST10.: the decimals of the unknown format are not used
  s = FormatSpec{"NLNUM", 0, -1};
  EXPECT_EQ(renderValue(2.5, s, &out), 1);
  EXPECT_EQ(out, "         2.5");  // default width 12
  EXPECT_EQ(renderFormat(7.0, "not a format"), "           7");
  ASSERT_EQ(parseFormatSpec("DATE9.", &s), kFormatOk);
  EXPECT_EQ(renderValue(21915.0, s, &out), 0);
  EXPECT_EQ(out, "01JAN2020");
}

TEST(FormatSpec, ByNameEqualsByText) {
  EXPECT_EQ(renderFormat(3.14159, "f", 8, 2), renderFormat(3.14159, "F8.2"));
  EXPECT_EQ(renderFormat(21915.0, "date", 0), renderFormat(21915.0, "DATE."));
  EXPECT_EQ(renderFormat(1.0, "BEST", 500), std::string(kMaxFormatWidth - 1, ' ') + "1");
}

}  // namespace
}  // namespace qvt
