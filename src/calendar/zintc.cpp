// Comparison of two interval grids (zintc): the same grid, one nested in the
// other with a fixed or a varying number of intervals, or why not.
//
// Every pair is brought to a unit the two share, as a length and the offset
// of the grid's boundaries in that unit (boundaries stand where the unit
// index is congruent to the offset modulo the length, as in counting), and
// `compare` decides. Grids of working days have no fixed length in days; a
// pair with such a grid is decided by walking both grids over their common
// period, day by day (`scan`).
//
// Choices made here, each so that the verdict is the one the two grids'
// boundaries give:
// - A week in seconds carries its true offset (its Sunday or Monday start),
//   not its bare shift, so HOUR168 against WEEK sees that they differ.
// - TENDAY has no fixed length in seconds (its last tenday of a month runs
//   8 to 11 days); against time grids it is taken as the months are.
// - A time grid that has no boundary at midnight doesn't nest in a month,
//   a retail month or a working day: .S, as for any shift that doesn't line
//   up.
// - Two retail patterns are compared on the months themselves: the coarser
//   grid must start only in months that both patterns start in the same
//   week. Quarters always do; R445QTR.2 against R454MON does too.
// - Two observation grids with different shifts are compared like any two
//   grids with lengths and offsets.
#include <cctype>
#include <numeric>

#include "calendar/interval.hpp"
#include "calendar/zidate.hpp"
#include "calendar/zintcycle_util.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using cycle::floorMod;
using i64 = long long;

const double kNotMultiple = skMissVal('M');
const double kShiftOff = skMissVal('S');
const double kNoBase = skMissVal('B');
const double kWeekends = skMissVal('W');
const double kInternal = skMissVal('E');

constexpr i64 kDaySec = 86400;
// Longest common period, in days, that `scan` walks. Working-day grids have
// periods of at most 7 times their multiplier, so this covers every pair of
// grids whose multipliers are below a few hundred; beyond it no statement is
// made (ordinary missing) rather than spend unbounded time.
constexpr i64 kScanDays = i64{1} << 20;

constexpr i64 floorDiv(i64 v, i64 m) noexcept { return (v - floorMod(v, m)) / m; }

double negate(double r) noexcept { return wzmis(r) || r == 0 ? r : -r; }

// The rule of nesting on one unit: lengths an, bn and boundary offsets as, bs.
double compare(i64 an, i64 as, i64 bn, i64 bs) noexcept {
  as = floorMod(as, an);
  bs = floorMod(bs, bn);
  if (an > bn) {
    if (an % bn != 0) return kNotMultiple;
    if (as % bn != bs) return kShiftOff;
    return static_cast<double>(an / bn);
  }
  if (an < bn) {
    if (bn % an != 0) return kNotMultiple;
    if (bs % an != as) return kShiftOff;
    return -static_cast<double>(bn / an);
  }
  return as == bs ? 0.0 : kShiftOff;
}

// Classes of codes, in the order in which pairs are dispatched: the pair
// (a, b) with class(a) after class(b) is the mirrored pair with its sign
// changed.
enum Cls { kTime, kDay, kWkday, kWeek, kWeekV, kTen, kSemi, kMon, kRetail, kYearV, kObs, kNone, kCust, kBad };

Cls classOf(int code) noexcept {
  switch (code) {
    case kIntSecond: case kIntMinute: case kIntHour: return kTime;
    case kIntDay: return kDay;
    case kIntWeekday: return kWkday;
    case kIntWeek: return kWeek;
    case kIntWeekV: return kWeekV;
    case kIntTenday: return kTen;
    case kIntSemimonth: return kSemi;
    case kIntMonth: case kIntQtr: case kIntSemiyear: case kIntYear: return kMon;
    case kIntR445Mon: case kIntR454Mon: case kIntR544Mon: case kIntR445Qtr: case kIntR454Qtr:
    case kIntR544Qtr: case kIntR445Yr: case kIntR454Yr: case kIntR544Yr: return kRetail;
    case kIntYearV: return kYearV;
    case kIntObs: return kObs;
    case kIntNone: return kNone;
    case kIntCustom: return kCust;
    default: return kBad;
  }
}

