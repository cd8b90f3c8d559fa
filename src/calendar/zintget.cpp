// Inference of an interval from three consecutive time IDs (zintget).
//
// The trials go from the coarse calendar grids to the fine ones: month
// based (YEAR down to MONTH) when the values sit at one place in their
// months, SEMIMONTH and TENDAY likewise, then WEEK, DAY (or observation
// numbers) and the WEEKDAY variants; datetimes first try the same on DT
// grids, then HOUR, MINUTE and SECOND. A trial names a grid and the
// interval its shift is counted in; it finds the multiplier from the steps
// and the shift from where the values lie in their intervals.
#include <algorithm>
#include <cmath>
#include <string>

#include "calendar/interval.hpp"
#include "calendar/zfmt.hpp"
#include "calendar/zintcycle.hpp"
#include "calendar/zintti.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr double kFirstDay = -138061.0;
constexpr double kLastDay = 6589335.0;
constexpr double kDaySeconds = 86400.0;

// v is a whole number, allowing for the rounding of a division.
bool nearInt(double v) noexcept {
  const double w = v + 1e-9;
  return w - std::floor(w) <= 1e-6;
}

// Appends text to the token of an interval, as far as it has room.
void appendToken(INTERVAL& iv, const std::string& text) noexcept {
  for (char ch : text) {
    if (iv.tokenlen >= kIntTokenMax) return;
    iv.token[iv.tokenlen++] = ch;
  }
}

// Length in the values' unit of an interval of fixed length: seconds for
// datetime grids, days for DAY on dates; 0 for a grid of varying length.
double fixedLength(const INTERVAL& iv) noexcept {
  if (iv.units == 's') {
    switch (iv.intcode) {
      case kIntSecond: return 1;
      case kIntMinute: return 60;
      case kIntHour: return 3600;
      case kIntDay: return kDaySeconds;
      default: return 0;
    }
  }
  return iv.intcode == kIntDay ? 1 : 0;
}

class Inference {
 public:
  Inference(double d1, double d2, double d3) noexcept : d_{d1, d2, d3} {}

  INTERVAL found;  // the interval of the last successful test

  // The date trials; the DT form of each name when dt is set.
  bool date(bool dt) {
    const std::string p = dt ? "DT" : "";
    if (moncheck(p + "MONTH", p + "DAY")) {
      if (test(p + "YEAR", p + "MONTH", 12) || test(p + "SEMIYEAR", p + "MONTH", 6) ||
          test(p + "QTR", p + "MONTH", 3) || test(p + "MONTH", p + "MONTH", 1))
        return true;
    }
    if (check2(p + "SEMIMONTH", p + "DAY", 15) == Check::Pass && test(p + "SEMIMONTH", p + "SEMIMONTH", 1))
      return true;
    if (check2(p + "TENDAY", p + "DAY", 10) == Check::Pass && test(p + "TENDAY", p + "TENDAY", 1))
      return true;

    if (dt) {
      if (check2("DTDAY", "DTHOUR", 24) != Check::Pass) return false;
    } else {
      const INTERVAL day = parse("DAY");
      for (double v : d_)
        if (zintnx2(day, v, 0) != v) return false;
    }

    if (test(p + "WEEK", p + "DAY", 7)) return true;

    if (test(p + "DAY", p + "DAY", 1)) {
      // Small whole numbers one or a few apart may count observations.
      if (d_[0] > 0 && d_[0] < 1000) {
        const double s1 = d_[1] - d_[0], s2 = d_[2] - d_[1];
        const double m = std::min(s1, s2), big = std::max(s1, s2);
        if (m >= 1000000) {
          found = INTERVAL{};
        } else {
          found = parse("OBS");
          const double step = std::fmod(big, m) == 0 ? m : 1;
          if (step > 1) {
            found.intper = static_cast<int>(step);
            appendToken(found, std::to_string(found.intper));
          }
        }
      }
      return true;
    }

    for (const char* wd : {"WEEKDAY", "WEEKDAY56W", "WEEKDAY1W", "WEEKDAY7W"})
      if (test(p + wd, p + "DAY", 1)) return true;
    return false;
  }

  // The trials of time grids finer than a day.
  bool time() {
    if (check2("HOUR", "MINUTE", 60) == Check::Pass && test("HOUR", "HOUR", 1)) return true;
    if (check2("MINUTE", "SECOND", 60) == Check::Pass && test("MINUTE", "MINUTE", 1)) return true;
    const INTERVAL second = parse("SECOND");
    for (double v : d_)
      if (zintnx2(second, v, 0) != v) return false;
    return test("SECOND", "SECOND", 1);
  }

 private:
  double d_[3];

  enum class Check { Pass, Fail, Disagree };

  static INTERVAL parse(const std::string& name) {
    INTERVAL iv;
    if (zintstr(name.c_str(), static_cast<int>(name.size()), &iv) != 0) iv = INTERVAL{};
    return iv;
  }

