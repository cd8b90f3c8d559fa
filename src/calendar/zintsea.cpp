// The seasonal cycle of an interval: the cycle interval and the number of
// intervals in it, and the records derived from a cycle (multiples of an
// interval, named as simply as possible).
#include <algorithm>
#include <array>
#include <climits>
#include <string_view>

#include "calendar/interval.hpp"
#include "calendar/zcust.hpp"
#include "calendar/zfmt.hpp"
#include "calendar/zintcycle.hpp"
#include "calendar/zintcycle_util.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

using cycle::parseWithUnits;

// One row of the cycle table: the cycle interval of a code, the multipliers
// for which the count is fixed (bit k set for multiplier k), and the count
// of the cycle for multiplier 1; a fixed multiplier k gives total / k.
struct CycleRow {
  int code;
  std::string_view cycleName;
  std::uint32_t fixedMultipliers;
  int total;
};

constexpr std::uint32_t bits(std::initializer_list<int> ks) {
  std::uint32_t b = 0;
  for (int k : ks) b |= 1u << k;
  return b;
}

constexpr std::array<CycleRow, 23> kCycles = {{
    {kIntSecond, "MINUTE", bits({1, 2, 3, 4, 5, 6, 10, 12, 15, 20, 30}), 60},
    {kIntMinute, "HOUR", bits({1, 2, 3, 4, 5, 6, 10, 12, 15, 20, 30}), 60},
    {kIntHour, "DAY", bits({1, 2, 3, 4, 6, 8, 12}), 24},
    {kIntDay, "WEEK", bits({1}), 7},
    {kIntWeekday, "WEEK", 0, 0},  // any multiplier: the working days of the week
    {kIntWeek, "YEAR", bits({1, 2, 4, 13, 26}), 52},
    {kIntWeekV, "YEARV", bits({1, 2, 4, 13, 26}), 52},
    {kIntTenday, "YEAR", bits({1, 2, 3, 4, 6, 9, 12, 18}), 36},
    {kIntSemimonth, "YEAR", bits({1, 2, 3, 4, 6, 8, 12}), 24},
    {kIntMonth, "YEAR", bits({1, 2, 3, 4, 6}), 12},
    {kIntR445Mon, "R445YR", bits({1, 2, 3, 4, 6}), 12},
    {kIntR454Mon, "R454YR", bits({1, 2, 3, 4, 6}), 12},
    {kIntR544Mon, "R544YR", bits({1, 2, 3, 4, 6}), 12},
    {kIntQtr, "YEAR", bits({1, 2}), 4},
    {kIntR445Qtr, "R445YR", bits({1, 2}), 4},
    {kIntR454Qtr, "R454YR", bits({1, 2}), 4},
    {kIntR544Qtr, "R544YR", bits({1, 2}), 4},
    {kIntSemiyear, "YEAR", bits({1}), 2},
    {kIntYear, "YEAR", bits({1}), 1},
    {kIntR445Yr, "R445YR", bits({1}), 1},
    {kIntR454Yr, "R454YR", bits({1}), 1},
    {kIntR544Yr, "R544YR", bits({1}), 1},
    {kIntYearV, "YEARV", bits({1}), 1},
}};

const CycleRow* findCycle(int code) noexcept {
  for (const CycleRow& r : kCycles)
    if (r.code == code) return &r;
  return nullptr;
}

// The name of a custom calendar: its token less the multiplier and shift.
std::string_view customName(const INTERVAL& x) noexcept {
  std::size_t n = static_cast<std::size_t>(std::clamp<int>(x.tokenlen, 0, kIntTokenMax));
  const bool plain = x.intper <= 1 && x.shiftper == 0;
  while (n > 1) {
    const char c = x.token[n - 1];
    const bool strip = plain ? (c == '1' || c == '.') : ((c >= '0' && c <= '9') || c == '.');
    if (!strip) break;
    --n;
  }
  return {x.token, n};
}

