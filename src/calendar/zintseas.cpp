// Steps and counts that stay in phase with a seasonal cycle: weeks placed in
// Sunday-based week years or in ISO years, week grids that start on the
// first working day, and year steps on Sunday-based week years.
//
// A Sunday-based week year begins on the Sunday on or before January 4, so
// it holds 52 or 53 whole weeks. A cycle of at most 52 weeks keeps the 53rd
// week of a long year out of the cycle: the next year starts a week early
// and that week is its first.
#include <algorithm>
#include <cmath>

#include "calendar/interval.hpp"
#include "calendar/zidate.hpp"
#include "calendar/zintcycle.hpp"
#include "calendar/zintcycle_util.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using cycle::fromDay;
using cycle::toDay;

// The cycle of a record: its own when it holds one, else derived.
struct Cycle {
  INTERVAL sint{};
  int ns = 0;
  bool ok = false;
};

Cycle cycleOfRecord(const INTERVALX& x, double date0) noexcept {
  Cycle c;
  int derivedNs = x.nseasons;
  INTERVAL derived;
  const bool haveDerived = zintsea2(&x, date0, &derived, &derivedNs) == 0;
  if (x.sinterval != nullptr) c.sint = *x.sinterval;
  else if (haveDerived) c.sint = derived;
  c.ns = x.nseasons > 0 ? x.nseasons : (haveDerived ? derivedNs : 0);
  c.ok = c.sint.intcode != kIntNone && c.ns > 0;
  return c;
}

// The count of weeks of a Sunday-based week year seen from the weekly
// record it steps: a count up to 52 folds the long year's extra week.
int weeklyCount(const INTERVALX* align, const INTERVALX& self) noexcept {
  if (align != nullptr && align->nseasons > 0) return align->nseasons;
  if (self.nseasons > 1) return self.nseasons;
  return 52;
}

// Start of Sunday-based week year `year`, a week early after a long year
// when the cycle folds the extra week. Missing outside the calendar.
double sundayYearStart(int year, bool fold) noexcept {
  double ds = ziddywds(year, 1, 1);
  if (wzmis(ds)) return ds;
  if (fold && cycle::weeksInSundayYear(year - 1) > 52) ds -= 7;
  return cycle::inCalendar(ds);
}

// Largest number of years a step may move: the calendar spans about 18400
// years, so anything beyond leaves it.
constexpr double kMaxYearStep = 20000.0;

bool isWorkingDay(const INTERVAL& weekdays, double day) noexcept {
  const auto idx = cycle::floorMod(static_cast<long long>(day) + 5, 7);
  return weekdays.weekend[idx] == 0;
}

}  // namespace

double zintyrse(double date0, int* year, double* ds1) noexcept {
  if (wzmis(date0)) return kMissing;
  const double gy = hostYear(date0);
  if (wzmis(gy)) return kMissing;
  int y = static_cast<int>(gy);
  double ds0 = cycle::inCalendar(ziddywds(y, 1, 1));
  double next = 0;
  if (wzmis(ds0)) return kMissing;
  if (date0 < ds0) {
    next = ds0;
    --y;
    ds0 = cycle::inCalendar(ziddywds(y, 1, 1));
  } else {
    next = cycle::inCalendar(ziddywds(y + 1, 1, 1));
    if (!wzmis(next) && date0 >= next) {
      ds0 = next;
      ++y;
      next = cycle::inCalendar(ziddywds(y + 1, 1, 1));
    }
  }
  if (wzmis(ds0)) return kMissing;
  if (year != nullptr) *year = y;
  if (ds1 != nullptr) *ds1 = next;
  return ds0;
}

