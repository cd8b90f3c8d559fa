// Season codes of a series: the position of each interval in its cycle, and
// rows of seasonal dummy variables.
//
// A weekly grid with a non-negative scode places each week within its
// calendar year, the first week being the one that holds January 4. A long
// year's last week then counts 52, which the modulus turns into 0 like the
// first week of the next year; that repeated code marks it, and it takes
// scode instead. Every other grid is placed once, at its first interval, and
// the codes then run on by one, wrapping at the season count.
#include <algorithm>
#include <cmath>

#include "calendar/interval.hpp"
#include "calendar/zcust.hpp"
#include "calendar/zintcycle.hpp"
#include "calendar/zintcycle_util.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using cycle::floorMod;

// A week shift of 83 asks for positions counted week by week on the plain
// weekly grid and divided by the multiplier, without marking a long week.
constexpr int kShiftWeekByWeek = 83;

struct Cycle {
  bool have = false;
  INTERVAL sint{};
  int sns = 0;
};

void zeros(int* scodes, long n) noexcept {
  if (scodes != nullptr) std::fill(scodes, scodes + std::max(0L, n), 0);
}

int fail(int* scodes, long n, int rc) noexcept {
  zeros(scodes, n);
  return rc;
}

// The first interval's code by the calendar, then codes running on by one.
int runOn(const INTERVAL& intv, double stdate, int scode, long n, int* scodes, int ns,
          const Cycle& cyc) noexcept {
  double date = stdate;
  if (cyc.have) {
    const double date0 = zintnx2(cyc.sint, stdate, 0);
    date = wzmis(date0) ? date0 : zintnx2(intv, date0, 0);
    if (!wzmis(date) && date < date0) date = zintnx2(intv, date0, 1);
    if (wzmis(date)) return fail(scodes, n, -1);
  }
  double s = zintck2(intv, date, stdate);
  if (wzmis(s)) return fail(scodes, n, -1);
  if (intv.intcode == kIntWeekV && s >= ns) s = scode;
  long long code = floorMod(static_cast<long long>(s), ns);
  for (long t = 0; t < n; ++t) {
    scodes[t] = static_cast<int>(code);
    if (++code == ns) code = 0;
  }
  return 0;
}

// Position of a week within the year whose first week holds January 4.
// Missing where the calendar gives out.
double weekOfYear(const INTERVAL& intv, const INTERVAL& year, double jan4, double date) noexcept {
  const double y0 = zintnx2(year, date, 0);
  const double y1 = zintnx2(year, date, 1);
  if (wzmis(y0) || wzmis(y1)) return kMissing;
  double date0 = zintnx2(intv, y0 + jan4, 0);
  const double date1 = zintnx2(intv, y1 + jan4, 0);
  if (wzmis(date0) || wzmis(date1)) return kMissing;
  if (date >= date1) date0 = date1;
  return zintck2(intv, date0, date);
}

int weekCodes(const INTERVAL& intv, double stdate, int scode, long n, int* scodes, int ns) noexcept {
  INTERVAL year;
  if (cycle::plainOf(kIntYear, intv.units, &year) != 0) return fail(scodes, n, -1);
  const double jan4 = cycle::fromDay(intv.units, 3.0);
  if (scode > ns) scode = 0;
  for (long t = 0; t < n; ++t) {
    const double date = zintnx2(intv, stdate, static_cast<double>(t));
    const double pos = wzmis(date) ? date : weekOfYear(intv, year, jan4, date);
    if (wzmis(pos)) return fail(scodes, n, -1);
    const int s = static_cast<int>(floorMod(static_cast<long long>(pos), ns));
    scodes[t] = s;
    if (t > 0 && scodes[t - 1] == s) scodes[t - 1] = scode;
    if (t == 0) {
      // No neighbour before the first week: look at the next one instead.
      const double next = zintnx2(intv, stdate, 1);
      const double npos = wzmis(next) ? next : weekOfYear(intv, year, jan4, next);
      if (!wzmis(npos) && floorMod(static_cast<long long>(npos), ns) == s) scodes[0] = scode;
    }
  }
  return 0;
}

int weekByWeekCodes(const INTERVAL& intv, double stdate, int scode, long n, int* scodes,
                    int ns) noexcept {
  const bool v = intv.intcode == kIntWeekV;
  INTERVAL plain, year;
  if (cycle::plainOf(v ? kIntWeekV : kIntWeek, intv.units, &plain) != 0 ||
      cycle::plainOf(v ? kIntYearV : kIntYear, intv.units, &year) != 0)
    return fail(scodes, n, -1);
  const double jan4 = cycle::fromDay(intv.units, 3.0);
  const int k = std::max(1, intv.intper);
  for (long t = 0; t < n; ++t) {
    const double date = zintnx2(intv, stdate, static_cast<double>(t));
    const double pos = wzmis(date) ? date : weekOfYear(plain, year, jan4, date);
    if (wzmis(pos)) return fail(scodes, n, -1);
    long long s = static_cast<long long>(std::floor(pos / k));
    if (s >= ns) s = scode;
    scodes[t] = static_cast<int>(floorMod(s, ns));
  }
  return 0;
}

int customCodes(const INTERVAL& intv, double stdate, long n, int* scodes, int nsIn, int ns) noexcept {
  const INTERVALX x = zintwiden(intv);
  if (nsIn < 0) {
    for (long t = 0; t < n; ++t) {
      const double idx = customINTINDEX(x, stdate, static_cast<double>(t));
      if (wzmis(idx)) return fail(scodes, n, 1);
      scodes[t] = static_cast<int>(idx) - 1;
    }
    return 0;
  }
  if (ns < 2) return fail(scodes, n, 1);
  const double idx = customINTINDEX(x, stdate, 0);
  long long code = floorMod(wzmis(idx) ? 0 : static_cast<long long>(idx) - 1, ns);
  for (long t = 0; t < n; ++t) {
    scodes[t] = static_cast<int>(code);
    if (++code == ns) code = 0;
  }
  return 0;
}