// Parses a custom calendar's name with a multiplier (and the source's shift).
int parseCustom(std::string_view name, const INTERVAL& src, long long mult, INTERVAL* out) noexcept {
  char buf[64];
  std::size_t n = 0;
  for (char c : name) {
    if (n + 1 >= sizeof buf) return 101;
    buf[n++] = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
  }
  auto append = [&](long long v) {
    char d[24];
    int k = 0;
    do {
      d[k++] = static_cast<char>('0' + v % 10);
      v /= 10;
    } while (v > 0);
    while (k > 0 && n + 1 < sizeof buf) buf[n++] = d[--k];
  };
  if (mult != 1 || src.shiftper != 0) append(mult);
  if (src.shiftper != 0) {
    buf[n++] = '.';
    append(src.shiftper + 1LL);
  }
  if (n > static_cast<std::size_t>(kIntTokenMax)) return 101;
  return zintstr(buf, static_cast<int>(n), out, src.custom);
}

// The custom branch of zintsea and zintsea2.
int customCycle(const INTERVAL& in, INTERVAL* sint, int* ns, bool second) noexcept {
  const double seas = customINTSEAS(zintwiden(in));
  const bool many = !wzmis(seas) && seas > 1.0 && seas < 2147483647.0;
  const int count = many ? static_cast<int>(seas) : 1;
  INTERVAL parsed;
  int rc = 0;
  if (second) {
    // Rebuilt from the calendar's registered name, also for a single season.
    rc = parseCustom(customName(in), in, static_cast<long long>(std::max(1, in.intper)) * count, &parsed);
  } else if (!many) {
    rc = zintstr(in.token, in.tokenlen, &parsed, in.custom);
  } else {
    rc = parseCustom(customName(in), in, static_cast<long long>(std::max(1, in.intper)) * count, &parsed);
  }
  if (rc != 0) return 1;
  *sint = parsed;
  *ns = count;
  return 0;
}

// The shared body of zintsea and zintsea2 (second = true).
int cycleOf(const INTERVAL* interval, double date, INTERVAL* sint, int* ns, bool second) noexcept {
  const int nsIn = ns != nullptr ? *ns : 0;
  if (ns != nullptr) *ns = 0;
  if (sint != nullptr) *sint = INTERVAL{};
  if (sint == nullptr || ns == nullptr || interval == nullptr || interval->intcode == kIntNone) return 2;
  const INTERVAL& in = *interval;
  const int code = in.intcode;

  if (code == kIntObs) {
    if (!second) return 1;
    *sint = in;  // "OBS" with the same multiplier is its own cycle of one season
    *ns = 1;
    return 0;
  }
  if (code == kIntCustom) return customCycle(in, sint, ns, second);

  const CycleRow* row = findCycle(code);
  if (row == nullptr) return 1;  // reserved or unknown codes have no cycle
  INTERVAL cyc;
  if (parseWithUnits(row->cycleName, in.units, &cyc) != 0) return 1;

  const int k = std::max(1, in.intper);
  if (code == kIntWeekday) {
    *sint = cyc;
    *ns = in.nweekday;
    return 0;
  }
  if (k < 32 && (row->fixedMultipliers >> k & 1u) != 0) {
    int count = row->total / k;
    if (second && k == 1 && code == kIntWeek) count = nsIn == 53 ? 53 : 52;
    if (second && k == 1 && code == kIntWeekV) count = nsIn == 52 ? 52 : 53;
    *sint = cyc;
    *ns = count;
    return 0;
  }

  // Any other multiplier: count the intervals in the cycle that holds date,
  // which works only when both grids share the cycle's boundaries.
  double b0 = zintnx2(cyc, date, 0);
  if (wzmis(b0)) b0 = 0;
  const double b1 = zintnx2(cyc, b0, 1);
  const double x0 = zintnx2(in, b0, 0);
  const double x1 = zintnx2(in, b1, 0);
  if (wzmis(b1) || wzmis(x0) || wzmis(x1) || b0 != x0 || b1 != x1) return 1;
  int count = 0;
  if (!cycle::asInt(zintck2(in, b0, b1), &count) || count < 1) return 1;
  *sint = cyc;
  *ns = count;
  return 0;
}

void upperToken(INTERVAL* x) noexcept {
  for (int i = 0; i < x->tokenlen && i < kIntTokenSize; ++i)
    if (x->token[i] >= 'a' && x->token[i] <= 'z') x->token[i] = static_cast<char>(x->token[i] - 'a' + 'A');
}