double zintnx_seas(const INTERVALX* intervalx, double date0, double n,
                   const INTERVALX* align_int) noexcept {
  if (intervalx == nullptr || wzmis(date0) || wzmis(n)) return kMissing;
  const INTERVALX& x = *intervalx;
  const int code = x.intcode;
  const char units = x.units;

  if (align_int == nullptr && cycle::isWeekly(code)) {
    const Cycle c = cycleOfRecord(x, date0);
    if (code == kIntWeek && c.ok && c.sint.intcode == kIntYear && c.ns <= 52) {
      // Position in the folded Sunday year, then the step on it.
      double y = 0, w = 0, d = 0;
      zidywdds(toDay(units, date0), 1, &y, &w, &d);
      if (y < 0 || std::fabs(n) > 1e9) return kMissing;
      const int k = std::max(1, x.intper);
      const double p = std::floor((w - 1) / k) + std::floor(n + 1e-12);
      const double cyc = std::floor(p / c.ns);
      const double r = p - cyc * c.ns;
      if (std::fabs(cyc) > kMaxYearStep) return kMissing;
      const int target = static_cast<int>(y + cyc);
      if (r != 0) {
        const double ds = cycle::inCalendar(ziddywds(target, 1, 1));
        if (wzmis(ds)) return kMissing;
        return zintnx3(x, fromDay(units, ds), r, "S", nullptr);
      }
      return fromDay(units, sundayYearStart(target, true));
    }
    if (code == kIntWeekV && c.ok && c.sint.intcode == kIntYearV) {
      INTERVAL yv;
      if (cycle::plainOf(kIntYearV, units, &yv) != 0) return kMissing;
      const double ys = zintnx2(yv, date0, 0);
      if (wzmis(ys)) return kMissing;
      double pos = zintck3(x, ys, date0);
      if (wzmis(pos)) return kMissing;
      if (pos >= c.ns) pos -= 1;
      const double p = pos + std::floor(n + 1e-12);
      const double cyc = std::floor(p / c.ns);
      const double r = p - cyc * c.ns;
      const double start = zintnx2(yv, ys, cyc);
      if (wzmis(start)) return kMissing;
      return zintnx3(x, start, r, "S", nullptr);
    }
    return zintnx2(x, date0, n);
  }

  if (align_int != nullptr) {
    const int acode = align_int->intcode;
    if (code == kIntWeek && acode == kIntWeekday) {
      // The week grid that starts on the first working day.
      int first = 0;
      while (first < 7 && align_int->weekend[first] != 0) ++first;
      const int shift = first < 7 ? first + 1 : 0;
      INTERVAL w;
      if (zinticms(kIntWeek, std::max(1, x.intper), shift, &w) != 0) return kMissing;
      w.units = units;
      return zintnx2(w, date0, n);
    }
    if (code == kIntYear && acode == kIntWeek) {
      const int ns = weeklyCount(align_int, x);
      const bool fold = ns <= 52;
      int y = 0;
      const double day0 = toDay(units, date0);
      if (fold) {
        double yy = 0, w = 0, d = 0;
        zidywdds(day0, 1, &yy, &w, &d);  // weeks 52 and on count to the next year
        if (yy < 0) return kMissing;
        y = static_cast<int>(yy);
      } else if (wzmis(zintyrse(day0, &y, nullptr))) {
        return kMissing;
      }
      const double step = std::floor(n + 1e-12) * std::max(1, x.intper);
      if (std::fabs(step) > kMaxYearStep) return kMissing;
      return fromDay(units, sundayYearStart(y + static_cast<int>(step), fold));
    }
    if ((code == kIntYear || code == kIntSemimonth) && acode == kIntWeekday) {
      const double r = zintnx2(x, date0, n);
      if (wzmis(r)) return r;
      double day = toDay(units, r);
      for (int i = 0; i < 7 && !isWorkingDay(*align_int, day); ++i) day += 1;
      if (day > kLastDate) return kMissing;
      return fromDay(units, day);
    }
  }
  return zintnx2(x, date0, n);
}

double zintck_seas(const INTERVALX* intervalx, double date0, double daten,
                   const INTERVALX* align_int) noexcept {
  if (intervalx == nullptr || wzmis(date0) || wzmis(daten)) return kMissing;
  const INTERVALX& x = *intervalx;
  const int code = x.intcode;
  const char units = x.units;
  const int k = std::max(1, x.intper);

  if (cycle::isWeekly(code)) {
    const Cycle c = cycleOfRecord(x, date0);
    const bool inYear = c.ok && ((code == kIntWeek && c.sint.intcode == kIntYear) ||
                                 (code == kIntWeekV && c.sint.intcode == kIntYearV));
    if (inYear && c.ns < 53) {
      double y0 = 0, w0 = 0, d0 = 0, yn = 0, wn = 0, dn = 0;
      if (code == kIntWeek) {
        zidywdds(toDay(units, date0), 1, &y0, &w0, &d0);
        zidywdds(toDay(units, daten), 1, &yn, &wn, &dn);
      } else {
        zidywdd(toDay(units, date0), "V", 1, &y0, &w0, &d0);
        zidywdd(toDay(units, daten), "V", 1, &yn, &wn, &dn);
      }
      if (y0 < 0 || yn < 0) return kMissing;
      const double weeks = (yn - y0) * 52 + (wn - w0);
      return k > 1 ? std::floor(weeks / k) : weeks;
    }
    if (inYear) {
      const double v = zintck2(x, date0, daten);
      return wzmis(v) ? v : std::floor(v);
    }
  }
  if (code == kIntYear && align_int != nullptr && align_int->intcode == kIntWeek) {
    const double s0 = zintnx_seas(intervalx, date0, 0, align_int);
    const double sn = zintnx_seas(intervalx, daten, 0, align_int);
    if (wzmis(s0) || wzmis(sn)) return kMissing;
    const int ns = weeklyCount(align_int, x);
    const int leap = ns < 53 ? 1 : ns;
    double y0 = 0, w0 = 0, d0 = 0, yn = 0, wn = 0, dn = 0;
    zidywdds(toDay(units, s0), leap, &y0, &w0, &d0);
    zidywdds(toDay(units, sn), leap, &yn, &wn, &dn);
    if (y0 < 0 || yn < 0) return kMissing;
    const double years = yn - y0;
    return k > 1 ? std::floor(years / k) : years;
  }
  return zintck2(x, date0, daten);
}

}  // namespace qvt