i64 mult(const INTERVAL& x) noexcept { return x.intper < 1 ? 1 : x.intper; }

// A grid of fixed length: `len` units, boundaries at `off` modulo `len`.
struct Grid {
  i64 len;
  i64 off;
};

// Months (or retail months) in one interval of a month-based code.
i64 monthsPer(int code) noexcept {
  switch (code) {
    case kIntQtr: case kIntR445Qtr: case kIntR454Qtr: case kIntR544Qtr: return 3;
    case kIntSemiyear: return 6;
    case kIntYear: case kIntR445Yr: case kIntR454Yr: case kIntR544Yr: return 12;
    default: return 1;
  }
}
Grid months(const INTERVAL& x) noexcept { return {monthsPer(x.intcode) * mult(x), x.shiftper}; }

// DAY, WEEK and WEEKV in days. Week grids count their shift from the day
// before Sunday (WEEK) or Monday (WEEKV), as counting does.
Grid days(const INTERVAL& x) noexcept {
  const i64 n = mult(x);
  if (x.intcode == kIntDay) return {n, x.shiftper};
  const i64 len = 7 * n;
  return {len, floorMod(x.shiftper - (x.intcode == kIntWeek ? 5 : 4), len)};
}

// A WEEKDAY grid: boundaries on the working days whose working-day index is
// congruent to s modulo n.
struct Wkday {
  i64 n = 1;
  i64 s = 0;
  bool work[7] = {};  // by the Sunday-first index
  int nwd = 0;

  bool working(i64 x) const noexcept { return work[floorMod(x + 5, 7)]; }
  // Working days up to x, counted from the Friday that is day 0.
  i64 index(i64 x) const noexcept {
    for (int i = 0; i < 7 && !working(x); ++i) --x;
    const i64 q = floorDiv(x, 7);
    i64 c = nwd * q;
    for (i64 d = 7 * q + 1; d <= x; ++d) c += working(d) ? 1 : 0;
    return c;
  }
  // The working day whose index is c.
  i64 dayOf(i64 c) const noexcept {
    const i64 q = floorDiv(c, nwd);
    i64 r = c - q * nwd;
    i64 x = 7 * q;
    if (r == 0) {
      while (!working(x)) --x;
      return x;
    }
    while (r > 0) r -= working(++x) ? 1 : 0;
    return x;
  }
};

Wkday wkday(const INTERVAL& x) noexcept {
  Wkday w;
  w.n = mult(x);
  w.s = x.shiftper;
  for (int i = 0; i < 7; ++i) {
    w.work[i] = x.weekend[i] == 0;
    w.nwd += w.work[i] ? 1 : 0;
  }
  return w;
}

// A grid on days, of either kind.
struct DayGrid {
  bool regular = true;
  Grid g{1, 0};
  Wkday w;

  i64 num(i64 x) const noexcept {
    return regular ? floorDiv(x - g.off, g.len) : floorDiv(w.index(x) - w.s, w.n);
  }
  bool boundary(i64 x) const noexcept { return num(x) != num(x - 1); }
  i64 period() const noexcept { return regular ? g.len : 7 * w.n / std::gcd(w.n, i64{w.nwd}); }
};

// A working-day grid that is a day grid in disguise: every day a working day
// (nwd 7), or a multiplier of whole weeks, whose intervals all start on one
// weekday and last 7 * n / nwd days.
DayGrid dayGrid(const Wkday& w) noexcept {
  DayGrid d;
  if (w.nwd == 7) {
    d.g = {w.n, floorMod(w.s, w.n)};
  } else if (w.n % w.nwd == 0) {
    const i64 len = 7 * (w.n / w.nwd);
    d.g = {len, floorMod(w.dayOf(w.s), len)};
  } else {
    d.regular = false;
    d.w = w;
  }
  return d;
}
DayGrid dayGrid(const Grid& g) noexcept {
  DayGrid d;
  d.g = g;
  return d;
}