// The retail year and quarter codes of a retail month, quarter or year code.
int retailYear(int code) noexcept {
  switch (code) {
    case kIntR445Mon: case kIntR445Qtr: return kIntR445Yr;
    case kIntR454Mon: case kIntR454Qtr: return kIntR454Yr;
    default: return kIntR544Yr;
  }
}
int retailQtr(int code) noexcept {
  switch (code) {
    case kIntR445Mon: return kIntR445Qtr;
    case kIntR454Mon: return kIntR454Qtr;
    default: return kIntR544Qtr;
  }
}

// Names a multiple by the interval fitted to the span of one of its
// intervals from date 0 (MONTH12 as YEAR, DAY7 as WEEK.6): when the two
// grids are the same the fit, with its format, replaces the multiple. With
// fuzzy acceptance a multiple of days or working days without shift takes a
// WEEK fit without its shift, and a multiple of days whose fit is not the
// same grid still takes a fit on weeks or longer (DAY30 as MONTH).
void simplifyByFit(INTERVALX* out, const INTERVALX& src, int act_flag) noexcept {
  const double s0 = zintnx_seas(out, 0.0, 0, nullptr);
  const double s1 = wzmis(s0) ? s0 : zintnx_seas(out, s0, 1, nullptr);
  const char units[1] = {out->units};
  INTERVAL found;
  if (wzmis(s1) || zintfit(s0, s1, units, &found, nullptr) != 0) return;
  const bool fuzzy = (act_flag & kMultFuzzyDay) != 0;
  const bool dayLike = src.intcode == kIntDay || src.intcode == kIntWeekday;
  if (zintc(*out, found) == 0) {
    if (fuzzy && dayLike && src.shiftper == 0 && found.intcode == kIntWeek) found.shiftper = 0;
  } else if (!(fuzzy && src.intcode == kIntDay && found.intcode > kIntWeek)) {
    return;
  }
  INTERVALX x = *out;
  static_cast<INTERVAL&>(x) = found;
  if (cycle::retoken(&x) != 0) return;
  short width2 = 0;
  zintfmt(&x, x.format, &x.formatl, &x.formatw, &width2);
  *out = x;
}

}  // namespace

int zintsea(const INTERVAL* interval, double date, INTERVAL* sinterval, int* nseasons) noexcept {
  return cycleOf(interval, date, sinterval, nseasons, false);
}

int zintsea2(const INTERVAL* interval, double date, INTERVAL* sinterval, int* nseasons) noexcept {
  return cycleOf(interval, date, sinterval, nseasons, true);
}

int zintrsimp(INTERVALX* interval) noexcept {
  if (interval == nullptr) return 2;
  const int code = interval->intcode;
  const int k = std::max(1, interval->intper);
  int newCode = code;
  int newK = k;
  switch (code) {
    case kIntWeekV:
      if (k % 52 == 0) newCode = kIntYearV, newK = k / 52;
      else if (k % 53 == 0) newCode = kIntYearV, newK = k / 53;
      break;
    case kIntR445Mon: case kIntR454Mon: case kIntR544Mon:
      if (k % 12 == 0) newCode = retailYear(code), newK = k / 12;
      else if (k % 3 == 0) newCode = retailQtr(code), newK = k / 3;
      break;
    case kIntR445Qtr: case kIntR454Qtr: case kIntR544Qtr:
      if (k % 4 == 0) newCode = retailYear(code), newK = k / 4;
      break;
    case kIntR445Yr: case kIntR454Yr: case kIntR544Yr: case kIntYearV:
      break;
    default:
      return 1;
  }
  if (newCode == code) return 0;
  // Retail shifts count retail months at every level and carry over as they
  // are; a WEEKV shift counts days and a YEARV shift weeks, so only a whole
  // number of weeks carries over.
  int shift = interval->shiftper;
  if (code == kIntWeekV) shift = shift % 7 == 0 ? shift / 7 : 0;
  INTERVALX changed = *interval;
  changed.intcode = static_cast<char>(newCode);
  changed.intper = newK;
  changed.shiftper = shift;
  if (cycle::retoken(&changed) != 0) return 2;
  *interval = changed;
  return 0;
}

