// Defaults and rules of the intermittent model specification.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <functional>

#include "intermittent/idmspec.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr double M = kMissing;

TEST(Idmspec, DefaultsPassAndCarryTheExactWeightBounds) {
  IDMSPEC s;
  ASSERT_EQ(idmsdft(&s), 0);
  EXPECT_EQ(idmsval(&s), 0);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(s.adem.damp.lower), 0x3F50624DD2F1A9FCULL);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(s.size.trend.upper), 0x3FEFF7CED916872BULL);
  EXPECT_EQ(s.intv.fbnds.code, 1);
  EXPECT_EQ(s.intv.fbnds.lower, 1.0);
  EXPECT_EQ(s.size.fbnds.code, 0);
  EXPECT_EQ(idmsdft(nullptr), -99);
  EXPECT_EQ(idmsval(nullptr), -99);
}

TEST(Idmspec, FirstBrokenRuleInOrder) {
  const struct {
    std::function<void(IDMSPEC&)> change;
    int rc;
  } rows[] = {
      {[](IDMSPEC& s) { s.modcode = 3; s.intv.modcode = 0; }, -15},
      {[](IDMSPEC& s) { s.intv.modcode = 5; s.intv.trnscode = 7; }, -16},
      {[](IDMSPEC& s) { s.size.modcode = 0; }, -17},
      {[](IDMSPEC& s) { s.adem.modcode = 8; }, -18},
      {[](IDMSPEC& s) { s.intv.trnscode = 5; s.intv.trnsparm = M; }, -6},
      {[](IDMSPEC& s) { s.size.trnscode = 11; }, -7},
      {[](IDMSPEC& s) { s.adem.trnscode = -1; }, -8},
      {[](IDMSPEC& s) { s.intv.trnscode = 0; s.intv.trnsparm = M; }, -11},
      {[](IDMSPEC& s) { s.size.trnsparm = M; }, -12},
      {[](IDMSPEC& s) { s.adem.trnsparm = M; s.adem.damp.parm = 5; }, -12},
      {[](IDMSPEC& s) { s.intv.damp.lower = 0.5; s.intv.damp.upper = 0.2; }, -23},
      {[](IDMSPEC& s) { s.size.trend.parm = 100.5; }, -24},
      {[](IDMSPEC& s) { s.adem.level.upper = 101; s.intv.fbnds.code = 0; }, -25},
      {[](IDMSPEC& s) { s.intv.fbnds.code = 0; }, -31},
      {[](IDMSPEC& s) { s.intv.fbnds.lower = 0.999; }, -31},
      {[](IDMSPEC& s) { s.size.fbnds = {5, 2, 1}; }, -32},
      {[](IDMSPEC& s) { s.adem.fbnds.code = 3; }, -33},
      {[](IDMSPEC& s) { s.fdisc.code = 1; }, -40},
      {[](IDMSPEC& s) { s.fdisc = {1.4e-154, 5}; }, -40},
      {[](IDMSPEC& s) { s.fdisc.code = 6; s.fdisc.increment = 1; }, -40},
      // Valid: a discrete code with its increment, unordered bounds without
      // a code, a weight fixed by its bounds, parm 100 without bounds.
      {[](IDMSPEC& s) { s.fdisc = {1.491668147e-154, 1}; s.adem.fbnds = {5, 2, 0}; }, 0},
      {[](IDMSPEC& s) { s.size.level = {{}, {}, 0.3, 0.3, 0.3, 1}; s.adem.trend = {{}, {}, 100, M, M, 0}; }, 0},
  };
  for (std::size_t k = 0; k < std::size(rows); ++k) {
    IDMSPEC s;
    idmsdft(&s);
    rows[k].change(s);
    EXPECT_EQ(idmsval(&s), rows[k].rc) << "row " << k;
  }
}

TEST(Idmspec, WeightAndItsBounds) {
  const struct {
    double parm, lower, upper;
    int rc;
  } rows[] = {
      {M, M, M, 0},       {100, M, M, 0},        {-100, -100, 100, 0}, {100.5, M, M, -20},
      {0.2, 0.3, M, -20}, {0.5, M, 0.4, -20},    {0.5, 0.6, 0.4, -21}, {M, -100.5, M, -21},
      {M, M, 100.5, -22}, {2, 0.001, 0.999, -20}, {0.3, 0.3, 0.3, 0},
  };
  for (const auto& r : rows) {
    const ESMPARM p{{}, {}, r.parm, r.lower, r.upper, 0};
    EXPECT_EQ(idmsvps(&p), r.rc) << r.parm << " " << r.lower << " " << r.upper;
  }
  EXPECT_EQ(idmsvps(nullptr), -99);
}

}  // namespace
}  // namespace qvt
