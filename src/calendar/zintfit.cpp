// The interval that takes one date to another in exactly one step (zintfit).
//
// Trials go from the grid that the distance and the days of the month point
// to, through semimonths and tendays, down to weeks and days, which always
// fit. A trial names a grid and the interval its shift is counted in; the
// count of boundaries between the dates is the multiplier, and the place of
// the dates within their intervals the shift. It is accepted only when a
// step of one interval with "S" alignment takes the first date to the second.
#include <cmath>
#include <string>

#include "calendar/interval.hpp"
#include "calendar/zfmt.hpp"
#include "calendar/zintcycle.hpp"
#include "host/hostdate.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

constexpr double kDaySec = 86400.0;

bool parse(const std::string& text, INTERVAL* out) noexcept {
  return text.size() <= static_cast<std::size_t>(kIntTokenMax) &&
         zintstr(text.data(), static_cast<int>(text.size()), out) == 0;
}

// fitInterval: the grid `base` with the multiplier and shift that put d2 one
// step from d1, its shift counted in `shift`. "YEAR" counted in weeks counts
// Sunday-based week years. The found record goes to *out.
bool fit(const std::string& base, const char* shift, double d1, double d2, INTERVAL* out) {
  INTERVAL iv;
  INTERVAL sh;
  if (!parse(base, &iv) || !parse(shift, &sh)) return false;
  double q = 0;
  if (iv.intcode == kIntYear && sh.intcode == kIntWeek) {
    const INTERVALX year = zintwiden(iv);
    const INTERVALX week = zintwiden(sh);
    q = zintck_seas(&year, d1, d2, &week);
  } else {
    q = zintck2(iv, d1, d2);
  }
  if (wzmis(q) || q <= 0 || q > 2147483647.0) return false;
  std::string text = base;
  if (q > 1) text += std::to_string(static_cast<long long>(q));
  if (!parse(text, &iv)) return false;
  if (zintnx2(iv, d1, 0) != d1 || zintnx2(iv, d1, 1) != d2) {
    const double k1 = zintck2(sh, zintnx2(iv, d1, 0), d1);
    const double k2 = zintck2(sh, zintnx2(iv, d2, 0), d2);
    if (wzmis(k1) || wzmis(k2) || k1 != k2 || k1 < 0 || k1 >= 2147483647.0) return false;
    if (k1 != 0) {
      text += "." + std::to_string(static_cast<long long>(k1) + 1);
      if (!parse(text, &iv)) return false;
    }
  }
  if (zintnx3(iv, d1, 1, "S", nullptr) != d2) return false;
  *out = iv;
  return true;
}

bool in(int v, std::initializer_list<int> set) noexcept {
  for (int s : set)
    if (v == s) return true;
  return false;
}