int zintmult(const INTERVALX* interval, int nseasons, INTERVALX* sinterval, int act_flag) noexcept {
  if (interval == nullptr || sinterval == nullptr || nseasons < 1) return 2;
  const INTERVALX src = *interval;  // sinterval may be the same record
  const long long mult = static_cast<long long>(std::max(1, src.intper)) * nseasons;
  if (mult > INT_MAX) return 2;

  INTERVALX out = src;
  out.cinfo = nullptr;  // a calendar reference belongs to whoever took it
  out.ccache = nullptr;
  out.sinterval = sinterval->sinterval;  // the out record keeps its own place for a cycle
  out.nseasons = sinterval->nseasons;
  out.intper = static_cast<int>(mult);
  if (src.intcode == kIntCustom) {
    INTERVAL parsed;
    if (parseCustom(customName(src), src, mult, &parsed) != 0) return 2;
    static_cast<INTERVAL&>(out) = parsed;
  } else if (cycle::retoken(&out) != 0) {
    return 2;
  }

  const bool keepWeek = (act_flag & kMultNoWeekYear) != 0;
  const bool keepRetail = (act_flag & kMultNoRetail) != 0;
  if (mult > 1 && !(keepWeek && keepRetail)) {
    if (!keepWeek && cycle::isWeekly(out.intcode)) {
      // A whole number of years of weeks is named as years. A week shift
      // counts days, which no year grid has, so it is dropped.
      const bool v = out.intcode == kIntWeekV;
      const int first = v ? 53 : 52;
      const int second = v ? 52 : 53;
      int years = 0;
      if (mult % first == 0) years = static_cast<int>(mult / first);
      else if (mult % second == 0) years = static_cast<int>(mult / second);
      if (years > 0) {
        INTERVALX y = out;
        y.intcode = static_cast<char>(v ? kIntYearV : kIntYear);
        y.intper = years;
        y.shiftper = 0;
        if (cycle::retoken(&y) == 0) out = y;
      }
    }
    if (!keepRetail) zintrsimp(&out);
    // Codes that the week and retail rules leave alone (custom calendars
    // have no fit) are named by the grid that one of their intervals spans.
    const int c = src.intcode;
    const bool byRules = cycle::isWeekly(c) || (c >= kIntR445Mon && c <= kIntYearV && c != kIntQtr &&
                                                 c != kIntSemiyear && c != kIntYear);
    if (!byRules && c != kIntCustom && c != kIntNone) simplifyByFit(&out, src, act_flag);
  }

  if (out.sinterval != nullptr) {
    switch (act_flag & 3) {
      case kMultCycleDerive: {
        int ns = out.nseasons;
        INTERVAL cyc;
        if (zintsea2(&out, 0.0, &cyc, &ns) == 0) {
          static_cast<INTERVAL&>(*out.sinterval) = cyc;
          out.nseasons = ns;
        }
        break;
      }
      case kMultCycleScale:
        if (src.sinterval != nullptr) {
          INTERVALX c = *src.sinterval;
          const long long cm = static_cast<long long>(std::max(1, c.intper)) * nseasons;
          if (cm <= INT_MAX) {
            c.intper = static_cast<int>(cm);
            if (c.intcode == kIntCustom || cycle::retoken(&c) == 0)
              static_cast<INTERVAL&>(*out.sinterval) = c;
          }
        }
        out.nseasons = src.nseasons;
        break;
      default:
        if (src.sinterval != nullptr) static_cast<INTERVAL&>(*out.sinterval) = *src.sinterval;
        out.nseasons = src.nseasons / nseasons;
        break;
    }
  }
  *sinterval = out;
  return 0;
}