// Everything after the cycle is known; nsIn is *nseasons as it came in.
int codesFor(const INTERVAL& intv, double stdate, int scode, long n, int* scodes, int* nseasons,
             int nsIn, const Cycle& cyc) noexcept {
  int ns = nsIn;
  const bool cycleFound = cyc.have && cyc.sns >= 2;
  if (ns < 0 && cycleFound) {
    ns = cyc.sns;
    *nseasons = ns;
  }
  if (intv.intcode == kIntCustom) return customCodes(intv, stdate, n, scodes, nsIn, ns);
  if (ns < 2) return fail(scodes, n, 1);
  if (!cycleFound) return runOn(intv, stdate, scode, n, scodes, ns, Cycle{});
  if (cycle::isWeekly(intv.intcode) && scode >= 0) {
    if (intv.shiftper != kShiftWeekByWeek) return weekCodes(intv, stdate, scode, n, scodes, ns);
    return weekByWeekCodes(intv, stdate, scode, n, scodes, ns);
  }
  return runOn(intv, stdate, scode, n, scodes, ns, cyc);
}

// The cycle for scode -2: nseasons intervals make it.
bool givenCycle(const INTERVAL& intv, int nsIn, Cycle* cyc) noexcept {
  const bool weekly = cycle::isWeekly(intv.intcode);
  if (!weekly && nsIn < 1) return false;  // no count to build on: derive as usual
  const int k = weekly ? (nsIn >= 1 ? nsIn : 52) : nsIn;
  const INTERVALX wide = zintwiden(intv);
  INTERVALX m;
  const int flags = weekly ? (kMultCycleDerive | kMultNoWeekYear) : (kMultCycleDerive | kMultFuzzyDay);
  if (zintmult(&wide, k, &m, flags) != 0) return false;
  cyc->have = true;
  cyc->sint = m;
  cyc->sns = k;
  return true;
}

bool argsOk(long n, const int* scodes, const int* nseasons) noexcept {
  return nseasons != nullptr && n >= 0 && (n == 0 || scodes != nullptr);
}

}  // namespace

int zintscd(const INTERVAL& intv, double stdate, int scode, long n, int* scodes,
            int* nseasons) noexcept {
  if (!argsOk(n, scodes, nseasons)) return -1;
  const int nsIn = *nseasons;
  Cycle cyc;
  if (intv.units != 'o' && !(scode == -2 && givenCycle(intv, nsIn, &cyc))) {
    int sns = 0;
    const int rc = zintsea(&intv, stdate, &cyc.sint, &sns);
    if (rc == 2) return fail(scodes, n, -1);
    cyc.have = rc == 0;
    cyc.sns = sns;
  }
  return codesFor(intv, stdate, scode, n, scodes, nseasons, nsIn, cyc);
}

int zintscd2(INTERVALX* intv, double stdate, int scode, long n, int* scodes,
             int* nseasons) noexcept {
  if (intv == nullptr || !argsOk(n, scodes, nseasons)) return -1;
  const int nsIn = *nseasons;
  Cycle cyc;
  if (intv->units != 'o') {
    if (scode == -2 && givenCycle(*intv, nsIn, &cyc)) {
      intv->nseasons = cyc.sns;
    } else if (intv->sinterval != nullptr && intv->sinterval->intcode != kIntNone) {
      cyc.have = true;
      cyc.sint = *intv->sinterval;
      cyc.sns = intv->nseasons;
    } else {
      INTERVALX local;
      int count = 0;
      const int rc = zintsea_set(intv, stdate, &local, &count);
      if (rc == 2) return fail(scodes, n, -1);
      cyc.have = rc == 0 && local.intcode != kIntNone;
      cyc.sint = local;
      cyc.sns = count;
    }
  }
  return codesFor(*intv, stdate, scode, n, scodes, nseasons, nsIn, cyc);
}

void zintscy(const INTERVAL& intv, int scode, double date, int nseasons, int noint, double* sdummy,
             double* partial) noexcept {
  if (sdummy == nullptr || nseasons < 1) return;
  const int len = nseasons + (noint != 0 ? 1 : 0) - 1;
  if (len <= 0) return;
  std::fill(sdummy, sdummy + len, 0.0);

  if (intv.intcode == kIntWeek && scode == nseasons) {
    // The extra week of a long year: the part of it that lies in the next
    // year goes to the first season, the rest to the last (week 52).
    double part = partial != nullptr ? *partial : kMissing;
    if (wzmis(part)) {
      INTERVAL year, week;
      if (cycle::plainOf(kIntYear, intv.units, &year) != 0 ||
          cycle::plainOf(kIntWeek, intv.units, &week) != 0)
        return;
      const double jan1 = zintnx2(year, date, 1);
      const double next = wzmis(jan1) ? jan1 : zintnx2(week, jan1, 1);
      if (wzmis(next)) return;
      part = (cycle::toDay(intv.units, next) - cycle::toDay(intv.units, jan1)) / 7.0;
      if (partial != nullptr) *partial = part;
    }
    sdummy[0] = part;
    if (noint != 0 && len > 51) sdummy[51] = 1.0 - part;
    return;
  }
  if (scode >= 0 && scode < nseasons - 1) {
    sdummy[scode] = 1.0;
    return;
  }
  if (noint != 0) sdummy[len - 1] = 1.0;
}

}  // namespace qvt
