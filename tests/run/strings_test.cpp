#include "run/strings.hpp"

#include <gtest/gtest.h>

namespace qvt {
namespace {

TEST(Strings, VzmpPadsAndClips) {
  char to[6];
  vzmp("abc", 3, to, 6);
  EXPECT_EQ(std::string(to, 6), "abc   ");
  vzmp("abcdefgh", 8, to, 6);
  EXPECT_EQ(std::string(to, 6), "abcdef");
  vzmp("x", 0, to, 6);
  EXPECT_EQ(std::string(to, 6), "      ");
}

TEST(Strings, NameKeepsLengthAndClipsAt32) {
  u_sname n("sales");
  EXPECT_EQ(n.len, 5);
  EXPECT_EQ(n.view(), "sales");
  EXPECT_EQ(n.text[31], ' ');
  u_sname longname(std::string(40, 'x'));
  EXPECT_EQ(longname.len, 32);
}

}  // namespace
}  // namespace qvt