int zintsea_calc_nseasons(const INTERVALX* interval, double date, const INTERVALX* sinterval,
                          int* nseasons) noexcept {
  if (interval == nullptr || nseasons == nullptr) return 2;
  const INTERVALX* s = sinterval != nullptr ? sinterval : interval->sinterval;
  if (s == nullptr) return 2;
  *nseasons = 0;
  const int code = interval->intcode;
  const int scode = s->intcode;
  const bool weekYear = code == kIntWeek && scode == kIntYear;
  const bool weekvYearv = code == kIntWeekV && scode == kIntYearV;
  const bool weekday = code == kIntWeekday &&
                       (scode == kIntWeek || scode == kIntSemimonth || scode == kIntYear);
  double ds0 = 0;
  double ds1 = 0;
  double i0 = 0;
  double i1 = 0;
  if (weekYear || weekvYearv || weekday) {
    ds0 = zintnx_seas(s, date, 0, interval);
    ds1 = wzmis(ds0) ? ds0 : zintnx_seas(s, ds0, 1, interval);
  } else {
    ds0 = zintnx2(*s, date, 0);
    if (wzmis(ds0)) ds0 = 0;
    ds1 = zintnx2(*s, ds0, 1);
  }
  if (wzmis(ds0) || wzmis(ds1)) return 1;
  if (weekYear || weekvYearv) {
    i0 = zintnx_seas(interval, ds0, 0, nullptr);
    i1 = zintnx_seas(interval, ds1, 0, nullptr);
  } else {
    i0 = zintnx2(*interval, ds0, 0);
    i1 = zintnx2(*interval, ds1, 0);
  }
  if (wzmis(i0) || wzmis(i1) || i0 != ds0 || i1 != ds1) return 1;

  double count = 0;
  if (weekYear) {
    const int leap = interval->nseasons == 53 ? 53 : 1;
    double y0 = 0, w0 = 0, d0 = 0, y1 = 0, w1 = 0, d1 = 0;
    zidywdds(cycle::toDay(interval->units, ds0), leap, &y0, &w0, &d0);
    zidywdds(cycle::toDay(interval->units, ds1), leap, &y1, &w1, &d1);
    if (y0 < 0 || y1 < 0) return 1;
    count = (y1 - y0) * 52 + (w1 - w0);
    if (interval->intper > 1) count = std::floor(count / interval->intper);
  } else {
    count = zintck2(*interval, ds0, ds1);
  }
  int c = 0;
  if (!cycle::asInt(count, &c) || c < 1) return 1;
  *nseasons = c;
  return 0;
}

int zintsea_set(INTERVALX* interval, double date, INTERVALX* sinterval, int* nseasons) noexcept {
  if (interval == nullptr) return 2;
  int count = (nseasons != nullptr && *nseasons != 0) ? *nseasons : interval->nseasons;
  const INTERVALX* nameSrc = nullptr;
  if (sinterval != nullptr && sinterval->tokenlen > 0) nameSrc = sinterval;
  else if (interval->sinterval != nullptr && interval->sinterval->tokenlen > 0) nameSrc = interval->sinterval;

  INTERVAL cyc;  // the cycle interval being set
  auto finish = [&](int rc) {
    upperToken(&cyc);
    if (sinterval != nullptr) static_cast<INTERVAL&>(*sinterval) = cyc;
    if (interval->sinterval != nullptr && interval->sinterval != sinterval)
      static_cast<INTERVAL&>(*interval->sinterval) = cyc;
    interval->nseasons = count;
    if (nseasons != nullptr) *nseasons = count;
    return rc;
  };

  if (interval->intcode == kIntNone) {
    zintstr("NONE", 4, &cyc);
    count = 0;
    return finish(0);
  }
  if (count == 0 && nameSrc == nullptr) {
    int ns = interval->nseasons;
    const int rc = zintsea2(interval, date, &cyc, &ns);
    count = ns;
    return finish(rc);
  }
  if (nameSrc != nullptr) {
    INTERVAL named;
    if (zintstr(nameSrc->token, nameSrc->tokenlen, &named, nameSrc->custom) != 0) return 2;
    if (named.intcode == kIntObs) {
      if (count != 0 && count != named.intper) return 2;
      count = named.intper;
      // and on to the multiple below
    } else {
      if (count >= 0) {
        const INTERVALX namedx = zintwiden(named);
        int computed = 0;
        const int rc = zintsea_calc_nseasons(interval, date, &namedx, &computed);
        if (rc != 0) return rc;
        if (count > 0 && count != computed) return 2;
        count = computed;
      }
      cyc = named;
      return finish(0);
    }
  }
  if (count == 1) {
    cyc = *interval;
    return finish(0);
  }
  if (count < 1) return 2;
  INTERVALX mult;
  if (zintmult(interval, count, &mult, kMultCycleDerive | kMultFuzzyDay) != 0) return 2;
  cyc = mult;
  return finish(0);
}

}  // namespace qvt
