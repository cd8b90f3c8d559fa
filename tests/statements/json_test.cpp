// The JSON rendering: statements that mean the same render the same, and
// statements that differ render differently.

#include "recording_host.hpp"

namespace qvt {
namespace {

nlohmann::json render(const std::string& text) {
  testing::RecordingHost h;
  PROCSTR p;
  xsparseText(text, SourcePos{}, h, p);
  EXPECT_EQ(p.error, 0) << text;
  return stmtJson(p);
}

TEST(StmtJson, SameMeaningSameJson) {
  // Spellings of one code are checked field by field in the option tests.
  const std::pair<const char*, const char*> same[] = {
      {"qvt; forecast x / model=simple criterion=mape;", "qvt; forecast x / model=simple select=mape;"},
      {"qvt; id t interval=month align=B;", "qvt; id t interval=month align=BEGINNING;"},
      {"qvt; idm size=(levelrest=(0.1 0.9));", "qvt; idm size=(levelrest=(0.1, 0.9));"},
      {"qvt print=none;", "qvt;"},
      {"qvt plot=none;", "qvt;"},
      {"qvt lead=5; /* a comment */", "QVT\n  LEAD = 5 ;"},
      {"qvt plot=spectrum(adjmean=yes);", "qvt plot=spectrum(center=yes);"},
  };
  for (auto [a, b] : same) EXPECT_EQ(render(a), render(b)) << a << "\n" << b;
}

TEST(StmtJson, DifferentMeaningDifferentJson) {
  const std::pair<const char*, const char*> differ[] = {
      {"qvt; forecast x / criterion=mape;", "qvt; forecast x / criterion=mae;"},
      {"qvt; id t interval=month align=b;", "qvt; id t interval=month align=e;"},
      {"qvt; idm size=(levelrest=(0.1 0.9));", "qvt; idm interval=(levelrest=(0.1 0.9));"},
      {"qvt print=all;", "qvt;"},
      {"qvt lead=5;", "qvt lead=6;"},
      {"qvt; forecast x;", "qvt; forecast y;"},
      {"qvt; by a;", "qvt; by descending a;"},
  };
  for (auto [a, b] : differ) EXPECT_NE(render(a), render(b)) << a << "\n" << b;
}

TEST(StmtJson, PrintNoneSetsNoBit) {
  const auto j = render("qvt print=none;");
  EXPECT_TRUE(j["records"][0]["bits"].empty());
}

TEST(StmtJson, NamesBitsAndFields) {
  const auto j = render("qvt lead=5 print=all; idm size=(levelparm=.A); forecast x / model=bestall;");
  ASSERT_EQ(j["records"].size(), 2u);
  const auto& proc = j["records"][0];
  EXPECT_EQ(proc["statement"], "QVT");
  ASSERT_EQ(proc["bits"].size(), 2u);
  EXPECT_EQ(proc["bits"][0]["bit"], 10);
  EXPECT_EQ(proc["bits"][0]["option"], "PRINT=ALL");
  EXPECT_EQ(proc["bits"][1]["bit"], 113);  // the SIZE= component is present
  EXPECT_EQ(proc["bits"][1]["option"], "SIZE=(...)");
  bool sawLead = false, sawMiss = false;
  for (const auto& f : proc["fields"]) {
    if (f["field"] == 7) {
      sawLead = true;
      EXPECT_EQ(f["option"], "LEAD");
      EXPECT_EQ(f["kind"], "number");
      EXPECT_EQ(f["value"], 5.0);
    }
    if (f["field"] == 75) {
      sawMiss = true;
      EXPECT_EQ(f["value"], ".A") << "a missing value renders as its literal";
    }
  }
  EXPECT_TRUE(sawLead);
  EXPECT_TRUE(sawMiss);
  const auto& fc = j["records"][1];
  EXPECT_EQ(fc["statement"], "FORECAST");
  bool sawModel = false;
  for (const auto& f : fc["fields"])
    if (f["field"] == 2) {
      sawModel = true;
      EXPECT_EQ(f["option"], "MODEL");
      EXPECT_EQ(f["value"], 50.0);
      EXPECT_EQ(f["name"], "BESTALL");
    }
  EXPECT_TRUE(sawModel);
}

}  // namespace
}  // namespace qvt
