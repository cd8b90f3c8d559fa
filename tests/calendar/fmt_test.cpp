// The format table and its lookups, and the default formats of intervals.

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;

// Name, width and default width from zintfmt ('t'), zintfmm ('m', of x1),
// zintfmp ('p', of x1 to x2) or zintfmd ('d'). The out fields start from a
// sentinel so that a field left unset shows.
std::string format(char variant, const INTERVAL* i, double x1 = 0, double x2 = 0) {
  char name[16];
  std::memset(name, '#', sizeof name);
  short nl = -1, w1 = -1, w2 = -1;
  switch (variant) {
    case 't': zintfmt(i, name, &nl, &w1, &w2); break;
    case 'm': zintfmm(i, x1, name, &nl, &w1, &w2); break;
    case 'p': zintfmp(i, x1, x2, name, &nl, &w1, &w2); break;
    default: zintfmd(i, name, &nl, &w1, &w2);
  }
  return testing::str(nl >= 0 ? std::string(name, static_cast<std::size_t>(nl)) : "<unset>", w1, w2);
}

TEST(IntFmt, HandWorked) {
  for (const char* op : {"fmt", "fmm", "fmp", "fmd"}) {
    for (const auto& c : testing::handCases(op)) {
      const INTERVAL i = iv(c.s(1));
      const std::size_t k = op[2] == 'm' ? 3 : op[2] == 'p' ? 4 : 2;  // the first field of the result
      EXPECT_EQ(format(op[2], &i, k > 2 ? c.x(2) : 0, k > 3 ? c.x(3) : 0), c.join(k, k + 2)) << c.where();
    }
  }
  // A null interval and code 0 give D in every variant; a custom interval
  // whose calendar gives no format leaves the fields as they were.
  const INTERVAL none{}, custom = testing::customInterval();
  for (const INTERVAL* p : {static_cast<const INTERVAL*>(nullptr), &none, &custom})
    for (char variant : std::string(p == &custom ? "t" : "tmpd"))
      EXPECT_EQ(format(variant, p, 0.0, 7200.0), p == &custom ? "<unset> -1 -1" : "D 9 7") << variant;
}

TEST(FmtLookup, KindsUnitsCodesAndTexts) {
  for (const auto& c : testing::handCases("fmttype"))
    EXPECT_EQ(zfmttype(c.s(1).data(), static_cast<int>(c.s(1).size())), c.i(2)) << c.where();
  EXPECT_EQ(zfmttype("DATETIME", 4), 8);
  EXPECT_EQ(zfmttype("DATE\t", 5), -1);
  EXPECT_EQ(zfmttype(nullptr, 4), -1);
  EXPECT_EQ(zfmttype("DATE", 0), -1);
  EXPECT_EQ(zfmttype("DATE", -3), -1);
  for (const auto& c : testing::handCases("fmtunits")) {
    const char u = zfmtunits(c.s(1).data(), static_cast<int>(c.s(1).size()));
    EXPECT_EQ(u, c.s(2) == "-" ? 0 : c.s(2)[0]) << c.where();
  }
  EXPECT_EQ(zfmtunits(nullptr, 3), 0);
  // Every row: the kind agrees with the category, and the code names the
  // first row of the name (this row or the one above).
  for (std::size_t i = 0; i < fmtinfox.size(); ++i) {
    const FMTINFOX& r = fmtinfox[i];
    const int len = static_cast<int>(std::strlen(r.fmtname));
    const std::string cat = r.category;
    const int kind = cat == "num" ? 4 : cat == "date" ? 8 : cat == "time" ? 9 : cat == "datetime" ? 10 : 0;
    EXPECT_EQ(zfmttype(r.fmtname, len), kind) << r.fmtname;
    const bool first = i == 0 || std::strcmp(fmtinfox[i - 1].fmtname, r.fmtname) != 0;
    const long code = zfmtcode(r.fmtname, len);
    EXPECT_EQ(code, static_cast<long>(first ? i + 1 : i)) << r.fmtname;
    EXPECT_STREQ(zfmtshow(code), r.fmtname);
  }
  EXPECT_EQ(zfmtcode("NOSUCH", 6), 0);
  for (long code : {0L, -1L, 1031L}) EXPECT_EQ(zfmtshow(code), nullptr) << code;
  for (const auto& c : testing::handCases("fmtstr")) {  // texts blank-filled to 40 characters
    const FMT f{static_cast<short>(c.i(2)), static_cast<short>(c.i(3)),
                zfmtcode(c.s(1).data(), static_cast<int>(c.s(1).size()))};
    FMTSTRING s, t;
    zfmtstr(f, &s);
    zfmtstri(f.code, c.i(2), c.i(3), &t);
    EXPECT_EQ(std::string(s.string, kFmtStringSize), c.s(4) + std::string(kFmtStringSize - c.s(4).size(), ' '));
    EXPECT_EQ(std::string(t.string, static_cast<std::size_t>(t.string_l)), c.s(4)) << c.where();
  }
  FMTSTRING s;
  s.string_l = 7;
  std::memset(s.string, 'x', sizeof s.string);
  zfmtstri(0, 9, 0, &s);  // an unknown code leaves an empty, blank string
  EXPECT_EQ(std::string(s.string, kFmtStringSize) + std::to_string(s.string_l), std::string(40, ' ') + "0");
  zfmtstri(99999, 9, 0, nullptr);  // a null string is ignored
}

}  // namespace
}  // namespace qvt
