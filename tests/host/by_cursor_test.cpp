// BY groups over an in-memory reader, and through the host on a CSV file.
#include "host/by_cursor.hpp"

#include "host/host_msgs.hpp"
#include "host_test_util.hpp"

namespace qvt {
namespace {

// Records of one numeric variable "k", one character variable "c", and "v",
// the record number.
class VecReader final : public DsReader {
 public:
  struct Rec {
    double k;
    std::string c = "";
  };
  explicit VecReader(std::vector<Rec> recs) : recs_(std::move(recs)) {}
  const std::vector<VarInfo>& vars() const override { return vars_; }
  long long nobs() const override { return static_cast<long long>(recs_.size()); }
  const std::string& label() const override { return label_; }
  int next(DsRow& row, DsDiag&) override {
    if (i_ == recs_.size()) return 0;
    row.resize(3);
    row.num[0] = recs_[i_].k;
    row.text[1] = recs_[i_].c;
    row.num[2] = static_cast<double>(++i_);
    return 1;
  }

 private:
  std::vector<Rec> recs_;
  std::vector<VarInfo> vars_{testing::numVar("k"), {"c", "", VarType::Character, 8, ""},
                             testing::numVar("v")};
  std::string label_;
  std::size_t i_ = 0;
};

// The groups as lists of v, or the failing result and message.
struct Outcome {
  std::vector<std::vector<double>> groups;
  int error = 0;
  DsDiag diag;
};

Outcome run(std::vector<VecReader::Rec> recs, std::vector<ByVar> by, bool notsorted,
            std::size_t readPerGroup = 1000) {
  VecReader rd(std::move(recs));
  ByCursor cur(rd, "WORK.T");
  Outcome o;
  if (cur.setBy(by, notsorted, o.diag) != 0) {
    o.error = kHostBadArgument;
    return o;
  }
  int g = 0;
  while ((g = cur.nextGroup(o.diag)) > 0) {
    o.groups.emplace_back();
    int r = 0;
    for (std::size_t n = 0; n < readPerGroup && (r = cur.nextRecord(o.diag)) > 0; ++n) {
      o.groups.back().push_back(cur.current().num[2]);
      EXPECT_EQ(cur.currentObs(), static_cast<long long>(cur.current().num[2]));  // v is the record number
    }
    if (r < 0) {
      o.error = r;
      return o;
    }
  }
  o.error = g;  // 0 after the last group
  return o;
}

using G = std::vector<std::vector<double>>;

TEST(ByCursor, GroupsOfSortedData) {
  struct Case {
    const char* name;
    std::vector<VecReader::Rec> recs;
    G groups;  // of record numbers
    int error = 0;
    std::vector<ByVar> by = {{1, false}};
    bool notsorted = false;
  };
  const double A = skMissVal('A');
  const Case cases[] = {
      {"no BY: one group", {{2, "x"}, {1, "y"}}, {{1, 2}}, 0, {}},
      {"no BY, no records: one empty group", {}, {{}}, 0, {}},
      {"BY, no records: no group", {}, {}},
      {"ascending", {{1}, {1}, {2}, {5}}, {{1, 2}, {3}, {4}}},
      {"missing values first", {{kMissing}, {A}, {-1e300}}, {{1}, {2}, {3}}},
      {"._ before . before .A", {{skMissVal('_')}, {kMissing}, {A}}, {{1}, {2}, {3}}},
      {"minus zero equals zero", {{-0.0}, {0.0}}, {{1, 2}}},
      {"descending", {{3}, {2}, {2}, {kMissing}}, {{1}, {2, 3}, {4}}, 0, {{1, true}}},
      {"text, trailing blanks ignored", {{0, "a"}, {0, "a  "}, {0, "b"}}, {{1, 2}, {3}}, 0, {{2, false}}},
      {"two variables, second descending", {{1, "b"}, {1, "a"}, {2, "z"}, {2, "a"}}, {{1}, {2}, {3}, {4}}, 0,
       {{1, false}, {2, true}}},
      {"out of order", {{1}, {3}, {2}}, {{1}, {2}}, kHostByOrder},
      {"notsorted: runs of equal values", {{2}, {2}, {1}, {2}}, {{1, 2}, {3}, {4}}, 0, {{1, false}}, true},
      {"bad variable number", {{1}}, {}, kHostBadArgument, {{4, false}}},
  };
  for (const Case& c : cases) {
    const Outcome o = run(c.recs, c.by, c.notsorted);
    EXPECT_EQ(o.groups, c.groups) << c.name;
    EXPECT_EQ(o.error, c.error) << c.name;
  }
}

TEST(ByCursor, OutOfOrderMessageNamesVariableAndRecords) {
  const Outcome o = run({{1}, {3}, {2}}, {{1, false}}, false);
  ASSERT_EQ(o.error, kHostByOrder);
  EXPECT_EQ(o.diag.number, kMsgByOrder);
  using S = std::string;
  // The data set, the order, the variable, the record out of order and its
  // value, the record it follows and its value.
  EXPECT_EQ(o.diag.args, (std::vector<MsgArg>{S("WORK.T"), S("ascending"), S("k"), 3LL, S("2"), 2LL, S("3")}));
}

TEST(ByCursor, UnreadRecordsOfAGroupAreSkipped) {
  const Outcome o = run({{1}, {1}, {1}, {2}, {2}}, {{1, false}}, false, 1);
  EXPECT_EQ(o.groups, (G{{1}, {4}}));
  // A record out of order inside the skipped part is still found.
  const Outcome bad = run({{1}, {1}, {0}}, {{1, false}}, false, 1);
  EXPECT_EQ(bad.error, kHostByOrder);
}

// Through the host: a record out of order ends the step with rc 1012 and
// the message, and discards the output; on sorted data one output row per
// group, the BY value copied by varPutCv.
TEST(ByThroughHost, SumsPerGroupAndOrderError) {
  testing::HostFixture f;
  ProcessHost& h = *f.host;
  std::vector<double> seen;
  const auto step = [&] {
    DsHandle in, out;
    ASSERT_EQ(h.dsOpen("lib.t", DsMode::Input, &in), 0);
    const ByVar by[] = {{h.varFind(in, "region"), false}};
    ASSERT_EQ(h.bySet(in, by, false), 0);
    double x = 0, sum = 0;
    ASSERT_EQ(h.varGetD(in, 2, &x), 0);
    ASSERT_EQ(h.dsOpen("lib.sums", DsMode::Output, &out), 0);
    const int byvars[] = {1};
    ASSERT_EQ(h.varPutCv(out, in, byvars), 0);
    ASSERT_EQ(h.varPutD(out, testing::numVar("sum"), &sum), 0);
    ASSERT_EQ(h.varPutE(out), 0);
    while (hostByNext(h, in) == 1) {
      sum = 0;
      while (hostByGet(h, in) == 1) {
        h.rowGet(in);
        sum += x;
        seen.push_back(x);
      }
      h.rowPut(out);  // after the group's end: the BY value is still the group's
      h.dsAdd(out);
    }
  };
  f.dir.write("t.csv", "region,x\nEast,1\nEast,2\nWest,3\nNorth,4\n");
  EXPECT_EQ(hostRunStep(h, [&] {
              step();
              hostExit(h, 0);
            }),
            1012);
  EXPECT_EQ(seen, (std::vector<double>{1, 2, 3}));
  const auto lines = testing::jsonLines(f.log.str());
  ASSERT_GE(lines.size(), 1u);
  EXPECT_EQ(lines[0].at("number"), 50);
  EXPECT_EQ(lines[0].at("args")[4], "'North'");
  EXPECT_FALSE(f.dir.exists("sums.csv"));  // rc 1012 discards the output

  f.dir.write("t.csv", "region,x\nEast,1\nEast,2\nWest,3\n");
  EXPECT_EQ(hostRunStep(h, step), 0);
  EXPECT_EQ(f.dir.read("sums.csv"), "region,sum\nEast,3\nWest,3\n");
}

}  // namespace
}  // namespace qvt
