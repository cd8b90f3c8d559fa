// Data set names as written in programs.
#include "host/dsname.hpp"

#include <gtest/gtest.h>

namespace qvt {
namespace {

TEST(DsName, Split) {
  struct Case {
    const char* text;
    int rc;
    const char* lib;
    const char* member;
    const char* path;
  } cases[] = {
      {"sales", 0, "", "sales", ""},
      {"  Sales ", 0, "", "Sales", ""},
      {"mylib.sales", 0, "MYLIB", "sales", ""},
      {"_a1._b2", 0, "_A1", "_b2", ""},
      {"'data/sales.csv'", 0, "", "", "data/sales.csv"},
      {"\"it's.csv\"", 0, "", "", "it's.csv"},
      {"'it''s.csv'", 0, "", "", "it's.csv"},
      {"'it's.csv'", -1, "", "", ""},
      {"''", -1, "", "", ""},
      {"'open", -1, "", "", ""},
      {"", -1, "", "", ""},
      {"1sales", -1, "", "", ""},
      {"a.b.c", -1, "", "", ""},
      {"toolonglib.x", -1, "", "", ""},  // library names have at most 8 characters
      {"lib.", -1, "", "", ""},
      {"my-data", -1, "", "", ""},
      {"abcdefghijklmnopqrstuvwxyz012345", 0, "", "abcdefghijklmnopqrstuvwxyz012345", ""},
      {"abcdefghijklmnopqrstuvwxyz0123456", -1, "", "", ""},
  };
  for (const auto& c : cases) {
    DsName n;
    ASSERT_EQ(hostNameSplit(c.text, &n), c.rc) << c.text;
    if (c.rc != 0) continue;
    EXPECT_EQ(n.lib, c.lib) << c.text;
    EXPECT_EQ(n.member, c.member) << c.text;
    EXPECT_EQ(n.path, c.path) << c.text;
    EXPECT_EQ(n.quoted, *c.path != 0) << c.text;
  }
}

TEST(DsName, CaseRules) {
  EXPECT_TRUE(equalsNoCase("Sales", "sALES"));
  EXPECT_FALSE(equalsNoCase("Sales", "Sale"));
  EXPECT_FALSE(equalsNoCase("caf\xC3\xA9", "CAF\xC3\x89"));  // ASCII folding only
  EXPECT_EQ(upperAscii("a1_b"), "A1_B");
}

}  // namespace
}  // namespace qvt
