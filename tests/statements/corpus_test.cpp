// The corpus of bad programs: each file's first line names the message
// numbers (group 129) that the program must give, no more and no fewer.

#include <filesystem>
#include <fstream>

#include "support.hpp"

namespace qvt {
namespace {

namespace fs = std::filesystem;

std::set<int> expectedNumbers(const std::string& firstLine) {
  std::set<int> out;
  const auto at = firstLine.find("expect:");
  if (at == std::string::npos) return out;
  std::stringstream ss(firstLine.substr(at + 7));
  int n = 0;
  while (ss >> n) out.insert(n);
  return out;
}

TEST(Corpus, EveryProgramGivesItsMessages) {
  const fs::path dir = fs::path(QVT_SOURCE_DIR) / "tests" / "statements" / "corpus";
  int files = 0;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path().extension() != ".qvt") continue;
    ++files;
    SCOPED_TRACE(entry.path().filename().string());
    std::ifstream in(entry.path(), std::ios::binary);
    std::stringstream buf;
    buf << in.rdbuf();
    const std::string text = buf.str();
    const std::string firstLine = text.substr(0, text.find('\n'));
    ASSERT_NE(firstLine.find("expect:"), std::string::npos) << "the first line must name the expected messages";
    const std::set<int> want = expectedNumbers(firstLine);

    testing::RecordingHost h;
    Program prog;
    scanProgram(text, SourcePos{entry.path().filename().string(), 1, 1}, h, prog);
    const auto steps = splitSteps(prog, h);
    bool anyStepUnusable = false;
    for (const auto& st : steps) {
      PROCSTR p;
      anyStepUnusable |= xsparse(prog, st, h, p) != 0;
    }
    std::set<int> got;
    bool anyError = false;
    for (std::size_t k = 0; k < h.msgs.size(); ++k) {
      got.insert(h.msgs[k].number);
      const auto* row = catalogFind(h.msgs[k].group, h.msgs[k].number);
      ASSERT_NE(row, nullptr) << h.msgs[k].number;
      anyError |= row->severity == Severity::Error;
      EXPECT_TRUE(h.msgs[k].hasPos) << "every message names its place";
    }
    EXPECT_EQ(got, want);
    // An error always leaves a step unusable, unless there is no step at all or
    // the error stands outside every step.
    if (anyError && !steps.empty() && !want.count(12)) {
      EXPECT_TRUE(anyStepUnusable);
    }
    if (!anyError) {
      EXPECT_FALSE(anyStepUnusable);
    }
  }
  EXPECT_GE(files, 15);
}

}  // namespace
}  // namespace qvt
