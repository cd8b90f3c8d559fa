// The format table and its lookups, and the default formats of intervals.

#include "calendar_fixture.hpp"

namespace qvt {
namespace {

using testing::iv;

// The out fields start from a sentinel so that a field left unset shows.
template <class F>
std::string run(F&& f) {
  char name[16];
  std::memset(name, '#', sizeof name);
  short nl = -1, w1 = -1, w2 = -1;
  f(name, &nl, &w1, &w2);
  const std::string n = nl >= 0 ? std::string(name, static_cast<std::size_t>(nl)) : "<unset>";
  return n + "," + std::to_string(w1) + "," + std::to_string(w2);
}

TEST(IntFmt, HandWorked) {
  for (const char* op : {"fmt", "fmm", "fmp", "fmd"}) {
    for (const auto& c : testing::handCases(op)) {
      const INTERVAL i = iv(c.s(1));
      const std::size_t k = op == std::string("fmm") ? 3 : op == std::string("fmp") ? 4 : 2;
      const std::string got = run([&](char* n, short* l, short* a, short* b) {
        switch (op[2]) {
          case 't': return zintfmt(&i, n, l, a, b);
          case 'm': return zintfmm(&i, c.x(2), n, l, a, b);
          case 'p': return zintfmp(&i, c.x(2), c.x(3), n, l, a, b);
          default: return zintfmd(&i, n, l, a, b);
        }
      });
      EXPECT_EQ(got, c.s(k) + "," + c.s(k + 1) + "," + c.s(k + 2)) << c.where();
    }
  }
  // A null interval and code 0 give D in every variant; a custom interval
  // whose calendar gives no format leaves the fields as they were.
  const INTERVAL none{}, custom = testing::customInterval();
  for (const INTERVAL* p : {static_cast<const INTERVAL*>(nullptr), &none, &custom}) {
    const std::string want = p == &custom ? "<unset>,-1,-1" : "D,9,7";
    EXPECT_EQ(run([&](char* n, short* l, short* a, short* b) { zintfmt(p, n, l, a, b); }), want);
    if (p == &custom) continue;
    EXPECT_EQ(run([&](char* n, short* l, short* a, short* b) { zintfmm(p, 0.0, n, l, a, b); }), want);
    EXPECT_EQ(run([&](char* n, short* l, short* a, short* b) { zintfmp(p, 0.0, 7200.0, n, l, a, b); }), want);
    EXPECT_EQ(run([&](char* n, short* l, short* a, short* b) { zintfmd(p, n, l, a, b); }), want);
  }
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
    ASSERT_NE(zfmtshow(code), nullptr);
    EXPECT_STREQ(zfmtshow(code), r.fmtname);
  }
  EXPECT_EQ(zfmtcode("NOSUCH", 6), 0);
  for (long code : {0L, -1L, 1031L}) EXPECT_EQ(zfmtshow(code), nullptr) << code;
  for (const auto& c : testing::handCases("fmtstr")) {  // texts blank-filled to 40 characters
    FMT f;
    f.code = zfmtcode(c.s(1).data(), static_cast<int>(c.s(1).size()));
    f.len = static_cast<short>(c.i(2));
    f.ndec = static_cast<short>(c.i(3));
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
