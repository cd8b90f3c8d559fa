// Formats: parsing of format texts, rendering against the hand-worked table
// format_render.txt, widths that always hold, and week numbers against
// Python's datetime.
#include <cstdio>
#include <map>

#include "host_test_util.hpp"

namespace qvt {
namespace {

TEST(Format, RendersTheHandWorkedTable) {
  const auto rows = testing::loadCases("format_render.txt");
  ASSERT_GT(rows.size(), 100u);
  for (const auto& r : rows) {
    SCOPED_TRACE(r.back() + ": " + r[1] + " of " + r[0]);
    FormatSpec spec;
    ASSERT_EQ(parseFormatSpec(r[1], &spec), kFormatOk);
    ASSERT_NE(findFormat(spec.name), nullptr);
    std::string out;
    EXPECT_EQ(renderValue(testing::caseValue(r[0]), spec, &out), 0);
    // The width of the format, the text aligned right.
    const int width = spec.width > 0 ? spec.width : findFormat(spec.name)->defaultWidth;
    ASSERT_EQ(out.size(), static_cast<std::size_t>(width));
    EXPECT_EQ(out.substr(std::min(out.find_first_not_of(' '), out.size())), r[2]) << "[" << out << "]";
  }
}

TEST(Format, EveryMissingKindShowsItsLetter) {
  for (const char* f : {"DATE9.", "DATETIME18.", "TIME8.", "WEEKV11.", "YYMMDDN8.", "TOD5."})
    for (const char c : {'.', '_', 'A', 'Z'}) {
      const std::string out = renderFormat(skMissVal(c), f);
      EXPECT_EQ(out.substr(out.find_first_not_of(' ')), std::string(1, c)) << f;
    }
}

// A number never comes out wider than its width, whatever the value.
TEST(Format, WidthIsAlwaysKept) {
  const double values[] = {0.0, 1.0, -1.0, 0.5, -0.5, 9.999, 99.95, 1e-300, -1e300, 123456789.123,
                           1.0 / 7.0, -999999.5, 5e-5, 4.9e-324};
  for (const char* f : {"BEST", "F", "COMMA", "PERCENT", "PVALUE", "E"})
    for (int w = 1; w <= 14; ++w)
      for (int d : {-1, 0, 2, 5})
        for (double v : values)
          EXPECT_EQ(static_cast<int>(renderFormat(v, f, w, d).size()), w) << f << w << "." << d << " of " << v;
}

// Week numbers against Python's datetime (dense around year ends): ISO 8601
// week dates, strftime's %U with Sunday as day 1 and %W with Monday as day 1.
TEST(Format, WeeksAgainstDatetimeOracle) {
  const auto text = [](int y, int w, int d) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%04d-W%02d-%02d", y, w, d);
    return std::string(buf);
  };
  const auto& rows = testing::dateOracle();
  ASSERT_GT(rows.size(), 3000u);
  for (const auto& r : rows) {
    ASSERT_EQ(renderFormat(r.day, "WEEKV", 11), text(r.isoy, r.isow, r.isod)) << r.day;
    ASSERT_EQ(renderFormat(r.day, "WEEKU", 11), text(r.y, r.wu, r.wday)) << r.day;
    ASSERT_EQ(renderFormat(r.day, "WEEKW", 11), text(r.y, r.ww, r.isod)) << r.day;
  }
}

TEST(FormatSpec, ParsesTheTable) {
  const std::map<std::string, int> results = {
      {"ok", kFormatOk}, {"empty", kFormatEmpty}, {"syntax", kFormatSyntax}, {"range", kFormatRange}};
  const auto rows = testing::loadCases("format_spec.txt");
  ASSERT_GT(rows.size(), 18u);
  for (const auto& r : rows) {
    SCOPED_TRACE(r.back() + ": [" + r[0] + "]");
    FormatSpec s{"UNTOUCHED", 5, 1};
    ASSERT_EQ(parseFormatSpec(r[0], &s), results.at(r[1]));
    const bool ok = r[1] == "ok";
    EXPECT_EQ(s.name, ok ? r[2] : "UNTOUCHED");
    EXPECT_EQ(s.width, ok ? std::stoi(r[3]) : 5);
    EXPECT_EQ(s.decimals, ok ? std::stoi(r[4]) : 1);
  }
  for (const char* t : {"DATE9.", "BEST12.2", "DATE.", "BEST.2", "E8601DT19.3", "F8.", "$CHAR10."}) {
    FormatSpec s;
    ASSERT_EQ(parseFormatSpec(t, &s), kFormatOk);
    EXPECT_EQ(formatSpecText(s), t);
  }
  EXPECT_EQ(findFormat("date"), nullptr);  // names are looked up as parsed: upper case
  EXPECT_EQ(findFormat(""), nullptr);
}

// Every date row renders a value at its minimum width without stars, and
// below its minimum width (where there is one) with stars only.
TEST(FormatSpec, MinimumWidthIsTight) {
  for (const char* n : {"DATE", "MONYY", "YYQ", "YYQC", "YEAR", "WEEKDATE", "WEEKDATX", "WEEKV", "WEEKU", "WEEKW",
                        "YYMMDD", "YYMMDDN", "MMDDYY", "DDMMYYS", "E8601DA"}) {
    const FormatInfo* f = findFormat(n);
    ASSERT_NE(f, nullptr) << n;
    EXPECT_LE(f->minWidth, f->defaultWidth) << n;
    EXPECT_LE(f->defaultWidth, f->maxWidth) << n;
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
  EXPECT_EQ(renderFormat(3.14159, "f", 8, 2), renderFormat(3.14159, "F8.2"));
  EXPECT_EQ(renderFormat(21915.0, "date", 0), "01JAN20");
  EXPECT_EQ(renderFormat(1.0, "BEST", 500), std::string(kMaxFormatWidth - 1, ' ') + "1");
}

}  // namespace
}  // namespace qvt