// The plain test of two grids on days: both are walked over one common
// period. Every boundary of a on one of b makes a the coarser grid; the
// number of b's intervals in each of a's is then k (fixed) or varying (1).
// Grids that don't nest: boundary counts that divide each other say that
// only the placing is off (.S); otherwise the lengths don't fit (.M, or .W
// for working-day grids of different weekends).
double scan(const DayGrid& a, const DayGrid& b, bool weekends) noexcept {
  if (a.regular && b.regular) return compare(a.g.len, a.g.off, b.g.len, b.g.off);
  const i64 pa = a.period();
  const i64 pb = b.period();
  const i64 g = std::gcd(pa, pb);
  if (pa / g > kScanDays / pb) return kMissing;
  const i64 p = pa / g * pb;
  bool aInB = true, bInA = true;
  i64 na = 0, nb = 0, firstA = -1, lastA = -1, firstB = -1, lastB = -1;
  i64 ka = -1, kb = -1;  // intervals of the other in one interval; -2 once they vary
  auto note = [](i64* k, i64 v) { *k = (*k == -1 || *k == v) ? v : -2; };
  for (i64 x = 0; x < p; ++x) {
    const bool ba = a.boundary(x);
    const bool bb = b.boundary(x);
    aInB = aInB && (!ba || bb);
    bInA = bInA && (!bb || ba);
    if (ba) {
      if (lastA >= 0) note(&ka, b.num(x) - b.num(lastA));
      if (firstA < 0) firstA = x;
      lastA = x;
      ++na;
    }
    if (bb) {
      if (lastB >= 0) note(&kb, a.num(x) - a.num(lastB));
      if (firstB < 0) firstB = x;
      lastB = x;
      ++nb;
    }
  }
  if (na == 0 || nb == 0) return kInternal;  // every grid has a boundary in its period
  note(&ka, b.num(firstA + p) - b.num(lastA));
  note(&kb, a.num(firstB + p) - a.num(lastB));
  if (aInB && bInA) return 0.0;
  if (aInB) return ka > 1 ? static_cast<double>(ka) : 1.0;
  if (bInA) return kb > 1 ? -static_cast<double>(kb) : -1.0;
  if (na % nb == 0 || nb % na == 0) return kShiftOff;
  return weekends ? kWeekends : kNotMultiple;
}

// A grid of fixed length in days against a retail or YEARV grid, whose
// boundaries are Mondays at 4, 5, 52 or 53 weeks: only every day, or every
// Monday, nests.
double dayRetail(const Grid& d) noexcept {
  if (d.len == 1) return -1.0;
  if (d.len != 7) return kNotMultiple;
  return d.off == 3 ? -1.0 : kShiftOff;  // day 3, 1960-01-04, is a Monday
}

// A working-day grid against a retail or YEARV grid: every Monday must
// start one of its intervals.
double wkdayRetail(const Wkday& w) noexcept {
  if (!w.work[1]) return kNoBase;
  if (w.nwd % w.n != 0) return kNotMultiple;
  if (floorMod(w.index(3) - w.s, w.n) != 0) return kShiftOff;
  return -1.0;
}

// SECOND, MINUTE, HOUR and the grids of fixed length in days, in seconds.
Grid seconds(const INTERVAL& x) noexcept {
  i64 unit = 1;
  if (x.intcode == kIntMinute) unit = 60;
  if (x.intcode == kIntHour) unit = 3600;
  if (x.intcode >= kIntDay) {
    const Grid d = days(x);
    return {d.len * kDaySec, d.off * kDaySec};
  }
  return {mult(x) * unit, floorMod(x.shiftper * unit, mult(x) * unit)};
}

// A time grid as a grid on whole days (time2dayint): itself when its length
// is whole days, else DAY when it divides a day. The special missing value
// when it is neither. A time grid finer than a day then relates to a grid of
// varying length as DAY does: the varying count (-1) carries over, and no
// grid that DAY is compared with here holds a fixed number of days, so the
// ratio of the time grid in a day never enters the result.
double toDays(const Grid& t, Grid* d) noexcept {
  const i64 off = floorMod(t.off, t.len);
  if (t.len % kDaySec == 0) {
    if (off % kDaySec != 0) return kShiftOff;
    *d = {t.len / kDaySec, off / kDaySec};
    return 0;
  }
  if (kDaySec % t.len != 0) return kNotMultiple;
  if (off != 0) return kShiftOff;
  *d = {1, 0};
  return 0;
}