  // The values are one step or a whole number of steps of `interval` apart,
  // counted in `shift` units over factor; the multiplier is the smaller step
  // and the shift where the values lie in their intervals.
  bool test(const std::string& intervalName, const std::string& shiftName, double factor) {
    INTERVAL iv = parse(intervalName);
    const INTERVAL sh = parse(shiftName);
    if (iv.intcode == 0 || sh.intcode == 0) return false;

    const double c1 = zintck2(sh, d_[0], d_[1]), c2 = zintck2(sh, d_[1], d_[2]);
    if (wzmis(c1) || wzmis(c2)) return false;
    const double n1 = c1 / factor, n2 = c2 / factor;
    const double lo = std::min(n1, n2), hi = std::max(n1, n2);
    if (!(lo > 0) || !nearInt(n1) || !nearInt(n2) || !nearInt(hi / lo)) return false;

    const double k1 = zintck2(iv, d_[0], d_[1]), k2 = zintck2(iv, d_[1], d_[2]);
    if (wzmis(k1) || wzmis(k2)) return false;
    const double mult = std::min(k1, k2);
    if (mult < 1 || mult > 1e9) return false;
    if (mult > 1) {
      iv.intper = static_cast<int>(mult);
      appendToken(iv, std::to_string(iv.intper));
    }

    if (zintnx2(iv, d_[0], 0) != d_[0]) {
      double at[3];
      for (int i = 0; i < 3; ++i) {
        const double start = zintnx2(iv, d_[i], 0);
        at[i] = wzmis(start) ? kMissing : zintck2(sh, start, d_[i]);
        if (wzmis(at[i])) return false;
      }
      if (at[0] != at[1] || at[1] != at[2]) return false;
      iv.shiftper = static_cast<int>(at[0]);
      if (iv.shiftper != 0) appendToken(iv, "." + std::to_string(iv.shiftper + 1));
    }
    found = iv;
    return true;
  }

  // The values lie at one place in consecutive (or further apart)
  // intervals of `shift`: the same number of `sub` units, below limit,
  // from their starts.
  Check check2(const std::string& shiftName, const std::string& subName, double limit) const {
    const INTERVAL sh = parse(shiftName);
    const double len = fixedLength(parse(subName));
    if (sh.intcode == 0 || len <= 0) return Check::Fail;
    double start[3];
    bool onGrid = true;
    for (int i = 0; i < 3; ++i) {
      start[i] = zintnx2(sh, d_[i], 0);
      if (wzmis(start[i])) return Check::Fail;
      onGrid = onGrid && start[i] == d_[i];
    }
    if (onGrid) return Check::Pass;
    if (!(start[0] < start[1] && start[1] < start[2])) return Check::Fail;
    return distances(start, 1, len, limit);
  }

  // check2 with limit 31, and when the distances from the starts disagree,
  // the distances to the next starts: month ends line up from there.
  bool moncheck(const std::string& shiftName, const std::string& subName) const {
    const Check first = check2(shiftName, subName, 31);
    if (first == Check::Pass) return true;
    if (first != Check::Disagree) return false;
    const INTERVAL sh = parse(shiftName);
    const double len = fixedLength(parse(subName));
    double next[3];
    bool lastSub = true;
    for (int i = 0; i < 3; ++i) {
      next[i] = zintnx2(sh, d_[i], 1);
      if (wzmis(next[i])) return false;
      lastSub = lastSub && d_[i] + len == next[i];
    }
    if (lastSub) return true;
    if (!(next[0] < next[1] && next[1] < next[2])) return false;
    return distances(next, -1, len, 31) == Check::Pass;
  }

  // Distances between the values and the marks (sign 1: value less mark;
  // -1: mark less value) in units of len: each below limit and whole, and
  // all three equal.
  Check distances(const double* mark, double sign, double len, double limit) const {
    double dist[3];
    for (int i = 0; i < 3; ++i) {
      dist[i] = sign * (d_[i] - mark[i]) / len;
      if (!(dist[i] < limit) || !nearInt(dist[i])) return Check::Fail;
    }
    if (std::fabs(dist[0] - dist[1]) > 1e-6 || std::fabs(dist[1] - dist[2]) > 1e-6) return Check::Disagree;
    return Check::Pass;
  }
};

// The record of an interval that wasn't found.
void none(INTERVAL* interval) noexcept {
  *interval = INTERVAL{};
  interval->units = 'u';
  interval->intcode = kIntNone;
  interval->intper = 1;
}

}  // namespace

int zintget(double d1, double d2, double d3, INTERVAL* interval, INTINFO* info) {
  if (interval == nullptr) return 2;
  *interval = INTERVAL{};
  if (info) *info = INTINFO{};
  auto fail = [interval](int rc) {
    none(interval);
    return rc;
  };
  if (wzmis(d1) || wzmis(d2) || wzmis(d3)) return fail(2);
  if (std::floor(d2) - std::floor(d1) < 1 || std::floor(d3) - std::floor(d2) < 1) return fail(3);

  // Datetimes: values beyond a day from 0, or steps of whole hours.
  const double step = std::min(d2 - d1, d3 - d2);
  const bool dt = d3 >= kDaySeconds || d1 <= -kDaySeconds ||
                  (step >= 3600 && (step / 3600 + 1e-9) - std::floor(step / 3600 + 1e-9) < 1e-6);

  Inference inf(d1, d2, d3);
  bool ok = false;
  if (!dt) {
    if (d1 < kFirstDay || d3 > kLastDay) return fail(3);
    ok = inf.date(false);
  } else {
    if (d1 / kDaySeconds < kFirstDay || d3 / kDaySeconds > kLastDay) return fail(3);
    ok = nearInt((d2 - d1) / kDaySeconds) && inf.date(true);
    if (!ok) ok = inf.time();
  }
  if (!ok) return fail(1);

  *interval = inf.found;
  if (info) {
    zintsea(interval, d1, &info->sinterval, &info->nseasons);
    short width2 = 0;
    zintfmt(interval, info->format, &info->formatl, &info->formatw, &width2);
  }
  return 0;
}

}  // namespace qvt
