#include <gtest/gtest.h>

#include "recording_host.hpp"
#include "statements/grammar.hpp"
#include "statements/parser.hpp"
#include "statements/stmt_json.hpp"

namespace qvt {
namespace {

TEST(GrammarSmoke, BuildsWithoutConflicts) {
  const Grammar& g = stmtGrammar();
  for (const auto& c : g.conflicts) ADD_FAILURE() << c;
  EXPECT_TRUE(g.conflicts.empty());
}

TEST(ParserSmoke, Quickstart) {
  testing::RecordingHost h;
  PROCSTR p;
  xsparseText("qvt data='data/co2.csv' out=co2_out lead=24;\n id date interval=month accumulate=average;\n forecast co2 / model=simple;\nrun;",
              SourcePos{"q.qvt", 1, 1}, h, p);
  for (std::size_t k = 0; k < h.msgs.size(); ++k) ADD_FAILURE() << h.text(k);
  std::cout << stmtJsonText(p) << "\n";
}

}  // namespace
}  // namespace qvt