// Month indices at which the week of a retail month start is the same in
// two patterns.
bool sharedMonth(int pa, int pb, i64 m) noexcept {
  return retailTable(pa)[static_cast<std::size_t>(m)] == retailTable(pb)[static_cast<std::size_t>(m)];
}

int pattern(int code) noexcept {
  switch (code) {
    case kIntR445Mon: case kIntR445Qtr: case kIntR445Yr: return 445;
    case kIntR454Mon: case kIntR454Qtr: case kIntR454Yr: return 454;
    default: return 544;
  }
}

// Two retail grids in retail months. Of different patterns the coarser grid's
// boundaries must fall on months that both patterns start in the same week
// (always so on quarters); that test is made on the months themselves, so a
// grid that passes it away from quarters (R445QTR.2 against R454MON) nests.
double retail(const INTERVAL& a, const INTERVAL& b) noexcept {
  const Grid ga = months(a);
  const Grid gb = months(b);
  const double r = compare(ga.len, ga.off, gb.len, gb.off);
  const int pa = pattern(a.intcode);
  const int pb = pattern(b.intcode);
  if (wzmis(r) || pa == pb) return r;
  const Grid& coarse = r >= 0 ? ga : gb;
  const i64 g = std::gcd(coarse.len, i64{12});
  for (i64 m = floorMod(coarse.off, g); m < 12; m += g)
    if (!sharedMonth(pa, pb, m)) return coarse.len % 3 == 0 ? kShiftOff : kNotMultiple;
  return r;
}

// A retail grid against YEARV: the ISO year's shift, in weeks, must be the
// start of a retail month of the pattern, which it then becomes.
double retailYearV(const INTERVAL& a, const INTERVAL& y) noexcept {
  const auto table = retailTable(pattern(a.intcode));
  const i64 week = floorMod(y.shiftper, 52);
  for (std::size_t m = 0; m < table.size(); ++m) {
    if (table[m] != week) continue;
    const Grid ga = months(a);
    return compare(ga.len, ga.off, 12 * mult(y), static_cast<i64>(m) + 12 * (y.shiftper / 52));
  }
  return kShiftOff;
}

bool sameWeekend(const INTERVAL& a, const INTERVAL& b) noexcept {
  for (int i = 0; i < 7; ++i)
    if ((a.weekend[i] != 0) != (b.weekend[i] != 0)) return false;
  return true;
}

// A grid on days for DAY, WEEK, WEEKV and WEEKDAY.
DayGrid onDays(const INTERVAL& x) noexcept {
  return x.intcode == kIntWeekday ? dayGrid(wkday(x)) : dayGrid(days(x));
}

// A time grid (a) against a grid on days or a retail or YEARV grid (b).
double timeVs(const INTERVAL& a, const INTERVAL& b, Cls cb) noexcept {
  const Grid t = seconds(a);
  if (cb == kTen || cb == kSemi || cb == kMon) {
    // These grids start at midnight and have no fixed length in seconds.
    if (kDaySec % t.len != 0) return kMissing;
    return t.off == 0 ? -1.0 : kShiftOff;
  }
  if (cb == kDay || cb == kWeek || cb == kWeekV) {
    const Grid s = seconds(b);
    return compare(t.len, t.off, s.len, s.off);
  }
  if (cb == kWkday && onDays(b).regular) {
    const DayGrid d = onDays(b);
    return compare(t.len, t.off, d.g.len * kDaySec, d.g.off * kDaySec);
  }
  // Working-day grids of whole weeks were compared in seconds above; the
  // others, and retail and ISO years, have no fixed length in days.
  Grid d{1, 0};
  const double rc = toDays(t, &d);
  if (wzmis(rc)) return rc;
  if (cb == kWkday) return scan(dayGrid(d), onDays(b), false);
  return dayRetail(d);
}

