// The IDM statement into QVTCOM: which model form the components given ask
// for, and the repairs of weights, limits and bounds with their warnings.
#include "run/missing.hpp"
#include "support.hpp"

namespace qvt {
namespace {

using testing::Step;

std::string program(const std::string& idm) { return "qvt data=sales; idm " + idm + "; forecast sales;"; }

TEST(Getidm, ComponentsGivenChooseTheModelForm) {
  const std::pair<const char*, int> rows[] = {
      {"interval=(method=simple) size=(method=simple)", 1},
      {"average=(method=linear)", 2},
      {"", 20},
  };
  for (const auto& [idm, modcode] : rows) {
    Step s(program(idm));
    EXPECT_EQ(s.com->idmspec.modcode, modcode) << idm;
  }
}

TEST(Getidm, PointRestrictionFixesTheWeight) {
  Step s(program("interval=(method=simple levelrest=(0.3 0.3)) base=auto"));
  const ESMSPEC& c = s.com->idmspec.intv;
  EXPECT_EQ(c.level.parm, 0.3);
  EXPECT_EQ(c.noest, 1);  // the only weight of SIMPLE is fixed
  EXPECT_EQ(c.stability, 0);  // nothing estimated, nothing to test
  EXPECT_TRUE(wzmis(s.com->base));
}

TEST(Getidm, RepairsAreWarnings) {
  Step a(program("interval=(levelrest=(0.9 0.1)) base=3"));
  EXPECT_EQ(a.host->numbers(kMsgProc), std::vector<int>{3101});
  const ESMPARM& lv = a.com->idmspec.intv.level;
  EXPECT_EQ((std::vector<double>{lv.lower, lv.upper}), (std::vector<double>{0.0001, 0.9999}));
  EXPECT_EQ((std::vector<double>{a.com->base, double(a.rc)}), (std::vector<double>{3, 4}));  // base, rc

  Step b(program("average=(method=simple noest) size=(levelparm=0.95 levelrest=(0.1 0.5))"));
  EXPECT_EQ(b.host->numbers(kMsgProc), (std::vector<int>{3120, 3155}));  // sizes come first
  EXPECT_EQ(b.com->idmspec.adem.noest, 0);
  EXPECT_TRUE(wzmis(b.com->idmspec.size.level.parm));

  // Reversed bounds: getidm warns for intervals only; for sizes idmsval
  // refuses them (-32) as any reversed pair, and the statement is dropped
  // with a warning that says so.
  Step d(program("size=(bounds=(5 2) method=linear)"));
  EXPECT_EQ(d.com->idmspec.size.fbnds.code, 0);
  EXPECT_EQ(d.host->numbers(kMsgProc), std::vector<int>{3160});
  Step e(program("interval=(bounds=(5 2) method=linear) size=(method=simple)"));
  EXPECT_EQ(e.host->numbers(kMsgProc), (std::vector<int>{3114, 3160}));
  EXPECT_EQ(e.com->idmspec.intv.modcode, 9);
}

}  // namespace
}  // namespace qvt
