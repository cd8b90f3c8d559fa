// Defaults and rules of the intermittent model settings (IDMSPEC).
#include <gtest/gtest.h>

#include "intermittent/idmspec.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr double M = kMissing;

// Each row changes a record fresh from idmsdft, which itself passes (rows of 0).
TEST(Idmspec, FirstBrokenRuleInOrder) {
  const struct {
    void (*change)(IDMSPEC&);
    int rc;
  } rows[] = {
      {[](IDMSPEC& s) { s.modcode = 3; s.intv.modcode = 0; }, -15},
      {[](IDMSPEC& s) { s.intv.modcode = 5; s.intv.trnscode = 7; }, -16},
      {[](IDMSPEC& s) { s.size.modcode = 0; }, -17},
      {[](IDMSPEC& s) { s.adem.modcode = 8; }, -18},
      {[](IDMSPEC& s) { s.intv.trnscode = 5; s.intv.trnsparm = M; }, -6},
      {[](IDMSPEC& s) { s.size.trnscode = 11; }, -7},
      {[](IDMSPEC& s) { s.intv.trnscode = 0; s.intv.trnsparm = M; }, -11},
      {[](IDMSPEC& s) { s.size.trnsparm = M; }, -12},
      {[](IDMSPEC& s) { s.adem.trnsparm = M; s.adem.damp.parm = 5; }, -12},
      {[](IDMSPEC& s) { s.intv.damp.lower = 0.5; s.intv.damp.upper = 0.2; }, -23},
      {[](IDMSPEC& s) { s.size.trend.parm = 100.5; }, -24},
      {[](IDMSPEC& s) { s.adem.level.upper = 101; s.intv.fbnds.code = 0; }, -25},
      {[](IDMSPEC& s) { s.intv.fbnds.code = 0; }, -31},
      {[](IDMSPEC& s) { s.adem.trnscode = 5; s.intv.fbnds.lower = 0.999; }, -8},
      {[](IDMSPEC& s) { s.size.fbnds = {5, 2, 1}; }, -32},
      {[](IDMSPEC& s) { s.adem.fbnds.code = 3; }, -33},
      {[](IDMSPEC& s) { s.fdisc.code = 6; s.fdisc.increment = 1; }, -40},
      // Valid: a discrete code with its increment, unordered bounds without
      // a code, a weight fixed by its bounds, parm 100 without bounds (the
      // rows of -23 to -25 go through idmsvps: a value above 100, a
      // reversed pair, a bound above 100).
      {[](IDMSPEC& s) { s.fdisc = {1.491668147e-154, 1}; s.adem.fbnds = {5, 2, 0}; }, 0},
      {[](IDMSPEC& s) { s.size.level = {{}, {}, 0.3, 0.3, 0.3, 1}; s.adem.trend = {{}, {}, 100, M, M}; }, 0},
  };
  for (std::size_t k = 0; k < std::size(rows); ++k) {
    IDMSPEC s;
    idmsdft(&s);
    rows[k].change(s);
    EXPECT_EQ(idmsval(&s), rows[k].rc) << "row " << k;
  }
  EXPECT_EQ(idmsdft(nullptr) + idmsval(nullptr), -2 * 99);
}

}  // namespace
}  // namespace qvt