// The pair with class(a) not after class(b).
double ordered(const INTERVAL& a, Cls ca, const INTERVAL& b, Cls cb) noexcept {
  switch (ca) {
    case kTime:
      if (cb == kTime) {
        const Grid ga = seconds(a);
        const Grid gb = seconds(b);
        return compare(ga.len, ga.off, gb.len, gb.off);
      }
      if (cb <= kYearV) return timeVs(a, b, cb);
      return kNoBase;
    case kDay: case kWkday: case kWeek: case kWeekV:
      if (cb == kDay || cb == kWkday || cb == kWeek || cb == kWeekV) {
        if (ca == kWkday && cb == kWkday && sameWeekend(a, b))
          return compare(mult(a), a.shiftper, mult(b), b.shiftper);  // on working days
        return scan(onDays(a), onDays(b), ca == kWkday && cb == kWkday);
      }
      if (cb == kTen || cb == kSemi || cb == kMon) {
        if (ca != kDay) return kNoBase;
        return mult(a) == 1 ? -1.0 : kMissing;  // days of a month vary
      }
      if (cb == kRetail || cb == kYearV) {
        if (ca == kWkday) return wkdayRetail(wkday(a));
        return dayRetail(days(a));
      }
      return kNoBase;
    case kTen: case kSemi:
      if (cb == ca || cb == kMon) {
        // Tendays and semimonths: 3 or 2 to a month, shifts of months scaled.
        const i64 k = ca == kTen ? 3 : 2;
        const Grid gb = cb == kMon ? Grid{k * months(b).len, k * months(b).off} : Grid{mult(b), b.shiftper};
        return compare(mult(a), a.shiftper, gb.len, gb.off);
      }
      return kNoBase;
    case kMon:
      if (cb == kMon) {
        const Grid ga = months(a);
        const Grid gb = months(b);
        return compare(ga.len, ga.off, gb.len, gb.off);
      }
      return kNoBase;
    case kRetail:
      if (cb == kRetail) return retail(a, b);
      if (cb == kYearV) return retailYearV(a, b);
      return kNoBase;
    case kYearV:
      if (cb == kYearV) return compare(52 * mult(a), a.shiftper, 52 * mult(b), b.shiftper);
      return kNoBase;
    case kObs:
      // Observation grids step by multiplier and shift; compared so.
      if (cb == kObs) return compare(mult(a), a.shiftper, mult(b), b.shiftper);
      return kNoBase;
    default:
      return kNoBase;
  }
}

bool sameToken(const INTERVAL& a, const INTERVAL& b) noexcept {
  if (a.tokenlen != b.tokenlen || a.tokenlen < 0 || a.tokenlen > kIntTokenSize) return false;
  auto up = [](tchar c) { return std::toupper(static_cast<unsigned char>(c)); };
  for (int i = 0; i < a.tokenlen; ++i)
    if (up(a.token[i]) != up(b.token[i])) return false;
  return true;
}

}  // namespace

double zintc(const INTERVAL& a, const INTERVAL& b) noexcept {
  const Cls ca = classOf(a.intcode);
  const Cls cb = classOf(b.intcode);
  if (ca == kBad || cb == kBad) return kInternal;
  if (ca == kCust || cb == kCust) return ca == cb && sameToken(a, b) ? 0.0 : kMissing;
  if (ca == kWkday || cb == kWkday) {
    const Wkday wa = wkday(a);
    const Wkday wb = wkday(b);
    if ((ca == kWkday && wa.nwd == 0) || (cb == kWkday && wb.nwd == 0)) return kInternal;
  }
  if (a.intcode == b.intcode && a.shiftper == b.shiftper && ca != kWkday) {
    // One code, one shift: the grids share their origin, only lengths count.
    const i64 m = mult(a);
    const i64 n = mult(b);
    if (m == n) return 0.0;
    if (m % n == 0) return static_cast<double>(m / n);
    if (n % m == 0) return -static_cast<double>(n / m);
    return kNotMultiple;
  }
  if (ca <= cb) return ordered(a, ca, b, cb);
  return negate(ordered(b, cb, a, ca));
}

}  // namespace qvt
