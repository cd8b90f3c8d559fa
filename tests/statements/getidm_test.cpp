// The IDM statement into QVTCOM: which model form the components given ask
// for, and the repairs of weights, limits and bounds with their warnings.
#include <algorithm>

#include "run/missing.hpp"
#include "support.hpp"

namespace qvt {
namespace {

using testing::Step;

std::string program(const std::string& idm) { return "qvt data=sales; idm " + idm + "; forecast sales;"; }

TEST(Getidm, ComponentsGivenChooseTheModelForm) {
  const struct {
    const char* idm;
    int modcode;
  } rows[] = {
      {"interval=(method=simple) size=(method=simple)", 1},
      {"size=(method=linear)", 1},
      {"average=(method=linear)", 2},
      {"", 20},
      {"interval=(method=simple) size=(method=simple) average=(method=simple)", 20},
  };
  for (const auto& r : rows) {
    Step s(program(r.idm));
    ASSERT_FALSE(s.exited) << r.idm;
    EXPECT_EQ(s.com->idmspec.modcode, r.modcode) << r.idm;
    EXPECT_EQ(s.rc, 0) << r.idm;
  }
}

TEST(Getidm, PointRestrictionFixesTheWeight) {
  Step s(program("interval=(method=simple levelrest=(0.3 0.3)) base=auto"));
  const ESMSPEC& c = s.com->idmspec.intv;
  EXPECT_EQ(c.level.parm, 0.3);
  EXPECT_EQ(c.level.noest, 1);
  EXPECT_EQ(c.noest, 1);      // the only weight of SIMPLE is fixed
  EXPECT_EQ(c.stability, 0);  // nothing estimated, nothing to test
  EXPECT_TRUE(wzmis(s.com->base));
  EXPECT_TRUE(s.host->numbers(kMsgProc).empty());
}

TEST(Getidm, RepairsAreWarnings) {
  Step a(program("interval=(levelrest=(0.9 0.1)) base=3"));
  EXPECT_EQ(a.host->numbers(kMsgProc), std::vector<int>{3101});
  EXPECT_EQ(a.com->idmspec.intv.level.lower, 0.0001);
  EXPECT_EQ(a.com->idmspec.intv.level.upper, 0.9999);
  EXPECT_EQ(a.com->base, 3.0);
  EXPECT_EQ(a.rc, 4);

  Step b(program("average=(method=simple noest)"));
  EXPECT_EQ(b.host->numbers(kMsgProc), std::vector<int>{3155});
  EXPECT_EQ(b.com->idmspec.adem.noest, 0);
  EXPECT_EQ(b.com->idmspec.adem.stability, 1);
  EXPECT_EQ(b.rc, 0);  // no rc for NOEST

  Step c(program("size=(levelparm=0.95 levelrest=(0.1 0.5))"));
  EXPECT_EQ(c.host->numbers(kMsgProc), std::vector<int>{3120});
  EXPECT_TRUE(wzmis(c.com->idmspec.size.level.parm));

  // Reversed bounds: getidm warns for intervals only; for sizes they reach
  // idmsval, which refuses them (-32) as it refuses any reversed pair, and
  // the statement is dropped for the defaults.
  Step d(program("size=(bounds=(5 2) method=linear)"));
  EXPECT_TRUE(d.host->numbers(kMsgProc).empty());
  EXPECT_EQ(d.com->idmspec.size.fbnds.code, 0);
  EXPECT_EQ(d.com->idmspec.size.modcode, 9);
  Step d2(program("size=(bounds=(2 5))"));
  EXPECT_EQ(d2.com->idmspec.size.fbnds.code, 2);
  EXPECT_EQ(d2.com->idmspec.size.fbnds.upper, 5.0);
  Step e(program("interval=(bounds=(5 2) method=linear) size=(method=simple)"));
  EXPECT_EQ(e.host->numbers(kMsgProc), std::vector<int>{3114});
  EXPECT_EQ(e.com->idmspec.modcode, 20);
  EXPECT_EQ(e.com->idmspec.intv.modcode, 9);
  EXPECT_EQ(e.com->idmspec.intv.fbnds.lower, 1.0);
}

}  // namespace
}  // namespace qvt
