// Custom intervals: calendars given as rows, registered by the option text,
// loaded through an in-memory loader, counted and stepped on.
#include <map>

#include "calendar/zcust.hpp"
#include "calendar_fixture.hpp"

namespace qvt {
namespace {

const double M = skMissVal('M'), I = skMissVal('I'), inf = std::numeric_limits<double>::infinity();

struct Rows {
  std::vector<double> begin, end, seas;
  std::string fmt;
  short w = -1;
};

// FISC: five rows with END and a hole 14..19; OPEN: BEGIN only; FIVE: five
// contiguous rows with END; BIG: datetime values, no format; OVER: a row
// whose END reaches into the next; SHUF: BEGINs out of order.
struct Calendars {
  CINTC_MGR mgr;
  int loads = 0;
  std::map<std::string, Rows> sets{
      {"A", {{0, 7, 20, 27, 34}, {6, 13, 26, 33, 40}, {1, 2, 3, 1, 2}, "DATE"}},
      {"B", {{100, 103, 110, 111, 130}, {}, {}, "DATE", 11}},
      {"FIVE", {{0, 10, 20, 30, 40}, {9, 19, 29, 39, 49}, {}, ""}},
      {"BIG", {{0, 86400 * 7.0}, {}, {}, ""}},
      {"STAMP", {{0, 10}, {}, {}, "DATETIME"}},
      {"EMPTY", {}},
      {"OVER", {{0, 10, 20}, {15, 25, 29}, {}, "DATE"}},
      {"SHUF", {{0, 30, 10, 20}, {}, {}, "DATE"}},
  };
  Calendars() {
    zcintcInit(&mgr, "fisc=work.a open=b five=five big=big stamp=stamp empty=empty bad=bad over=over shuf=shuf",
               [this](const CUSTOMINTERVAL& ds, CINTC_INFO* into) {
                 ++loads;
                 auto it = sets.find(ds.member);
                 if (it == sets.end()) return -7;
                 const Rows& r = it->second;
                 into->beginBuffer = r.begin;
                 into->endBuffer = r.end;
                 into->seasBuffer = r.seas;
                 into->flags = (r.end.empty() ? 0 : kCintcHasEnd) | (r.seas.empty() ? 0 : kCintcHasSeason);
                 into->fmt = r.fmt;
                 into->fmt_w = r.w;
                 return 0;
               });
  }
  INTERVALX x(const std::string& token) {
    INTERVAL i;
    EXPECT_EQ(zintstr(token.c_str(), -1, &i, &mgr), 0) << token;
    return zintwiden(i);
  }
};

// The intervals of a calendar by the written rules, built interval-first:
// rows (with END, else to the next BEGIN less 1, the last open; a closed
// last row is followed by an open one) grouped m at a time behind the s
// rows in front. Open ends are infinities; [0] is the part in front.
std::vector<std::pair<double, double>> oracle(const Rows& r, int m, int s) {
  std::vector<std::pair<double, double>> row;
  for (std::size_t i = 0; i < r.begin.size(); ++i)
    row.push_back({r.begin[i], !r.end.empty()             ? r.end[i]
                               : i + 1 < r.begin.size() ? r.begin[i + 1] - 1
                                                        : inf});
  if (row.back().second < inf) row.push_back({row.back().second + 1, inf});
  std::vector<std::pair<double, double>> out{{-inf, s < int(row.size()) ? row[s].first - 1 : inf}};
  for (std::size_t f = s; f < row.size(); f += m)
    out.push_back({row[f].first, row[std::min(f + m, row.size()) - 1].second});
  return out;
}
double open(double v) { return missCode(v) == 'M' ? -inf : missCode(v) == 'I' ? inf : v; }

TEST(Custom, StepsAndCountsAgainstTheRows) {
  Calendars c;
  for (const char* name : {"FISC", "OPEN"}) {
    const Rows& rows = c.sets[name == std::string("FISC") ? "A" : "B"];
    for (auto [m, s] : {std::pair{1, 0}, {2, 0}, {2, 1}, {3, 2}}) {
      const std::string token = name + std::to_string(m) + "." + std::to_string(s + 1);
      const INTERVALX x = c.x(token);
      const auto ivs = oracle(rows, m, s);
      for (double d = rows.begin[0] - 5; d <= rows.begin.back() + 15; ++d) {
        long k = -1;
        for (std::size_t j = 0; j < ivs.size(); ++j)
          if (ivs[j].first <= d && d <= ivs[j].second) k = long(j);
        const bool hole = name == std::string("FISC") && d >= 14 && d <= 19;
        SCOPED_TRACE(token + " at " + std::to_string(d));
        double n, b, e, sea;
        ASSERT_EQ(findIndexC(x, d, &n, &b, &e, &sea) == 0, !hole);
        EXPECT_EQ(wzmis(zintck2(x, 0, d)), hole);
        if (hole) continue;
        EXPECT_EQ(n, double(k));
        EXPECT_EQ(wzmis(customINTINDEX(x, d, 0)), m > 1 || k == 0 || std::size_t(k) > rows.seas.size());
        for (long step = -2; step <= 2; ++step) {
          const bool inside = k + step >= 0 && std::size_t(k + step) < ivs.size();
          const double b1 = zintnx2(x, d, double(step)), e1 = customINTNXE(x, d, double(step));
          const auto want = inside ? ivs[k + step] : std::pair{kMissing, kMissing};
          EXPECT_EQ(testing::str(open(b1), open(e1)), testing::str(want.first, want.second)) << step;
        }
        const double k0 = n;
        ASSERT_EQ(findIndexC(x, rows.begin[2], &n, &b, &e, &sea), 0);
        EXPECT_EQ(zintck2(x, rows.begin[2], d), k0 - n);
      }
    }
  }
}

TEST(Custom, HandWorkedRows) {
  Calendars c;
  const INTERVALX fisc = c.x("Fisc"), open1 = c.x("OPEN"), five2 = c.x("FIVE2."), over = c.x("OVER"),
                  shuf = c.x("SHUF");
  struct Row { const INTERVALX* x; double d, n, b, e; };
  const Row rows[] = {
      {&open1, 500, 0, 130, I},  // BEGIN only: the last row takes every later date
      {&fisc, 41, 0, 41, I},    // behind a closed last row: one open interval
      {&fisc, M, 0, M, -1},  {&fisc, skMissVal('F'), 0, 0, 6}, {&fisc, skMissVal('L'), 0, 34, 40},
      {&fisc, I, 0, 41, I},  {&fisc, I, -1, 34, 40},
      {&five2, 5, 0, 0, 19},  {&five2, 25, 0, 20, 39}, {&five2, 45, 0, 40, I}, {&five2, 45, -3, M, -1},
      {&five2, 45, -4, kMissing, kMissing}, {&fisc, I, 1, kMissing, kMissing},
      {&fisc, skMissVal('A'), 0, kMissing, kMissing}, {&fisc, M, 2, 7, 13},
      // Where rows overlap or stand out of order the first row holding the
      // date is its interval, not the last one beginning before it.
      {&over, 12, 0, 0, 15}, {&over, 17, 0, 10, 25}, {&shuf, 25, 0, 0, 29}, {&shuf, 35, 0, 20, I},
  };
  for (const Row& r : rows) {
    double b, e, s;
    customINTNXBES(*r.x, r.d, r.n, &b, &e, &s);
    EXPECT_EQ(testing::str(open(b), open(e)), testing::str(open(r.b), open(r.e))) << r.d << " by " << r.n;
  }
  // CAL2 on five rows: numbers 1, 2, 3, the third is the last row alone.
  EXPECT_EQ(testing::str(zintck2(five2, 0, 5), zintck2(five2, 0, 25), zintck2(five2, 0, 45)), "0 1 2");
  double n, b, e, s;
  EXPECT_EQ(findIndexC(five2, 45, &n, &b, &e, &s), 0);
  EXPECT_EQ(n, 3);
  EXPECT_EQ(getIndexC(five2, 5, &b, &e, &s), -4);
  // A shift must stay below the multiplier.
  INTERVAL bad;
  EXPECT_EQ(zintstr("FIVE.2", -1, &bad, &c.mgr), 2);
  INTERVALX hand = five2;
  ASSERT_EQ(zcustLoad(hand, &hand.cinfo), 0);
  hand.shiftper = 2;
  EXPECT_EQ(findIndexC(hand, 5, &n, &b, &e, &s), -2);
  zcintcReleaseRef(hand.cinfo);
  EXPECT_TRUE(wzmis(n) && wzmis(b) && wzmis(e));
  // Alignments: the middle of an open interval can't be given.
  EXPECT_TRUE(wzmis(zintnx3(fisc, -3, 0, "M", nullptr)));
  EXPECT_TRUE(wzmis(zintnx3(open1, 135, 0, "M", nullptr)));
  EXPECT_EQ(zintnx3(fisc, 8, 0, "M", nullptr), 10);
  EXPECT_EQ(zintnx3(fisc, 8, 1, "E", nullptr), 26);
  INTERVAL unit;  // the shift units of a calendar are the calendar itself
  ASSERT_EQ(zintshft(five2, &unit), 0);
  EXPECT_EQ(testing::str(testing::tokenOf(unit), int(unit.intcode)), "FIVE 65");
}

TEST(Custom, RegistryOptionsAndLoading) {
  Calendars c;
  ASSERT_EQ(c.mgr.maps.size(), 9u);
  EXPECT_EQ(testing::str(c.mgr.maps[0].interval, c.mgr.maps[0].lib, c.mgr.maps[0].member), "FISC WORK A");
  EXPECT_EQ(c.mgr.maps[1].lib, "");
  CUSTOMINTERVAL t[30];
  int n = 30;
  std::string many;
  for (int i = 0; i < 25; ++i) many += "c" + std::to_string(i) + "=l.m ";
  parseIntervalOptions(many, t, &n);
  EXPECT_EQ(n, 20);
  n = 30;
  parseIntervalOptions("((a = x.y)),,b=z c=", t, &n);  // "c" has no data set: the list ends
  EXPECT_EQ(testing::str(n, t[0].interval, t[0].lib, t[0].member, t[1].interval, t[1].member), "2 A X Y B Z");
  CINTC_MGR other;
  for (const char* text : {"a=x.y b", "a=x.y b=lib. c=d"}) {  // no data set; an empty member
    EXPECT_EQ(zcintcInit(&other, text, nullptr), 1) << text;
    EXPECT_EQ(other.maps.size(), 1u);
  }
  // CAL, CAL1. and CAL1.1 name the same pair with multiplier 1.
  int m = 0, sh = 0;
  for (auto [tok, want] :
       {std::pair{"five", "1 0"}, {"FIVE1.", "1 0"}, {"five.1", "1 0"}, {"FIVE3.2", "3 1"}}) {
    const std::string member = getCustomIntervalDSRef(c.x(tok), &m, &sh).member;
    EXPECT_EQ(testing::str(member, m, sh), "FIVE " + std::string(want)) << tok;
  }
  // Names, units by format or range, failures; a calendar is loaded once.
  INTERVAL i;
  EXPECT_EQ(zintstr("FISC", -1, &i), 103);
  EXPECT_EQ(zintstr("NOPE", -1, &i, &c.mgr), 103);
  EXPECT_EQ(zintstr("BAD", -1, &i, &c.mgr), -1);
  EXPECT_EQ(zintstr("EMPTY", -1, &i, &c.mgr), -1);
  const std::string units = {c.x("FISC").units, c.x("STAMP").units, c.x("BIG").units, c.x("OPEN2").units};
  EXPECT_EQ(units, "dssd");
  EXPECT_EQ(c.x("FISC").custom, &c.mgr);
  const int before = c.loads;
  c.x("FISC2.2");
  EXPECT_EQ(c.loads, before);
}

TEST(Custom, FormatsSeasonsAndPositions) {
  Calendars c;
  struct Fmt { const char* token; const char* want; };
  for (const Fmt& f : {Fmt{"FISC", "DATE 7 7"}, {"OPEN3", "DATE 11 11"}, {"FIVE", "DATE 9 7"},
                       {"BIG", "DATETIME 16 16"}}) {
    char name[16] = {};
    short len = 0, w1 = 0, w2 = 0;
    const INTERVAL i = c.x(f.token);
    zintfmt(&i, name, &len, &w1, &w2);
    EXPECT_EQ(testing::str(std::string(name, std::size_t(len)), w1, w2), f.want) << f.token;
  }
  EXPECT_EQ(customINTSEAS(c.x("FISC")), 3);
  EXPECT_TRUE(wzmis(customINTSEAS(c.x("FISC2"))));
  for (auto [token, want] : {std::pair{"FISC", "FISC3 3 1"}, {"FIVE", "FIVE 1 1"}}) {
    INTERVAL cyc;
    int ns = 0;
    const INTERVAL in = c.x(token);
    ASSERT_EQ(zintsea(&in, 0, &cyc, &ns), 0);
    EXPECT_EQ(testing::str(testing::tokenOf(cyc), ns, cyc.custom == &c.mgr), want);
  }
  // Positions: interval numbers 1, 2, 2, 4 from the least.
  const INTERVALX w = c.x("FISC");
  struct Tip { std::vector<double> tid; int rc; std::vector<long> pos; };
  const Tip tips[] = {{{0, 8, 8, 27}, 2, {0, 1, 1, 3}}, {{27, 0}, 3, {3, 0}}, {{0, 27}, 1, {0, 3}},
                      {{0, 15}, -5, {}}, {{0, kMissing}, -1, {}}, {{-3, 0}, -2, {}}, {{34, 50}, -2, {}}};
  for (const Tip& t : tips) {
    std::vector<long> pos(t.tid.size(), -9);
    long maxpos = -1;
    EXPECT_EQ(zinttip(w, "B", t.tid.data(), long(t.tid.size()), kMissing, 0, pos.data(), &maxpos,
                      nullptr, nullptr), t.rc);
    if (t.rc > 0) {
      EXPECT_EQ(pos, t.pos);
    }
  }
  // zintctidL itself: an end alignment written out, the open ends reported.
  std::vector<double> tid{-3, 8, 50}, al(3);
  std::vector<long> ts(3);
  std::vector<int> byObs(3);
  int infinity = -1, order = -1;
  double back = 0, lead = 0;
  ZTS_OBSDATES od{kMissing, w, tid.data(), 3};
  ZTS_CTIDOUT out{nullptr, ts.data(), byObs.data(), &infinity, &order, &back, &lead};
  ASSERT_EQ(zintctidL(&od, al.data(), "E", &out), 0);
  EXPECT_EQ(testing::str(al[0], al[1], missCode(al[2]), ts[0], ts[1], ts[2]), "-1 13 I 0 2 6");
  EXPECT_EQ(testing::str(byObs[0], byObs[1], byObs[2], infinity, order, back, lead), "1 0 4 5 0 1 1");
  od.nobs = 0;
  EXPECT_EQ(zintctidL(&od, nullptr, "B", &out), 32768);
  od.nobs = 3;
  od.interval = testing::ivx("MONTH");
  EXPECT_EQ(zintctidL(&od, nullptr, "B", &out), -1);
}

}  // namespace
}  // namespace qvt
