#include <gtest/gtest.h>

#include "statements/grammar.hpp"

namespace qvt {
namespace {

TEST(GrammarSmoke, BuildsWithoutConflicts) {
  const Grammar& g = stmtGrammar();
  for (const auto& c : g.conflicts) ADD_FAILURE() << c;
  EXPECT_TRUE(g.conflicts.empty());
}

}  // namespace
}  // namespace qvt