// The trials on dates.
bool fitDays(double d1, double d2, INTERVAL* out) {
  const double diff = d2 - d1;
  int m1 = 0, dom1 = 0, y1 = 0, m2 = 0, dom2 = 0, y2 = 0, m = 0, next1 = 0, next2 = 0, y = 0;
  if (hostDateToMdy(d1, &m1, &dom1, &y1) != 0 || hostDateToMdy(d2, &m2, &dom2, &y2) != 0 ||
      hostDateToMdy(d1 + 1, &m, &next1, &y) != 0 || hostDateToMdy(d2 + 1, &m, &next2, &y) != 0)
    return false;
  const bool last1 = next1 == 1;  // the day after is the first of a month
  const bool last2 = next2 == 1;
  auto tryFit = [&](const char* base, const char* shift) {
    return fit(base, shift, d1, d2, out);
  };

  bool found = false;
  if (diff == 1) {
    found = tryFit("DAY", "DAY");
  } else if (diff == 3 && hostWeekday(d1) == 6) {  // a Friday to the Monday after
    found = tryFit("WEEKDAY", "WEEKDAY");
  } else if (diff >= 2 && diff <= 6) {
    found = tryFit("DAY", "DAY");
  } else if (diff == 7) {
    found = tryFit("WEEK", "DAY");
  } else if (diff >= 8 && diff <= 11 && in(dom1, {1, 11, 21}) && in(dom2, {1, 11, 21})) {
    found = tryFit("TENDAY", "TENDAY");
  } else if (diff >= 13 && diff <= 16 && in(dom1, {1, 16}) && in(dom2, {1, 16})) {
    found = tryFit("SEMIMONTH", "SEMIMONTH");
  } else if (diff >= 28 && (dom1 == dom2 || last1 || last2)) {
    INTERVAL month;
    zintic(kIntMonth, &month);
    const double n = zintck2(month, d1, d2);
    if (!wzmis(n)) {
      const long long k = static_cast<long long>(n);
      const char* base = k % 12 == 0 ? "YEAR" : k % 6 == 0 ? "SEMIYEAR" : k % 3 == 0 ? "QTR" : "MONTH";
      found = tryFit(base, "MONTH");
    }
  } else if (diff == 364 || diff == 371) {
    found = tryFit("YEAR", "WEEK");
  }
  if (found) return true;

  if (in(dom1, {1, 16}) && in(dom2, {1, 16})) {
    found = tryFit("SEMIMONTH", "SEMIMONTH");
  } else if ((in(dom1, {11, 21}) && in(dom2, {1, 11, 21})) || (in(dom2, {11, 21}) && in(dom1, {1, 11, 21}))) {
    found = tryFit("TENDAY", "TENDAY");
  } else {
    found = tryFit("SEMIMONTH", "SEMIMONTH") || tryFit("TENDAY", "TENDAY");
  }
  if (found) return true;
  const long long whole = static_cast<long long>(diff);
  return whole % 7 == 0 ? tryFit("WEEK", "DAY") : tryFit("DAY", "DAY");
}

bool fitAll(double d1, double d2, char units, INTERVAL* out) {
  if (units == 'o') return fit("OBS", "OBS", d1, d2, out);
  if (units == 'd') return fitDays(d1, d2, out);
  // Datetimes at one time of day are days apart; other distances are tried
  // in the largest time unit that divides them.
  const double t1 = d1 - kDaySec * std::floor(d1 / kDaySec);
  const double t2 = d2 - kDaySec * std::floor(d2 / kDaySec);
  if (t1 == t2) {
    INTERVAL day;
    if (!fitDays(std::floor(d1 / kDaySec), std::floor(d2 / kDaySec), &day)) return false;
    // The grid found on the days, in its datetime form, keeps the time of
    // day in an "S" step; the step is checked all the same.
    INTERVAL dt;
    if (!parse("DT" + std::string(day.token, static_cast<std::size_t>(day.tokenlen)), &dt)) return false;
    if (zintnx3(dt, d1, 1, "S", nullptr) != d2) return false;
    *out = dt;
    return true;
  }
  const double diff = d2 - d1;
  if (std::fmod(diff, 3600.0) == 0 && fit("DTHOUR", "DTHOUR", d1, d2, out)) return true;
  if (std::fmod(diff, 60.0) == 0 && fit("DTMINUTE", "DTMINUTE", d1, d2, out)) return true;
  return fit("DTSECOND", "DTSECOND", d1, d2, out);
}

}  // namespace

int zintfit(double d1, double d2, const tchar* units, INTERVAL* interval, INTINFO* info) noexcept {
  if (interval == nullptr) return 2;
  *interval = INTERVAL{};
  if (info != nullptr) *info = INTINFO{};
  if (wzmis(d1) || wzmis(d2)) return 2;
  d1 = std::floor(d1);
  d2 = std::floor(d2);
  if (d2 - d1 < 1) return 3;
  const char u = units != nullptr ? units[0] : 0;
  bool found = false;
  if (u == 'o' || u == 'd' || u == 's') {
    try {
      found = fitAll(d1, d2, u, interval);
    } catch (...) {  // the texts of the trials are short; an allocation failure only
      found = false;
    }
  }
  if (!found) {
    *interval = INTERVAL{};
    interval->units = 'u';
    interval->intcode = kIntNone;
    interval->intper = 1;
    return 1;
  }
  if (info != nullptr) {
    zintsea(interval, d1, &info->sinterval, &info->nseasons);
    short width2 = 0;
    zintfmt(interval, info->format, &info->formatl, &info->formatw, &width2);
  }
  return 0;
}

}  // namespace qvt
