// Which catalogue numbers a code selects, with and without names.
#include <gtest/gtest.h>

#include <vector>

#include "intermittent/idseries.hpp"

namespace qvt {
namespace {

struct RecordingHost : Host {
  std::vector<std::pair<int, std::string>> msgs;  // number, the name argument or ""
  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos*) override {
    EXPECT_EQ(group, 881);
    msgs.emplace_back(number, args.empty() ? "" : std::get<std::string>(args[0]));
  }
};

TEST(Idsmsg, NumbersAndNames) {
  const IDSERIES ids;
  const u_sname tid("DATE"), var("SALES"), empty("");
  using Msgs = std::vector<std::pair<int, std::string>>;
  const struct {
    int rc;
    const u_sname* timeid;
    const u_sname* var;
    int result;
    Msgs want;
  } cases[] = {
      {5, &tid, &var, 0, {}},
      {2, &tid, &var, 0, {}},
      {-1, &tid, &var, 0, {{8101, "SALES"}, {8093, "SALES"}}},
      {-10, &tid, &var, 0, {{8103, "DATE"}, {8093, "SALES"}}},
      {-11, &tid, nullptr, 0, {{8105, "DATE"}, {8092, ""}}},
      {-11, &empty, &var, 0, {{8104, ""}, {8093, "SALES"}}},
      {-20, nullptr, &empty, 0, {{8106, ""}, {8092, ""}}},
      {-21, &tid, &var, 0, {{8109, "SALES"}, {8093, "SALES"}}},
      {-22, &tid, &var, 0, {{8111, "SALES"}, {8093, "SALES"}}},
      {-23, &tid, &var, 0, {{8113, "SALES"}, {8093, "SALES"}}},
      {-24, &tid, &var, 0, {{8115, "SALES"}, {8093, "SALES"}}},
      {-30, &tid, nullptr, 0, {{8116, ""}, {8092, ""}}},
      {-99, &tid, &var, 99, {{8091, "SALES"}}},
      {-12, &tid, nullptr, 99, {{8090, ""}}},
  };
  for (const auto& c : cases) {
    RecordingHost h;
    EXPECT_EQ(idsmsg(h, &ids, c.rc, c.timeid, c.var), c.result) << c.rc;
    EXPECT_EQ(h.msgs, c.want) << c.rc;
  }
  RecordingHost h;
  EXPECT_EQ(idsmsg(h, nullptr, -1, &tid, &var), kIdsBadArg);
  EXPECT_TRUE(h.msgs.empty());
}

}  // namespace
}  // namespace qvt
