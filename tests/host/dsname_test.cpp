// Data set names as written in programs, against the table dsname.txt.
#include "host/dsname.hpp"

#include "host_test_util.hpp"

namespace qvt {
namespace {

TEST(DsName, Split) {
  const auto rows = testing::loadCases("dsname.txt");
  ASSERT_GT(rows.size(), 10u);
  for (const auto& r : rows) {
    SCOPED_TRACE(r.back() + ": [" + r[0] + "]");
    DsName n;
    ASSERT_EQ(hostNameSplit(r[0], &n), std::stoi(r[1]));
    if (r[1] != "0") continue;
    EXPECT_EQ(n.lib, r[2]);
    EXPECT_EQ(n.member, r[3]);
    EXPECT_EQ(n.path, r[4]);
    EXPECT_EQ(n.quoted, !r[4].empty());
  }
  EXPECT_TRUE(equalsNoCase("Sales", "sALES"));
  EXPECT_FALSE(equalsNoCase("Sales", "Sale"));
  EXPECT_FALSE(equalsNoCase("caf\xC3\xA9", "CAF\xC3\x89"));  // ASCII folding only
  EXPECT_EQ(upperAscii("a1_b"), "A1_B");
}

}  // namespace
}  // namespace qvt
