// Messages of the demand series and of the intermittent model, and labels,
// through a host that records what is logged; texts come from the catalogue
// as a real host's.
#include "intermittent/idmodel.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "host/catalog.hpp"

namespace qvt {
namespace {

struct RecordingHost : Host {
  std::vector<int> numbers;
  std::vector<std::string> names;
  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos*) override {
    EXPECT_EQ(group, 881);
    numbers.push_back(number);
    names.push_back(args.empty() ? "" : std::get<std::string>(args[0]));
  }
};

TEST(Idmmsg, CodesSelectAPairAndTheNameSelectsItsForm) {
  const IDMODEL m;
  const u_sname y("SALES"), none("");
  struct Row {
    int rc;
    const u_sname* name;
    std::vector<int> numbers;
    int result;
  } rows[] = {
      {2, &y, {}, 0},
      {-1, &none, {8100, 8184}, 1},
      {-13, &y, {8159, 8185}, 1},
      {-61, nullptr, {8172, 8184}, 1},
      {-14, &y, {8181, 8183}, 90},  // no such code: both fallback messages
      {3, nullptr, {8180, 8182}, 90},
  };
  for (const Row& r : rows) {
    RecordingHost h;
    EXPECT_EQ(idmmsg(h, &m, r.rc, r.name), r.result) << r.rc;
    EXPECT_EQ(h.numbers, r.numbers) << r.rc;
    for (const std::string& n : h.names) EXPECT_EQ(n, r.name == &y ? "SALES" : "") << r.rc;
  }
  RecordingHost h;
  EXPECT_TRUE(idmmsg(h, nullptr, -1, &y) == -99 && h.numbers.empty());
  // Every number that a code can select has a catalogue text, the odd form
  // with the name in it and the even form without; the demand series'
  // numbers (8090-8117) are checked the same way.
  int tabled = 0;
  for (int rc = -120; rc <= 5; ++rc) tabled += idmmsg(h, &m, rc, &y) == 1;
  std::set<int> used(h.numbers.begin(), h.numbers.end());
  EXPECT_EQ(tabled, 32);
  for (int k = 8090; k <= 8117; ++k)
    if (k < 8094 || k >= 8100) used.insert(k | 1);
  for (int odd : used) {
    const CatalogEntry *with = catalogFind(881, odd), *without = catalogFind(881, odd - 1);
    ASSERT_TRUE(odd % 2 == 1 && with && without) << odd;
    EXPECT_NE(with->text.find("{1}"), std::string_view::npos) << odd;
    EXPECT_EQ(without->text.find("{1}"), std::string_view::npos) << odd - 1;
  }
}

TEST(Idsmsg, NumbersAndNames) {
  const IDSERIES ids;
  const u_sname tid("DATE"), var("SALES"), empty("");
  // The codes of the table in order take the pairs 8100/8101 .. 8116/8117;
  // the time ID's name goes with -10 and -11, then the closing 8092/8093.
  const int codes[] = {-1, -10, -11, -20, -21, -22, -23, -24, -30};
  for (int k = 0; k < 9; ++k) {
    RecordingHost h;
    const bool named = k % 2 == 0 || k == 1;
    EXPECT_EQ(idsmsg(h, &ids, codes[k], named ? &tid : &empty, named ? &var : nullptr), 0);
    EXPECT_EQ(h.numbers, (std::vector<int>{8100 + 2 * k + named, 8092 + named})) << k;
    const std::string first = !named ? "" : k == 1 || k == 2 ? "DATE" : "SALES";
    EXPECT_EQ(h.names, (std::vector<std::string>{first, named ? "SALES" : ""})) << k;
  }
  RecordingHost h;
  EXPECT_EQ(idsmsg(h, &ids, 5, &tid, &var), 0);
  EXPECT_EQ(idsmsg(h, nullptr, -1, &tid, &var), kIdsBadArg);
  EXPECT_TRUE(h.numbers.empty());
  EXPECT_EQ(idsmsg(h, &ids, -12, &tid, &empty), 99);
  EXPECT_EQ(h.numbers, std::vector<int>{8090});
  EXPECT_EQ(h.names, std::vector<std::string>{""});
}

TEST(Idmlab, ComponentAndModelLabels) {
  RecordingHost h;
  u_slabel l;
  IDMODEL m;
  m.modused = kIdmUsedCroston;
  m.intv.trnsused = 1;
  m.intv.modused = kIdmSimple;
  m.size.trnsused = 0;  // no transformation, no blank
  m.size.modused = kIdmDampTrend;
  EXPECT_EQ(idmlab(h, &m, 0, &l), 0);
  EXPECT_EQ(l.str(), "Croston's Method (Intervals: Log Simple Exponential Smoothing; "
                     "Sizes: Damped Trend Exponential Smoothing)");
  EXPECT_EQ(idmlabd(h, 1, 0, &l), 0);
  EXPECT_EQ(l.str(), "Croston's Method");  // without components, without their parenthesis
}

}  // namespace
}  // namespace qvt
