// The format table: shape invariants counted afresh at run time, category
// membership of names picked by hand from each list and family, and the
// name lookups (kind, units, code) with their edge cases.

#include <cstring>
#include <map>
#include <set>
#include "calendar_fixture.hpp"

namespace qvt {
namespace {

TEST(FmtTable, ShapeRowsNamesOrder) {
  ASSERT_EQ(fmtinfox.size(), 1030u);
  std::set<std::string> names;
  for (const FMTINFOX& r : fmtinfox) names.insert(r.fmtname);
  EXPECT_EQ(names.size(), 720u);

  for (std::size_t i = 1; i < fmtinfox.size(); ++i) {
    const FMTINFOX& a = fmtinfox[i - 1];
    const FMTINFOX& b = fmtinfox[i];
    // strcmp orders by unsigned character code, which is the table's order.
    const int c = std::strcmp(a.fmtname, b.fmtname);
    ASSERT_LE(c, 0) << "rows " << i - 1 << " and " << i << " out of order: " << a.fmtname << " "
                    << b.fmtname;
    if (c == 0) {
      EXPECT_EQ(a.fmttype, 'F') << a.fmtname;
      EXPECT_EQ(b.fmttype, 'I') << b.fmtname;
      EXPECT_STREQ(a.category, b.category) << a.fmtname;
      if (i >= 2) {
        EXPECT_STRNE(fmtinfox[i - 2].fmtname, a.fmtname) << "three rows for " << a.fmtname;
      }
    }
  }
}

TEST(FmtTable, EveryRowWellFormed) {
  for (const FMTINFOX& r : fmtinfox) {
    const std::size_t n = std::strlen(r.fmtname);
    ASSERT_GE(n, 1u);
    ASSERT_LT(n, static_cast<std::size_t>(kFmtNameSize));
    for (std::size_t k = 0; k < n; ++k) {
      const char c = r.fmtname[k];
      const bool ok = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || (c == '$' && k == 0);
      EXPECT_TRUE(ok) << r.fmtname;
    }
    EXPECT_TRUE(r.fmttype == 'F' || r.fmttype == 'I') << r.fmtname;
    EXPECT_GE(r.inverse, 0);
    EXPECT_LE(r.inverse, 5);
    ASSERT_NE(r.informat, nullptr);
    ASSERT_NE(r.category, nullptr);
    ASSERT_NE(r.formatted, nullptr);
    // Character formats, and only they, start with "$"; they are char,
    // binary, or the character forms of date readers.
    if (r.fmtname[0] == '$') {
      const std::string cat = r.category;
      EXPECT_TRUE(cat == "char" || cat == "binary" || cat == "date") << r.fmtname;
    }
  }
}

TEST(FmtTable, RowsByCategory) {
  std::map<std::string, int> count;
  for (const FMTINFOX& r : fmtinfox) ++count[r.category];
  const std::map<std::string, int> expected = {
      {"date", 385}, {"curr", 225}, {"datetime", 120}, {"binary", 89}, {"char", 86},
      {"num", 66},   {"time", 48},  {"smf", 8},        {"stat", 3}};
  EXPECT_EQ(count, expected);
}

const FMTINFOX* firstRow(const char* name) {
  for (const FMTINFOX& r : fmtinfox)
    if (std::strcmp(r.fmtname, name) == 0) return &r;
  return nullptr;
}

TEST(FmtTable, CategoryOfNamesFromEachListAndFamily) {
  struct Case {
    const char* name;
    const char* category;
  };
  const Case cases[] = {
      // language families: eight date stems and the datetime stem
      {"AFRDFDD", "date"}, {"DEUDFDE", "date"}, {"SVEDFWKX", "date"}, {"FRSDFDWN", "date"},
      {"DEUDFDT", "datetime"}, {"SVEDFDT", "datetime"},
      // currency families
      {"EURFRATS", "curr"}, {"EURTOYUD", "curr"}, {"NLMNIAED", "curr"}, {"NLMNLZAR", "curr"},
      {"NLMNIUSD", "curr"}, {"DOLLAR", "curr"}, {"YEN", "curr"}, {"RSTDODN", "curr"},
      // single lists, first and last of each and a few between
      {"$ANYDTIF", "date"}, {"YYWEEKW", "date"}, {"WEEKV", "date"}, {"YYQC", "date"},
      {"ANYDTTME", "time"}, {"TOD", "time"}, {"HHMM", "time"},
      {"ANYDTDTM", "datetime"}, {"YMDDTTM", "datetime"}, {"DTDATE", "datetime"},
      {"BEST", "num"}, {"Z", "num"}, {"F", "num"}, {"D", "num"}, {"E", "num"},
      {"LOGMATUR", "stat"}, {"MATURITY", "stat"}, {"MSEC", "smf"}, {"TU", "smf"},
      {"$ASCII", "binary"}, {"ZDV", "binary"}, {"S370FZDU", "binary"},
      {"$", "char"}, {"$XMLFXHX", "char"}, {"$DOVNAME", "char"}, {"$CHAR", "char"},
  };
  for (const Case& c : cases) {
    const FMTINFOX* r = firstRow(c.name);
    ASSERT_NE(r, nullptr) << c.name;
    EXPECT_STREQ(r->category, c.category) << c.name;
  }
  // Names that aren't formats, or are only close to one.
  for (const char* absent : {"DEUDFXX", "XYZDFDE", "NLMNIXXX", "EURFRUSD", "DTWEEKV", "MONYYX", "date"})
    EXPECT_EQ(firstRow(absent), nullptr) << absent;
}

TEST(FmtTable, RecordedRows) {
  struct Case {
    const char* name;
    int inverse;
    const char* informat;
    const char* category;
    const char* formatted;
  };
  const Case cases[] = {
      {"DATE", 1, " ", "date", "01JAN99"},
      {"DATETIME", 1, " ", "datetime", "10MAR99:12:34:56"},
      {"DTDATE", 4, " ", "datetime", "10MAR99"},
      {"MONYY", 1, " ", "date", "JAN99"},
      {"WEEKV", 1, " ", "date", "2003W0103"},
      {"YYQC", 0, " ", "date", "1999:1"},
      {"HHMM", 3, "TIME", "time", "12:35"},
      {"F", 1, " ", "num", "         123"},
  };
  for (const Case& c : cases) {
    const FMTINFOX* r = firstRow(c.name);
    ASSERT_NE(r, nullptr) << c.name;
    EXPECT_EQ(r->fmttype, 'F') << c.name;
    EXPECT_EQ(r->inverse, c.inverse) << c.name;
    EXPECT_STREQ(r->informat, c.informat) << c.name;
    EXPECT_STREQ(r->category, c.category) << c.name;
    EXPECT_STREQ(r->formatted, c.formatted) << c.name;
  }
  // The separator variants point at the informat of their base.
  EXPECT_STREQ(firstRow("DDMMYYS")->informat, "DDMMYY");
  EXPECT_STREQ(firstRow("MMDDYYN")->informat, "MMDDYY");
  EXPECT_STREQ(firstRow("YYMMDDB")->informat, "YYMMDD");
  EXPECT_STREQ(firstRow("YYMMDD")->informat, " ");
}

// ---------------------------------------------------------------------------

TEST(FmtType, KindsAndEdges) {
  struct Case {
    const char* text;
    int len;  // -1: the whole C string
    int kind;
  };
  const Case cases[] = {
      {"DATE", -1, 8},      {"DATE   ", -1, 8},  {"date", -1, -1},    {"Date", -1, -1},
      {"$CHAR", -1, 0},     {"DOLLAR", -1, 0},   {"BEST", -1, 4},     {"F", -1, 4},
      {"TIME", -1, 9},      {"HHMM", -1, 9},     {"DATETIME", -1, 10}, {"DTYYQC", -1, 10},
      {"MATURITY", -1, 0},  {"TU", -1, 0},       {"$", -1, 0},        {"DAT", -1, -1},
      {"DATEX", -1, -1},    {" DATE", -1, -1},   {"", -1, -1},        {"        ", -1, -1},
      {"DATETIME", 4, 8},   {"DATE\t", -1, -1},  {"DEUDFDT", -1, 10}, {"ANYDTDTE", -1, 8},
      {"NLDATEMDL", -1, 8}, {"NLDATEMDLX", -1, -1},
      {"DATE                                    ", -1, 8},  // longer than any name, blanks only
  };
  for (const Case& c : cases) {
    const int len = c.len < 0 ? static_cast<int>(std::strlen(c.text)) : c.len;
    EXPECT_EQ(zfmttype(c.text, len), c.kind) << '"' << c.text << "\" len " << len;
  }
  EXPECT_EQ(zfmttype(nullptr, 4), -1);
  EXPECT_EQ(zfmttype("DATE", 0), -1);
  EXPECT_EQ(zfmttype("DATE", -3), -1);
}

TEST(FmtType, AgreesWithCategoryOnEveryRow) {
  // An independent walk: the first row of each name by linear search.
  for (const FMTINFOX& r : fmtinfox) {
    const std::string cat = r.category;
    const int want = cat == "num" ? 4 : cat == "date" ? 8 : cat == "time" ? 9 : cat == "datetime" ? 10 : 0;
    EXPECT_EQ(zfmttype(r.fmtname, static_cast<int>(std::strlen(r.fmtname))), want) << r.fmtname;
  }
}

TEST(FmtUnits, ByKind) {
  struct Case {
    const char* text;
    char units;
  };
  const Case cases[] = {{"TIME", 's'},  {"DATETIME", 's'}, {"WEEKV", 'd'}, {"DATE", 'd'},
                        {"BEST", 'o'},  {"COMMA", 'o'},    {"DOLLAR", 0},  {"$CHAR", 0},
                        {"NOSUCH", 0},  {"time", 0},       {"TOD", 's'},   {"DTWKDATX", 's'}};
  for (const Case& c : cases)
    EXPECT_EQ(zfmtunits(c.text, static_cast<int>(std::strlen(c.text))), c.units) << c.text;
  EXPECT_EQ(zfmtunits(nullptr, 3), 0);
}

TEST(FmtCode, RoundTripEveryName) {
  for (std::size_t i = 0; i < fmtinfox.size(); ++i) {
    const FMTINFOX& r = fmtinfox[i];
    const long code = zfmtcode(r.fmtname, static_cast<int>(std::strlen(r.fmtname)));
    // The code names the first row of the name: this row, or the one above.
    const bool first = i == 0 || std::strcmp(fmtinfox[i - 1].fmtname, r.fmtname) != 0;
    EXPECT_EQ(code, static_cast<long>(first ? i + 1 : i)) << r.fmtname;
    ASSERT_NE(zfmtshow(code), nullptr);
    EXPECT_STREQ(zfmtshow(code), r.fmtname);
  }
  EXPECT_EQ(zfmtcode("NOSUCH", 6), 0);
  EXPECT_EQ(zfmtshow(0), nullptr);
  EXPECT_EQ(zfmtshow(-1), nullptr);
  EXPECT_EQ(zfmtshow(1031), nullptr);
}

std::string text(const FMTSTRING& s) { return std::string(s.string, static_cast<std::size_t>(s.string_l)); }

TEST(FmtStr, TemplatesByWidthAndDecimals) {
  struct Case {
    const char* name;
    int len;
    int ndec;
    const char* expected;
  };
  const Case cases[] = {
      {"DATE", 0, 0, "DATE."},       {"BEST", 0, 2, "BEST.2"},   {"DATE", 9, 0, "DATE9."},
      {"BEST", 12, 2, "BEST12.2"},   {"$CHAR", 20, 0, "$CHAR20."}, {"F", 8, 3, "F8.3"},
      {"NLDATEMDL", 32767, 32767, "NLDATEMDL32767.32767"},
  };
  for (const Case& c : cases) {
    FMT f;
    f.code = zfmtcode(c.name, static_cast<int>(std::strlen(c.name)));
    f.len = static_cast<short>(c.len);
    f.ndec = static_cast<short>(c.ndec);
    ASSERT_NE(f.code, 0) << c.name;
    FMTSTRING s;
    zfmtstr(f, &s);
    EXPECT_EQ(text(s), c.expected);
    // The rest of the 40 characters is blank.
    for (int k = s.string_l; k < kFmtStringSize; ++k) EXPECT_EQ(s.string[k], ' ');
    FMTSTRING t;
    zfmtstri(f.code, c.len, c.ndec, &t);
    EXPECT_EQ(text(t), c.expected);
  }
}

TEST(FmtStr, UnknownCodeLeavesEmptyBlankString) {
  FMTSTRING s;
  s.string_l = 7;
  std::memset(s.string, 'x', sizeof s.string);
  zfmtstri(0, 9, 0, &s);
  EXPECT_EQ(s.string_l, 0);
  for (char c : s.string) EXPECT_EQ(c, ' ');
  zfmtstri(99999, 9, 0, nullptr);  // a null string is ignored
}

}  // namespace
}  // namespace qvt
